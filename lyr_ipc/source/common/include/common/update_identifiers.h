// Update identifiers: 16 opaque bytes each, sent at most ten at a time. A sender names the part of its vector to send
// by two iterators; an empty part cannot be sent (mur::InvalidArgumentException), and more than ten raise
// mur::ResultCodeException (invalid argument).
#pragma once

#include <common/record.h>

namespace vyn_connector {

using VynUpdateIdentifier = std::array<std::byte, 16>;
using VynUpdateIdentifiers = std::vector<VynUpdateIdentifier>;

} // namespace vyn_connector

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynUpdateIdentifier {
    std::uint8_t bytes[16];
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynUpdateIdentifierContainer {
    zt_ptr_t identifiers;
};

namespace vyn_connector::common {

namespace kind {

// A vector of described records, written from two iterators into it.
template <std::int64_t MaxCount>
struct Range {
    static constexpr std::int64_t limit = MaxCount;
    template <typename D, typename W>
    static constexpr bool fits =
        std::conjunction_v<std::bool_constant<isDescribed<typename D::value_type>>, std::is_same<W, zt_ptr_t>>;
};

} // namespace kind

// clang-format off
VYN_RECORD(VynUpdateIdentifier, VynUpdateIdentifier, 16, 1,
    VYN_WHOLE(0, 16, bytes, Bytes));

VYN_RECORD(VynUpdateIdentifiers, VynUpdateIdentifierContainer, 8, 4,
    VYN_WHOLE(0, 8, identifiers, Range<10>));
// clang-format on

using VynUpdateIdentifierRange = std::pair<VynUpdateIdentifiers::const_iterator, VynUpdateIdentifiers::const_iterator>;

// Neither uses the arena, which may be null.
VYN_EXPORT tq_vyn_connector_VynTypes_VynUpdateIdentifier CastToZt(const VynUpdateIdentifier& value, zt_arena* arena);
VYN_EXPORT VynUpdateIdentifier CastFromZt(const tq_vyn_connector_VynTypes_VynUpdateIdentifier& wire,
                                          const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_VynUpdateIdentifierContainer CastToZt(const VynUpdateIdentifierRange& range,
                                                                           zt_arena* arena);
// Throws mur::ResultCodeException (out of space) where the pointer leads outside the arena, or std::bad_alloc where
// the size that it claims is huge.
VYN_EXPORT VynUpdateIdentifiers CastFromZt(const tq_vyn_connector_VynTypes_VynUpdateIdentifierContainer& wire,
                                           const zt_arena* arena);

extern template VYN_EXPORT void
RangeToZt<10, tq_vyn_connector_VynTypes_VynUpdateIdentifier>(VynUpdateIdentifiers::const_iterator,
                                                             VynUpdateIdentifiers::const_iterator, zt_ptr_t*, zt_arena*,
                                                             WriterOf<VynUpdateIdentifier>&&);
extern template VYN_EXPORT void ZtToRange<tq_vyn_connector_VynTypes_VynUpdateIdentifier, VynUpdateIdentifier>(
    const zt_ptr_t*, std::back_insert_iterator<VynUpdateIdentifiers>, const zt_arena*, ReaderOf<VynUpdateIdentifier>&&);

} // namespace vyn_connector::common
