#include "peers.h"

namespace bench {

std::vector<Peer> Peers()
{
    return {
        ProtocolBuffers(), FlatBuffers(), CapnProto(), Cereal(), MessagePack(),
#ifdef BENCH_ZPP_BITS
        ZppBits(),
#endif
#ifdef BENCH_STRUCT_PACK
        StructPack(),
#endif
#ifdef BENCH_BITSERY
        Bitsery(),
#endif
    };
}

} // namespace bench
