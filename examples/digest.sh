#!/usr/bin/env bash
# Digests: zk digest prints the same lines as md5sum, sha1sum, sha256sum and their kin.
set -euo pipefail
zk="$(cd "$(dirname "$ZK")" && pwd)/$(basename "$ZK")"
cd "$(dirname "$0")/uri"
files=("hello world.txt" doc.xml)
for algorithm in md5 sha1 sha256 sha384 sha512; do
    echo "\$ zk digest $algorithm ${files[*]}"
    "$zk" digest "$algorithm" "${files[@]}" | tee /tmp/zk-digest.$$
    if "${algorithm}sum" "${files[@]}" | cmp -s - /tmp/zk-digest.$$; then
        echo "(the same as ${algorithm}sum)"
    else
        echo "(DIFFERENT from ${algorithm}sum)"
    fi
    echo
done
rm -f /tmp/zk-digest.$$
echo "\$ printf abc | zk digest sha256"
printf abc | "$zk" digest sha256
echo
