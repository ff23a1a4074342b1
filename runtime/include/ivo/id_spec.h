// What an item id may not contain: whoever makes or checks ids reads it, nobody changes it.
#pragma once

#include <cstdint>
#include <string>

namespace ivo {

struct IdSpec {
    std::string characters; // each character by itself
    std::uint32_t field2 = 0xFFFF;
};

} // namespace ivo
