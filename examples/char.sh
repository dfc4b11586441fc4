#!/usr/bin/env bash
# Characters and Base64: the classes and vertical orientation of a few code points, and a
# Base64 round trip of a small UTF-8 file.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
run() {
    echo "\$ zk $*"
    "$ZK" "$@"
    echo
}

run char U+3001 U+300C A U+FF70 U+2008
run char 'あ' U+1F600
run base64 encode "$here/char/sample.txt"
tmp="$(mktemp)"
trap 'rm -f "$tmp"' EXIT
"$ZK" base64 encode "$here/char/sample.txt" > "$tmp"
echo "\$ zk base64 decode (the text above)"
"$ZK" base64 decode "$tmp"
echo
echo "\$ zk char U+110000"
"$ZK" char U+110000 || echo "(exit status $?)"
