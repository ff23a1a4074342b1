// MessagePack, each record an array of its members. Strings are read out of the message without a copy in between.
#include "peers.h"

#include <msgpack.hpp>

namespace bench {

namespace {

template <typename Record>
constexpr bool isRecord = common::isDescribed<Record>&& std::is_aggregate_v<Record>;

template <typename Record>
constexpr std::uint32_t FieldCount()
{
    std::uint32_t count = 0;
    common::ForEachRow<Record>([&](auto row) { count += common::isField<decltype(row)> ? 1 : 0; });
    return count;
}

// Calls `visit(kind, member)` for each member that travels.
template <typename Record, typename Visit>
void ForEachField(Record& record, Visit visit)
{
    common::ForEachRow<std::remove_const_t<Record>>([&](auto row) {
        using Row = decltype(row);
        if constexpr (common::isField<Row>) visit(typename Row::Kind{}, Row::InDomain::Of(record));
    });
}

} // namespace

} // namespace bench

namespace msgpack {
MSGPACK_API_VERSION_NAMESPACE(MSGPACK_DEFAULT_API_NS)
{
    namespace adaptor {

    template <>
    struct pack<wem::types::Timestamp> {
        template <typename Stream>
        packer<Stream>& operator()(packer<Stream>& out, const wem::types::Timestamp& time) const
        {
            return out.pack(time.count);
        }
    };
    template <>
    struct convert<wem::types::Timestamp> {
        const msgpack::object& operator()(const msgpack::object& in, wem::types::Timestamp& time) const
        {
            in.convert(time.count);
            return in;
        }
    };

    template <typename Record>
    struct pack<Record, std::enable_if_t<bench::isRecord<Record>>> {
        template <typename Stream>
        packer<Stream>& operator()(packer<Stream>& out, const Record& record) const
        {
            out.pack_array(bench::FieldCount<Record>());
            bench::ForEachField(record, [&](auto kind, const auto& member) {
                if constexpr (std::is_same_v<decltype(kind), bench::common::kind::Bytes>) {
                    out.pack_bin(static_cast<std::uint32_t>(member.size()));
                    out.pack_bin_body(reinterpret_cast<const char*>(member.data()),
                                      static_cast<std::uint32_t>(member.size()));
                } else {
                    out.pack(member);
                }
            });
            return out;
        }
    };
    template <typename Record>
    struct convert<Record, std::enable_if_t<bench::isRecord<Record>>> {
        const msgpack::object& operator()(const msgpack::object& in, Record& record) const
        {
            if (in.type != type::ARRAY || in.via.array.size != bench::FieldCount<Record>()) throw type_error();
            const msgpack::object* next = in.via.array.ptr;
            bench::ForEachField(record, [&](auto kind, auto& member) {
                if constexpr (std::is_same_v<decltype(kind), bench::common::kind::Bytes>) {
                    if (next->type != type::BIN || next->via.bin.size != member.size()) throw type_error();
                    std::memcpy(member.data(), next->via.bin.ptr, member.size());
                } else {
                    next->convert(member);
                }
                ++next;
            });
            return in;
        }
    };

    } // namespace adaptor
}
} // namespace msgpack

namespace bench {

namespace {

template <typename Record>
class MessagePackCodec final : public Codec<Record> {
public:
    Bytes Encode(const Record& record) override
    {
        buffer.clear();
        msgpack::pack(buffer, record);
        return {reinterpret_cast<const std::uint8_t*>(buffer.data()), buffer.size()};
    }
    Record Decode(Bytes message) override
    {
        const auto inPlace = [](msgpack::type::object_type, std::size_t, void*) { return true; };
        zone.clear();
        const msgpack::object object =
            msgpack::unpack(zone, reinterpret_cast<const char*>(message.data), message.size, inPlace);
        Record record;
        object.convert(record);
        return record;
    }

private:
    msgpack::sbuffer buffer;
    msgpack::zone zone;
};

} // namespace

Peer MessagePack()
{
    return MakePeer<MessagePackCodec>("MessagePack");
}

} // namespace bench
