// error: an entry's key and value are of two types
//
// Which of the two strings a row is about could not be told.
#include "sample.h"

#include <common/arena_size.h>
#include <common/kind/entries.h>

#include <unordered_map>

namespace vyn_connector {

using Alias = std::pair<std::string, std::string>;

struct Aliases {
    std::unordered_map<std::string, std::string> names;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Alias {
    zt_ptr_t name;
    zt_ptr_t other;
};

struct tq_vyn_connector_VynTypes_Aliases {
    tq_vyn_connector_VynTypes_Alias names[4];
};

namespace vyn_connector::common {

VYN_RECORD(Alias, Alias, 16, 4,
    VYN_FIELD_AS(0, 8, first,  name,  Text<16>),
    VYN_FIELD_AS(8, 8, second, other, Text<16>));

VYN_RECORD(Aliases, Aliases, 64, 4,
    VYN_FIELD(0, 64, names, Entries<4>));

std::size_t SizeOf(const Aliases& aliases)
{
    return ArenaSize(aliases, 0);
}

} // namespace vyn_connector::common
