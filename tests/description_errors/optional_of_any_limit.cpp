// compiles
//
// The limit of an optional string is its row's.
#include "sample.h"

#include <common/message.h>

namespace vyn_connector {

struct Maybe {
    std::optional<std::string> text;
};

} // namespace vyn_connector

struct tq_vyn_connector_VynTypes_Maybe {
    zt_ptr_t text;
};

namespace vyn_connector::common {

VYN_RECORD(Maybe, Maybe, 8, 4,
    VYN_FIELD(0, 8, text, Optional<Text<256>>));

static_assert(MaxArenaSize<Maybe>() == 3 + 8 + 256);

void Convert(const Maybe& value, std::uint8_t* wire, zt_arena* arena)
{
    using Row = RowOf<&Maybe::text>;
    Row::Kind::Write<zt_ptr_t>(value.text, wire, arena);
    Row::Kind::Put<zt_ptr_t>(value.text, wire, 0, detail::Room{arena->start, 512});
    Row::Kind::Read<std::optional<std::string>, zt_ptr_t>(wire, detail::BoundsOf(arena));
}

} // namespace vyn_connector::common
