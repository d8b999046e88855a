#!/bin/sh
# Runs our benchmarks and those of the peers that are installed in turn, round after round, and writes the medians to
# docs/benchmarks.md, some rows to README.md. Takes some minutes; the machine should do nothing else. Options go to cmake.
set -eu
cd "$(dirname "$0")/.."
build=build/bench
rounds=${ROUNDS:-4}
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Work | asked ratio | sizes, put in for % | ours | peers. A benchmark is PROGRAM:NAME, the time of NAME*N is that of
# one of N things.
cat >"$work/rows" <<'END'
convex hull, points of a disc|2|1000 10000 100000 1000000|peers/cgal_peers:BM_ConvexHull<Disc>/points:%|peers/cgal_peers:BM_CgalConvexHull<Disc>/points:%
convex hull, square|2|1000 10000 100000 1000000|peers/cgal_peers:BM_ConvexHull<SpreadPoints>/points:%|peers/cgal_peers:BM_CgalConvexHull<SpreadPoints>/points:%
convex hull, coast|2|1000 10000 100000 1000000|peers/cgal_peers:BM_ConvexHull<ShoreRing>/points:%|peers/cgal_peers:BM_CgalConvexHull<ShoreRing>/points:%
convex hull, circle|1|1000 10000 100000 1000000|peers/cgal_peers:BM_ConvexHull<Circle>/points:%|peers/cgal_peers:BM_CgalConvexHull<Circle>/points:%
nearest point on a rough line string, asked again and again|1|1000 10000 100000 1000000|peers/nearest_peers:BM_Nearest<Rough>/segments:%|peers/nearest_peers:BM_BoostNearest<Rough>/segments:% peers/nearest_peers:BM_CgalNearest<Rough>/segments:%
nearest point on a coast|1|1000 10000 100000 1000000|peers/nearest_peers:BM_Nearest<Shore>/segments:%|peers/nearest_peers:BM_BoostNearest<Shore>/segments:% peers/nearest_peers:BM_CgalNearest<Shore>/segments:%
nearest point on a polyline of lines|1|1000 10000 100000 1000000|peers/nearest_peers:BM_NearestOnPolyline<Shore>/segments:%|peers/nearest_peers:BM_BoostNearest<Shore>/segments:% peers/nearest_peers:BM_CgalNearest<Shore>/segments:%
asked once, beside our own scan|0.83|1000 10000 100000 1000000|peers/nearest_peers:BM_NearestOnce<Shore>/segments:%|peers/nearest_peers:BM_NearestScan<Shore>/segments:%
R-tree, window of 10|1|1000000|peers/spatial_index_peers:RTree/window/items:%/clustered:0/hits:10|peers/spatial_index_peers:BoostRStar16/window/items:%/clustered:0/hits:10 peers/spatial_index_peers:GeosStr/window/items:%/clustered:0/hits:10
R-tree, window of 1000|1|1000000|peers/spatial_index_peers:RTree/window/items:%/clustered:0/hits:1000|peers/spatial_index_peers:BoostRStar16/window/items:%/clustered:0/hits:1000 peers/spatial_index_peers:GeosStr/window/items:%/clustered:0/hits:1000
R-tree, point|1|1000000|peers/spatial_index_peers:RTree/point/items:%/clustered:0|peers/spatial_index_peers:BoostRStar16/point/items:%/clustered:0 peers/spatial_index_peers:GeosStr/point/items:%/clustered:0
R*-tree, window of 10|1|1000000|peers/spatial_index_peers:RStarTree/window/items:%/clustered:0/hits:10|peers/spatial_index_peers:BoostRStar16/window/items:%/clustered:0/hits:10 peers/spatial_index_peers:GeosStr/window/items:%/clustered:0/hits:10
R*-tree, window of 1000|1|1000000|peers/spatial_index_peers:RStarTree/window/items:%/clustered:0/hits:1000|peers/spatial_index_peers:BoostRStar16/window/items:%/clustered:0/hits:1000 peers/spatial_index_peers:GeosStr/window/items:%/clustered:0/hits:1000
R*-tree, point|1|1000000|peers/spatial_index_peers:RStarTree/point/items:%/clustered:0|peers/spatial_index_peers:BoostRStar16/point/items:%/clustered:0 peers/spatial_index_peers:GeosStr/point/items:%/clustered:0
R*-tree filled at once, window of 10|1.5|1000000|peers/spatial_index_peers:RStarTreeAtOnce/window/items:%/clustered:0/hits:10|peers/spatial_index_peers:BoostRStar16/window/items:%/clustered:0/hits:10 peers/spatial_index_peers:GeosStr/window/items:%/clustered:0/hits:10
R*-tree, window of 1000, beside Boost|2.5|100000|peers/spatial_index_peers:RStarTree/window/items:%/clustered:0/hits:1000|peers/spatial_index_peers:BoostRStar64/window/items:%/clustered:0/hits:1000
R*-tree, window of 1000, beside GEOS|1.5|100000|peers/spatial_index_peers:RStarTree/window/items:%/clustered:0/hits:1000|peers/spatial_index_peers:GeosStr/window/items:%/clustered:0/hits:1000
quadtree, window of 10|3|100000|peers/spatial_index_peers:QuadTree/window/items:%/clustered:0/hits:10|peers/spatial_index_peers:GeosQuadtree/window/items:%/clustered:0/hits:10
quadtree, window of 1000|3|100000|peers/spatial_index_peers:QuadTree/window/items:%/clustered:0/hits:1000|peers/spatial_index_peers:GeosQuadtree/window/items:%/clustered:0/hits:1000
R*-tree filled at once|1|10000 100000 1000000|peers/spatial_index_peers:RStarTreeAtOnce/load/items:%/clustered:0/manual_time|peers/spatial_index_peers:BoostPacked16/load/items:%/clustered:0/manual_time peers/spatial_index_peers:GeosStr/load/items:%/clustered:0/manual_time
R-tree filled at once|1|10000 100000 1000000|peers/spatial_index_peers:RTreeAtOnce/load/items:%/clustered:0/manual_time|peers/spatial_index_peers:BoostPacked16/load/items:%/clustered:0/manual_time peers/spatial_index_peers:GeosStr/load/items:%/clustered:0/manual_time
quadtree filled at once|1|10000 100000 1000000|peers/spatial_index_peers:QuadTreeAtOnce/load/items:%/clustered:0/manual_time|peers/spatial_index_peers:BoostPacked16/load/items:%/clustered:0/manual_time peers/spatial_index_peers:GeosStr/load/items:%/clustered:0/manual_time
quadtree filled one by one|1|1000 10000 100000 1000000|peers/spatial_index_peers:QuadTree/insert/items:%/clustered:0/manual_time|peers/spatial_index_peers:GeosQuadtree/insert/items:%/clustered:0/manual_time
R*-tree, 10 nearest|1.5|10000 100000|peers/spatial_index_peers:RStarTree/nearest/items:%/clustered:0/hits:10|peers/spatial_index_peers:BoostRStar16/nearest/items:%/clustered:0/hits:10
R-tree, 10 nearest|1.5|10000 100000|peers/spatial_index_peers:RTree/nearest/items:%/clustered:0/hits:10|peers/spatial_index_peers:BoostRStar16/nearest/items:%/clustered:0/hits:10
quadtree, 10 nearest|1.5|10000 100000|peers/spatial_index_peers:QuadTree/nearest/items:%/clustered:0/hits:10|peers/spatial_index_peers:BoostRStar16/nearest/items:%/clustered:0/hits:10
R*-tree, half removed|1|10000 100000|peers/spatial_index_peers:RStarTree/removeHalf/items:%/clustered:0/manual_time|peers/spatial_index_peers:BoostQuadratic8/removeHalf/items:%/clustered:0/manual_time peers/spatial_index_peers:BoostRStar16/removeHalf/items:%/clustered:0/manual_time
R-tree, half removed|1|10000 100000|peers/spatial_index_peers:RTree/removeHalf/items:%/clustered:0/manual_time|peers/spatial_index_peers:BoostQuadratic8/removeHalf/items:%/clustered:0/manual_time peers/spatial_index_peers:BoostRStar16/removeHalf/items:%/clustered:0/manual_time
quadtree, half removed|1|10000 100000|peers/spatial_index_peers:QuadTree/removeHalf/items:%/clustered:0/manual_time|peers/spatial_index_peers:BoostQuadratic8/removeHalf/items:%/clustered:0/manual_time peers/spatial_index_peers:BoostRStar16/removeHalf/items:%/clustered:0/manual_time
inverse of a matrix of 4 rows|2|4|core/core_benchmarks:BM_MatrixNMGetInverse/rows:%|peers/eigen_peers:BM_EigenInverse/rows:%
inverse, 6 and 8 rows|0.6|6 8|core/core_benchmarks:BM_MatrixNMGetInverse/rows:%|peers/eigen_peers:BM_EigenInverse/rows:%
inverse, more rows|1|10 12 16 32 64 128|core/core_benchmarks:BM_MatrixNMGetInverse/rows:%|peers/eigen_peers:BM_EigenInverse/rows:%
ordinary kriging, samples|1|4 8 16 64|statistics/statistics_benchmarks:BM_OrdinaryKrigingInterpolate/samples:%*10000|peers/eigen_peers:BM_EigenKrigingSolve/samples:%*100
preparing a point-in-polygon test, vertices|1|1000 10000 100000|polygons/polygons_benchmarks:BM_PointInPolygonBuild/vertices:%|peers/geos_peers:BM_GeosLocatorBuild/vertices:%
points in a polygon, away from the border|1|1000 10000 100000|polygons/polygons_benchmarks:BM_PointInPolygonSpread/vertices:%|peers/geos_peers:BM_GeosLocatorSpread/vertices:%
points in a polygon, beside the border|1|1000 10000 100000|polygons/polygons_benchmarks:BM_PointInPolygonBeside/vertices:%|peers/geos_peers:BM_GeosLocatorBeside/vertices:%
self-crossings of a coast|5|100 1000 10000 100000|peers/boost_border_peers:BM_SelfCrossing/points:%|peers/boost_border_peers:BM_BoostSelfCrossing/points:%
crossings of two line strings|5|100 10000|peers/boost_border_peers:BM_Crossings/segments:%|peers/boost_border_peers:BM_BoostCrossings/segments:%
crossings of the borders of two polygons|5|1000 10000 100000|queries/queries_benchmarks:BM_PolygonPolygon/vertices:%|peers/boost_polygon_peers:BM_BoostBorders/vertices:% peers/geos_chain_peers:BM_GeosBorders/vertices:%
area of a ring|1|100 1000|peers/boost_border_peers:BM_Area/vertices:%|peers/boost_border_peers:BM_BoostArea/vertices:%
centroid of a ring|1|100 1000|peers/boost_border_peers:BM_Centroid/vertices:%|peers/boost_border_peers:BM_BoostCentroid/vertices:%
clothoid, one of many samples; a hand-written loop|0.67|100|curves/curves_benchmarks:BM_ClothoidMakePointsAndTangents/samples:%*100|curves/curves_benchmarks:BM_HandWrittenSeries
common area of two coasts, beside GEOS|3|100 1000 10000 100000 1000000|areas/areas_benchmarks:BM_ShoresIntersection/vertices:%|peers/geos_chain_peers:BM_GeosShoresIntersection/vertices:%
common area of two coasts, beside the fastest|1.5|100 1000 10000 100000 1000000|areas/areas_benchmarks:BM_ShoresIntersection/vertices:%|peers/geos_chain_peers:BM_GeosShoresIntersection/vertices:% peers/clipper_peers:BM_ClipperShoresIntersection/vertices:% peers/boost_polygon_peers:BM_BoostShoresIntersection/vertices:%
common area of two combs, teeth, beside GEOS|3|30 300|areas/areas_benchmarks:BM_CombsIntersection/teeth:%|peers/geos_chain_peers:BM_GeosCombsIntersection/teeth:%
common area of two combs, teeth, beside the fastest|1.5|30 300|areas/areas_benchmarks:BM_CombsIntersection/teeth:%|peers/geos_chain_peers:BM_GeosCombsIntersection/teeth:% peers/clipper_peers:BM_ClipperCombsIntersection/teeth:% peers/boost_polygon_peers:BM_BoostCombsIntersection/teeth:%
union of parcels, to a side|3|10 100|areas/areas_benchmarks:BM_ParcelsUnion/side:%|peers/geos_chain_peers:BM_GeosParcelsUnion/side:%
union of discs|20|100 1000|areas/areas_benchmarks:BM_DiscsUnion/discs:%|peers/cgal_peers:BM_CgalDiscsUnion/discs:%
buffer of a coast, 20 m|3|1000 10000|areas/areas_benchmarks:BM_ShoreBuffer/vertices:%/distance:20|peers/geos_chain_peers:BM_GeosShoreBuffer/vertices:%/distance:20
triangulation of spread points|1.3|10000 100000 1000000|peers/cgal_peers:BM_BuildSurface<false>/points:%|peers/cgal_peers:BM_CgalConstrainedDelaunay<false>/points:% peers/surface_peers:BM_GtsDelaunay/points:%
the same with breaklines|1.3|10000 1000000|peers/cgal_peers:BM_BuildSurface<true>/points:%|peers/cgal_peers:BM_CgalConstrainedDelaunay<true>/points:%
height of spread places, triangles of the surface|1|10000 1000000|peers/surface_peers:BM_Height<Ours>/triangles:%|peers/surface_peers:BM_Height<Cgal>/triangles:% peers/surface_peers:BM_Height<Gts>/triangles:%
height of places along lines, each from the triangle before|1|10000 1000000|peers/surface_peers:BM_NextHeight<Ours>/triangles:%|peers/surface_peers:BM_NextHeight<Cgal>/triangles:% peers/surface_peers:BM_NextHeight<Gts>/triangles:%
heights of 65536 spread places at once, for each|1|10000 1000000|peers/surface_peers:BM_Heights<Ours>/triangles:%*65536|peers/surface_peers:BM_Heights<Cgal>/triangles:%*65536
foot on a spiral; on our clothoid|0.5|1|queries/queries_benchmarks:BM_FootOnSpiral|queries/queries_benchmarks:BM_FootOnClothoid
END

cmake --preset bench -DKALVIO_WARNINGS_AS_ERRORS=OFF "$@" >"$work/log"
cmake --build "$build" >>"$work/log" || { tail -20 "$work/log" >&2 && exit 1; }

# One line for each row and program with all that is asked of it: rows have processes of their own, since what others
# left of the memory counts.
awk -F'|' '{
    asks = split($4 " " $5, ask, " "); sizes = split($3, size, " ")
    split("", filter)
    for (a = 1; a <= asks; ++a) for (s = 1; s <= sizes; ++s) {
        text = ask[a]; gsub(/%/, size[s], text); sub(/\*.*/, "", text)
        colon = index(text, ":"); program = substr(text, 1, colon - 1)
        filter[program] = filter[program] (program in filter ? "|" : "") substr(text, colon + 1)
    }
    for (program in filter) print NR, program, "^(" filter[program] ")$"
}' "$work/rows" >"$work/programs"

round=0
while [ "$round" -lt "$rounds" ]; do
    while read -r row program filter; do
        [ -x "$build/benchmarks/$program" ] || continue
        "$build/benchmarks/$program" --benchmark_filter="$filter" --benchmark_min_time=0.03 --benchmark_format=json \
            2>/dev/null | awk -F'"' -v program="$row|$program" '
                /"name":/ { name = $4 }
                /"(real|cpu)_time":/ { sub(/^: /, "", $3); time[$2] = $3 + 0 }
                /"time_unit":/ {
                    unit = $4 == "us" ? 1e3 : $4 == "ms" ? 1e6 : $4 == "s" ? 1e9 : 1
                    print program ":" name "|" time[name ~ /manual_time$/ ? "real_time" : "cpu_time"] * unit
                }' >>"$work/times"
    done <"$work/programs"
    round=$((round + 1))
done

version() {  # HEADER MACRO...: the values of macros, joined by dots; nothing where the header is not there
    header=$1
    shift
    for macro in "$@"; do
        printf '#include <%s>\n%s\n' "$header" "$macro" | c++ -E -x c++ -I/usr/include/eigen3 - 2>/dev/null |
            tail -1 | tr -d '"' | grep '^[0-9]' || true
    done | paste -sd. -
}
{
    echo "# Beside the peers"
    echo
    echo "Written by \`tools/peers.sh\`: medians of $rounds rounds, in each of which every row ran once, in a"
    echo "process of its own. A ratio is the time of the best peer by ours in the same round, the median of all rounds:"
    echo "above 1 is ahead; it is marked where less than asked. Growth is the largest exponent p of n^p between two sizes."
    echo "Compare the columns, not the times."
    echo
    echo "$(date +%F); $(c++ --version | head -1), $(nproc) processors; Boost $(version boost/version.hpp BOOST_LIB_VERSION),"
    echo "GEOS $(version geos/version.h GEOS_VERSION), CGAL $(version CGAL/version.h CGAL_VERSION)," \
        "Eigen $(version Eigen/src/Core/util/Macros.h EIGEN_WORLD_VERSION EIGEN_MAJOR_VERSION EIGEN_MINOR_VERSION)."
    echo
    echo "| Work | Size | Here | Best peer | Ratio | Asked | Growth |"
    echo "|---|---|---|---|---|---|---|"
    awk -F'|' '
        function median(of,    n, i, j, t, v) {
            n = split(of, v, " ")
            if (n == 0) return 0
            for (i = 2; i <= n; ++i) for (j = i; j > 1 && v[j] + 0 < v[j - 1] + 0; --j) { t = v[j]; v[j] = v[j - 1]; v[j - 1] = t }
            return n % 2 ? v[(n + 1) / 2] + 0 : (v[n / 2] + v[n / 2 + 1]) / 2
        }
        function timesOf(text, size,    star, of, n, i, v, all) {
            gsub(/%/, size, text)
            star = index(text, "*"); of = 1
            if (star) { of = substr(text, star + 1); text = substr(text, 1, star - 1) }
            n = split(times[FNR "|" text], v, " ")
            for (i = 1; i <= n; ++i) all = all " " v[i] / of
            return all
        }
        function leastOf(all, others,    n, m, i, v, w, least) {  # round by round
            n = split(all, v, " "); m = split(others, w, " ")
            for (i = 1; i <= n || i <= m; ++i) least = least " " (i > m || (i <= n && v[i] + 0 < w[i] + 0) ? v[i] : w[i])
            return least
        }
        function ratiosOf(all, our,    n, m, i, v, w, ratios) {
            n = split(all, v, " "); m = split(our, w, " ")
            for (i = 1; i <= n && i <= m; ++i) ratios = ratios " " v[i] / w[i]
            return ratios
        }
        function shown(ns) {
            return ns < 1e3 ? sprintf("%.3g ns", ns) : ns < 1e6 ? sprintf("%.3g us", ns / 1e3) : ns < 1e9 ? sprintf("%.3g ms", ns / 1e6) : sprintf("%.3g s", ns / 1e9)
        }
        FILENAME == ARGV[1] {
            times[$1 "|" $2] = times[$1 "|" $2] " " $3
            next
        }
        {
            sizes = split($3, size, " "); peers = split($5, peer, " "); growth = ""
            for (s = 1; s <= sizes; ++s) {
                our[s] = median(timesOf($4, size[s]))
                if (our[s] == 0) continue
                if (s > 1 && our[s - 1] > 0) {
                    p = log(our[s] / our[s - 1]) / log(size[s] / size[s - 1])
                    if (growth == "" || p > growth) growth = p
                }
            }
            for (s = 1; s <= sizes; ++s) {
                best = 0; least = ""
                for (k = 1; k <= peers; ++k) {
                    all = timesOf(peer[k], size[s]); t = median(all); least = leastOf(all, least)
                    if (t > 0 && (best == 0 || t < best)) { best = t; name = peer[k] }
                }
                if (our[s] == 0 || best == 0) continue
                sub(/^[^:]*:/, "", name); sub(/\/.*/, "", name); sub(/^BM_/, "", name)
                ratio = median(ratiosOf(least, timesOf($4, size[s])))
                printf "| %s | %s | %s | %s, %s | %s | %s | %s |\n", s == 1 ? $1 : "", sizes == 1 && size[1] == 1 ? "" : size[s], shown(our[s]), shown(best), name, ratio < $2 ? sprintf("**%.2f**", ratio) : sprintf("%.2f", ratio), $2, s == sizes && growth != "" ? sprintf("%.2f", growth) : ""
            }
        }' "$work/times" "$work/rows"
} >"$work/benchmarks.md"
mv "$work/benchmarks.md" docs/benchmarks.md

# The README quotes some rows, winning and losing ones.
cat >"$work/quoted" <<'END'
convex hull, points of a disc|1000000
nearest point on a coast|1000000
R-tree, window of 1000|1000000
R*-tree, window of 10|1000000
quadtree filled one by one|10000
inverse, more rows|64
points in a polygon, beside the border|100000
self-crossings of a coast|100000
crossings of the borders of two polygons|100000
area of a ring|100
common area of two coasts, beside the fastest|10000
triangulation of spread points|1000000
END
awk -F' *[|] *' '
    FILENAME == ARGV[1] { split($0, of, "|"); quoted[of[1] "|" of[2]] = 1; next }
    FILENAME == ARGV[2] {
        if ($2 != "" && $3 != "Size") work = $2
        if ((work "|" $3) in quoted) rows = rows sprintf("| %s, %s | %s | %s | %s |\n", work, $3, $4, $5, $6)
        next
    }
    /^\| Work/ { printf "| Work, size | Here | Best peer | Ratio |\n|---|---|---|---|\n%s", rows; isTable = 1; next }
    isTable && /^\|/ { next }
    { isTable = 0; print }' "$work/quoted" docs/benchmarks.md README.md >"$work/README.md"
mv "$work/README.md" README.md
echo "docs/benchmarks.md: $(grep -c '^| ' docs/benchmarks.md) rows, $(grep -c '\*\*' docs/benchmarks.md || true) less than asked"
