"""Reads what a built Windows file says of itself: headers, sections, relocations, imports and exports.

The file is taken as it stands on disk; addresses are relative to the image's base unless they are called absolute.
"""

import struct
from typing import NamedTuple

# Bits of the file header, of DllCharacteristics and of a section's characteristics.
RELOCATIONS_STRIPPED, IS_LIBRARY = 0x0001, 0x2000
HIGH_ENTROPY, DYNAMIC_BASE, NO_EXECUTION_OF_DATA = 0x0020, 0x0040, 0x0100
SECTION_EXECUTES, SECTION_WRITES = 0x20000000, 0x80000000

EXPORTS, IMPORTS, RELOCATIONS, DEBUG = 0, 1, 5, 6  # places in the data directory
RELOCATED_64_BITS, RELOCATION_PADDING = 10, 0


class Section(NamedTuple):
    name: str
    address: int
    size: int  # in memory; the file may hold less
    data: bytes
    characteristics: int


class PortableExecutable:
    def __init__(self, data):
        self.data = data
        start, = struct.unpack_from("<I", data, 0x3C)
        if data[:2] != b"MZ" or data[start:start + 4] != b"PE\0\0":
            raise ValueError("not a Windows file")
        self.machine, count, self.timestamp, _, _, optional_size, self.characteristics = struct.unpack_from(
            "<HHIIIHH", data, start + 4)
        optional = start + 24
        self.magic, = struct.unpack_from("<H", data, optional)
        self.base, = struct.unpack_from("<Q", data, optional + 24)
        self.image_size, = struct.unpack_from("<I", data, optional + 56)
        self.dll_characteristics, = struct.unpack_from("<H", data, optional + 70)
        directories, = struct.unpack_from("<I", data, optional + 108)
        self.directory = [struct.unpack_from("<II", data, optional + 112 + 8 * i) for i in range(directories)]
        self.sections = []
        for i in range(count):
            name, size, address, file_size, file_at, characteristics = struct.unpack_from(
                "<8sIIII12xI", data, optional + optional_size + 40 * i)
            held = data[file_at:file_at + min(size, file_size)] if file_at else b""
            self.sections.append(Section(name.rstrip(b"\0").decode(), address, size, held, characteristics))

    def section_at(self, address):
        """None where there is no section."""
        return next((s for s in self.sections if s.address <= address < s.address + s.size), None)

    def read(self, layout, address):
        section = self.section_at(address)
        return struct.unpack_from(layout, section.data, address - section.address)

    def text(self, address):
        section = self.section_at(address)
        return section.data[address - section.address:].split(b"\0", 1)[0].decode()

    def relocations(self):
        """The addresses of all absolute addresses in the image."""
        at, size = self.directory[RELOCATIONS]
        found, end = [], at + size
        while at < end:
            page, block = self.read("<II", at)
            for i in range(8, block, 2):
                entry, = self.read("<H", at + i)
                if entry >> 12 == RELOCATED_64_BITS:
                    found.append(page + (entry & 0xFFF))
                elif entry >> 12 != RELOCATION_PADDING:
                    raise ValueError(f"relocation of kind {entry >> 12}")
            at += block
        return found

    def imports(self):
        """Names of the routines by library, whose name is in capitals."""
        found, at = {}, self.directory[IMPORTS][0]
        while True:
            names, _, _, library, _ = self.read("<5I", at)
            if library == 0:
                return found
            routines = found.setdefault(self.text(library).upper(), [])
            while (name := self.read("<Q", names)[0]) != 0:
                routines.append(f"#{name & 0xFFFF}" if name >> 63 else self.text(name + 2))
                names += 8
            at += 20

    def exports(self):
        at, _ = self.directory[EXPORTS]
        if at == 0:
            return []
        count, = self.read("<I", at + 24)
        names, = self.read("<I", at + 32)
        return [self.text(self.read("<I", names + 4 * i)[0]) for i in range(count)]
