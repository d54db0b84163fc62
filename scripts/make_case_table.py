#!/usr/bin/env python3
"""Writes src/core/case_table.h: Unicode's simple case mappings as ranges.

Run it by hand when Unicode gains letters with case; the header is kept in the tree so that a build needs no Python.
"""
import sys
import unicodedata


def simple(point, convert):
    """The single-character mapping of a code point, or the code point itself."""
    mapped = convert(chr(point))
    return ord(mapped) if len(mapped) == 1 else point


def ranges(convert):
    """Runs of code points (first, last, step, difference) that map by the same difference."""
    found = []
    for point in range(0x80, 0x110000):
        if 0xD800 <= point <= 0xDFFF:
            continue
        delta = simple(point, convert) - point
        if delta == 0:
            continue
        if found:
            first, last, step, same = found[-1]
            if same == delta and (point - last == step or (first == last and point - last <= 2)):
                found[-1] = (first, point, point - last, same)
                continue
        found.append((point, point, 1, delta))
    return found


def main():
    out = sys.stdout
    out.write("// Unicode %s simple case mappings beyond ASCII, made by scripts/make_case_table.py.\n"
              % unicodedata.unidata_version)
    out.write("#pragma once\n\n#include <array>\n\nnamespace trelvin {\n\n")
    out.write("// Every step-th code point from first to last maps by adding difference.\n")
    out.write("struct CaseRange {\n  char32_t first;\n  char32_t last;\n  char32_t step;\n  int difference;\n};\n\n")
    out.write("// clang-format off\n")
    for name, convert in (("kUpperRanges", str.upper), ("kLowerRanges", str.lower)):
        rows = ranges(convert)
        out.write("inline constexpr std::array<CaseRange, %d> %s{{\n" % (len(rows), name))
        for row in rows:
            out.write("    {0x%04X, 0x%04X, %d, %d},\n" % row)
        out.write("}};\n\n")
    out.write("// clang-format on\n\n}  // namespace trelvin\n")


if __name__ == "__main__":
    main()
