#!/usr/bin/env bash
# Counter styles, number formats, Japanese numerals and the language and script of a text.
set -euo pipefail
run() {
    echo "\$ zk $*"
    "$ZK" "$@"
    echo
}

run counter lower-roman 1 4 3999 4000
run counter simp-chinese-informal 10 12 101 -5
run counter hebrew 15 5784
run counter japanese-formal 2024
run counter ethiopic-numeric 1 100 12345
run number 001 7 42 1234
run number 1 1234567 --group , 3
run number a 27 --lang it
run number I 1999
run number 甲子 1 60 61
run number "(١)" 2024
run kansuji simple "2024年11月25日"
run kansuji grouping "Tel 03-1234, 120000000"
run kansuji readable "価格 12,345.67 円"
run lang fre ger-DE zh-TW ja "abc日本"
echo "\$ zk counter no-such-style 1"
"$ZK" counter no-such-style 1 || echo "(exit status $?)"
