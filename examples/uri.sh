#!/usr/bin/env bash
# URIs: resolution, local paths, display shortening, and reading files through the library.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
run() {
    echo "\$ zk $*"
    "$ZK" "$@"
    echo
}

run uri resolve 'http://a/b/c/d;p?q' '../g?y#s'
run uri resolve 'jar:file:///books/a.zip!/ch1/intro.xml' '../images/fig 1.png'
run uri resolve 'file:///C:/docs/main.xml' 'sub\part.xml'
run uri path 'C:\Program Files\Zk\a b.xml'
run uri path 'file:///very/long/path/to/some/deep/folder/file.xml' 30
run uri path '\\server\share\report.pdf'
run uri relative 'file:///a/b/c.xml' 'file:///a/d/e.xml'
run uri show "$here/uri/hello world.txt"
run cat "$here/uri/hello world.txt"
run cat "file://$here/uri/doc.xml"
echo "\$ zk cat $here/uri/missing.txt"
"$ZK" cat "$here/uri/missing.txt" || echo "(exit status $?)"
