#!/usr/bin/env bash
# Installs the built library into a scratch prefix, then builds and runs a consumer with
# find_package, with pkg-config, and with add_subdirectory.
set -euo pipefail
source_dir=$1
build_dir=$2
scratch=$(mktemp -d)
trap 'rm -rf "$scratch"' EXIT

cmake --install "$build_dir" --prefix "$scratch/prefix" >/dev/null

cmake -S "$source_dir/tests/package" -B "$scratch/package" -G Ninja \
    -DCMAKE_PREFIX_PATH="$scratch/prefix" >/dev/null
cmake --build "$scratch/package" >/dev/null
LD_LIBRARY_PATH="$scratch/prefix/lib:${LD_LIBRARY_PATH:-}" "$scratch/package/consumer"

libdir=$(ls -d "$scratch"/prefix/lib*/pkgconfig | head -n 1)
flags=$(PKG_CONFIG_PATH="$libdir" pkg-config --cflags --libs zkcommon)
c++ -std=c++17 "$source_dir/tests/package/consumer.cpp" -o "$scratch/pc-consumer" $flags
LD_LIBRARY_PATH="$scratch/prefix/lib:${LD_LIBRARY_PATH:-}" "$scratch/pc-consumer"

cmake -S "$source_dir/tests/package" -B "$scratch/subdirectory" -G Ninja \
    -DZK_CONSUMER_MODE=subdirectory -DZK_SOURCE_DIR="$source_dir" >/dev/null
cmake --build "$scratch/subdirectory" -j "$(nproc)" >/dev/null
"$scratch/subdirectory/consumer"
echo "package checks passed"
