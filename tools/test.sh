#!/bin/sh
# Sets the machine up, builds the library and runs all its tests, the strangers' projects included.
set -eu
cd "$(dirname "$0")/.."
sh tools/bootstrap.sh
cmake --preset dev
cmake --build --preset dev
ctest --test-dir build/dev --output-on-failure --no-tests=error -j "$(getconf _NPROCESSORS_ONLN)"
