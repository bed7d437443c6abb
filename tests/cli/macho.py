"""Small macOS programs, made byte by byte."""

import hashlib
import struct

PAGE = 4096
CODE = 2 * PAGE


def unsigned_program():
    """A thin arm64 program of two pages with a single load command."""
    return struct.pack("<IIIIIIII", 0xFEEDFACF, 0x0100000C, 0, 2, 1, 24, 0, 0) \
        + struct.pack("<6I", 0x2, 24, 0, 0, PAGE, PAGE) + bytes(CODE - 56)


def code_directory(code, identifier, team, platform):
    texts = identifier.encode() + b"\0"
    team_offset = 88 + len(texts) if team else 0
    texts += team.encode() + b"\0" if team else b""
    pages = [hashlib.sha256(code[at:at + PAGE]).digest() for at in range(0, len(code), PAGE)]
    hashes = 88 + len(texts)
    header = struct.pack(">9I4BIII", 0xFADE0C02, hashes + 32 * len(pages), 0x20400, 0x2, hashes, 88, 0, len(pages),
                         len(code), 32, 2, platform, 12, 0, 0, team_offset)
    return header + bytes(88 - len(header)) + texts + b"".join(pages)


def adhoc_program(identifier="com.example.tool", team=None, platform=0):
    """The same, signed ad hoc by SHA-256 in pages of 4096 bytes."""
    room = PAGE
    code = struct.pack("<IIIIIIII", 0xFEEDFACF, 0x0100000C, 0, 2, 2, 40, 0, 0) \
        + struct.pack("<6I", 0x2, 24, 0, 0, PAGE, CODE + room - PAGE) + struct.pack("<4I", 0x1D, 16, CODE, room)
    code += bytes(CODE - len(code))
    directory = code_directory(code, identifier, team, platform)
    signature = struct.pack(">5I", 0xFADE0CC0, 20 + len(directory), 1, 0, 20) + directory
    return code + signature + bytes(room - len(signature))
