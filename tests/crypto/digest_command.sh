#!/usr/bin/env bash
# `zk digest ALGORITHM FILE...` prints the same lines as md5sum, sha1sum, sha256sum, sha384sum
# and sha512sum, names with a backslash or a line feed included; a missing file fails like theirs.
set -euo pipefail
zk="$(realpath "$1")"
dir="$(mktemp -d)"
trap 'rm -rf "$dir"' EXIT
cd "$dir"
: > empty
printf 'abc' > abc
head -c 1000003 /dev/urandom > random.bin
printf 'x' > 'back\slash'
printf 'y' > 'line
feed'
printf 'z' > 'with space'
files=(empty abc random.bin 'back\slash' 'line
feed' 'with space')
for algorithm in md5 sha1 sha256 sha384 sha512; do
    diff <("$zk" digest "$algorithm" "${files[@]}") <("${algorithm}sum" "${files[@]}")
    diff <("$zk" digest "$algorithm" < random.bin) <("${algorithm}sum" < random.bin)
    if "$zk" digest "$algorithm" abc missing > out 2> err; then
        echo "a missing file must fail"; exit 1
    fi
    diff out <("${algorithm}sum" abc)
    grep -q "missing: No such file or directory" err
done
echo "zk digest matches coreutils"
