#!/usr/bin/env bash
# Installs the built library into a scratch prefix and builds the consumer
# project against it, once through the CMake package and once through
# pkg-config. Usage: run.sh BUILD_DIR SOURCE_DIR SCRATCH_DIR CXX CXX_FLAGS
set -euo pipefail
build=$1 consumer=$2 scratch=$3 cxx=$4 flags=$5

rm -rf "$scratch"
cmake --install "$build" --prefix "$scratch/prefix" >/dev/null

cmake -S "$consumer" -B "$scratch/cmake" -G Ninja -DCMAKE_PREFIX_PATH="$scratch/prefix" \
    -DCMAKE_CXX_COMPILER="$cxx" -DCMAKE_CXX_FLAGS="$flags" >/dev/null
cmake --build "$scratch/cmake" >/dev/null
"$scratch/cmake/consumer"

libdir=$(dirname "$(find "$scratch/prefix" -name zorv2-lbx.pc)")
export PKG_CONFIG_PATH="$libdir"
# shellcheck disable=SC2046,SC2086
"$cxx" -std=c++17 $flags "$consumer/main.cpp" $(pkg-config --cflags --libs zorv2-lbx) -o "$scratch/pkgconfig-consumer"
"$scratch/pkgconfig-consumer"

# Only the project folder is on a consumer's path: a bare class header such as
# Font.h is not found, and the library's internal layout header is not installed.
echo '#include "Font.h"' >"$scratch/flat.cpp"
if "$cxx" -std=c++17 -fsyntax-only $(pkg-config --cflags zorv2-lbx) "$scratch/flat.cpp" 2>/dev/null; then
    echo "a bare class header is on the consumer's include path" >&2
    exit 1
fi
if find "$scratch/prefix" -name PixelLayout.h | grep -q .; then
    echo "the internal PixelLayout.h was installed" >&2
    exit 1
fi
