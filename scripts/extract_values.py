#!/usr/bin/env python3
"""Extracts the property values of CSS stylesheets, one value a line, for the value parser
benchmark and tests: the text after the first ':' of each declaration, without "!important".

usage: extract_values.py OUT.txt STYLESHEET.css..."""
import re
import sys


def segments(css):
    """Yields (text, terminator) for the runs between '{', ';' and '}' outside strings and
    comments; comments are dropped."""
    out, i, n = [], 0, len(css)
    while i < n:
        c = css[i]
        if css.startswith("/*", i):
            end = css.find("*/", i + 2)
            i = n if end < 0 else end + 2
            continue
        if c in "\"'":
            j = i + 1
            while j < n and css[j] != c:
                j += 2 if css[j] == "\\" else 1
            out.append(css[i:j + 1])
            i = j + 1
            continue
        if c == "\\" and i + 1 < n:
            out.append(css[i:i + 2])
            i += 2
            continue
        if c in "{;}":
            yield "".join(out), c
            out = []
        else:
            out.append(c)
        i += 1


def values(css):
    for text, terminator in segments(css):
        if terminator == "{" or ":" not in text:
            continue  # a selector or an at-rule's prelude
        name, value = text.split(":", 1)
        if not re.fullmatch(r"\s*-?-?[A-Za-z][\w.-]*\s*", name):
            continue
        value = re.sub(r"\s*!\s*important\s*$", "", " ".join(value.split()))
        if value:
            yield value


def main(out_path, paths):
    lines = []
    for path in paths:
        with open(path, encoding="utf-8") as f:
            lines.extend(values(f.read()))
    with open(out_path, "w", encoding="utf-8") as f:
        f.write("".join(v + "\n" for v in lines))
    print("%d values from %d stylesheets" % (len(lines), len(paths)))


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    main(sys.argv[1], sys.argv[2:])
