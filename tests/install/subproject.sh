#!/bin/sh
# Builds the consumer in a project that includes the library's tree, which brings neither tests nor installed files
# along unless it is asked to: subproject.sh CMAKE COMPILER SOURCE_DIR WORK_DIR BY
set -eu
cmake=$1 compiler=$2 sourceDir=$3 workDir=$4 by=$5

rm -rf "$workDir"
configure() {
    # The project has no tests, so it has no need of what they are made with.
    "$cmake" -S "$sourceDir/tests/install/subproject" -B "$workDir/build" -G Ninja -DCMAKE_CXX_COMPILER="$compiler" \
        -DLIBRARY_SOURCE_DIR="$sourceDir" -DBY="$by" -DCMAKE_DISABLE_FIND_PACKAGE_GTest=ON "$@"
}
installed() {
    "$cmake" --install "$workDir/build" --prefix "$workDir/$1" >/dev/null
    (cd "$workDir/$1" && find . ! -type d | LC_ALL=C sort)
}

configure
"$cmake" --build "$workDir/build" --parallel 2
for standard in 17 20; do
    "$workDir/build/consumer_cxx$standard"
done
(cd "$workDir/build" && ctest -N) | grep -F 'Total Tests: 0'
if [ "$(installed not_asked)" != ./bin/consumer_cxx17 ]; then
    echo 'The library adds to the installation of the project that includes it:' >&2
    installed not_asked >&2
    exit 1
fi

configure -DVYN_CONNECTOR_COMMON_INSTALL=ON >/dev/null
"$cmake" --build "$workDir/build" --parallel 2
installed asked | grep -F vyn_connector_commonConfig.cmake
