#!/bin/sh
# Builds the library twice, from copies of the sources and in build directories whose paths have different lengths, with
# debugging information and without it. Both have to be the same to the last byte, and to hold neither path.
# Needs binutils; CXX names the compiler.
set -eu
cd "$(dirname "$0")/../.."

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
trap 'exit 1' HUP INT TERM
# Caches of compiled objects would answer with the same file for both.
export CCACHE_DISABLE=1
unset CMAKE_CXX_COMPILER_LAUNCHER

# build DIRECTORY FLAGS
build() {
    mkdir -p "$1/tree"
    cp -R CMakeLists.txt cmake lyr_ipc runtime "$1/tree"
    cmake -G Ninja -S "$1/tree" -B "$1/out" -D CMAKE_BUILD_TYPE=Release -D CMAKE_CXX_FLAGS="$2" >/dev/null
    cmake --build "$1/out" --target vyn_connector_common >/dev/null
}

for flags in "" -g; do
    short="$work/a$flags"
    long="$work/a folder with a longer name$flags/and one more"
    build "$short" "$flags"
    build "$long" "$flags"
    for built in "$short" "$long"; do
        library=$built/out/libvyn_connector_common.so
        strings -a "$library" >"$work/strings"
        if grep -F "$work" "$work/strings"; then
            echo "reproducible: the library holds the path where it was built" >&2
            exit 1
        fi
    done
    cmp "$short/out/libvyn_connector_common.so" "$long/out/libvyn_connector_common.so"
    printf 'the same bytes in two directories, built with "%s"\n' "$flags"
done
