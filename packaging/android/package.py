#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Makes the Android archives from built libraries, and a local Maven folder that Gradle can use as a repository.

It takes any libraries by ABI. Those of a desktop build serve as stand-ins: the archives then have "desktop" in their
names, and are good for everything but running on a device. What it has made it checks (check.py), and ends with one
line and exit code 2 when something is wrong; nothing is written then.
"""
import argparse
import hashlib
import io
import json
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import zipfile

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import check  # noqa: E402

HERE = pathlib.Path(__file__).resolve().parent
GROUP = "korvane"
NAME = "korvane"
PRODUCT_CLASSES = ("com/tervo/", "korvane/effects/")
OLDEST_TIME = (1980, 1, 1, 0, 0, 0)
XML_HEAD = '<?xml version="1.0" encoding="utf-8"?>\n'


def manifest(package):
    return (XML_HEAD + f'<manifest xmlns:android="http://schemas.android.com/apk/res/android" package="{package}">\n'
            f'    <uses-sdk android:minSdkVersion="{check.MIN_SDK}" />\n</manifest>\n')


def aar_metadata():
    return ("aarFormatVersion=1.0\naarMetadataVersion=1.0\nminCompileSdk=1\nminCompileSdkExtension=0\n"
            "minAndroidGradlePluginVersion=1.0.0\ncoreLibraryDesugaringEnabled=false\n")


def pom(artifact, version, description):
    return XML_HEAD + f"""<project xmlns="http://maven.apache.org/POM/4.0.0">
    <modelVersion>4.0.0</modelVersion>
    <groupId>{GROUP}</groupId>
    <artifactId>{artifact}</artifactId>
    <version>{version}</version>
    <packaging>aar</packaging>
    <name>{artifact}</name>
    <description>{description}</description>
    <licenses>
        <license>
            <name>Apache-2.0</name>
        </license>
    </licenses>
</project>
"""


def maven_metadata(artifact, version):
    return XML_HEAD + f"""<metadata>
    <groupId>{GROUP}</groupId>
    <artifactId>{artifact}</artifactId>
    <versioning>
        <latest>{version}</latest>
        <release>{version}</release>
        <versions>
            <version>{version}</version>
        </versions>
    </versioning>
</metadata>
"""


def zip_bytes(entries):
    """An archive that is the same for the same entries: sorted, without times. Libraries lie uncompressed in an app
    and compressed here."""
    data = io.BytesIO()
    with zipfile.ZipFile(data, "w", zipfile.ZIP_DEFLATED) as archive:
        for name in sorted(entries):
            content = entries[name]
            info = zipfile.ZipInfo(name, OLDEST_TIME)
            info.compress_type = zipfile.ZIP_DEFLATED
            info.external_attr = 0o644 << 16
            archive.writestr(info, content.encode() if isinstance(content, str) else content)
    return data.getvalue()


def product_classes(jar):
    """The jar's classes as a jar. A class that is none of the product's stops it: it would clash with Android's."""
    with zipfile.ZipFile(jar) as archive:
        names = [name for name in archive.namelist() if not name.endswith("/") and not name.startswith("META-INF/")]
        foreign = [name for name in names if not name.startswith(PRODUCT_CLASSES)]
        if foreign:
            raise check.PackagingError(f"{jar} has {foreign[0]}, which must not be packaged")
        return zip_bytes({name: archive.read(name) for name in names})


def stripped(library, tool):
    with tempfile.TemporaryDirectory() as folder:
        copy = pathlib.Path(folder) / library.name
        subprocess.run([tool, "--strip-unneeded", "-o", copy, library], check=True)
        return copy.read_bytes()


def java_archive(options, libraries):
    entries = {
        "AndroidManifest.xml": manifest("korvane.effects"),
        "META-INF/com/android/build/gradle/aar-metadata.properties": aar_metadata(),
        "R.txt": "",
        "classes.jar": product_classes(options.classes),
        "proguard.txt": (HERE / "proguard.txt").read_text(),
    }
    for abi, library in libraries.items():
        entries[f"jni/{abi}/libkorvane.so"] = library
    return zip_bytes(entries)


def native_archive(options, libraries):
    module = "prefab/modules/korvane"
    entries = {
        "AndroidManifest.xml": manifest("korvane.cpp"),
        "META-INF/com/android/build/gradle/aar-metadata.properties": aar_metadata(),
        "R.txt": "",
        "classes.jar": zip_bytes({}),
        "prefab/prefab.json": json.dumps(
            {"schema_version": 2, "name": NAME, "version": options.version, "dependencies": []}, indent=4),
        f"{module}/module.json": json.dumps({"export_libraries": []}, indent=4),
    }
    for header in sorted(options.headers.rglob("*.h")):
        entries[f"{module}/include/{header.relative_to(options.headers)}"] = header.read_bytes()
    for abi, library in libraries.items():
        entries[f"{module}/libs/android.{abi}/libkorvane.so"] = library
        entries[f"{module}/libs/android.{abi}/abi.json"] = json.dumps(
            {"abi": abi, "api": check.MIN_SDK, "ndk": options.ndk, "stl": "c++_shared", "static": False}, indent=4)
    return zip_bytes(entries)


def sources_archive(folder):
    return zip_bytes({str(source.relative_to(folder)): source.read_bytes()
                      for part in PRODUCT_CLASSES for source in (folder / part).rglob("*.java")})


def add_to_repository(files, artifact, version, description, archives):
    folder = f"repository/{GROUP}/{artifact}"
    added = {f"{folder}/maven-metadata.xml": maven_metadata(artifact, version).encode(),
             f"{folder}/{version}/{artifact}-{version}.pom": pom(artifact, version, description).encode()}
    for suffix, content in archives.items():
        added[f"{folder}/{version}/{artifact}-{version}{suffix}"] = content
    for path, content in added.items():
        files[path] = content
        files[path + ".sha1"] = hashlib.sha1(content).hexdigest().encode()


def by_abi(texts):
    pairs = {}
    for text in texts:
        abi, separator, path = text.partition("=")
        if not separator or abi not in check.MACHINES:
            raise check.PackagingError(f"'{text}' is not ABI=PATH with one of {', '.join(check.MACHINES)}")
        pairs[abi] = path
    return pairs


def read_libraries(texts, tools):
    paths = {abi: pathlib.Path(path) for abi, path in by_abi(texts).items()}
    for path in paths.values():
        if not path.is_file():
            raise check.PackagingError(f"there is no library {path}")
    symbols = zip_bytes({f"{abi}/libkorvane.so": path.read_bytes() for abi, path in paths.items()})
    return {abi: stripped(path, tools.get(abi, "strip")) for abi, path in paths.items()}, symbols


def run(options):
    if not re.fullmatch(check.PREFAB_VERSION, options.version):
        raise check.PackagingError(f"version '{options.version}' is not of numbers and points")
    tools = by_abi(options.strip)
    java, javaSymbols = read_libraries(options.java_library, tools)
    native, nativeSymbols = read_libraries(options.native_library, tools)
    version = options.version + ("-desktop" if options.stand_in else "")
    javaAar = java_archive(options, java)
    nativeAar = native_archive(options, native)
    check.check_java_archive(javaAar, options.stand_in)
    check.check_native_archive(nativeAar, options.stand_in)

    files = {
        f"korvane-{version}.aar": javaAar,
        f"korvane-{version}-symbols.zip": javaSymbols,
        f"korvane-native-{version}.aar": nativeAar,
        f"korvane-native-{version}-symbols.zip": nativeSymbols,
    }
    add_to_repository(files, "korvane", version, "Photo and camera effects for Java and Kotlin",
                      {".aar": javaAar, "-sources.jar": sources_archive(options.sources)})
    add_to_repository(files, "korvane-native", version, "Photo and camera effects for C++", {".aar": nativeAar})
    shutil.rmtree(options.out, ignore_errors=True)
    for path, content in files.items():
        target = options.out / path
        target.parent.mkdir(parents=True, exist_ok=True)
        target.write_bytes(content)
    for name in sorted(files):
        if "/" not in name:
            print(f"{len(files[name]):>9} {options.out / name}")


def parse_arguments():
    parser = argparse.ArgumentParser(description="Makes the Android archives from built libraries.")
    parser.add_argument("--version", required=True, help="of numbers and points, as 1.2.3")
    parser.add_argument("--out", required=True, type=pathlib.Path, help="folder that is made anew")
    parser.add_argument("--classes", required=True, type=pathlib.Path, help="jar of the product's classes")
    parser.add_argument("--sources", required=True, type=pathlib.Path, help="folder of the Java sources")
    parser.add_argument("--headers", required=True, type=pathlib.Path, help="folder of the installed headers")
    parser.add_argument("--java-library", action="append", required=True, metavar="ABI=PATH",
                        help="unstripped library with the C++ library inside")
    parser.add_argument("--native-library", action="append", required=True, metavar="ABI=PATH",
                        help="unstripped library that needs libc++_shared.so")
    parser.add_argument("--strip", action="append", default=[], metavar="ABI=TOOL", help="default: strip")
    parser.add_argument("--ndk", type=int, default=26, help="major version of the NDK, default 26")
    parser.add_argument("--stand-in", action="store_true", help="the libraries are a desktop's")
    return parser.parse_args()


def main():
    options = parse_arguments()
    try:
        run(options)
    except (check.PackagingError, OSError, zipfile.BadZipFile, subprocess.CalledProcessError) as error:
        print(f"package: {error}", file=sys.stderr)
        sys.exit(2)


if __name__ == "__main__":
    main()
