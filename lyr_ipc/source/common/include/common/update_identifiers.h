// Update identifiers: 16 opaque bytes each, sent at most ten at a time. A sender names the part of its vector to send
// by two iterators. Unlike the other records, an empty part raises mur::InvalidArgumentException, more than ten raise
// mur::ResultCodeException (invalid argument), and so does a pointer that leads outside the arena (out of space).
#pragma once

#include <common/kind/range.h>
#include <common/record.h>

#include <array>
#include <cstddef>
#include <iterator>
#include <utility>
#include <vector>

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

VYN_RECORD(VynUpdateIdentifier, VynUpdateIdentifier, 16, 1,
    VYN_WHOLE(0, 16, bytes, Bytes));

VYN_RECORD(VynUpdateIdentifiers, VynUpdateIdentifierContainer, 8, 4,
    VYN_WHOLE(0, 8, identifiers, Range<10>));

// The writer takes a part of a vector, or all of it.
template <>
struct WrittenAs<VynUpdateIdentifierRange> {
    using Record = VynUpdateIdentifiers;
};

template <>
inline constexpr bool takesArena<VynUpdateIdentifiers> = true;

template <>
struct Conversion<VynUpdateIdentifiers> {
    static WireOf<VynUpdateIdentifiers> Write(const VynUpdateIdentifiers& identifiers, zt_arena* arena)
    {
        return CastToZt(VynUpdateIdentifierRange(identifiers.begin(), identifiers.end()), arena);
    }
    static VynUpdateIdentifiers Read(const WireOf<VynUpdateIdentifiers>& wire, const zt_arena* arena)
    {
        return CastFromZt(wire, arena);
    }
};

extern template VYN_EXPORT void RangeToZt<10, WireOf<VynUpdateIdentifier>>(VynUpdateIdentifiers::const_iterator,
                                                                           VynUpdateIdentifiers::const_iterator,
                                                                           zt_ptr_t*, zt_arena*,
                                                                           WriterOf<VynUpdateIdentifier>&&);
extern template VYN_EXPORT void ZtToRange<WireOf<VynUpdateIdentifier>, VynUpdateIdentifier>(
    const zt_ptr_t*, std::back_insert_iterator<VynUpdateIdentifiers>, const zt_arena*, ReaderOf<VynUpdateIdentifier>&&);

} // namespace vyn_connector::common
