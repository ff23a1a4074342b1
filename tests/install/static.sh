#!/bin/sh
# Builds the library as a static one, installs it, and builds and runs the consumer with it, through the CMake package
# and through pkg-config: static.sh CMAKE PKG_CONFIG COMPILER SOURCE_DIR WORK_DIR LIB_DIR NM
set -eu
cmake=$1 pkgConfig=$2 compiler=$3 sourceDir=$4 workDir=$5 libDir=$6 nm=$7
prefix=$workDir/prefix
consumer=$sourceDir/tests/install/consumer

rm -rf "$workDir"
"$cmake" -S "$sourceDir" -B "$workDir/library" -DBUILD_SHARED_LIBS=OFF -DCMAKE_BUILD_TYPE=Debug \
    -DCMAKE_INSTALL_LIBDIR="$libDir" \
    -DCMAKE_CXX_COMPILER="$compiler"
"$cmake" --build "$workDir/library" --parallel 2
"$cmake" --install "$workDir/library" --prefix "$prefix"

archive=$prefix/$libDir/libvyn_connector_common.a
test -f "$archive"
if ls "$prefix/$libDir"/*.so* 2>/dev/null; then
    echo 'A static build has installed a shared library.' >&2
    exit 1
fi

# What the shared library exports, the static one has.
"$nm" --demangle --defined-only "$archive" | sed -n 's/^[0-9a-f]* [A-Za-z] //p' | LC_ALL=C sort -u >"$workDir/defined"
LC_ALL=C sort -u "$sourceDir/tests/exported_symbols.txt" >"$workDir/exported"
test -s "$workDir/exported"
LC_ALL=C comm -13 "$workDir/defined" "$workDir/exported" >"$workDir/missing"
if [ -s "$workDir/missing" ]; then
    echo 'The static library lacks these names:' >&2
    cat "$workDir/missing" >&2
    exit 1
fi

"$cmake" -S "$consumer" -B "$workDir/consumer" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_BUILD_TYPE=Debug
"$cmake" --build "$workDir/consumer" --parallel 2

export PKG_CONFIG_PATH="$prefix/$libDir/pkgconfig"
# shellcheck disable=SC2046 # pkg-config prints words
"$compiler" -std=c++17 "$consumer/consumer.cpp" -o "$workDir/consumer/by_pkg_config" \
    $("$pkgConfig" --cflags --libs vyn_connector_common)

for program in consumer_cxx17 consumer_cxx20 by_pkg_config; do
    "$workDir/consumer/$program"
    if ldd "$workDir/consumer/$program" | grep vyn_connector_common; then
        echo "$program needs the shared library." >&2
        exit 1
    fi
done
