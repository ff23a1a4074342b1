#!/bin/sh
# Builds and runs the consumer against an installed library, through its CMake package:
# consumer.sh CMAKE COMPILER SOURCE_DIR BUILD_DIR PREFIX
set -eu
cmake=$1 compiler=$2 sourceDir=$3 buildDir=$4 prefix=$5

rm -rf "$buildDir"
"$cmake" -S "$sourceDir" -B "$buildDir" -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_PREFIX_PATH="$prefix" \
    -DCMAKE_BUILD_TYPE=Release
"$cmake" --build "$buildDir" --parallel 2
for standard in 17 20; do
    "$buildDir/consumer_cxx$standard"
    # The prefix and not some other installation is what was linked.
    ldd "$buildDir/consumer_cxx$standard" | grep -F "$prefix/"
done
