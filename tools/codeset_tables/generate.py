#!/usr/bin/python3
"""Writes src/runtime/generated/: the tables of the code sets and of letter case, as sorted constant arrays.

The mappings are those of Python's codecs and of its Unicode data, with the few corrections below. Run it without arguments after
changing something here; --check only compares and names the files that differ. It exits with 77 when this Python's Unicode data is of
another version than the one that the committed tables were made from.
"""

import sys
import unicodedata
from pathlib import Path

TARGET = Path(__file__).resolve().parents[2] / "src/runtime/generated"
UNICODE_VERSION = "14.0.0"
NOTHING = 0xFFFF  # in decoding tables: no character

# Numbers of the encodings, and the codecs that have their mappings.
SINGLE_BYTE = {2: "cp869", 3: "cp874", 4: "cp875", 5: "cp037", 6: "cp1026", 16: "cp437", 17: "cp500", 18: "cp737", 19: "cp775",
               37: "koi8_r", 38: "tis_620"}
SINGLE_BYTE |= {7 + n: f"cp125{n}" for n in range(9)}
SINGLE_BYTE |= {20 + i: f"cp{n}" for i, n in enumerate([850, 852, 855, 857, 860, 861, 862, 863, 864, 865, 866])}

# Codes that the meant version of the set leaves unassigned.
UNASSIGNED = {
    "cp1256": {0x8A, 0x8F, 0x98, 0x9A, 0x9F, 0xAA, 0xC0, 0xFF},
    # Doubles and characters that Unicode didn't have when the set was published.
    "big5": {0xA15A, 0xA1C3, 0xA1C5, 0xA1FE, 0xA240, 0xA2CC, 0xA2CE},
}

BIG5 = ("big5", range(0xA1, 0xFA), [*range(0x40, 0x7F), *range(0xA1, 0xFF)])
GB18030 = ("gb18030", range(0x81, 0xFF), [*range(0x40, 0x7F), *range(0x80, 0xFF)])
EUC = ("euc_jp", range(0xA1, 0xFF), range(0xA1, 0xFF))
GB_FOUR_BYTE_BMP = 39420  # 4-byte sequences from 81 30 81 30 to the last of the BMP


def decode(codec, code):
    """The character of a code of one byte or two, or NOTHING."""
    if code in UNASSIGNED.get(codec, ()):
        return NOTHING
    try:
        text = code.to_bytes(2 if code > 0xFF else 1, "big").decode(codec)
    except UnicodeDecodeError:
        return NOTHING
    return ord(text)


def by_unit(codes_and_units):
    """(unit, code) in ascending order; of several codes of one character the lowest."""
    first = {}
    for code, unit in sorted(codes_and_units):
        if unit != NOTHING:
            first.setdefault(unit, code)
    return sorted(first.items())


def array(c_type, name, values):
    digits = 2 if c_type == "uint8_t" else 4
    lines = [f"constexpr {c_type} {name}[] = {{"]
    values = [f"0x{value:0{digits}X}," for value in values]
    lines += ["    " + " ".join(values[i:i + 14]) for i in range(0, len(values), 14)]
    return "\n".join(lines + ["};", ""])


def source(header, body):
    return "\n".join([
        "// Made by tools/codeset_tables/generate.py. Change that, not this.", "", f'#include "runtime/{header}"', "", "namespace {", "",
        *body])


def single_byte_tables():
    body, rows = [], []
    for number, codec in sorted(SINGLE_BYTE.items()):
        ascii_compatible = all(decode(codec, code) == code for code in range(128))
        codes = range(128 if ascii_compatible else 0, 256)
        units = [decode(codec, code) for code in codes]
        pairs = by_unit(zip(codes, units))
        body += [array("char16_t", f"{codec}Decode", units), array("char16_t", f"{codec}Units", [unit for unit, _ in pairs]),
                 array("uint8_t", f"{codec}Codes", [code for _, code in pairs])]
        rows.append(f"    {{{number}, {str(ascii_compatible).lower()}, {codec}Decode, {codec}Units, {codec}Codes}},")
    body += ["constexpr ZnSingleByteTable kTables[] = {", *rows, "};", "", "}  // namespace", "",
             "constinit const std::span<const ZnSingleByteTable> kZnSingleByteTables(kTables);", ""]
    return source("codeset_tables.h", body)


def pair_arrays(codec, leads, trails, stored=lambda code: code):
    codes = [lead << 8 | trail for lead in leads for trail in trails]
    units = [decode(codec, code) for code in codes]
    pairs = by_unit((stored(code), unit) for code, unit in zip(codes, units))
    return [array("char16_t", "kGrid", units), array("char16_t", "kUnits", [unit for unit, _ in pairs]),
            array("uint16_t", "kCodes", [code for _, code in pairs])]


def pair_source(name, arrays):
    return source("codeset_tables.h", arrays + ["}  // namespace", "", f"constinit const ZnPairTable {name} = {{kGrid, kUnits, kCodes}};", ""])


def gb18030_ranges():
    """Runs of 4-byte sequences that follow each other as their characters do."""
    rows = []
    for n in range(GB_FOUR_BYTE_BMP):
        sequence = bytes([0x81 + n // 12600, 0x30 + n // 1260 % 10, 0x81 + n // 10 % 126, 0x30 + n % 10])
        unit = ord(sequence.decode("gb18030"))
        if rows and rows[-1][1] == unit - 1:
            rows[-1][1] = unit
        else:
            rows.append([unit, unit, n])
    body = ["constexpr ZnCharmapRange kRanges[] = {", *(f"    {{0x{first:04X}, 0x{last:04X}, {n}}}," for first, last, n in rows), "};", "",
            "}  // namespace", "", "constinit const std::span<const ZnCharmapRange> kZnGb18030Ranges(kRanges);", ""]
    return source("codeset_tables.h", body)


def simple_upper(character):
    """Python's upper() is the full mapping; where that is longer than one character, a title case of one character is the simple one."""
    return next((mapped for mapped in (character.upper(), character.title()) if len(mapped) == 1), character)


def simple_lower(character):
    return character.lower()[0]  # the only longer one, U+0130, has its simple mapping in front


def case_tables():
    body = []
    for name, mapping in (("Lower", simple_lower), ("Upper", simple_upper)):
        pairs = [(unit, ord(mapping(chr(unit)))) for unit in range(0x100, 0x10000) if mapping(chr(unit)) != chr(unit)]
        body += [array("char16_t", f"k{name}From", [unit for unit, _ in pairs]), array("char16_t", f"k{name}To", [to for _, to in pairs])]
    body += ["}  // namespace", "", "constinit const ZnCaseTable kZnToLower = {kLowerFrom, kLowerTo};",
             "constinit const ZnCaseTable kZnToUpper = {kUpperFrom, kUpperTo};", ""]
    return source("case_tables.h", body)


FILES = {
    "single_byte_tables.cpp": single_byte_tables,
    "big5_table.cpp": lambda: pair_source("kZnBig5Pairs", pair_arrays(*BIG5)),
    "gb18030_table.cpp": lambda: pair_source("kZnGb18030Pairs", pair_arrays(*GB18030)),
    "gb18030_ranges.cpp": gb18030_ranges,
    "jis_table.cpp": lambda: pair_source("kZnJisPairs", pair_arrays(*EUC, stored=lambda code: code & 0x7F7F)),
    "case_tables.cpp": case_tables,
}


def main():
    check = sys.argv[1:] == ["--check"]
    if sys.argv[1:] and not check:
        sys.exit("usage: generate.py [--check]")
    if unicodedata.unidata_version != UNICODE_VERSION:
        print(f"this Python has Unicode {unicodedata.unidata_version}, the tables are of {UNICODE_VERSION}")
        sys.exit(77)
    TARGET.mkdir(exist_ok=True)
    different = []
    for name, make in FILES.items():
        path, text = TARGET / name, make()
        if path.exists() and path.read_text(encoding="ascii") == text:
            continue
        different.append(name)
        if not check:
            path.write_text(text, encoding="ascii")
    print(f"{'different' if check else 'written'}: {' '.join(different) or 'none'}")
    sys.exit(1 if check and different else 0)


if __name__ == "__main__":
    main()
