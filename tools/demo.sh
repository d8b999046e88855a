#!/bin/sh
# Sets the machine up, builds the alignment example and runs it on the sample road. The picture and the tables go to
# build/demo/. Arguments replace the sample: sh tools/demo.sh FILE.xml --step 10
set -eu
caller=$PWD
cd "$(dirname "$0")/.."
sh tools/bootstrap.sh
cmake --preset release
cmake --build --preset release --target alignment
mkdir -p build/demo

root=$PWD
out=$root/build/demo
if [ $# -eq 0 ]; then
    set -- "$root/examples/data/alignment.xml" --step 20
else
    cd "$caller"
fi
"$root/build/release/examples/alignment/alignment" "$@" --svg "$out/alignment.svg" --csv "$out/alignment.csv" \
    >"$out/alignment.txt"
cat "$out/alignment.txt"
echo "demo: the picture is $out/alignment.svg, the stations are $out/alignment.csv, the report is $out/alignment.txt"
