#!/usr/bin/env python3
"""Turns data/counterstyles.txt into the table of predefined counter styles that
src/text/counterstylepredefined.cpp builds styles from on first use.

Usage: gen_counterstyles.py counterstyles.txt names.txt output.inc"""
import re
import sys

DEFAULT_SUFFIX = ". "
SYSTEMS = {"cyclic", "fixed", "numeric", "alphabetic", "symbolic", "additive", "ethiopic-numeric",
           "simp-chinese-informal", "simp-chinese-formal", "trad-chinese-informal",
           "trad-chinese-formal", "kansuji"}


def fail(where, message):
    sys.exit("gen_counterstyles: %s: %s" % (where, message))


def tokens(text, where):
    """Blank-separated tokens; a double-quoted token keeps its blanks (\\" and \\\\ escape)."""
    out = []
    i = 0
    while i < len(text):
        c = text[i]
        if c.isspace():
            i += 1
        elif c == '"':
            j = i + 1
            value = ""
            while j < len(text) and text[j] != '"':
                if text[j] == "\\" and j + 1 < len(text):
                    j += 1
                value += text[j]
                j += 1
            if j >= len(text):
                fail(where, "unterminated quote")
            out.append(("quoted", value))
            i = j + 1
        else:
            j = i
            while j < len(text) and not text[j].isspace():
                j += 1
            out.append(("bare", text[i:j]))
            i = j
    return out


def split_outside_quotes(text, sep):
    parts, current, quoted = [], "", False
    for c in text:
        if c == '"':
            quoted = not quoted
        if c == sep and not quoted:
            parts.append(current)
            current = ""
        else:
            current += c
    parts.append(current)
    return parts


CODE = re.compile(r"U\+([0-9A-Fa-f]{4,6})(?:-U\+([0-9A-Fa-f]{4,6}))?$")


def symbol_list(items, where, split_bare):
    out = []
    for kind, value in items:
        m = CODE.match(value) if kind == "bare" else None
        if m:
            low = int(m.group(1), 16)
            high = int(m.group(2), 16) if m.group(2) else low
            if high < low:
                fail(where, "empty run " + value)
            out.extend(chr(c) for c in range(low, high + 1))
        elif kind == "bare" and split_bare:
            out.extend(value)
        else:
            out.append(value)
    return out


def one_symbol(items, where):
    symbols = symbol_list(items, where, split_bare=False)
    if len(symbols) != 1:
        fail(where, "one symbol expected")
    return symbols[0]


def c_string(text):
    out = 'u"'
    for c in text:
        o = ord(c)
        if c in '"\\':
            out += "\\" + c
        elif 0x20 <= o < 0x7F:
            out += c
        elif o <= 0xFFFF:
            out += "\\u%04X" % o
        else:
            out += "\\U%08X" % o
    return out + '"'


def parse(path):
    styles, aliases = {}, {}
    with open(path, encoding="utf-8") as f:
        for number, line in enumerate(f, 1):
            where = "%s:%d" % (path, number)
            line = line.strip()
            if not line or line.startswith("#"):
                continue
            m = re.match(r"([a-z0-9-]+)\s*=\s*([a-z0-9-]+)$", line)
            if m:
                aliases[m.group(1)] = m.group(2)
                continue
            m = re.match(r"([a-z0-9-]+):\s*([a-z-]+)\s*(?:;(.*))?$", line)
            if not m:
                fail(where, "not a style line")
            name, system = m.group(1), m.group(2)
            if system not in SYSTEMS:
                fail(where, "unknown system " + system)
            style = {"system": system, "first": 1, "symbols": [], "additive": [],
                     "range": [], "prefix": "", "suffix": DEFAULT_SUFFIX, "negative": ("-", ""),
                     "fallback": "decimal"}
            for setting in split_outside_quotes(m.group(3) or "", ";"):
                setting = setting.strip()
                if not setting:
                    continue
                key, _, rest = setting.partition(" ")
                if key == "symbols":
                    style["symbols"] = symbol_list(tokens(rest, where), where, split_bare=True)
                elif key == "additive":
                    for entry in split_outside_quotes(rest, ","):
                        parts = tokens(entry, where)
                        if len(parts) != 2 or not re.fullmatch(r"\d+", parts[0][1]):
                            fail(where, "additive entry '%s'" % entry.strip())
                        style["additive"].append((int(parts[0][1]), one_symbol(parts[1:], where)))
                    weights = [w for w, _ in style["additive"]]
                    if weights != sorted(weights, reverse=True):
                        fail(where, "additive weights must descend")
                elif key == "range":
                    for pair in rest.split(","):
                        ends = pair.split()
                        if len(ends) != 2:
                            fail(where, "range pair '%s'" % pair)
                        low = -(2**63) if ends[0] == "inf" else int(ends[0])
                        high = 2**63 - 1 if ends[1] == "inf" else int(ends[1])
                        style["range"].append((low, high))
                elif key == "first":
                    style["first"] = int(rest)
                elif key in ("prefix", "suffix"):
                    style[key] = one_symbol(tokens(rest, where), where)
                elif key == "negative":
                    parts = symbol_list(tokens(rest, where), where, split_bare=False)
                    if not 1 <= len(parts) <= 2:
                        fail(where, "negative takes one or two symbols")
                    style["negative"] = (parts[0], parts[1] if len(parts) == 2 else "")
                elif key == "fallback":
                    style["fallback"] = rest.strip()
                else:
                    fail(where, "unknown setting " + key)
            if name in styles:
                fail(where, "duplicate style " + name)
            styles[name] = style
    for alias, target in aliases.items():
        if target not in styles:
            sys.exit("gen_counterstyles: alias %s of unknown style %s" % (alias, target))
        if alias in styles:
            sys.exit("gen_counterstyles: duplicate style " + alias)
    return styles, aliases


def main(source, names_path, output):
    styles, aliases = parse(source)
    with open(names_path, encoding="ascii") as f:
        numbers = {line.rstrip("\n"): n for n, line in enumerate(f, 1)}

    def name_number(name):
        if name not in numbers:
            sys.exit("gen_counterstyles: '%s' is not a built-in name" % name)
        return numbers[name]

    for name, style in styles.items():
        if style["fallback"] not in styles and style["fallback"] not in aliases:
            sys.exit("gen_counterstyles: %s falls back to unknown %s" % (name, style["fallback"]))
    ident = {name: "k%d" % i for i, name in enumerate(sorted(styles))}
    out = ["// generated by scripts/gen_counterstyles.py from data/counterstyles.txt; do not edit"]
    for name in sorted(styles):
        style, base = styles[name], ident[name]
        if style["symbols"]:
            out.append("const char16_t* const %sSymbols[] = {%s};" %
                       (base, ", ".join(c_string(s) for s in style["symbols"])))
        if style["additive"]:
            out.append("const int %sWeights[] = {%s};" %
                       (base, ", ".join(str(w) for w, _ in style["additive"])))
            out.append("const char16_t* const %sAdditive[] = {%s};" %
                       (base, ", ".join(c_string(s) for _, s in style["additive"])))
        if style["range"]:
            out.append("const long long %sRange[] = {%s};" %
                       (base, ", ".join("%dLL" % v if v > -(2**63) else "(-9223372036854775807LL - 1)"
                                        for pair in style["range"] for v in pair)))
    rows = []
    for name in list(styles) + list(aliases):
        data = aliases.get(name, name)
        style, base = styles[data], ident[data]
        fields = [
            "ZkNameEnum(%d)" % name_number(name),
            "ZkNameEnum(%d)" % name_number(style["system"]),
            str(style["first"]),
            base + "Symbols" if style["symbols"] else "nullptr",
            str(len(style["symbols"])),
            base + "Weights" if style["additive"] else "nullptr",
            base + "Additive" if style["additive"] else "nullptr",
            str(len(style["additive"])),
            base + "Range" if style["range"] else "nullptr",
            str(len(style["range"])),
            c_string(style["prefix"]),
            c_string(style["suffix"]),
            c_string(style["negative"][0]),
            c_string(style["negative"][1]),
            "ZkNameEnum(%d)" % name_number(style["fallback"]),
        ]
        rows.append((name_number(name), "    {%s}, // %s" % (", ".join(fields), name)))
    rows.sort()
    out.append("const PredefinedStyle kPredefinedStyles[] = {")
    out.extend(row for _, row in rows)
    out.append("};")
    out.append("constexpr int kPredefinedStyleCount = %d;" % len(rows))
    with open(output, "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    if len(sys.argv) != 4:
        sys.exit(__doc__)
    main(*sys.argv[1:4])
