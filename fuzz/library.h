// The library's side of the comparison: the conversions of all records under one signature, with values as the model's.
#pragma once

#include "model/model.h"

#include <common/zt_arena.h>

#include <cstddef>
#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

namespace library {

// The bytes that operator new was asked for so far, in a program that counts them: see memory_limit.h.
inline std::uint64_t bytesAskedFor = 0;

// One record's conversions. Values come in and go out as the model's.
struct Conversions {
    const model::Layout* layout;

    model::Outcome (*read)(const std::string& wire, const zt_arena* arena);

    // `*written` becomes the value in the order in which it was written.
    model::Outcome (*write)(const model::Value& value, zt_arena* arena, model::Value* written);

    std::size_t (*arenaSize)(const model::Value& value, std::uintptr_t top);

    bool (*isCanonical)(const std::string& wire, const zt_arena* arena);

    friend void PrintTo(const Conversions& conversions, std::ostream* out) { *out << conversions.layout->name; }
};

// Every record's, in the order of their names.
const std::vector<Conversions>& Records();

} // namespace library
