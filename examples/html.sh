#!/usr/bin/env bash
# HTML: a hand-written page in windows-1252 (declared by its meta element) with unclosed p, li
# and td, void elements, a script holding markup and a stray end tag, read as HTML and written
# back as well-formed XML in UTF-8.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"

echo "\$ zk parse --html html/menu.html"
"$ZK" parse --html "$here/html/menu.html" || echo "(exit status $?)"
echo
