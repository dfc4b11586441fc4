#!/usr/bin/env python3
"""Makes the zip and gzip test corpus with Debian's own tools (zip, gzip, Python's zipfile and
gzip) into a directory of the build tree, with a manifest of what each archive holds.

usage: gen_archive_corpus.py OUTPUT_DIR

Every member's content is checked against what unzip or Python's zipfile extracts, so the
manifest states what the tools themselves say. Manifest lines, tab-separated:
  archive  FILE  ENTRY_COUNT  COMMENT_HEX
  member   FILE  INDEX  NAME_HEX  METHOD  SIZE  CRC32_HEX  CONTENT_FILE  exact|prefix
  gzip     FILE  CONTENT_FILE  exact|prefix
"prefix" marks damaged data: what is read must be a prefix of the content.
"""
import gzip
import io
import os
import random
import shutil
import subprocess
import sys
import zipfile
import zlib

out = os.path.abspath(sys.argv[1])
src = os.path.join(out, "src")
if os.path.isdir(out):
    shutil.rmtree(out)
os.makedirs(src)
rng = random.Random(20261125)
manifest = []


def content(name, data):
    path = os.path.join(src, name)
    os.makedirs(os.path.dirname(path), exist_ok=True)
    with open(path, "wb") as f:
        f.write(data)
    return data


def run(*args, cwd=None, stdin=None):
    return subprocess.run(args, cwd=cwd, check=True, stdin=stdin, stdout=subprocess.PIPE).stdout


xml = b"".join(b'<fo:block id="b%d" font-size="12pt">Block %d of text.</fo:block>\n' % (i, i)
               for i in range(4000))
noise = bytes(rng.getrandbits(8) for _ in range(30000))
files = {
    "hello.txt": b"Hello, archive.\n",
    "big.xml": xml,
    "noise.bin": noise,
    "empty.txt": b"",
    "dir/nested.txt": b"nested member\n" * 50,
}
for name, data in files.items():
    content(name, data)
os.makedirs(os.path.join(src, "dir"), exist_ok=True)


def describe(archive, expect, count=None, damaged=()):
    """Lists the members of `archive` as `expect` gives them: (name, info, content file).
    `info` comes from Python's zipfile reading an intact twin of the archive."""
    comment = expect[0] if expect and isinstance(expect[0], bytes) else b""
    members = [e for e in expect if not isinstance(e, bytes)]
    manifest.append("archive\t%s\t%d\t%s" % (archive, len(members) if count is None else count,
                                             comment.hex()))
    for index, (name, info, file) in enumerate(members):
        check = "prefix" if index in damaged else "exact"
        manifest.append("member\t%s\t%d\t%s\t%d\t%d\t%08x\t%s\t%s" % (
            archive, index, name.encode("utf-8").hex(), info.compress_type, info.file_size,
            info.CRC, "src/" + file, check))


def members_of(path):
    """(name, info, content file) of each member, checked against Python's extraction."""
    result = []
    with zipfile.ZipFile(path) as z:
        for index, info in enumerate(z.infolist()):
            data = z.open(info).read()
            file = "extracted/%s.%d" % (os.path.basename(path), index)
            content(file, data)
            result.append((info.filename, info, file))
    return result


def unzip_agrees(path, members):
    """unzip extracts the same bytes for every member whose name is unique."""
    names = [m[0] for m in members]
    for name, info, file in members:
        if names.count(name) != 1 or name.endswith("/"):
            continue
        data = run("unzip", "-p", path, name.replace("[", "[[]"))
        with open(os.path.join(src, file), "rb") as f:
            assert data == f.read(), (path, name)


# 1. Info-ZIP: deflated members, stored ones (-n .bin), an empty file and a directory entry.
basic = os.path.join(out, "basic.zip")
run("zip", "-q", "-X", "-9", "-n", ".bin", basic, "hello.txt", "big.xml", "noise.bin",
    "empty.txt", "dir/", "dir/nested.txt", cwd=src)
basic_members = members_of(basic)
unzip_agrees(basic, basic_members)
describe("basic.zip", basic_members)

# 2. Python's zipfile: stored and deflated members, UTF-8 names (flag 0x800), a comment.
python_zip = os.path.join(out, "python.zip")
with zipfile.ZipFile(python_zip, "w") as z:
    z.writestr(zipfile.ZipInfo("stored.txt"), b"stored bytes " * 100, zipfile.ZIP_STORED)
    z.writestr("deflated.xml", xml, zipfile.ZIP_DEFLATED)
    z.writestr("日本語/ファイル.txt", "縦書きの本文\n".encode("utf-8"), zipfile.ZIP_DEFLATED)
    z.writestr("café.css", b"p { color: red }\n", zipfile.ZIP_STORED)
    z.comment = b"a short archive comment"
python_members = members_of(python_zip)
unzip_agrees(python_zip, python_members)
describe("python.zip", [b"a short archive comment"] + python_members)

# 3. Info-ZIP with a UTF-8 name written without the 0x800 flag.
os.makedirs(os.path.join(src, "utf8"), exist_ok=True)
content("utf8/grüße.txt", b"Gr\xc3\xbc\xc3\x9fe\n")
utf8_zip = os.path.join(out, "infozip-utf8.zip")
subprocess.run(["zip", "-q", "-X", utf8_zip, "utf8/grüße.txt"], cwd=src, check=True,
               env=dict(os.environ, LC_ALL="C.UTF-8"))
# Python reads a name without the flag in code page 437; zip and unzip mean UTF-8 here.
utf8_members = [("utf8/grüße.txt", info, file) for _, info, file in members_of(utf8_zip)]
describe("infozip-utf8.zip", utf8_members)


# 4. Streamed archives: data descriptors after every member, sizes 0 in the local headers.
class Unseekable(io.RawIOBase):
    def __init__(self, f):
        self.f = f

    def writable(self):
        return True

    def write(self, b):
        return self.f.write(b)


streamed = os.path.join(out, "streamed-python.zip")
with open(streamed, "wb") as f:
    with zipfile.ZipFile(Unseekable(f), "w") as z:
        z.writestr("first.xml", xml, zipfile.ZIP_DEFLATED)
        z.writestr("second.bin", noise, zipfile.ZIP_DEFLATED)
        z.writestr("third.txt", b"third member\n" * 20, zipfile.ZIP_DEFLATED)
streamed_members = members_of(streamed)
with open(streamed, "rb") as f:
    assert f.read(8)[6] & 8, "zipfile did not stream"
describe("streamed-python.zip", streamed_members)

piped = os.path.join(out, "streamed-infozip.zip")
with open(piped, "wb") as f:
    zip_out = subprocess.run(["zip", "-q", "-X", "-", "hello.txt", "big.xml", "noise.bin"],
                             cwd=src, check=True, stdout=subprocess.PIPE).stdout
    f.write(zip_out)
piped_members = members_of(piped)
with open(piped, "rb") as f:
    assert f.read(8)[6] & 8, "zip did not stream"
unzip_agrees(piped, piped_members)
describe("streamed-infozip.zip", piped_members)

# The streamed archive without its central directory: only the local headers and descriptors.
with open(streamed, "rb") as f:
    data = f.read()
central = data.find(b"PK\x01\x02")
with open(os.path.join(out, "streamed-nocentral.zip"), "wb") as f:
    f.write(data[:central])
describe("streamed-nocentral.zip", streamed_members)

# 5. An empty archive: the end record alone.
with zipfile.ZipFile(os.path.join(out, "empty.zip"), "w"):
    pass
describe("empty.zip", [])

# 6. A comment too long for the end-record search: the local headers are read instead.
long_comment = os.path.join(out, "long-comment.zip")
shutil.copy(basic, long_comment)
with zipfile.ZipFile(long_comment, "a") as z:
    z.comment = b"x" * 1000
describe("long-comment.zip", basic_members)

# 7. Garbage before (a prefix such as a self-extractor stub) and after the archive.
with open(basic, "rb") as f:
    basic_bytes = f.read()
garbage = bytes(rng.getrandbits(8) for _ in range(5000)).replace(b"PK", b"pk")
for name, data in (("garbage-before.zip", garbage[:1000] + basic_bytes),
                   ("garbage-after.zip", basic_bytes + garbage[:100]),
                   ("garbage-after-long.zip", basic_bytes + garbage)):
    with open(os.path.join(out, name), "wb") as f:
        f.write(data)
    with zipfile.ZipFile(os.path.join(out, name)) as z:  # the tools read all of them
        assert [i.filename for i in z.infolist()] == [m[0] for m in basic_members]
    describe(name, basic_members)

# 8. Truncated in the middle of big.xml: hello.txt whole, big.xml cut, nothing after it.
cut = basic_bytes.find(b"big.xml") + 2000
with open(os.path.join(out, "truncated.zip"), "wb") as f:
    f.write(basic_bytes[:cut])
describe("truncated.zip", basic_members[:2], damaged=(1,))

# 9. Two members of one name: both listed, the name finds the first.
duplicates = os.path.join(out, "duplicates.zip")
with zipfile.ZipFile(duplicates, "w") as z:
    import warnings
    with warnings.catch_warnings():
        warnings.simplefilter("ignore")
        z.writestr("same.txt", b"first of the two\n", zipfile.ZIP_DEFLATED)
        z.writestr("same.txt", b"second of the two\n", zipfile.ZIP_STORED)
describe("duplicates.zip", members_of(duplicates))

# 10. Not archives at all.
content("../plain.zip", b"This is plain text, not an archive.\n" * 10)
manifest.append("archive\tplain.zip\t0\t")
garbage_only = os.path.join(out, "garbage-only.zip")
with open(garbage_only, "wb") as f:
    f.write(garbage)
manifest.append("archive\tgarbage-only.zip\t0\t")

# Gzip: gzip(1) at level 9 with a name, concatenated members, Python's gzip, a truncated file.
for name in ("big.xml", "noise.bin", "empty.txt"):
    shutil.copy(os.path.join(src, name), os.path.join(out, name))
    run("gzip", "-9", "-f", os.path.join(out, name))
    manifest.append("gzip\t%s.gz\tsrc/%s\texact" % (name, name))
with open(os.path.join(out, "concatenated.gz"), "wb") as f:
    f.write(run("gzip", "-c", "-n", os.path.join(src, "hello.txt")))
    f.write(run("gzip", "-c", "-n", os.path.join(src, "big.xml")))
content("expected/concatenated", files["hello.txt"] + xml)
manifest.append("gzip\tconcatenated.gz\tsrc/expected/concatenated\texact")
with open(os.path.join(out, "python.gz"), "wb") as f:
    with gzip.GzipFile(filename="named-in-header.xml", mode="wb", fileobj=f, mtime=0) as g:
        g.write(xml)
manifest.append("gzip\tpython.gz\tsrc/big.xml\texact")
with open(os.path.join(out, "big.xml.gz"), "rb") as f:
    packed = f.read()
with open(os.path.join(out, "truncated.gz"), "wb") as f:
    f.write(packed[:len(packed) // 2])
manifest.append("gzip\ttruncated.gz\tsrc/big.xml\tprefix")
manifest.append("gzip\tplain.zip\tplain.zip\texact")
assert gzip.decompress(packed) == xml and zlib.crc32(xml) != 0

with open(os.path.join(out, "manifest.txt"), "w", encoding="utf-8") as f:
    f.write("\n".join(manifest) + "\n")
