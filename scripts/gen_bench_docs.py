#!/usr/bin/env python3
"""Writes the parser benchmark's documents into a directory (the build tree, never the repo):
fo.xml, an attribute-dense XSL-FO-like file, xhtml.xml, a text-heavy XHTML file, both of about
25 MB, and small.xml, a 20 KB XSL-FO-like file. The content is pseudo-random with a fixed seed,
so every run measures the same bytes."""
import os
import random
import sys

WORDS = ("the of and to in is that for it as was with be by on not he this are or his from at "
         "which but have an they you were her she there been one all we their has would when "
         "what if can more will other about into than them could só café naïve résumé — “quoted” "
         "typography composition hyphenation justification paragraph baseline kerning ligature"
         ).split()
FONTS = ["Helvetica", "Times", "Courier", "Arial Unicode MS", "Noto Serif CJK JP"]
ALIGN = ["start", "end", "center", "justify"]


def sentence(rng, count):
    return " ".join(rng.choice(WORDS) for _ in range(count))


def fo_block(rng, n):
    attrs = (
        'id="b%d" font-family="%s" font-size="%dpt" line-height="%.1f" space-before="%dpt" '
        'space-after="%dpt" text-align="%s" color="#%06x" margin-left="%dmm" '
        'keep-with-next.within-page="always"'
        % (n, rng.choice(FONTS), rng.randint(8, 14), rng.uniform(1.1, 1.6), rng.randint(0, 12),
           rng.randint(0, 12), rng.choice(ALIGN), rng.randint(0, 0xFFFFFF), rng.randint(0, 30)))
    inline = '<fo:inline font-weight="bold" font-style="italic" color="red">%s</fo:inline>' % (
        sentence(rng, 2))
    return '<fo:block %s>%s %s %s</fo:block>\n' % (attrs, sentence(rng, 4), inline,
                                                   sentence(rng, 3))


def fo_document(rng, size):
    head = ('<?xml version="1.0" encoding="UTF-8"?>\n'
            '<fo:root xmlns:fo="http://www.w3.org/1999/XSL/Format" '
            'xmlns:zk="http://www.velmora.com/names/XSL/Extensions">\n'
            '<fo:layout-master-set><fo:simple-page-master master-name="p" page-width="210mm" '
            'page-height="297mm"><fo:region-body margin="20mm"/></fo:simple-page-master>'
            '</fo:layout-master-set>\n<fo:page-sequence master-reference="p">'
            '<fo:flow flow-name="xsl-region-body">\n')
    tail = '</fo:flow></fo:page-sequence>\n</fo:root>\n'
    parts = [head]
    total = len(head.encode())
    n = 0
    while total < size:
        part = fo_block(rng, n)
        parts.append(part)
        total += len(part.encode())
        n += 1
    parts.append(tail)
    return "".join(parts)


def xhtml_document(rng, size):
    head = ('<?xml version="1.0" encoding="UTF-8"?>\n'
            '<html xmlns="http://www.w3.org/1999/xhtml"><head><title>Benchmark</title></head>'
            '<body>\n')
    tail = '</body></html>\n'
    parts = [head]
    total = len(head.encode())
    n = 0
    while total < size:
        if n % 20 == 0:
            part = '<h2 id="s%d">%s</h2>\n' % (n, sentence(rng, 5))
        else:
            part = '<p>%s <em>%s</em> %s <a href="#s%d">%s</a> %s &amp; %s.</p>\n' % (
                sentence(rng, 60), sentence(rng, 3), sentence(rng, 50), n - n % 20,
                sentence(rng, 2), sentence(rng, 40), sentence(rng, 10))
        parts.append(part)
        total += len(part.encode())
        n += 1
    parts.append(tail)
    return "".join(parts)


def main(directory):
    os.makedirs(directory, exist_ok=True)
    rng = random.Random(20261125)
    for name, text in (("fo.xml", fo_document(rng, 25 * 1000 * 1000)),
                       ("xhtml.xml", xhtml_document(rng, 25 * 1000 * 1000)),
                       ("small.xml", fo_document(rng, 20 * 1000))):
        with open(os.path.join(directory, name), "w", encoding="utf-8") as f:
            f.write(text)


if __name__ == "__main__":
    main(sys.argv[1])
