// zpp_bits, which finds the members of an aggregate by itself. Left out where its header is not found.
#include "peers.h"

#include <zpp_bits.h>

namespace wem::types {

constexpr auto serialize(auto& archive,
                         auto& time) requires std::is_same_v<std::remove_cvref_t<decltype(time)>, Timestamp>
{
    return archive(time.count);
}

} // namespace wem::types

namespace bench {

namespace {

template <typename Record>
class ZppBitsCodec final : public Codec<Record> {
public:
    Bytes Encode(const Record& record) override
    {
        zpp::bits::out out{std::span<std::uint8_t>(buffer)};
        out(record).or_throw();
        return {buffer.data(), out.position()};
    }
    Record Decode(Bytes message) override
    {
        zpp::bits::in in{std::span<const std::uint8_t>(message.data, message.size)};
        Record record;
        in(record).or_throw();
        return record;
    }

private:
    std::vector<std::uint8_t> buffer = std::vector<std::uint8_t>(std::size_t{1} << 20U);
};

} // namespace

Peer ZppBits()
{
    return MakePeer<ZppBitsCodec>("zpp_bits");
}

} // namespace bench
