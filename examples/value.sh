#!/usr/bin/env bash
# Property values: a list with units and a compound as the value parser types them, and colours
# in every model (keyword, hex with alpha, spot colour with tint, CMYK beside RGB).
set -euo pipefail
: "${ZK:?set ZK to the zk program}"
run() {
    echo "\$ zk $*"
    "$ZK" "$@"
    echo
}

run value --css '1e3px -zk-page /* note */ 50% "Minion Pro"'
run value '{size: 12pt; face: Times serif; .: normal}'
run color ThreeDFace
run color '#3366cc80'
run color "rgb-icc(0, 84, 166, #SEPARATION, 'PANTONE 300 C', 0.5)"
run color 'rgb-icc(35, 31, 32, #CMYK, 0, 0, 0, 1)'
echo "\$ zk color nosuchcolour"
"$ZK" color nosuchcolour || echo "(exit status $?)"
