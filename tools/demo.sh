#!/bin/sh
# Sets the machine up, builds the alignment example and runs it on the sample road, then the terrain example on the sample
# hill. The pictures and the tables go to build/demo/. Arguments replace the road, without the hill:
# sh tools/demo.sh FILE.xml --step 10
set -eu
caller=$PWD
cd "$(dirname "$0")/.."
sh tools/bootstrap.sh
cmake --preset release -DKALVIO_BUILD_EXAMPLES=ON
cmake --build --preset release --target alignment terrain
mkdir -p build/demo

root=$PWD
out=$root/build/demo
hill=
if [ $# -eq 0 ]; then
    hill=$root/examples/data/terrain
    set -- "$root/examples/data/alignment.xml" --step 20
else
    cd "$caller"
fi
"$root/build/release/examples/alignment/alignment" "$@" --svg "$out/alignment.svg" --csv "$out/alignment.csv" \
    >"$out/alignment.txt"
cat "$out/alignment.txt"
echo "demo: the picture is $out/alignment.svg, the stations are $out/alignment.csv, the report is $out/alignment.txt"

if [ -n "$hill" ]; then
    "$root/build/release/examples/terrain/terrain" "$hill.xml" --along "$hill.xml" --krige "${hill}_points.csv" --grid 10 \
        --svg "$out/terrain.svg" --csv "$out/terrain.csv" >"$out/terrain.txt"
    cat "$out/terrain.txt"
    echo "demo: the hill's picture is $out/terrain.svg, the long section is $out/terrain.csv, the report is $out/terrain.txt"
fi
