#!/usr/bin/env bash
# The pull parser: the merged events of next(), the raw tokens of nextToken(), and an error as
# the XML error log.
set -euo pipefail
here="$(cd "$(dirname "$0")" && pwd)"
run() {
    echo "\$ zk $*"
    "$ZK" "$@" || echo "(exit status $?)"
    echo
}

run events "$here/events/book.fo"
run events "$here/events/book.fo" --tokens
run events "$here/events/broken.xml"
