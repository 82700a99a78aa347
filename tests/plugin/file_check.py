#!/usr/bin/env python3
"""Checks the built files themselves: file_check.py PLUGIN RUNFILTER NM BUILD_DIRECTORY.

Options of compiler and linker that protect users and make builds repeatable are set in one place and easily lost by a
change of tools. Here their effect is read back from the files.
"""

import pathlib
import re
import struct
import subprocess
import sys
import unittest

import pefile

HIGH_ENTROPY, DYNAMIC_BASE, NO_EXECUTION_OF_DATA = 0x0020, 0x0040, 0x0100
RELOCATIONS_STRIPPED, SECTION_EXECUTES, SECTION_WRITES = 0x0001, 0x20000000, 0x80000000
RELOCATED_64_BITS, DEBUG_DIRECTORY = 10, 6
SYSTEM_LIBRARIES = {"KERNEL32.DLL", "USER32.DLL", "GDI32.DLL", "MSVCRT.DLL"}
# Of sources, objects and home folders, in one-byte and two-byte characters. The toolchain's libraries contain relative
# names of their own.
ABSOLUTE_PATH = re.compile(rb"(?<![\w.:/*-])(?:/(?:build|home|root|tmp|usr|var|work|opt|mnt|src)/[\w.+/-]+"
                           rb"|[A-Za-z]:[\\/][\w.+\\/ -]{3,})")
# Functions, constant member functions, tables of virtual functions, type information and template arguments.
OF_AVX2_ALONE = re.compile(r"_Z(N|NK|T[VIS]N|TAXtlN)9stairmelt4avx2|_ZN9stairmelt[78]kAvx2D(8|16|32)E$")


class Files(unittest.TestCase):
    def test_can_be_loaded_anywhere(self):
        for name, file in files.items():
            with self.subTest(file=name):
                header = file.OPTIONAL_HEADER
                wanted = HIGH_ENTROPY | DYNAMIC_BASE | NO_EXECUTION_OF_DATA
                self.assertEqual(hex(header.DllCharacteristics & wanted), hex(wanted))
                self.assertFalse(file.FILE_HEADER.Characteristics & RELOCATIONS_STRIPPED)
                self.assertGreaterEqual(header.ImageBase, 1 << 32, "below it, addresses are less random")
                relocated = {entry.rva for page in file.DIRECTORY_ENTRY_BASERELOC for entry in page.entries
                             if entry.type == RELOCATED_64_BITS}
                self.assertGreater(len(relocated), 100)
                # Outside the code, whose bytes can look like anything, every address of the image is listed.
                for section in file.sections:
                    if section.Characteristics & SECTION_EXECUTES:
                        continue
                    data = section.get_data()
                    for i, (value,) in enumerate(struct.iter_unpack("<Q", data[:len(data) // 8 * 8])):
                        if header.ImageBase <= value < header.ImageBase + header.SizeOfImage:
                            self.assertIn(section.VirtualAddress + 8 * i, relocated, section.Name)

    def test_have_no_writable_code(self):
        for name, file in files.items():
            with self.subTest(file=name):
                executable = [s for s in file.sections if s.Characteristics & SECTION_EXECUTES]
                self.assertEqual([s.Name.rstrip(b"\0") for s in executable], [b".text"])
                self.assertFalse(executable[0].Characteristics & SECTION_WRITES)
                writable = {s.Name.rstrip(b"\0") for s in file.sections if s.Characteristics & SECTION_WRITES}
                self.assertLessEqual(writable, {b".data", b".bss", b".idata", b".rsrc", b".CRT", b".tls"})

    def test_contain_no_paths_and_dates(self):
        for name, file in files.items():
            with self.subTest(file=name):
                self.assertEqual(file.FILE_HEADER.TimeDateStamp, 0)
                self.assertEqual(file.OPTIONAL_HEADER.DATA_DIRECTORY[DEBUG_DIRECTORY].Size, 0)
                data = bytes(file.__data__)
                for text in (data, data[0::2], data[1::2]):  # the latter are the low bytes of two-byte characters
                    self.assertEqual(ABSOLUTE_PATH.findall(text), [])
                    self.assertNotIn(build.encode(), text)

    def test_need_the_system_alone(self):
        for name, more in (("plug-in", set()), ("tool", {"SHELL32.DLL"})):
            imported = {entry.dll.decode().upper() for entry in files[name].DIRECTORY_ENTRY_IMPORT}
            self.assertLessEqual(imported, SYSTEM_LIBRARIES | more)
        exported = sorted(symbol.name for symbol in files["plug-in"].DIRECTORY_ENTRY_EXPORT.symbols)
        self.assertEqual(exported, [b"GenericProc", b"PluginMain"])
        self.assertFalse(hasattr(files["tool"], "DIRECTORY_ENTRY_EXPORT"))


class InstructionSets(unittest.TestCase):
    def test_share_no_function(self):
        """The linker keeps an arbitrary one of same-named functions: an older machine might get one it can't run."""
        def defined_symbols(path):
            lines = subprocess.run([nm, "--defined-only", "--extern-only", str(path)], check=True, capture_output=True,
                                   text=True).stdout.splitlines()
            return {line.split()[2] for line in lines}

        symbols = {path.name: defined_symbols(path) for path in pathlib.Path(build, "engine").rglob("*.cpp.obj")}
        fast = {name: found for name, found in symbols.items() if name.startswith("avx2_")}
        self.assertEqual((len(fast), len(symbols) > 10), (4, True))
        elsewhere = set().union(*(found for name, found in symbols.items() if name not in fast))
        for name, found in fast.items():
            with self.subTest(file=name):
                self.assertGreater(len(found), 10)
                self.assertEqual(found & elsewhere, set())
                # Nor with the standard library, whose templates are compiled wherever they are used.
                self.assertEqual({s for s in found if not OF_AVX2_ALONE.match(s)}, set())


if __name__ == "__main__":
    files = {"plug-in": pefile.PE(sys.argv[1]), "tool": pefile.PE(sys.argv[2])}
    nm, build = sys.argv[3:]
    unittest.main(argv=sys.argv[:1])
