// struct_pack, which finds the members of an aggregate by itself. Left out where its header is not found.
#include "peers.h"

#include <ylt/struct_pack.hpp>

namespace bench {

namespace {

template <typename Record>
class StructPackCodec final : public Codec<Record> {
public:
    Bytes Encode(const Record& record) override
    {
        buffer.clear();
        struct_pack::serialize_to(buffer, record);
        return {reinterpret_cast<const std::uint8_t*>(buffer.data()), buffer.size()};
    }
    Record Decode(Bytes message) override
    {
        Record record;
        const auto error =
            struct_pack::deserialize_to(record, reinterpret_cast<const char*>(message.data), message.size);
        if (error) throw std::runtime_error("no message");
        return record;
    }

private:
    std::vector<char> buffer;
};

} // namespace

Peer StructPack()
{
    return MakePeer<StructPackCodec>("struct_pack");
}

} // namespace bench
