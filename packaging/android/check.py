# SPDX-License-Identifier: Apache-2.0
"""What an Android archive must be like. Every check raises a PackagingError that names what is wrong."""
import io
import json
import os
import pathlib
import re
import subprocess
import tempfile
import xml.etree.ElementTree
import zipfile

MIN_SDK = 26
MACHINES = {"arm64-v8a": "AArch64", "x86_64": "Advanced Micro Devices X86-64"}
JAVA_8_CLASS = 52
PAGE_BYTES = 0x4000
# Versions of prefab packages are those of CMake's find_package.
PREFAB_VERSION = r"[0-9]+(\.[0-9]+){0,3}"

ANDROID_NEEDED = {"libc.so", "libm.so", "libdl.so", "liblog.so", "libandroid.so", "libjnigraphics.so", "libEGL.so",
                  "libGLESv2.so", "libGLESv3.so"}
DESKTOP_NEEDED = {"libc.so.6", "libm.so.6", "libgcc_s.so.1", "libstdc++.so.6", "libEGL.so.1", "libGLESv2.so.2",
                  "libjpeg.so.62", "libhwy.so.1", "ld-linux-aarch64.so.1", "ld-linux-x86-64.so.2"}
SHARED_STL = "libc++_shared.so"

JAVA_FILES = {"AndroidManifest.xml", "META-INF/com/android/build/gradle/aar-metadata.properties", "R.txt",
              "classes.jar", "proguard.txt"}
NATIVE_FILES = JAVA_FILES - {"proguard.txt"} | {"prefab/prefab.json", "prefab/modules/korvane/module.json"}
MODULE = "prefab/modules/korvane/"

# The published fields of prefab's files, schema version 2: name, type, whether it must be there.
STRINGS = [str]
PREFAB_FIELDS = {"schema_version": (int, True), "name": (str, True), "version": (str, False),
                 "dependencies": (STRINGS, True)}
MODULE_FIELDS = {"export_libraries": (STRINGS, True), "library_name": (str, False), "android": (dict, False)}
ABI_FIELDS = {"abi": (str, True), "api": (int, True), "ndk": (int, True), "stl": (str, True), "static": (bool, False)}


class PackagingError(Exception):
    pass


def expect(condition, message):
    if not condition:
        raise PackagingError(message)


def run(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True).stdout


# Libraries

def check_library(name, content, abi, standIn, sharedStl):
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "libkorvane.so"
        path.write_bytes(content)
        text = run(os.environ.get("READELF", "readelf"), "-hldSW", str(path))
        exported = exported_natives(path)
    expect(re.search(r"Machine:\s+" + re.escape(MACHINES[abi]), text), f"{name} is not for {abi}")
    alignments = [int(line.split()[-1], 16) for line in text.splitlines() if line.strip().startswith("LOAD")]
    expect(alignments and all(one % PAGE_BYTES == 0 for one in alignments),
           f"{name} is not aligned to pages of {PAGE_BYTES} bytes")
    needed = set(re.findall(r"\(NEEDED\).*\[(.*)\]", text))
    allowed = DESKTOP_NEEDED if standIn else ANDROID_NEEDED | ({SHARED_STL} if sharedStl else set())
    expect(needed <= allowed, f"{name} needs {', '.join(sorted(needed - allowed))}")
    expect(standIn or (SHARED_STL in needed) == sharedStl,
           f"{name} is linked with the {'static' if sharedStl else 'shared'} C++ library")
    soname = re.search(r"\(SONAME\).*\[(.*)\]", text)
    expect(soname and soname.group(1) == "libkorvane.so", f"{name} has the wrong soname")
    expect(".symtab" not in text and ".debug_" not in text, f"{name} is not stripped")
    expect(".note.gnu.build-id" in text, f"{name} has no build id to find its symbols by")
    return exported


def exported_natives(path):
    text = run(os.environ.get("READELF", "readelf"), "--dyn-syms", "-W", str(path))
    return {line.split()[-1].split("@")[0] for line in text.splitlines()
            if " Java_" in line and " UND " not in line}


# Classes

def native_methods(jar, classes):
    """The names that the natives of these classes have in a library. Overloaded ones would have longer names; there
    are none."""
    with tempfile.TemporaryDirectory() as folder:
        path = pathlib.Path(folder) / "classes.jar"
        path.write_bytes(jar)
        text = run("javap", "-p", "-cp", str(path), *classes)
    names = set()
    className = ""
    for line in text.splitlines():
        start = re.search(r"(?:class|interface|enum) ([\w.$]+).*\{", line)
        className = start.group(1) if start else className
        method = re.search(r"\bnative .*?(\w+)\(", line)
        if method:
            name = "Java_" + mangled(className) + "_" + mangled(method.group(1))
            expect(name not in names, f"the native method {name} is overloaded")
            names.add(name)
    return names


def mangled(name):
    return name.replace("_", "_1").replace("$", "_00024").replace(".", "_")


def check_classes(jar):
    with zipfile.ZipFile(io.BytesIO(jar)) as archive:
        names = archive.namelist()
        expect(names, "classes.jar is empty")
        for name in names:
            expect(name.startswith(("com/tervo/", "korvane/effects/")), f"classes.jar has {name}")
            version = int.from_bytes(archive.read(name)[6:8], "big")
            expect(version == JAVA_8_CLASS, f"{name} has class version {version}, not {JAVA_8_CLASS}")
    return native_methods(jar, [name[:-len(".class")].replace("/", ".") for name in names if name.endswith(".class")])


# Archives

def check_manifest(content):
    root = xml.etree.ElementTree.fromstring(content)
    sdk = root.find("uses-sdk")
    namespace = "{http://schemas.android.com/apk/res/android}"
    expect(root.tag == "manifest" and "." in root.get("package", ""), "the manifest names no package")
    expect(sdk is not None and sdk.get(namespace + "minSdkVersion") == str(MIN_SDK), "the manifest has no minimum SDK")


def check_java_archive(content, standIn):
    with zipfile.ZipFile(io.BytesIO(content)) as archive:
        names = set(archive.namelist())
        libraries = {name for name in names if re.fullmatch(r"jni/[^/]+/libkorvane\.so", name)}
        check_names(names, JAVA_FILES | libraries)
        check_manifest(archive.read("AndroidManifest.xml"))
        natives = check_classes(archive.read("classes.jar"))
        expect(libraries, "there is no library")
        for name in libraries:
            exported = check_library(name, archive.read(name), abi_of(name.split("/")[1]), standIn, False)
            expect(exported <= natives, f"{name} exports {', '.join(sorted(exported - natives))}, which no class has")
            expect(natives <= exported, f"{name} lacks {', '.join(sorted(natives - exported))}")


def check_native_archive(content, standIn):
    with zipfile.ZipFile(io.BytesIO(content)) as archive:
        names = set(archive.namelist())
        headers = {name for name in names if name.startswith(MODULE + "include/") and name.endswith(".h")}
        libraries = {name for name in names if re.fullmatch(MODULE + r"libs/android\.[^/]+/libkorvane\.so", name)}
        descriptions = {name.replace("libkorvane.so", "abi.json") for name in libraries}
        check_names(names, NATIVE_FILES | headers | libraries | descriptions)
        check_manifest(archive.read("AndroidManifest.xml"))
        expect(headers, "there are no headers")
        expect(libraries, "there is no library")
        package = check_fields(archive, "prefab/prefab.json", PREFAB_FIELDS)
        expect(package["schema_version"] == 2, "prefab.json is not of schema version 2")
        expect(re.fullmatch(PREFAB_VERSION, package["version"]), "the version in prefab.json is not of numbers")
        check_fields(archive, MODULE + "module.json", MODULE_FIELDS)
        for name in libraries:
            abi = abi_of(name.split("/")[-2][len("android."):])
            check_library(name, archive.read(name), abi, standIn, True)
            description = check_fields(archive, name.replace("libkorvane.so", "abi.json"), ABI_FIELDS)
            expect(description["abi"] == abi, f"abi.json of {abi} says {description['abi']}")
            expect(description["api"] == MIN_SDK, f"abi.json of {abi} is not for API {MIN_SDK}")
            expect(description["stl"] == "c++_shared", "prefab refuses a shared library with another C++ library")


def abi_of(abi):
    expect(abi in MACHINES, f"{abi} is no ABI that is built")
    return abi


def check_names(names, expected):
    expect(names >= expected, f"the archive lacks {', '.join(sorted(expected - names))}")
    expect(names <= expected, f"the archive has {', '.join(sorted(names - expected))}")


def check_fields(archive, name, fields):
    content = json.loads(archive.read(name))
    for field, (kind, isNeeded) in fields.items():
        expect(field in content or not isNeeded, f"{name} has no {field}")
        if field in content:
            value = content[field]
            isStrings = isinstance(value, list) and all(isinstance(one, str) for one in value)
            # In Python a bool is an int as well.
            expect(isStrings if kind is STRINGS else type(value) is kind, f"{name} has a {field} of the wrong type")
    unknown = set(content) - set(fields)
    expect(not unknown, f"{name} has the unknown field {', '.join(sorted(unknown))}")
    return content
