#!/usr/bin/env bash
# The node tree: a small document built by hand, printed with its attributes, then walked.
set -euo pipefail
: "${ZK:?set ZK to the zk program}"

echo "\$ zk tree"
"$ZK" tree
echo
echo "\$ zk tree --walk both"
"$ZK" tree --walk both
echo
echo "\$ zk tree --pull"
"$ZK" tree --pull
echo
