// bitsery, told of the members by the records' tables. Left out where its headers are not found.
#include "peers.h"

#include <bitsery/adapter/buffer.h>
#include <bitsery/bitsery.h>
#include <bitsery/ext/std_optional.h>
#include <bitsery/traits/array.h>
#include <bitsery/traits/string.h>
#include <bitsery/traits/vector.h>

namespace bench {

namespace {

namespace kind = common::kind;

template <typename Archive, typename Record>
void Members(Archive& archive, Record& record);

template <typename Archive, typename Value>
void Member(kind::Number, Archive& archive, Value& value)
{
    archive.template value<sizeof(Value)>(value);
}
template <typename Archive>
void Member(kind::Bytes, Archive& archive, std::array<std::byte, 16>& value)
{
    archive.template container<1>(value);
}
template <typename Archive>
void Member(kind::Time, Archive& archive, wem::types::Timestamp& value)
{
    archive.value8b(value.count);
}
template <std::size_t MaxBytes, typename Archive>
void Member(kind::Text<MaxBytes>, Archive& archive, std::string& value)
{
    archive.text1b(value, MaxBytes);
}
template <typename Archive>
void Member(kind::Blob, Archive& archive, std::vector<std::uint8_t>& value)
{
    archive.container1b(value, kind::Blob::limit);
}
template <typename Archive, typename Record>
void Member(kind::Nested, Archive& archive, Record& value)
{
    Members(archive, value);
}
template <std::uint64_t MaxCount, typename Archive, typename Element>
void Member(kind::List<MaxCount>, Archive& archive, std::vector<Element>& values)
{
    archive.container(values, MaxCount, [](Archive& inner, Element& value) { Members(inner, value); });
}
template <typename ElementKind, typename Archive, typename Element>
void Member(kind::Optional<ElementKind>, Archive& archive, std::optional<Element>& value)
{
    archive.ext(value, bitsery::ext::StdOptional{},
                [](Archive& inner, Element& element) { Member(ElementKind{}, inner, element); });
}

template <typename Archive, typename Record>
void Members(Archive& archive, Record& record)
{
    common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (common::isField<Row>) Member(typename Row::Kind{}, archive, Row::InDomain::Of(record));
    });
}

// What bitsery looks for a serialize function of.
template <typename Record>
struct Wrapped {
    Record* record;
};

template <typename Archive, typename Record>
void serialize(Archive& archive, Wrapped<Record>& wrapped)
{
    Members(archive, *wrapped.record);
}

template <typename Record>
class BitseryCodec final : public Codec<Record> {
public:
    Bytes Encode(const Record& record) override
    {
        Wrapped<Record> wrapped{const_cast<Record*>(&record)}; // reads and writes go through one function
        return {buffer.data(), bitsery::quickSerialization<bitsery::OutputBufferAdapter<Buffer>>(buffer, wrapped)};
    }
    Record Decode(Bytes message) override
    {
        Record record;
        Wrapped<Record> wrapped{&record};
        using Input = bitsery::InputBufferAdapter<const std::uint8_t*>;
        const auto state = bitsery::quickDeserialization<Input>({message.data, message.size}, wrapped);
        if (state.first != bitsery::ReaderError::NoError || !state.second) throw std::runtime_error("no message");
        return record;
    }

private:
    using Buffer = std::vector<std::uint8_t>;
    Buffer buffer;
};

} // namespace

Peer Bitsery()
{
    return MakePeer<BitseryCodec>("bitsery");
}

} // namespace bench
