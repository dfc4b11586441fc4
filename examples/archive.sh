#!/usr/bin/env bash
# Archives: a zip file written as a stream (sizes only in data descriptors) listed and read,
# and a gzip file decompressed.
set -euo pipefail
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
run() {
    echo "\$ zk $*"
    "$ZK" "$@"
    echo
}

python3 - "$work/book.zip" <<'PY'
import io, sys, zipfile
class Pipe(io.RawIOBase):  # no seeking: zipfile writes data descriptors
    def __init__(self, f): self.f = f
    def writable(self): return True
    def write(self, b): return self.f.write(b)
with open(sys.argv[1], "wb") as f, zipfile.ZipFile(Pipe(f), "w", zipfile.ZIP_DEFLATED) as z:
    z.writestr("ch1/intro.xml", "<chapter>Introduction</chapter>\n")
    z.writestr("日本語.txt", "縦書き\n")
    z.writestr("images/logo.bin", bytes(range(64)), zipfile.ZIP_STORED)
PY
printf '<fo:root>compressed page</fo:root>\n' | gzip -9 > "$work/page.fo.gz"

run zip list "$work/book.zip"
run zip cat "$work/book.zip" ch1/intro.xml
run zip cat "$work/book.zip" 日本語.txt
run gunzip "$work/page.fo.gz"
echo "\$ zk zip cat book.zip missing.xml"
"$ZK" zip cat "$work/book.zip" missing.xml || echo "(exit status $?)"
