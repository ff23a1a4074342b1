#include <common/update_identifiers.h>

#include "record_conversion.h"

#include <iterator>

namespace vyn_connector::common {
namespace kind {

template <std::int64_t MaxCount, typename Iterator>
void Write(Range<MaxCount>, const std::pair<Iterator, Iterator>& range, zt_ptr_t& wire, zt_arena* arena)
{
    using Element = typename std::iterator_traits<Iterator>::value_type;
    RangeToZt<MaxCount, WireOf<Element>>(range.first, range.second, &wire, arena, WriterOf<Element>{&ToWire<Element>});
}

// The capacity is reserved from the byte count, sixteen times what the elements need, and before any test: what a
// caller sees of a huge size is std::bad_alloc and not a result code. Both are kept as they are.
template <typename Domain, std::int64_t MaxCount>
Domain Read(Range<MaxCount>, const zt_ptr_t& wire, const zt_arena* arena)
{
    using Element = typename Domain::value_type;
    Domain values;
    if (wire.size != 0) values.reserve(wire.size);
    ZtToRange<WireOf<Element>, Element>(&wire, std::back_inserter(values), arena,
                                        ReaderOf<Element>{&FromWire<Element>});
    return values;
}

} // namespace kind

VYN_DEFINE_CONVERSIONS(VynUpdateIdentifier)

tq_vyn_connector_VynTypes_VynUpdateIdentifierContainer CastToZt(const VynUpdateIdentifierRange& range, zt_arena* arena)
{
    return ToWire<VynUpdateIdentifiers>(range, arena);
}

VynUpdateIdentifiers CastFromZt(const tq_vyn_connector_VynTypes_VynUpdateIdentifierContainer& wire,
                                const zt_arena* arena)
{
    return FromWire<VynUpdateIdentifiers>(wire, arena);
}

template void RangeToZt<10, tq_vyn_connector_VynTypes_VynUpdateIdentifier>(VynUpdateIdentifiers::const_iterator,
                                                                           VynUpdateIdentifiers::const_iterator,
                                                                           zt_ptr_t*, zt_arena*,
                                                                           WriterOf<VynUpdateIdentifier>&&);
template void ZtToRange<tq_vyn_connector_VynTypes_VynUpdateIdentifier, VynUpdateIdentifier>(
    const zt_ptr_t*, std::back_insert_iterator<VynUpdateIdentifiers>, const zt_arena*, ReaderOf<VynUpdateIdentifier>&&);

} // namespace vyn_connector::common
