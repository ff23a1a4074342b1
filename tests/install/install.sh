#!/bin/sh
# Installs a build into a prefix and then moves the whole prefix, so that the tests after this one find out if
# anything in it names the place where it was installed first: install.sh CMAKE BUILD_DIR CONFIG PREFIX
set -eu
cmake=$1 buildDir=$2 config=$3 prefix=$4

rm -rf "$prefix" "$prefix.first"
"$cmake" --install "$buildDir" --config "$config" --prefix "$prefix.first"
mv "$prefix.first" "$prefix"

# Nothing in headers and packaging may lead back to where the library was built or first installed.
if grep -rlIF -e "$buildDir" -e "$prefix.first" "$prefix"; then
    echo 'These installed files name the build directory or the first prefix.' >&2
    exit 1
fi
