#!/usr/bin/env python3
"""Checks the built files themselves: file_check.py PLUGIN RUNFILTER NM BUILD_DIRECTORY.

What the compiler and the linker can do against faults and for repeatable builds is switched on in one place and easily
lost by a change of tools: here it is read back from the files.
"""

import collections
import pathlib
import re
import subprocess
import sys
import unittest

sys.dont_write_bytecode = True  # nothing is to appear among the sources
import portable_executable as pe

SYSTEM_LIBRARIES = {"KERNEL32.DLL", "USER32.DLL", "GDI32.DLL", "MSVCRT.DLL"}
# Of sources, objects and home folders, in one-byte and two-byte characters. The libraries of the toolchain name files of
# their own, relative to the folder in which their makers built them.
ABSOLUTE_PATH = re.compile(rb"(?<![\w.:/*-])(?:/(?:build|home|root|tmp|usr|var|work|opt|mnt|src)/[\w.+/-]+"
                           rb"|[A-Za-z]:[\\/][\w.+\\/ -]{3,})")
# Functions, constant member functions, tables of virtual functions, type information and template arguments.
OF_AVX2_ALONE = re.compile(r"_Z(N|NK|T[VIS]N|TAXtlN)9stairmelt4avx2|_ZN9stairmelt[78]kAvx2D(8|16|32)E$")

files = {}
nm, build = None, None


def fast_objects():
    """The engine's object files, by whether they are compiled for AVX2."""
    objects = sorted(pathlib.Path(build, "engine").rglob("*.cpp.obj"))
    return ([o for o in objects if o.name.startswith("avx2_")], [o for o in objects if not o.name.startswith("avx2_")])


def defined_symbols(path):
    """Names by the letter that nm gives them; only those that the linker sees."""
    lines = subprocess.run([nm, "--defined-only", "--extern-only", str(path)], check=True, capture_output=True, text=True)
    symbols = collections.defaultdict(set)
    for line in lines.stdout.splitlines():
        _, letter, name = line.split()
        symbols[letter].add(name)
    return symbols


class Files(unittest.TestCase):
    def test_are_loaded_anywhere(self):
        wanted = pe.HIGH_ENTROPY | pe.DYNAMIC_BASE | pe.NO_EXECUTION_OF_DATA
        for name, file in files.items():
            with self.subTest(file=name):
                self.assertEqual((hex(file.machine), hex(file.magic)), ("0x8664", "0x20b"))
                self.assertEqual(hex(file.dll_characteristics & wanted), hex(wanted))
                self.assertFalse(file.characteristics & pe.RELOCATIONS_STRIPPED)
                self.assertGreaterEqual(file.base, 1 << 32, "below it, the system spreads files over fewer places")

    def test_say_where_all_their_addresses_are(self):
        for name, file in files.items():
            with self.subTest(file=name):
                relocated = set(file.relocations())
                self.assertGreater(len(relocated), 100)
                for address in relocated:
                    absolute, = file.read("<Q", address)
                    self.assertIn(absolute - file.base, range(file.image_size), hex(address))
                # And there are no others: what looks like an address of the image is one, but in code, whose bytes can
                # look like anything.
                for section in file.sections:
                    if section.name == ".text":
                        continue
                    for at in range(0, len(section.data) - 7, 8):
                        value = int.from_bytes(section.data[at:at + 8], "little")
                        if file.base <= value < file.base + file.image_size:
                            self.assertIn(section.address + at, relocated, section.name)

    def test_run_nothing_that_can_be_written(self):
        for name, file in files.items():
            with self.subTest(file=name):
                executable = [s for s in file.sections if s.characteristics & pe.SECTION_EXECUTES]
                self.assertEqual([s.name for s in executable], [".text"])
                self.assertFalse(executable[0].characteristics & pe.SECTION_WRITES)
                # Constants, unwinding tables and relocations are as safe.
                writable = {s.name for s in file.sections if s.characteristics & pe.SECTION_WRITES}
                self.assertLessEqual(writable, {".data", ".bss", ".idata", ".rsrc", ".CRT", ".tls"})

    def test_tell_nothing_of_the_machine_that_built_them(self):
        for name, file in files.items():
            with self.subTest(file=name):
                self.assertEqual(file.timestamp, 0)
                self.assertEqual(file.directory[pe.DEBUG], (0, 0))
                narrow = file.data
                wide = [file.data[start::2] for start in (0, 1)]  # the low bytes of two-byte characters
                for text in (narrow, *wide):
                    self.assertEqual(ABSOLUTE_PATH.findall(text), [])
                    self.assertNotIn(str(build).encode(), text)

    def test_need_the_system_alone(self):
        imports = files["plug-in"].imports()
        self.assertLessEqual(set(imports), SYSTEM_LIBRARIES)
        self.assertEqual(sorted(files["plug-in"].exports()), ["GenericProc", "PluginMain"])
        self.assertEqual(files["tool"].exports(), [])
        # Nor does the tool need anything beside it.
        self.assertLessEqual(set(files["tool"].imports()),
                             SYSTEM_LIBRARIES | {"SHELL32.DLL"})


class InstructionSets(unittest.TestCase):
    def test_share_no_function(self):
        """Of functions with one name the linker keeps any: an older machine might get one that it can't run."""
        fast, others = fast_objects()
        self.assertEqual(len(fast), 4)
        self.assertGreater(len(others), 6)
        elsewhere = set().union(*(names for o in others for names in defined_symbols(o).values()))
        for path in fast:
            with self.subTest(file=path.name):
                symbols = set().union(*defined_symbols(path).values())
                self.assertGreater(len(symbols), 10)
                self.assertEqual(symbols & elsewhere, set())
                # Nor with the standard library, whose templates are compiled wherever they are used.
                self.assertEqual({s for s in symbols if not OF_AVX2_ALONE.match(s)}, set())


def describe():
    for name, file in files.items():
        executable = sum(s.size for s in file.sections if s.characteristics & pe.SECTION_EXECUTES)
        imports = file.imports()
        print(f"{name}: {len(file.data)} bytes, base {file.base:#x}, flags {file.dll_characteristics:#06x},"
              f" {len(file.relocations())} relocations, {executable} bytes of code, {len(file.sections)} sections,"
              f" {sum(map(len, imports.values()))} imports from {', '.join(sorted(imports))};"
              f" exports: {', '.join(file.exports()) or 'none'}")


if __name__ == "__main__":
    for key, path in zip(("plug-in", "tool"), sys.argv[1:3]):
        files[key] = pe.PortableExecutable(pathlib.Path(path).read_bytes())
    nm, build = sys.argv[3], pathlib.Path(sys.argv[4])
    describe()
    unittest.main(argv=sys.argv[:1])
