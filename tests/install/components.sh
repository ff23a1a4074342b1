#!/bin/sh
# Installs each component of a build by itself, and looks where each file went: components.sh CMAKE BUILD_DIR WORK_DIR
# LIB_DIR VERSION
set -eu
cmake=$1 buildDir=$2 workDir=$3 libDir=$4 version=$5
library=libvyn_connector_common.so

rm -rf "$workDir"
installed() {
    "$cmake" --install "$buildDir" --prefix "$workDir/$1" --component "$1" >/dev/null
    (cd "$workDir/$1" && find . ! -type d | LC_ALL=C sort)
}

runtime=$(installed runtime)
expected=$(printf './%s\n' "$libDir/$library.${version%%.*}" "$libDir/$library.$version")
if [ "$runtime" != "$expected" ]; then
    printf 'The runtime component is\n%s\nand not\n%s\n' "$runtime" "$expected" >&2
    exit 1
fi

development=$(installed development)
for file in "$libDir/$library" "$libDir/pkgconfig/vyn_connector_common.pc" \
    "$libDir/cmake/vyn_connector_common/vyn_connector_commonConfig.cmake" \
    include/vyn_connector_common/common/version.h include/vyn_connector_common/mur/exception.h; do
    echo "$development" | grep -Fx "./$file"
done
# The inspector, where the build has it.
if echo "$development" | grep -Fx ./bin/vyn-inspect; then
    for file in share/man/man1/vyn-inspect.1 share/bash-completion/completions/vyn-inspect; do
        echo "$development" | grep -Fx "./$file"
    done
fi
if echo "$development" | grep -F "$library."; then
    echo 'The development component holds the library itself.' >&2
    exit 1
fi
