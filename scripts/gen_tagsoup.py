#!/usr/bin/env python3
"""Writes a corpus of small hostile HTML documents (tag soup) into a directory of the build tree.

usage: gen_tagsoup.py OUTPUT_DIR [--seeds SEED_DIR]

The content is pseudo-random with a fixed seed, so every build writes the same bytes. Each
family of faults gets a few documents: unclosed and misnested tags, stray end tags, broken
attributes, meta charsets (valid, bogus, several, switching mid-document with non-ASCII bytes
around), scripts and styles with markup inside or without an end, comments with "--", CDATA,
deep nesting, huge attribute counts, entity soup, DOCTYPE variants, NUL and control bytes,
broken UTF-8, and a random mix of all of them.

OUTPUT_DIR/manifest.txt lists the documents, one a line: FILE<TAB>FLAGS, where FLAGS is "-" or
a comma-separated list; "deep" marks a document nested deeper than a reference parser's depth
limit, so that its tree can't be compared there. With --seeds, a few short documents of each
family are also copied to SEED_DIR (the fuzzer's seeds)."""
import os
import random
import shutil
import sys

SEED = 20261125

WORDS = ("lorem ipsum dolor sit amet table cell row list item para café naïve résumé "
         "日本語 テキスト 中文 Ελληνικά кириллица — “quoted” ‘single’ ½ € ©").split()
BLOCK = ["div", "p", "table", "tr", "td", "th", "tbody", "thead", "tfoot", "ul", "ol", "li",
         "dl", "dt", "dd", "h1", "h2", "h6", "pre", "blockquote", "form", "fieldset", "menu",
         "address", "select", "option", "optgroup", "colgroup", "col", "ruby", "rb", "rt", "rp",
         "dialog", "marquee", "nobr", "center", "section", "article", "header", "footer"]
INLINE = ["b", "i", "u", "em", "strong", "a", "span", "font", "small", "big", "sub", "sup",
          "code", "tt", "abbr", "q", "s", "strike", "label", "button", "textarea", "title"]
VOID = ["area", "base", "basefont", "bgsound", "br", "col", "command", "embed", "event-source",
        "frame", "hr", "hype", "img", "input", "isindex", "keygen", "link", "meta", "nest",
        "param", "source", "spacer", "wbr"]
HEAD = ["head", "base", "isindex", "link", "meta", "object", "script", "style", "title"]
SPECIAL = ["html", "head", "body", "script", "style", "svg", "math", "chart", "o:p", "x:y",
           "frameset", "noscript", "iframe", "xmp", "plaintext", "template"]
ALL = BLOCK + INLINE + VOID + HEAD + SPECIAL
ATTRS = ["id", "class", "href", "src", "style", "title", "lang", "xml:lang", "xmlns",
         "xmlns:x", "xlink:href", "onclick", "width", "height", "colspan", "rowspan", "alt",
         "value", "name", "content", "charset", "http-equiv", "data-x", "x:attr", "CLASS", "Id"]
CHARSETS_GOOD = ["utf-8", "UTF-8", "shift_jis", "Shift_JIS", "euc-jp", "windows-1252",
                 "iso-8859-1", "ISO-8859-15", "iso-8859-2", "koi8-r", "us-ascii", "gb2312",
                 "big5", "windows-1251", "utf-16", "UTF-16LE", "utf-32"]
CHARSETS_BAD = ["", "x-nonsense", "utf-8;;", "utf8 ", " utf-8", "\"utf-8\"", "'", "charset",
                "utf-7", "unicode-1-1-utf-7", "ebcdic", "x" * 300, "utf-8\x00", "shift_jis,euc-jp",
                "ISO-2022-JP", "ucs-4", "../../etc/passwd", "%u0000"]
DOCTYPES = [
    "", "<!DOCTYPE html>", "<!doctype html>", "<!DOCTYPE HTML>",
    '<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01//EN" "http://www.w3.org/TR/html4/strict.dtd">',
    '<!DOCTYPE HTML PUBLIC "-//W3C//DTD HTML 4.01 Transitional//EN">',
    '<!DOCTYPE html PUBLIC "-//W3C//DTD XHTML 1.0 Strict//EN" '
    '"http://www.w3.org/TR/xhtml1/DTD/xhtml1-strict.dtd">',
    '<!DOCTYPE html SYSTEM "about:legacy-compat">', "<!DOCTYPE>", "<!DOCTYPE html",
    "<!DOCTYPE html [<!ENTITY x 'expanded'>]>", "<!DOCTYPE html [<!ENTITY % p 'x'> %p;]>",
    "<!DOCTYPE svg>", "<!DOCTYPE math PUBLIC ' HTML ' ''>", "<!DOCTYPE html PUBLIC>",
    "<!DOCTYPE html SYSTEM 'file:///dev/zero'>", "<!DOCTYPE html SYSTEM '/etc/passwd'>",
    "<!DOCTYPE html [", "<!DOCTYPE html [<!ELEMENT p ANY><!ATTLIST p a CDATA 'd'>]>",
    "<!DOCTYPE html><!DOCTYPE html>", "<!DOCTYPE\x00html>", "<!DOCTYPE html PUBLIC \"unterminated",
]
ENTITIES = ["&amp;", "&amp", "&lt;", "&gt", "&nbsp;", "&nbsp", "&copy;", "&eacute;", "&Eacute",
            "&hellip;", "&mdash;", "&NotNestedGreaterGreater;", "&unknown;", "&;", "& ", "&&",
            "&#;", "&#x;", "&#65;", "&#x41;", "&#X41;", "&#0;", "&#1;", "&#x7f;", "&#128;",
            "&#x80;", "&#xD800;", "&#xDFFF;", "&#xFFFE;", "&#xFFFF;", "&#x10FFFF;", "&#x110000;",
            "&#99999999999999;", "&#-1;", "&#65", "&#x41", "&#xZZ;", "&a" + "b" * 200 + ";",
            "&amp;amp;", "&lt;script&gt;", "&x;", "&AMP;", "&Amp;", "&quot", "&apos;", "&#9;"]
CONTROL = ["\x00", "\x01", "\x07", "\x08", "\x0b", "\x0c", "\x0e", "\x1b", "\x1f", "\x7f"]
BAD_UTF8 = [b"\x80", b"\xbf", b"\xc0\xaf", b"\xc3", b"\xe2\x82", b"\xed\xa0\x80", b"\xf0\x9f",
            b"\xf4\x90\x80\x80", b"\xf8\x88\x80\x80\x80", b"\xfe", b"\xff", b"\xc3\x28",
            b"\xe0\x80\xaf", b"\xef\xbf\xbe", b"\xef\xbb\xbf"]


class Corpus:
    def __init__(self, out, seeds):
        self.out = out
        self.seeds = seeds
        self.rows = []
        self.counts = {}

    def add(self, family, data, flags=(), seed=False):
        n = self.counts.get(family, 0) + 1
        self.counts[family] = n
        name = "%s-%03d.html" % (family, n)
        if isinstance(data, str):
            data = data.encode("utf-8", "surrogatepass")
        with open(os.path.join(self.out, name), "wb") as f:
            f.write(data)
        self.rows.append("%s\t%s" % (name, ",".join(flags) or "-"))
        # Seeds stay small: the fuzzer grows them itself.
        if self.seeds and (seed or n <= 2) and len(data) <= 1024:
            with open(os.path.join(self.seeds, name), "wb") as f:
                f.write(data)

    def finish(self):
        with open(os.path.join(self.out, "manifest.txt"), "w") as f:
            f.write("\n".join(self.rows) + "\n")


def words(rng, count):
    return " ".join(rng.choice(WORDS) for _ in range(count))


def attr(rng):
    name = rng.choice(ATTRS)
    form = rng.randrange(6)
    value = rng.choice([words(rng, 1), "a<b", "x>y", "1", "", "#c0ffee", "javascript:x()",
                        "&amp;", "&quot;"])
    if form == 0:
        return ' %s="%s"' % (name, value.replace('"', ""))
    if form == 1:
        return " %s='%s'" % (name, value.replace("'", ""))
    if form == 2:
        return " %s=%s" % (name, value.replace(" ", "").replace(">", "") or "v")
    if form == 3:
        return " " + name
    if form == 4:
        return " %s = \"%s\"" % (name, value)
    return " %s=%s" % (name, rng.choice(['"', "'", '"""', "=", "<", "/"]))


def start(rng, tag, attrs=None):
    if attrs is None:
        attrs = rng.randrange(3)
    return "<%s%s%s>" % (tag, "".join(attr(rng) for _ in range(attrs)),
                         rng.choice(["", "", "", "/", " /"]))


def soup(rng, length):
    """A random run of tags, end tags and text, with no care for nesting."""
    parts = []
    for _ in range(length):
        r = rng.random()
        tag = rng.choice(ALL)
        if r < 0.4:
            parts.append(start(rng, tag))
        elif r < 0.65:
            parts.append("</%s>" % tag)
        elif r < 0.75:
            parts.append(rng.choice(ENTITIES))
        else:
            parts.append(words(rng, rng.randint(1, 5)))
    return "".join(parts)


def fam_unclosed(c, rng):
    for _ in range(8):
        parts = [rng.choice(DOCTYPES[:6])]
        for _ in range(rng.randint(5, 60)):
            tag = rng.choice(BLOCK + INLINE)
            parts.append(start(rng, tag) + words(rng, rng.randint(0, 4)))
        c.add("unclosed", "".join(parts))
    c.add("unclosed", "<p>a<p>b<p>c<ul><li>one<li>two<li>three</ul><dl><dt>t<dd>d<dt>u<dd>e</dl>")
    c.add("unclosed", "<table><tr><td>a<td>b<tr><td>c</table><table><thead><tr><th>h<tbody>"
                      "<tr><td>x<tfoot><tr><td>f</table>")
    c.add("unclosed", "<select><option>a<option>b<optgroup><option>c<optgroup><option>d</select>"
                      "<ruby>漢<rb>k<rt>kan<rp>(<rt>x</ruby>")
    c.add("unclosed", "<html><head><title>t</title><body><p>x")
    c.add("unclosed", "<html>text before head<meta charset=utf-8><p>after")
    c.add("unclosed", "<head><link rel=x><p>implies body?<head><title>again</title>")


def fam_misnested(c, rng):
    c.add("misnested", "<b>x</i>y</b>")
    c.add("misnested", "<b><i>bold italic</b> italic?</i> plain")
    c.add("misnested", "<p><div>block in p</p></div>")
    c.add("misnested", "<table><td>cell<table><td>inner</td></tr></table>after</td></table>")
    c.add("misnested", "<a href=1><a href=2>nested links</a></a>")
    c.add("misnested", "<ul><li><ul><li>deep</ul></li><li>back</ol></ul>")
    c.add("misnested", "<form><table><tr><td><form>x</table></form>")
    for _ in range(8):
        tags = [rng.choice(BLOCK + INLINE) for _ in range(rng.randint(3, 20))]
        ends = tags[:]
        rng.shuffle(ends)
        text = "".join(start(rng, t) + words(rng, 1) for t in tags)
        text += "".join("</%s>%s" % (t, words(rng, 1)) for t in ends)
        c.add("misnested", text)


def fam_stray(c, rng):
    c.add("stray", "</p>")
    c.add("stray", "</p></div></table></html></body>text")
    c.add("stray", "<div>a</span></td></tr></li>b</div></div></div>")
    c.add("stray", "<!DOCTYPE html></html><p>x</p></body></head>")
    c.add("stray", "<html><body></body></html><p>after the root</p></p>")
    c.add("stray", "<p>x</P></p ></p\t></p/></p foo=bar></ p></>")
    c.add("stray", "<br></br><br/></br><img></img></img><hr>x</hr>")
    for _ in range(6):
        c.add("stray", "".join("</%s>%s" % (rng.choice(ALL), words(rng, rng.randint(0, 2)))
                               for _ in range(rng.randint(5, 40))))


def fam_attributes(c, rng):
    c.add("attr", '<a href=foo>x</a><a href=>y</a><a href>z</a><a =x>w</a>')
    c.add("attr", '<a href="unterminated>text</a><p>more "quotes\' here</p>')
    c.add("attr", "<a href='unterminated>text</a><p title=\"x\">")
    c.add("attr", '<img src="a<b>c" alt=\'<script>x</script>\' title=<b>>')
    c.add("attr", '<div id=a id=b ID=c Id="d" class class=x></div>')
    c.add("attr", '<div "quoted"=x \'single\' =eq ==x !junk @at #hash $ % ^ * ( ) [ ]>x</div>')
    c.add("attr", '<p a=1b=2 c="3"d="4"e=\'5\'f>x</p><p a="1"/b="2">y</p>')
    c.add("attr", '<p xmlns="http://example.com/x" xmlns:x="" x:y="z" xmlns:="q">ns</p>')
    c.add("attr", '<p xml:lang="en" xml:space="preserve" xmlns:xml="http://wrong">x</p>')
    c.add("attr", '<svg xlink:href="#a" undeclared:attr="1"><use xlink:href=#b /></svg>')
    c.add("attr", '<p a="\n\t\r value with\nnewlines\r\n" b=x\x00y>x</p>')
    c.add("attr", "<p a=\"1\" a='2' a=3 a>dup</p><input disabled checked readonly value=>")
    c.add("attr", "<p title=" + '"' + "x" * 5000 + "><p>the value never ends")
    c.add("attr", "<div" + "".join(" a%d" % i for i in range(50)) + ">")
    for _ in range(6):
        c.add("attr", "".join(start(rng, rng.choice(ALL), rng.randint(1, 8)) + words(rng, 1)
                              for _ in range(rng.randint(3, 15))))
    c.add("attr", '<p><b x:a="1" xmlns:x>t</b><i xmlns:y="" y:b="2">u</i></p>')


def encode(text, charset):
    try:
        return text.encode(charset)
    except (UnicodeEncodeError, LookupError):
        return text.encode("utf-8")


def fam_meta(c, rng):
    jp = "日本語のテキスト、かな。"
    latin = "café naïve résumé œuvre “smart” — €"
    c.add("meta", b"<html><head><meta charset=\"shift_jis\"></head><body><p>" +
          jp.encode("shift_jis") + b"</p></body></html>")
    c.add("meta", b"<html><head><meta http-equiv=\"Content-Type\" content=\"text/html; "
          b"charset=euc-jp\"></head><body><p>" + jp.encode("euc_jp") + b"</p></body></html>")
    c.add("meta", b"<meta charset=windows-1252><p>" + latin.encode("cp1252") + b"</p>")
    c.add("meta", b"<META HTTP-EQUIV=content-type CONTENT='text/html;charset=ISO-8859-1'><p>" +
          "café".encode("latin-1") + b"</p>")
    # Switching in mid-stream: each part is written in the charset the last meta named.
    for _ in range(6):
        parts = [b"<!DOCTYPE html><html><head>"]
        for _ in range(rng.randint(2, 6)):
            cs = rng.choice(["utf-8", "shift_jis", "euc-jp", "windows-1252", "iso-8859-1"])
            form = rng.randrange(3)
            if form == 0:
                parts.append(("<meta charset=%s>" % cs).encode())
            elif form == 1:
                parts.append(('<meta http-equiv="content-type" content="text/html; charset=%s">'
                              % cs).encode())
            else:
                parts.append(("<meta content='text/html;charset=%s' http-equiv=Content-Type>"
                              % cs).encode())
            text = jp if cs in ("shift_jis", "euc-jp") else latin
            parts.append(b"<p>" + encode(text, cs.replace("-", "_")) + b"</p>")
            # Bytes of another charset right after the switch.
            parts.append(rng.choice([jp.encode("utf-8"), jp.encode("shift_jis"),
                                     latin.encode("cp1252"), bytes([0x81, 0x40, 0xa4, 0xa2])]))
        c.add("meta", b"".join(parts))
    for bad in CHARSETS_BAD:
        c.add("meta", ("<meta charset=\"%s\"><p>é ü 日本</p>" % bad).encode("utf-8", "replace"))
    c.add("meta", b"<meta http-equiv=content-type content=\"text/html; charset=\"><p>x")
    c.add("meta", b"<meta http-equiv=content-type content=\";;;charset=utf-8=x,y;charset\">")
    c.add("meta", b"<meta http-equiv=content-type>" + b"<meta content=\"charset=euc-jp\">")
    c.add("meta", b"<meta http-equiv=content-language content=\"  en-GB \"><meta "
          b"http-equiv=CONTENT-LANGUAGE content=ja,en><p>x")
    c.add("meta", b"<p>late</p><meta charset=shift_jis>" + jp.encode("shift_jis") +
          b"<meta charset=utf-8>" + jp.encode("utf-8") + b"<meta charset=utf-16>" +
          jp.encode("utf-16-le"))
    c.add("meta", b"\xef\xbb\xbf<meta charset=shift_jis><p>" + jp.encode("utf-8"))
    c.add("meta", b"\xff\xfe" + "<meta charset=utf-8><p>x</p>".encode("utf-16-le"))
    c.add("meta", b"<?xml version='1.0' encoding='shift_jis'?><meta charset=euc-jp><p>" +
          jp.encode("euc_jp"))
    c.add("meta", b"<svg><meta charset=shift_jis/></svg><math><meta charset=big5></math>\x82\xa0")
    c.add("meta", b"<meta charset=shift_jis>" + bytes([0x82]))  # half a character at the end
    c.add("meta", b"<meta charset=utf-16le><p>" + "x".encode("utf-16-le") + b"\x00")
    c.add("meta", "".join("<meta charset=%s>é" % rng.choice(CHARSETS_GOOD + CHARSETS_BAD)
                          for _ in range(60)).encode("utf-8", "replace"))


def fam_raw(c, rng):
    c.add("raw", '<script>if (a<b && c) x("</div>");</script><p>after</p>')
    c.add("raw", "<script><!-- document.write('<script></script>'); --></script>x")
    c.add("raw", "<script>no end <p>markup <b>inside</b> &amp; &lt;")
    c.add("raw", "<style>p > a { content: \"</p>\" } a<b{}</style><p>x")
    c.add("raw", "<style>unterminated { color: red ")
    c.add("raw", "<script></scr</script ></SCRIPT><script>x</scriptx>y</script>")
    c.add("raw", "<script><![CDATA[ x < y ]]></script><svg><script><![CDATA[ a<b ]]></script>"
                 "</svg>")
    c.add("raw", "<title><b>not bold</b></title><textarea><p>x</textarea>")
    c.add("raw", "<head><script src=x></script><style></style><script/>after</head>")
    c.add("raw", "<script>" + "<" * 2000 + "</" * 2000 + "</script>")
    c.add("raw", "<style>" + "</styl" * 1000 + "</style>")
    c.add("raw", "<script>\x00\x01 é \xff</script><style>\x0c</style>")
    for _ in range(4):
        tag = rng.choice(["script", "style", "SCRIPT", "Style"])
        c.add("raw", "<%s>%s%s" % (tag, soup(rng, rng.randint(5, 30)),
                                   rng.choice(["", "</%s>" % tag.lower(), "</%s" % tag])))


def fam_comment(c, rng):
    c.add("comment", "<!-- a -- b --><!----><!---><!-->x<!-- --->y<!-- --!>z")
    c.add("comment", "<p>a<!-- unterminated comment <p>b</p>")
    c.add("comment", "<!-- <script> --></script><!-- </p> -->")
    c.add("comment", "<! bogus comment><!x><!><!-- -- -- -- --><? pi ?><?php echo 1 ?><?>")
    c.add("comment", "<!--" + "--" * 3000 + "-->")
    c.add("comment", "<html><!-- in html --><head><!-- h --></head><!-- between --><body>"
                     "<!--b--></body></html><!-- after -->")


def fam_cdata(c, rng):
    c.add("cdata", "<p><![CDATA[ <b>not a tag</b> & ]]></p>")
    c.add("cdata", "<p><![CDATA[ unterminated cdata <p>")
    c.add("cdata", "<svg><![CDATA[ in svg ]]></svg><math><![CDATA[x]]></math>")
    c.add("cdata", "<![CDATA[ at top ]]><p>x</p><![CDATA[]]><![CDATA[]]]]><![CDATA[>]]>")
    c.add("cdata", "<p><![cdata[ lower ]]><![CDATA [ space ]]><![ CDATA[ x ]]></p>")
    c.add("cdata", "<![IGNORE[ x ]]><![INCLUDE[ <p>y</p> ]]><![%p;[ z ]]>")


def fam_deep(c, rng):
    c.add("deep", "<div>" * 100000, ("deep",))
    c.add("deep", "<b><i>" * 30000 + "text" + "</i></b>" * 30000, ("deep",))
    c.add("deep", "<table><tr><td>" * 20000, ("deep",))
    c.add("deep", "<ul><li>" * 30000 + "</ul>" * 10, ("deep",))
    c.add("deep", "<p>" * 50000, ())  # each p closes the one before
    c.add("deep", "<font>" * 20000 + "</div>" * 20000, ("deep",))
    c.add("deep", "<svg>" * 5000 + "<math>" * 5000, ("deep",))


def fam_manyattrs(c, rng):
    c.add("manyattrs", "<div" + "".join(' a%d="%d"' % (i, i) for i in range(30000)) + ">x</div>")
    c.add("manyattrs", "<div" + ' a="1"' * 20000 + ">dup</div>")
    c.add("manyattrs", "<p" + "".join(" xmlns:p%d='urn:%d'" % (i, i) for i in range(5000)) +
          ">ns</p>")
    c.add("manyattrs", "<p" + " x" * 30000 + ">bare</p>")


def fam_entity(c, rng):
    c.add("entity", "".join(ENTITIES))
    c.add("entity", "<p title='" + "".join(ENTITIES).replace("'", "") + "'>x</p>")
    for _ in range(6):
        c.add("entity", "<p>" + "".join(rng.choice(ENTITIES) + rng.choice(["", " ", "x", "<b>"])
                                        for _ in range(rng.randint(20, 200))))
    c.add("entity", "&" * 5000 + "&#" * 2000 + "&#x" * 2000)
    c.add("entity", "<!DOCTYPE html [<!ENTITY a '&b;'><!ENTITY b '&a;'>]><p>&a;</p>")
    c.add("entity", "<!DOCTYPE html [<!ENTITY e ''><!ENTITY f '&e;&e;'>]><p>&f;&e;</p>")
    c.add("entity", "<!DOCTYPE html [<!ENTITY l0 'xxxxxxxxxx'>" +
          "".join("<!ENTITY l%d '%s'>" % (i, ("&l%d;" % (i - 1)) * 10) for i in range(1, 10)) +
          "]><p>&l9;</p>")


def fam_doctype(c, rng):
    for d in DOCTYPES:
        c.add("doctype", d + "<title>t</title><p>x")
    c.add("doctype", "<p>before</p><!DOCTYPE html><p>after")
    c.add("doctype", "text before\n<!DOCTYPE html>\n  more text <html>x")


def fam_control(c, rng):
    for _ in range(6):
        parts = []
        for _ in range(rng.randint(20, 80)):
            r = rng.random()
            if r < 0.3:
                parts.append(rng.choice(CONTROL))
            elif r < 0.5:
                parts.append(start(rng, rng.choice(ALL)))
            else:
                parts.append(words(rng, 1))
        c.add("control", "".join(parts))
    c.add("control", "<p\x00>x</p\x00><\x00p>y<a b\x00=c d='\x00'>z</a>")
    c.add("control", "<!DOCTYPE html>\x00\x00\x00<html>\x0c<body>\x0c&#12;\x0b</body>")
    c.add("control", "\r\n\r<p>\r\r\n</p>\n\r")
    for _ in range(6):
        parts = []
        for _ in range(rng.randint(20, 80)):
            r = rng.random()
            if r < 0.3:
                parts.append(rng.choice(BAD_UTF8))
            elif r < 0.5:
                parts.append(start(rng, rng.choice(ALL)).encode())
            else:
                parts.append(words(rng, 1).encode())
        c.add("utf8", b"".join(parts))
    c.add("utf8", b"<p>" + b"\xe6\x97\xa5" * 10 + b"\xe6\x97")  # cut at the end
    c.add("utf8", b"<p t='\xff\xfe'>\xc0\x80</p><\xc3\xa9l\xc3\xa9ment>x</\xc3\xa9l\xc3\xa9ment>")
    c.add("utf8", b"\xfe\xff\x00<\x00p\x00>")  # a BOM that lies
    c.add("utf8", b"\x00\x00\xfe\xff" + b"\x00\x00\x00<")


def fam_markup(c, rng):
    c.add("markup", "< p>a < b <3 <> </> <!> <? <= <<p>>x<//p></ p><p/ >")
    c.add("markup", "<p/><br/><br /><br//><img/src=x><input type=text/>")
    c.add("markup", "<svg><path d='M0 0'/><circle/></svg><math><mi>x</mi><mo>=</mo></math>"
                    "<chart><series/></chart><o:p>office</o:p><x:y:z>colons</x:y:z>")
    c.add("markup", "<html><html><body><body><head></head></body></html></html>")
    c.add("markup", "<frameset><frame src=a><frame src=b></frameset><noframes><p>x</noframes>")
    c.add("markup", "<HTML><BODY><P CLASS=X>upper<Br><TABLE><TR><TD>c</TABLE></BODY></HTML>")
    c.add("markup", "<p>trailing <")
    c.add("markup", "<p>trailing </")
    c.add("markup", "<p>trailing <a href='x")
    c.add("markup", "<p>trailing <!-")
    c.add("markup", "<p>trailing &#x1")
    c.add("markup", "<?xml version='1.0'?><html xmlns='http://www.w3.org/1999/xhtml'><br><p>x")
    c.add("markup", "<?xml version='1.1'?><p>\x85\u2028</p>")
    c.add("markup", "<html xmlns='http://www.w3.org/1999/xhtml'><p>x<br></p></html>")
    c.add("markup", "<p><o:p>office</o:p><x:y:z>colons</x:y:z></p>")
    c.add("markup", "<p><i:>empty local name</i:></p>")


def fam_random(c, rng):
    for _ in range(30):
        c.add("random", rng.choice(DOCTYPES[:5]) + soup(rng, rng.randint(10, 200)))


def main():
    out = os.path.abspath(sys.argv[1])
    seeds = None
    if len(sys.argv) > 3 and sys.argv[2] == "--seeds":
        seeds = os.path.abspath(sys.argv[3])
        os.makedirs(seeds, exist_ok=True)
    if os.path.isdir(out):
        shutil.rmtree(out)
    os.makedirs(out)
    corpus = Corpus(out, seeds)
    rng = random.Random(SEED)
    for family in (fam_unclosed, fam_misnested, fam_stray, fam_attributes, fam_meta, fam_raw,
                   fam_comment, fam_cdata, fam_deep, fam_manyattrs, fam_entity, fam_doctype,
                   fam_control, fam_markup, fam_random):
        family(corpus, rng)
    corpus.finish()


if __name__ == "__main__":
    main()
