#include <common/update_identifiers.h>

#include "record_conversion.h"

namespace vyn_connector::common {

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

template void RangeToZt<10, WireOf<VynUpdateIdentifier>>(VynUpdateIdentifiers::const_iterator,
                                                         VynUpdateIdentifiers::const_iterator, zt_ptr_t*, zt_arena*,
                                                         WriterOf<VynUpdateIdentifier>&&);
template void ZtToRange<WireOf<VynUpdateIdentifier>, VynUpdateIdentifier>(
    const zt_ptr_t*, std::back_insert_iterator<VynUpdateIdentifiers>, const zt_arena*, ReaderOf<VynUpdateIdentifier>&&);

} // namespace vyn_connector::common
