#!/usr/bin/env bash
# Loading and saving: documents read into a tree (whole and in pull mode) and written back
# through the serializer on one line; a broken one reports its error as the XML error log.
set -euo pipefail
: "${ZK:?set ZK to the zk program}"
dir="$(dirname "$0")/parse"

echo "\$ zk parse parse/invoice.fo"
"$ZK" parse "$dir/invoice.fo"
echo
echo "\$ zk parse parse/book.xml --pull"
"$ZK" parse "$dir/book.xml" --pull
echo
echo "\$ zk parse parse/broken.xml"
status=0
"$ZK" parse "$dir/broken.xml" || status=$?
echo "(exit status $status)"
echo
