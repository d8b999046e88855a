#!/bin/sh
# Installs what building, testing and the demo need and this machine lacks, with the system's package manager.
# Says what it does; does nothing where all is there. With CI=true the formatter of the format check and doxygen are
# wanted too.
set -eu

cmake_wanted="3.25"

say() { printf 'bootstrap: %s\n' "$*"; }
fail() {
    say "$*" >&2
    exit 1
}
have() { command -v "$1" >/dev/null 2>&1; }

if have apt-get; then
    manager=apt
elif have dnf; then
    manager=dnf
elif have pacman; then
    manager=pacman
elif have brew; then
    manager=brew
    CPATH="$(brew --prefix)/include${CPATH:+:$CPATH}"
    export CPATH
else
    manager=none
fi

compiles() { # header: the compiler finds it
    have c++ && printf '#include <%s>\n' "$1" | c++ -std=c++20 -E -x c++ - >/dev/null 2>&1
}

missing=""
packages=""
want() { # what, apt, dnf, pacman, brew: notes a missing thing and its package ("-": comes with another one)
    missing="$missing $1"
    case $manager in
        apt) name=$2 ;;
        dnf) name=$3 ;;
        pacman) name=$4 ;;
        brew) name=$5 ;;
        none) name=- ;;
    esac
    [ "$name" = - ] || packages="$packages $name"
}
look() { # sets `missing` and `packages`
    missing=""
    packages=""
    have c++ || want compiler g++ gcc-c++ gcc -
    have cmake || want cmake cmake cmake cmake cmake
    have ninja || want ninja ninja-build ninja-build ninja ninja
    have pkg-config || want pkg-config pkg-config pkgconf-pkg-config pkgconf pkg-config
    compiles gtest/gtest.h || want GoogleTest libgtest-dev gtest-devel gtest googletest
    compiles gmock/gmock.h || want GoogleMock libgmock-dev gmock-devel - -
    compiles benchmark/benchmark.h ||
        want Google-Benchmark libbenchmark-dev google-benchmark-devel benchmark google-benchmark
    compiles pugixml.hpp || want pugixml libpugixml-dev pugixml-devel pugixml pugixml
    compiles nlohmann/json.hpp || want nlohmann-json nlohmann-json3-dev json-devel nlohmann-json nlohmann-json
    if [ "$manager" = dnf ]; then # elsewhere they come with the compiler
        for name in libasan libubsan libtsan; do
            rpm -q --quiet "$name" || want "$name" - "$name" - -
        done
    fi
    if [ "${CI:-}" = true ]; then
        have doxygen || want doxygen doxygen doxygen doxygen doxygen
        have clang-format || want clang-format clang-format clang-tools-extra clang clang-format
    fi
}

as_root() {
    if [ "$(id -u)" -eq 0 ]; then
        "$@" </dev/null
    else
        have sudo || fail "not root and no sudo: run as root: $*"
        sudo "$@"
    fi
}

look
if [ -n "$missing" ]; then
    say "missing:$missing"
    [ "$manager" != none ] || fail "no package manager that this script knows: install them by hand"
    [ "$manager" != brew ] || have c++ || fail "install the compiler first: xcode-select --install"
    say "installing with $manager:$packages"
    # shellcheck disable=SC2086 # one word a package
    case $manager in
        apt)
            as_root apt-get -q update
            as_root env DEBIAN_FRONTEND=noninteractive apt-get -q install -y --no-install-recommends $packages
            ;;
        dnf) as_root dnf install -y $packages ;;
        pacman) as_root pacman -Sy --needed --noconfirm $packages ;;
        brew) brew install $packages </dev/null ;;
    esac
    look
    [ -z "$missing" ] || fail "still missing:$missing"
    say "done"
else
    say "all is there"
fi

found=$(cmake --version | sed -n '1s/[^0-9]*\([0-9.]*\).*/\1/p')
oldest=$(printf '%s\n%s\n' "$cmake_wanted" "$found" | sort -t. -k1,1n -k2,2n | head -n 1)
[ "$oldest" = "$cmake_wanted" ] || fail "cmake $found is too old, $cmake_wanted is needed"
