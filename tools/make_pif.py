#!/usr/bin/env python3
"""Writes resources/msdos_prompt.pif: the program-information file that the
library stores as its "PIFFILE" resource 103 and writes out, unchanged, for
16-bit programs.

Layout (little endian, byte packed):
  basic section        369 bytes at 0
  "MICROSOFT PIFEX"    heading at 369, data = the basic section
  "WINDOWS 386 3.0"    heading at 391, 104 bytes of data at 413
  "WINDOWS VMM 4.0"    heading at 517, 428 bytes of data at 539 (last)
  total                967 bytes
A heading is a 16-byte NUL-padded name, the offset of the next heading
(0xFFFF for the last), the offset of its data and the data's length.
Run: python3 tools/make_pif.py [OUTPUT]
"""
import struct
import sys

TITLE = b"MS-DOS Prompt"
PROGRAM = b"C:\\WINDOWS\\COMMAND.COM"
LAST_HEADING = 0xFFFF


def text(value, size, pad=b"\0"):
    assert len(value) <= size
    return value + pad * (size - len(value))


def basic_section():
    body = b"".join([
        text(TITLE, 30, b" "),          # title, blank padded
        struct.pack("<HH", 640, 128),   # conventional memory: max, min (KB)
        text(PROGRAM, 63),              # program file
        struct.pack("<BB", 0x10, 0),    # flags: close window on exit; reserved
        text(b"", 64),                  # start-up directory
        text(b"", 64),                  # parameters
        struct.pack("<8B", 0x7F, 1, 0, 0xFF, 25, 80, 0, 0),  # video mode, pages, vectors, rows, columns, offsets
        struct.pack("<H", 7),           # system memory
        text(b"", 64),                  # shared program
        text(b"", 64),                  # shared data
        struct.pack("<BB", 0, 0),       # behaviour, system flags
    ])
    # Byte 0 is reserved; byte 1 is the checksum of the 367 bytes after it.
    checksum = sum(body) & 0xFF
    section = bytes([0, checksum]) + body
    assert len(section) == 369
    return section


def windows386_section():
    section = b"".join([
        struct.pack("<HHHH", 640, 128, 100, 50),  # memory max/min, fore/back priority
        struct.pack("<hHhH", 1024, 0, 1024, 0),   # EMS max/min, XMS max/min (KB)
        struct.pack("<II", 0x00000008, 0x0000001F),  # 386 flags, video flags
        struct.pack("<HHHB", 0, 0, 0x0F, 0),      # hot key scan, shift value, shift mask, key
        text(b"", 9),                             # hot key padding
        text(b"", 64),                            # parameters
    ])
    assert len(section) == 104
    return section


def vmm40_section():
    section = b"".join([
        struct.pack("<II", 0, 0),                        # enhanced-mode flags, real-mode flags
        text(b"", 80),                                   # other file
        text(b"PIFMGR.DLL", 80),                         # icon file
        struct.pack("<H", 0),                            # icon index
        struct.pack("<7H", 0x0002, 0, 0, 0, 0, 0, 50),   # tasking: background, idle sensitivity
        struct.pack("<6H", 0x0001, 0, 0, 0, 0, 0),       # video: text emulation
        struct.pack("<9H", 0x0001, 0, 5, 25, 3, 200, 1000, 2, 10),  # keyboard: fast paste, delays
        struct.pack("<2H", 0x0001, 0),                   # mouse: quick edit
        struct.pack("<2H", 0x0001, 0),                   # sound: speaker
        struct.pack("<6H", 0x001C, 0, 0, 0, 0, 0),       # font: both kinds, auto size
        text(b"Terminal", 32),                           # raster font
        text(b"Courier New", 32),                        # TrueType font
        struct.pack("<H", 437),                          # code page
        struct.pack("<15H", 0x0003, 0, 80, 25, 0, 0, 0, 0, 0, 0, 1, 0, 0, 0, 0),  # window
        struct.pack("<4H", 0, 0, 0, 0),                  # normal window rectangle
        struct.pack("<2H", 0, 0),                        # environment flags
        text(b"", 80),                                   # batch file
        struct.pack("<HH", 0, 0),                        # environment size, DPMI memory
        struct.pack("<H", 1),                            # internal revision
    ])
    assert len(section) == 428
    return section


def heading(name, next_heading, data_offset, length):
    return text(name, 16) + struct.pack("<HHH", next_heading, data_offset, length)


def pif():
    basic = basic_section()
    w386 = windows386_section()
    vmm = vmm40_section()
    pifex_at = len(basic)
    w386_at = pifex_at + 22
    vmm_at = w386_at + 22 + len(w386)
    data = b"".join([
        basic,
        heading(b"MICROSOFT PIFEX", w386_at, 0, len(basic)),
        heading(b"WINDOWS 386 3.0", vmm_at, w386_at + 22, len(w386)),
        w386,
        heading(b"WINDOWS VMM 4.0", LAST_HEADING, vmm_at + 22, len(vmm)),
        vmm,
    ])
    assert len(data) == 967
    return data


if __name__ == "__main__":
    out = sys.argv[1] if len(sys.argv) > 1 else "resources/msdos_prompt.pif"
    with open(out, "wb") as f:
        f.write(pif())
