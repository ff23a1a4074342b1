// cereal's binary archive, over a stream buffer that writes into memory.
#include "peers.h"

#include <cereal/archives/binary.hpp>
#include <cereal/types/optional.hpp>
#include <cereal/types/string.hpp>
#include <cereal/types/vector.hpp>

#include <istream>
#include <ostream>
#include <streambuf>

namespace cereal {

namespace common = vyn_connector::common;

template <typename Archive>
void serialize(Archive& archive, wem::types::Timestamp& time)
{
    archive(time.count);
}

template <typename Archive, typename Record,
          std::enable_if_t<common::isDescribed<Record> && std::is_aggregate_v<Record>, int> = 0>
void serialize(Archive& archive, Record& record)
{
    common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (common::isField<Row>) {
            auto& member = Row::InDomain::Of(record);
            if constexpr (std::is_same_v<typename Row::Kind, common::kind::Bytes>)
                archive(binary_data(member.data(), member.size()));
            else
                archive(member);
        }
    });
}

} // namespace cereal

namespace bench {

namespace {

class Memory : public std::streambuf {
public:
    void Read(Bytes message)
    {
        char* const start = const_cast<char*>(reinterpret_cast<const char*>(message.data));
        setg(start, start, start + message.size);
    }
    void Rewind() { setp(buffer.data(), buffer.data() + buffer.size()); }
    Bytes Written() const
    {
        return {reinterpret_cast<const std::uint8_t*>(pbase()), static_cast<std::size_t>(pptr() - pbase())};
    }

private:
    std::vector<char> buffer = std::vector<char>(std::size_t{1} << 20U);
};

template <typename Record>
class CerealCodec final : public Codec<Record> {
public:
    Bytes Encode(const Record& record) override
    {
        memory.Rewind();
        cereal::BinaryOutputArchive archive(output);
        archive(record);
        return memory.Written();
    }
    Record Decode(Bytes message) override
    {
        memory.Read(message);
        cereal::BinaryInputArchive archive(input);
        Record record;
        archive(record);
        return record;
    }

private:
    Memory memory;
    std::ostream output{&memory};
    std::istream input{&memory};
};

} // namespace

Peer Cereal()
{
    return MakePeer<CerealCodec>("cereal");
}

} // namespace bench
