#!/bin/sh
# The names that the shared library offers to programs are those of kalvio/exports.txt, one a line without the namespace
# that all share. A name that is gone breaks programs that were linked before; a new one belongs into the list.
#   sh tools/exports.sh LIBRARY            compares
#   sh tools/exports.sh --update LIBRARY   writes the list
set -eu
list=$(dirname "$0")/../kalvio/exports.txt

# Weak names (inline members, tables of types, instances of templates) come and go with the optimisation; what takes
# types of `detail` is nobody's to call.
names() {
    nm -D -C --defined-only "$1" | grep -E '^[0-9a-f]+ [TDBR] ' | cut -d ' ' -f 3- | grep -v 'detail::' |
        sed 's/Kalvio::Math:://g' | LC_ALL=C sort -u
}

if [ "$1" = --update ]; then
    names "$2" >"$list"
    exit
fi
foreign=$(nm -D --defined-only "$1" | grep -v 6Kalvio || true)
found=$(mktemp)
trap 'rm -f "$found"' EXIT
names "$1" >"$found"
gone=$(LC_ALL=C sort "$list" | LC_ALL=C comm -23 - "$found")
new=$(LC_ALL=C sort "$list" | LC_ALL=C comm -13 - "$found")
[ -z "$foreign" ] || printf 'exported, but not of this library:\n%s\n' "$foreign" >&2
[ -z "$gone" ] || printf 'gone, which breaks programs that were linked before:\n%s\n' "$gone" >&2
[ -z "$new" ] || printf 'not listed in kalvio/exports.txt:\n%s\n' "$new" >&2
[ -z "$foreign$gone$new" ] || {
    echo "where it is meant: sh tools/exports.sh --update $1, and a line in CHANGELOG.md for what is gone" >&2
    exit 1
}
