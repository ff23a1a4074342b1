// Connector parameters: named values that the connector passes along without interpreting them.
#pragma once

#include <common/record.h>

namespace vyn_connector::common {

// The value stands first, and so is read first: where both pointers are bad, it is the value's error that is raised.
// On the wire, and so in the arena, the name comes first.
struct VYN_EXPORT RawVynParam {
    std::vector<std::uint8_t> value;
    std::string name;
};

} // namespace vyn_connector::common

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynParam {
    zt_ptr_t name;
    zt_ptr_t value;
};

struct VYN_EXPORT tq_vyn_connector_VynTypes_VynParams {
    zt_ptr_t params;
};

namespace vyn_connector::common {

VYN_EXPORT tq_vyn_connector_VynTypes_VynParam CastToZt(const RawVynParam& value, zt_arena* arena);
VYN_EXPORT RawVynParam CastFromZt(const tq_vyn_connector_VynTypes_VynParam& wire, const zt_arena* arena);

VYN_EXPORT tq_vyn_connector_VynTypes_VynParams CastToZt(const std::vector<RawVynParam>& values, zt_arena* arena);
VYN_EXPORT std::vector<RawVynParam> CastFromZt(const tq_vyn_connector_VynTypes_VynParams& wire, const zt_arena* arena);

VYN_RECORD(RawVynParam, VynParam, 16, 4,
    VYN_FIELD(0, 8, name,  Text<128>),
    VYN_FIELD(8, 8, value, Blob));

// The largest count that a signed 32-bit number holds; the arena is the real bound.
VYN_RECORD(std::vector<RawVynParam>, VynParams, 8, 4,
    VYN_WHOLE(0, 8, params, List<2147483647>));

extern template VYN_EXPORT void VectorToZt<2147483647, WireOf<RawVynParam>>(const std::vector<RawVynParam>&, zt_ptr_t*,
                                                                            zt_arena*, WriterOf<RawVynParam>);
extern template VYN_EXPORT std::vector<RawVynParam>
ZtToVector<WireOf<RawVynParam>, RawVynParam>(const zt_ptr_t*, const zt_arena*, ReaderOf<RawVynParam>);

} // namespace vyn_connector::common
