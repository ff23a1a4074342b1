#!/bin/sh
# Shows that scripts/abi finds what it is there for: in a copy of the sources it breaks the binary interface in one
# place at a time, and each time the comparison has to fail and to name that place.
set -eu
cd "$(dirname "$0")/../.."

copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
trap 'exit 1' HUP INT TERM
cp -R CMakeLists.txt CMakePresets.json cmake scripts lyr_ipc runtime abi "$copy"
# Layouts and names do not depend on it, and it compiles in a third of the time.
sed -i 's/"CMAKE_CXX_FLAGS": "-g"/"CMAKE_CXX_FLAGS": "-g", "CMAKE_CXX_FLAGS_RELEASE": "-O1"/' "$copy/CMakePresets.json"

fail() {
    cat "$copy/output"
    printf 'abi test: %s\n' "$1" >&2
    exit 1
}

compare() {
    "$copy/scripts/abi" >"$copy/output" 2>&1
}

# expectFailure WHAT FILE EDIT NAMED: with the sed script EDIT applied to FILE, a line of the output matches NAMED.
expectFailure() {
    cp "$copy/$2" "$copy/original"
    sed -i "$3" "$copy/$2"
    ! cmp -s "$copy/$2" "$copy/original" || fail "$1: nothing to change in $2"
    ! compare || fail "$1 is not noticed"
    ! grep -q '^step failed: abi: build' "$copy/output" || fail "$1 does not compile"
    grep -q "$4" "$copy/output" || fail "$1 is not named"
    cp "$copy/original" "$copy/$2"
    printf 'noticed: %s\n' "$1"
}

compare || fail 'the unchanged sources differ from abi/'
expectFailure 'fields in another order' lyr_ipc/source/common/include/common/file_transfer.h \
    '/^    wem::types::Timestamp timestamp;/{N;s/\(.*\)\n\(.*\)/\2\n\1/}' 'timestamp.*offset changed from'
expectFailure 'a field of another type' lyr_ipc/source/common/include/common/event.h \
    's/std::uint32_t field8/std::int32_t field8/' "of 'vyn_connector::VynEvent::field8' changed"
expectFailure 'a removed instantiation' lyr_ipc/source/common/source/subscriptions.cpp \
    '/^template std::unordered_set/,/;/d' '\[D\] .*ZtToSet<zt_ptr_t'
expectFailure 'virtual functions in another order' runtime/include/mur/exception.h \
    '/^    virtual types::wide_string Text() const;/{h;d};/^    virtual Exception\* Clone() const = 0;/G' \
    'Text() const changed from 3 to 5'
