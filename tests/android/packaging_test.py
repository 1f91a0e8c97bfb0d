# SPDX-License-Identifier: Apache-2.0
"""Packages a desktop build as a stand-in, looks at the archives, and sees that faults are found.

usage: packaging_test.py SOURCE_DIR BUILD_DIR JDK_HOME VERSION LIBRARY..., each library as ABI=PATH[=STRIP_TOOL]
"""
import hashlib
import io
import json
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest
import zipfile

SOURCE, BUILD, JDK = (pathlib.Path(one) for one in sys.argv[1:4])
VERSION = sys.argv[4]
LIBRARIES = [one.split("=") for one in sys.argv[5:]]
ABIS = [one[0] for one in LIBRARIES]
FRAMEWORK = "/usr/share/android-framework-res/framework-res.apk"
os.environ["PATH"] = f"{JDK}/bin:{os.environ['PATH']}"
sys.path.insert(0, str(SOURCE / "packaging/android"))
import check  # noqa: E402


def run(*command):
    return subprocess.run([str(one) for one in command], check=True, capture_output=True, text=True).stdout


class PackagingTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.work = pathlib.Path(tempfile.mkdtemp())
        run("cmake", "--install", BUILD, "--prefix", cls.work / "installed")
        cls.settings = {
            "--version": VERSION, "--classes": BUILD / "java/korvane.jar", "--sources": SOURCE / "java",
            "--headers": cls.work / "installed/include/korvane", "--stand-in": None,
            "--java-library": [f"{one[0]}={one[1]}" for one in LIBRARIES],
            "--native-library": [f"{one[0]}={one[1]}" for one in LIBRARIES],
            "--strip": [f"{one[0]}={one[2]}" for one in LIBRARIES if len(one) > 2],
        }
        cls.out = cls.work / "out"
        cls.listing = cls.package({}, cls.out).stdout
        print(cls.listing)

    @classmethod
    def tearDownClass(cls):
        shutil.rmtree(cls.work)

    @classmethod
    def package(cls, changes, out):
        command = [sys.executable, str(SOURCE / "packaging/android/package.py"), "--out", str(out)]
        for name, value in {**cls.settings, **changes}.items():
            for one in value if isinstance(value, list) else [value]:
                command += [name] if one is None else [] if one is False else [name, str(one)]
        return subprocess.run(command, capture_output=True, text=True)

    def archive(self, name):
        return zipfile.ZipFile(self.out / name)

    def test_archives_hold_what_they_must(self):
        files = {str(path.relative_to(self.out)) for path in self.out.rglob("*") if path.is_file()}
        version = f"{VERSION}-desktop"
        expected = {f"{name}-{version}{suffix}" for name in ("korvane", "korvane-native")
                    for suffix in (".aar", "-symbols.zip")}
        for name, suffixes in (("korvane", (".aar", ".pom", "-sources.jar")), ("korvane-native", (".aar", ".pom"))):
            folder = f"repository/korvane/{name}"
            released = {f"{folder}/maven-metadata.xml"} | {f"{folder}/{version}/{name}-{version}{suffix}"
                                                           for suffix in suffixes}
            expected |= released | {path + ".sha1" for path in released}
        self.assertEqual(files, expected)
        for path in self.out.rglob("*.sha1"):
            content = path.with_suffix("").read_bytes()
            self.assertEqual(path.read_text(), hashlib.sha1(content).hexdigest())
        with self.archive(f"korvane-{version}.aar") as archive:
            self.assertEqual(set(archive.namelist()), check.JAVA_FILES | {f"jni/{abi}/libkorvane.so" for abi in ABIS})
            classes = zipfile.ZipFile(io.BytesIO(archive.read("classes.jar"))).namelist()
        self.assertIn("korvane/effects/Filter.class", classes)
        self.assertIn("com/tervo/media/render/BlurRender.class", classes)
        self.assertFalse([name for name in classes if name.startswith(("android", "korvane/demo"))])
        with self.archive(f"korvane-native-{version}.aar") as archive:
            names = archive.namelist()
            self.assertEqual(json.loads(archive.read("prefab/prefab.json"))["version"], VERSION)
        for name in ("algorithms/stack_blur.h", "frameworks/core/auto_ptr.h"):
            self.assertIn(f"prefab/modules/korvane/include/{name}", names)
        for kind in ("korvane", "korvane-native"):
            with self.archive(f"{kind}-{version}-symbols.zip") as symbols:
                self.assertEqual(symbols.namelist(), sorted(f"{abi}/libkorvane.so" for abi in ABIS))
                for (abi, path, *_), name in zip(sorted(LIBRARIES), symbols.namelist()):
                    self.assertEqual(symbols.read(name), pathlib.Path(path).read_bytes())

    def test_equal_input_gives_equal_archives(self):
        again = self.work / "again"
        self.assertEqual(self.package({}, again).returncode, 0)
        for path in self.out.rglob("*.aar"):
            self.assertEqual(path.read_bytes(), (again / path.relative_to(self.out)).read_bytes())

    def test_androids_own_tool_reads_the_manifests(self):
        for kind, package in (("korvane", "korvane.effects"), ("korvane-native", "korvane.cpp")):
            manifest = self.work / "AndroidManifest.xml"
            with self.archive(f"{kind}-{VERSION}-desktop.aar") as archive:
                manifest.write_bytes(archive.read("AndroidManifest.xml"))
            run("aapt2", "link", "--manifest", manifest, "-I", FRAMEWORK, "-o", self.work / "linked.apk")
            badging = run("aapt2", "dump", "badging", self.work / "linked.apk")
            self.assertIn("sdkVersion:'26'", badging)
            self.assertIn(f"name='{package}'", badging)

    def jar(self, name, release, body):
        """The product's jar with one more class in it."""
        folder = self.work / name
        source = folder / f"korvane/effects/{name}.java"
        source.parent.mkdir(parents=True)
        source.write_text(f"package korvane.effects; class {name} {{ {body} }}")
        run(JDK / "bin/javac", "-Xlint:-options", "--release", release, source)
        jar = folder / "classes.jar"
        shutil.copy(self.settings["--classes"], jar)
        run(JDK / "bin/jar", "--update", "--file", jar, "-C", folder, f"korvane/effects/{name}.class")
        return jar

    def misaligned(self):
        content = bytearray(pathlib.Path(LIBRARIES[0][1]).read_bytes())
        headers = int.from_bytes(content[32:40], "little")
        for i in range(int.from_bytes(content[56:58], "little")):
            at = headers + i * 56
            if int.from_bytes(content[at:at + 4], "little") == 1:
                content[at + 48:at + 56] = (0x1000).to_bytes(8, "little")
        path = self.work / "misaligned.so"
        path.write_bytes(content)
        return path

    def test_faulty_input_is_refused_and_writes_nothing(self):
        abi, library = LIBRARIES[0][:2]
        other = next(one for one in check.MACHINES if one != abi)
        keep = self.work / "keep.sh"
        keep.write_text('#!/bin/sh\ncp "$4" "$3"\n')
        keep.chmod(0o755)
        without = self.work / "without.jar"
        with zipfile.ZipFile(self.settings["--classes"]) as whole, zipfile.ZipFile(without, "w") as part:
            for name in whole.namelist():
                if not name.endswith("Natives.class"):
                    part.writestr(name, whole.read(name))
        table = [
            ({"--classes": BUILD / "java/korvane_standins.jar"}, "must not be packaged"),
            ({"--classes": self.jar("Newer", "11", "")}, "class version 55, not 52"),
            ({"--classes": self.jar("Gone", "8", "native void one();")}, "lacks Java_korvane_effects_Gone_one"),
            ({"--classes": self.jar("Twice", "8", "native void one(); native void one(int i);")}, "is overloaded"),
            ({"--classes": without}, "exports Java_korvane_effects_Natives_blur"),
            ({"--classes": self.work / "absent.jar"}, "absent.jar"),
            ({"--java-library": f"{other}={library}", "--strip": f"{other}={keep}"}, f"is not for {other}"),
            ({"--java-library": f"{abi}={self.misaligned()}"}, "is not aligned to pages of 16384 bytes"),
            ({"--native-library": f"{abi}={self.work}/absent.so"}, "there is no library"),
            ({"--native-library": f"mips={library}"}, "is not ABI=PATH"),
            ({"--strip": f"{abi}={keep}"}, "is not stripped"),
            ({"--headers": self.work / "absent"}, "there are no headers"),
            ({"--version": "0.1-rc"}, "is not of numbers and points"),
            ({"--stand-in": False}, " needs "),
        ]
        for changes, message in table:
            with self.subTest(message):
                out = self.work / "refused"
                done = self.package(changes, out)
                self.assertEqual(done.returncode, 2, done.stderr)
                self.assertIn(message, done.stderr)
                self.assertEqual(done.stderr.count("\n"), 1, done.stderr)
                self.assertFalse(out.exists())

    def test_descriptions_for_prefab_follow_its_schemas(self):
        whole = (self.out / f"korvane-native-{VERSION}-desktop.aar").read_bytes()
        library = f"prefab/modules/korvane/libs/android.{ABIS[0]}/abi.json"
        table = [
            ("prefab/prefab.json", {"schema_version": 1}, "schema version 2"),
            ("prefab/prefab.json", {"schema_version": "2"}, "wrong type"),
            ("prefab/prefab.json", {"version": "1.0-a"}, "not of numbers"),
            ("prefab/prefab.json", {"dependencies": None}, "has no dependencies"),
            ("prefab/prefab.json", {"dependencies": [1]}, "wrong type"),
            ("prefab/modules/korvane/module.json", {"exports": []}, "unknown field exports"),
            (library, {"stl": "c++_static"}, "prefab refuses"),
            (library, {"ndk": None}, "has no ndk"),
            (library, {"static": 0}, "wrong type"),
            (library, {"api": 21}, "API 26"),
            (library, {"abi": "x86"}, "says x86"),
        ]
        check.check_native_archive(whole, True)
        for name, changes, message in table:
            with self.subTest(name + str(changes)):
                changed = io.BytesIO()
                with zipfile.ZipFile(io.BytesIO(whole)) as source, zipfile.ZipFile(changed, "w") as target:
                    for entry in source.namelist():
                        content = source.read(entry)
                        if entry == name:
                            fields = {**json.loads(content), **changes}
                            content = json.dumps({key: value for key, value in fields.items() if value is not None})
                        target.writestr(entry, content)
                with self.assertRaisesRegex(check.PackagingError, message):
                    check.check_native_archive(changed.getvalue(), True)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1], verbosity=2)
