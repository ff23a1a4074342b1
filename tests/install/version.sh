#!/bin/sh
# Asks an installed library's CMake package for versions: the same major number is given, up to the version that is
# there; others are refused, and the refusal says what there is: version.sh CMAKE SOURCE_DIR WORK_DIR PREFIX VERSION
set -eu
cmake=$1 sourceDir=$2 workDir=$3 prefix=$4 version=$5
major=${version%%.*}
rest=${version#*.}
minor=${rest%%.*}

# The headers and the package are of one version.
headers=$(find "$prefix" -path '*/common/version.h' -exec sed -n 's/^#define .*_VERSION_[A-Z]* \([0-9]\)/\1/p' {} + | paste -sd.)
test "$headers" = "$version"

rm -rf "$workDir"
ask() {
    "$cmake" -S "$sourceDir" -B "$workDir" -Uvyn_connector_common_DIR -DCMAKE_PREFIX_PATH="$prefix" -DVERSION="$1" 2>&1
}

for asked in "$major" "$major.0" "$major.$minor" "$version"; do
    said=$(ask "$asked") || {
        echo "Version $asked is refused: $said" >&2
        exit 1
    }
    echo "$said" | grep -F "found version $version"
done

for asked in "$((major + 1))" "$((major + 1)).$minor" "$major.$((minor + 1))"; do
    if said=$(ask "$asked"); then
        echo "Version $asked is given: $said" >&2
        exit 1
    fi
    said=$(echo "$said" | tr -s ' \n' ' ')
    echo "$said" | grep -F "compatible with requested version \"$asked\"" >/dev/null
    echo "$said" | grep -F "vyn_connector_commonConfig.cmake, version: $version" >/dev/null
    echo "refused version $asked"
done
