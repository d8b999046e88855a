#!/bin/sh
# Builds the pages of docs/Doxyfile into build/docs/html. A warning is a failure; so is a link or picture that leads
# nowhere, or a public record, member of one or code without a word about it.
set -eu
cd "$(dirname "$0")/.."
rm -rf build/docs
mkdir -p build
for folder in kalvio/*/; do
    name=$(basename "$folder")
    grep -q "@defgroup $name " docs/topics.dox || { echo "docs/topics.dox has no topic for $folder" >&2; exit 1; }
done
doxygen docs/Doxyfile

# Records, their members and codes say what they mean; functions whose names say it may go without.
{
    cat docs/Doxyfile
    echo "EXTRACT_ALL = NO"
    echo "WARN_IF_UNDOCUMENTED = YES"
    echo "WARN_AS_ERROR = NO"
    echo "GENERATE_HTML = NO"
    echo "GENERATE_TAGFILE = build/docs/tags"
} | doxygen - 2>&1 | grep -E '(variable|enumvalue|enumeration|typedef)\) of|Compound' | grep -v 'Math::.*detail::' \
    >build/docs/undocumented.txt || true
if [ -s build/docs/undocumented.txt ]; then
    cat build/docs/undocumented.txt >&2
    exit 1
fi

cd build/docs/html
grep -ohE ' (href|src|data)="[^"#?]+' -- *.html | sed 's/[^"]*"//' | grep -vE '^(https?|javascript):' | sort -u |
    while read -r target; do
        [ -e "$target" ] || echo "$target"
    done >../missing.txt
# Places: page#place, or #place on the same page; of the written pages, as doxygen makes up a few of its own.
for page in *.html; do
    grep -oE '(id|name)="[^"]+"' "$page" | sed "s/^[a-z]*=\"\(.*\)\"/$page#\1/"
done | sort -u >../anchors.txt
for page in index.html md_*.html group__*.html; do
    grep -oE 'href="[^":?]*#[^"]+"' "$page" | sed "s/^href=\"//; s/\"$//; s/^#/$page#/"
done | sort -u | comm -23 - ../anchors.txt | grep -v '^javascript' >>../missing.txt || true
if [ -s ../missing.txt ]; then
    echo "docs: linked, but not there:" >&2
    cat ../missing.txt >&2
    exit 1
fi
echo "docs: $(ls -- *.html | wc -l) pages in build/docs/html"
