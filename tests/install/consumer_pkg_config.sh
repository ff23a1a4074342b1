#!/bin/sh
# Builds and runs the consumer against an installed library, through its pkg-config file and the compiler alone:
# consumer_pkg_config.sh PKG_CONFIG COMPILER SOURCE BUILD_DIR PREFIX LIB_DIR VERSION
set -eu
pkgConfig=$1 compiler=$2 source=$3 buildDir=$4 prefix=$5 libDir=$6 version=$7

rm -rf "$buildDir"
mkdir -p "$buildDir"
export PKG_CONFIG_PATH="$prefix/$libDir/pkgconfig"
export LD_LIBRARY_PATH="$prefix/$libDir"

"$pkgConfig" --exact-version="$version" vyn_connector_common
for standard in 17 20; do
    # shellcheck disable=SC2046 # pkg-config prints words
    "$compiler" -std=c++$standard -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror "$source" \
        -o "$buildDir/consumer_cxx$standard" $("$pkgConfig" --cflags --libs vyn_connector_common)
    "$buildDir/consumer_cxx$standard"
    ldd "$buildDir/consumer_cxx$standard" | grep -F "$prefix/"
done

# The name that programs record to find the library again carries the major number.
soname=libvyn_connector_common.so.${version%%.*}
readelf -d "$buildDir/consumer_cxx17" | grep -F "(NEEDED)" | grep -F "[$soname]"
test -f "$prefix/$libDir/libvyn_connector_common.so.$version"
