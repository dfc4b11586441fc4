#!/usr/bin/env python3
"""Writes the parser benchmark's documents into a directory (the build tree, never the repo):
fo.xml, an attribute-dense XSL-FO-like file, xhtml.xml, a text-heavy XHTML file, both of about
25 MB, small.xml, a 20 KB XSL-FO-like file, and html.html, about 25 MB of HTML as pages are
written (nested tables and lists, unclosed p, li and td, entities, scripts and styles, attributes
with and without quotes, a meta charset). The content is pseudo-random with a fixed seed,
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


ENTITIES = ["&nbsp;", "&amp;", "&eacute;", "&mdash;", "&copy;", "&laquo;", "&raquo;", "&hellip;",
            "&#8212;", "&#x201C;", "&#x201D;", "&#160;", "&lt;", "&gt;", "&quot;", "&euro;"]


def html_text(rng, count):
    out = []
    for _ in range(count):
        out.append(rng.choice(WORDS))
        if rng.random() < 0.06:
            out.append(rng.choice(ENTITIES))
    return " ".join(out)


def html_attrs(rng, n):
    # Quoted, single-quoted and bare values, as pages mix them.
    cls = rng.choice(["c%d" % (n % 50), "'item odd'", '"item even"', "nav", '"x y z"'])
    return ' class=%s id="e%d" title=\'%s\'' % (cls, n, html_text(rng, 2).replace("'", ""))


def html_table(rng, n, depth):
    rows = []
    for r in range(rng.randint(2, 6)):
        cells = []
        for c in range(rng.randint(2, 5)):
            if depth < 2 and rng.random() < 0.08:
                inner = html_table(rng, n + r * 10 + c, depth + 1)
            else:
                inner = html_text(rng, rng.randint(1, 8))
            # Cells and rows are left unclosed, as most hand-written tables leave them.
            cells.append("<td align=left width=%d%s>%s" % (
                rng.randint(10, 200), "" if rng.random() < 0.5 else ' valign="top"', inner))
        rows.append("<tr>" + "".join(cells) + "\n")
    head = "<tr><th>%s<th>%s\n" % (html_text(rng, 2), html_text(rng, 2))
    return '<table border=1 cellpadding="2"%s>%s%s</table>' % (
        html_attrs(rng, n), head, "".join(rows))


def html_list(rng, n, depth):
    tag = rng.choice(["ul", "ol"])
    items = []
    for i in range(rng.randint(3, 8)):
        item = "<li>" + html_text(rng, rng.randint(3, 12))
        if depth < 3 and rng.random() < 0.15:
            item += html_list(rng, n + i, depth + 1)
        items.append(item + "\n")
    return "<%s type=disc>\n%s</%s>" % (tag, "".join(items), tag)


def html_section(rng, n):
    parts = ['<div%s>\n<h2><a name=s%d>%s</a></h2>\n' % (
        html_attrs(rng, n), n, html_text(rng, 5))]
    for i in range(rng.randint(3, 8)):
        r = rng.random()
        if r < 0.55:
            # Paragraphs that the next block closes.
            parts.append("<p%s>%s <b>%s</b> <a href=\"/page%d.html?x=1&amp;y=%d\">%s</a> %s<br>"
                         "%s <img src=img%d.png alt='%s' width=16 height=16> %s\n" % (
                             "" if rng.random() < 0.6 else " class=lead", html_text(rng, 30),
                             html_text(rng, 2), n, i, html_text(rng, 3), html_text(rng, 20),
                             html_text(rng, 15), i, html_text(rng, 2).replace("'", ""),
                             html_text(rng, 10)))
        elif r < 0.75:
            parts.append(html_list(rng, n * 10 + i, 0) + "\n")
        elif r < 0.93:
            parts.append(html_table(rng, n * 10 + i, 0) + "\n")
        elif r < 0.97:
            parts.append("<script type=\"text/javascript\">\nif (a < b && c > d) { "
                         "document.write(\"<p>\" + x + \"</p>\"); }\nvar s = '%s';\n"
                         "</script>\n" % html_text(rng, 4).replace("'", ""))
        else:
            parts.append("<style>.c%d > p { margin: 0 } a[href^='http'] { color: red }</style>\n"
                         % n)
    parts.append("</div>\n")
    return "".join(parts)


def html_document(rng, size):
    head = ('<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01 Transitional//EN">\n'
            '<html lang=en>\n<head>\n<meta http-equiv="Content-Type" '
            'content="text/html; charset=utf-8">\n<title>Benchmark page</title>\n'
            '<link rel=stylesheet href=site.css>\n<style type="text/css">\nbody { font: 12px '
            'serif } td > p { margin: 0 }\n</style>\n<script>var x = 1 < 2 && "</b>";</script>\n'
            '</head>\n<body bgcolor=white>\n')
    tail = '</body>\n</html>\n'
    parts = [head]
    total = len(head.encode())
    n = 0
    while total < size:
        part = html_section(rng, n)
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
    # Its own generator, so that adding it left the other documents as they were.
    with open(os.path.join(directory, "html.html"), "w", encoding="utf-8") as f:
        f.write(html_document(random.Random(20261126), 25 * 1000 * 1000))


if __name__ == "__main__":
    main(sys.argv[1])
