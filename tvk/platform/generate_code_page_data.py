#!/usr/bin/env python3
"""Writes CodePageData.cpp, the tables of the code pages that CodePageData.h declares.

    generate_code_page_data.py FILE           writes FILE
    generate_code_page_data.py --check FILE   compares FILE with what would be written

Nothing but Python's own codecs and its Unicode data goes in. Reading a code with the codec "cp932"
gives what the platform's call gives. Writing is the same table inverted, once the codes that the
platform reads but never writes are left out.
"""

import sys
import unicodedata

# Second places of characters that have another code, which is the one that is written: the nine
# signs of the first extension's row 13 that the standard's row 2 has too, the whole second
# extension, and what the third extension repeats of row 13.
READ_BUT_NEVER_WRITTEN = [
    range(0x8790, 0x8793),
    range(0x8795, 0x8798),
    range(0x879A, 0x879D),
    range(0xED40, 0xEEFD),
    range(0xFA4A, 0xFA55),
    range(0xFA58, 0xFA5C),
]

LEAD_BYTES = [*range(0x81, 0xA0), *range(0xE0, 0xFD)]
FIRST_TRAIL, LAST_TRAIL = 0x40, 0xFC
PAGE_SIZE = 64  # characters that share all UTF-8 bytes but the last
NUMBERS_A_LINE = 13

HEADER = """\
// Written by generate_code_page_data.py; a test compares the two.

#include "tvk/platform/CodePageData.h"

// clang-format off
namespace tvk::platform::data {
"""

FOOTER = """
}  // namespace tvk::platform::data
"""


def decode_932():
    """The character of every code: one byte, or the lead byte times 256 plus the trail byte."""
    codes = [(byte, bytes([byte])) for byte in range(256) if byte not in LEAD_BYTES]
    codes += [(lead << 8 | trail, bytes([lead, trail]))
              for lead in LEAD_BYTES for trail in range(FIRST_TRAIL, LAST_TRAIL + 1)]
    characters = {}
    for code, text in codes:
        try:
            characters[code] = ord(text.decode("cp932"))
        except UnicodeDecodeError:
            pass
    return characters


def decode_1252():
    """The five bytes without a character read as the control of the same number."""
    characters = {}
    for byte in range(256):
        try:
            characters[byte] = ord(bytes([byte]).decode("cp1252"))
        except UnicodeDecodeError:
            characters[byte] = byte
    return characters


def invert(characters):
    codes = {}
    for code, character in characters.items():
        if not any(code in left_out for left_out in READ_BUT_NEVER_WRITTEN):
            if character in codes:
                sys.exit(f"U+{character:04X} has two codes")
            codes[character] = code
    return codes


def compositions(codes):
    """(mark, base, code) for each pair of characters whose composed form has a code."""
    found = []
    for character, code in codes.items():
        parts = [int(part, 16) for part in unicodedata.decomposition(chr(character)).split()
                 if not part.startswith("<")]
        if len(parts) == 2 and unicodedata.normalize("NFC", "".join(map(chr, parts))) == chr(character):
            base, mark = parts
            if mark in codes or base not in codes:
                sys.exit(f"U+{character:04X} is not composed of a base with a code and a mark without")
            found.append((mark, base, code))
    return sorted(found)


def numbers(values, indent):
    values = list(values)
    lines = [values[at:at + NUMBERS_A_LINE] for at in range(0, len(values), NUMBERS_A_LINE)]
    return "".join(" " * indent + ",".join(f"0x{value:x}" if value > 9 else str(value)
                                           for value in line) + ",\n" for line in lines)


def array(declaration, values):
    return f"\n{declaration} = {{\n{numbers(values, 4)}}};\n"


def composition_array(name, rows):
    text = "".join(f"    {{0x{mark:x}, 0x{base:x}, 0x{code:x}}},\n" for mark, base, code in rows)
    return f"\nComposition const {name}[{name}_COUNT] = {{\n{text}}};\n"


def lines_and_starts(lines):
    """The lines behind each other, equal ones once, an empty one first; and where each starts."""
    flat, start_of = [0] * len(lines[0]), {(0,) * len(lines[0]): 0}
    for line in map(tuple, lines):
        if line not in start_of:
            start_of[line] = len(flat)
            flat += line
    return flat, [start_of[tuple(line)] for line in lines]


def reading_tables(characters):
    rows, starts = lines_and_starts(
        [[characters.get(first << 8 | trail, 0) for trail in range(FIRST_TRAIL, LAST_TRAIL + 1)]
         for first in range(0x80, 0x100)])
    singles = [characters.get(byte, 0) for byte in range(0x80, 0x100)]
    return (array("char16_t const SINGLES_932[128]", singles)
            + array("std::uint16_t const ROW_OF_LEAD_932[128]", starts)
            + array("char16_t const ROWS_932[]", rows))


def writing_tables(codes):
    pages, starts = lines_and_starts(
        [[codes.get(character, 0) for character in range(first, first + PAGE_SIZE)]
         for first in range(0, 0x10000, PAGE_SIZE)])
    two_bytes, ascii_pages = 0x800 // PAGE_SIZE, 0x80 // PAGE_SIZE
    # Overlong forms must not find the characters that they stand for.
    starts_2 = [0] * ascii_pages + starts[ascii_pages:two_bytes]
    starts_3 = [0] * two_bytes + starts[two_bytes:]
    return (array("std::uint16_t const PAGE_OF_TWO_BYTES_932[32]", starts_2)
            + array("std::uint16_t const PAGE_OF_THREE_BYTES_932[1024]", starts_3)
            + array("std::uint16_t const PAGES_932[]", pages))


def source():
    characters_932, characters_1252 = decode_932(), decode_1252()
    codes_932, codes_1252 = invert(characters_932), invert(characters_1252)
    return (HEADER
            + reading_tables(characters_932)
            + writing_tables(codes_932)
            + composition_array("COMPOSITIONS_932", compositions(codes_932))
            + array("char16_t const SINGLES_1252[128]",
                    [characters_1252[byte] for byte in range(0x80, 0x100)])
            + composition_array("COMPOSITIONS_1252", compositions(codes_1252))
            + FOOTER)


def main(arguments):
    if len(arguments) == 1:
        with open(arguments[0], "w", encoding="ascii", newline="\n") as file:
            file.write(source())
    elif len(arguments) == 2 and arguments[0] == "--check":
        with open(arguments[1], encoding="ascii") as file:
            if file.read() != source():
                sys.exit(f"{arguments[1]} differs: run {sys.argv[0]} {arguments[1]}")
    else:
        sys.exit(__doc__)


if __name__ == "__main__":
    main(sys.argv[1:])
