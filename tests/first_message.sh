#!/bin/sh
# Runs the first example and compares what it prints: first_message.sh PROGRAM
set -eu

printed=$("$1")
expected='wire structure: 16 bytes, password at offset 8, size 6
arena: 14 bytes: 6f 70 65 72 61 74 6f 72 73 65 63 72 65 74
decoded: user "operator", equal
refused: zt string: zt_arena does not contain an element with the address 4000000000'

if [ "$printed" != "$expected" ]; then
    printf 'printed:\n%s\nexpected:\n%s\n' "$printed" "$expected" >&2
    exit 1
fi
