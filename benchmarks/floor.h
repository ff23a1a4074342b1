// What no serializer can do without. Writing: the record's bytes, copied back to back into a buffer that is known to be
// large enough, short copies inlined; no length, pointer, alignment or check. Reading: the owned record built from such
// bytes, the sizes known beforehand. Derived from the records' tables, so that there is a floor for each record.
#pragma once

#include "conversion.h"

#include <common/vyn_connector_common.h>

#include <algorithm>
#include <cstring>

namespace bench {

namespace floors {

namespace common = vyn_connector::common;
namespace kind = vyn_connector::common::kind;

// Copies that overlap in the middle need no loop and no call; two at most where the size is below 33.
inline void Copy(std::uint8_t* to, const void* from, std::size_t size)
{
    const auto* const bytes = static_cast<const std::uint8_t*>(from);
    const auto ends = [&](auto width) {
        std::memcpy(to, bytes, width);
        std::memcpy(to + size - width, bytes + size - width, width);
    };
    using std::integral_constant;
    if (size > 32)
        std::memcpy(to, bytes, size);
    else if (size >= 16)
        ends(integral_constant<std::size_t, 16>{});
    else if (size >= 8)
        ends(integral_constant<std::size_t, 8>{});
    else if (size >= 4)
        ends(integral_constant<std::size_t, 4>{});
    else if (size >= 2)
        ends(integral_constant<std::size_t, 2>{});
    else if (size == 1)
        *to = *bytes;
}

// Takes the bytes of a record; its sizes are dropped.
struct Payload {
    std::uint8_t* at;

    void Size(std::size_t) {}
    void Put(const void* data, std::size_t size)
    {
        Copy(at, data, size);
        at += size;
    }
};

// Takes the sizes of a record's strings and lists, and which of its optional members are there.
struct Sizes {
    std::vector<std::size_t> sizes;
    std::size_t bytes = 0;

    void Size(std::size_t size) { sizes.push_back(size); }
    void Put(const void*, std::size_t size) { bytes += size; }
};

template <typename Sink, typename Record>
void PutRecord(Sink& sink, const Record& record);

template <typename Sink, typename Value>
void Put(kind::InPlace, Sink& sink, const Value& value)
{
    sink.Put(&value, sizeof(value));
}
template <typename Sink, typename Sequence>
void PutBytes(Sink& sink, const Sequence& bytes)
{
    sink.Size(bytes.size());
    sink.Put(bytes.data(), bytes.size());
}
template <std::size_t MaxBytes, typename Sink>
void Put(kind::Text<MaxBytes>, Sink& sink, const std::string& value)
{
    PutBytes(sink, value);
}
template <typename Sink>
void Put(kind::Blob, Sink& sink, const std::vector<std::uint8_t>& value)
{
    PutBytes(sink, value);
}
template <typename Sink, typename Record>
void Put(kind::Nested, Sink& sink, const Record& value)
{
    PutRecord(sink, value);
}
template <std::uint64_t MaxCount, typename Sink, typename Element>
void Put(kind::List<MaxCount>, Sink& sink, const std::vector<Element>& values)
{
    sink.Size(values.size());
    for (const Element& value : values)
        PutRecord(sink, value);
}
template <std::uint64_t MaxCount, typename Sink, typename Element>
void Put(kind::Range<MaxCount>, Sink& sink, const std::vector<Element>& values)
{
    sink.Size(values.size());
    sink.Put(values.data(), values.size() * sizeof(Element));
}
template <typename ElementKind, typename Sink, typename Element>
void Put(kind::Optional<ElementKind>, Sink& sink, const std::optional<Element>& value)
{
    sink.Size(value.has_value() ? 1 : 0);
    if (value.has_value()) Put(ElementKind{}, sink, *value);
}
template <std::uint64_t MaxCount, typename Kind, typename Sink>
void Put(kind::Set<MaxCount, Kind>, Sink& sink, const std::unordered_set<std::string>& values)
{
    sink.Size(values.size());
    for (const std::string& value : values)
        PutBytes(sink, value);
}
template <std::size_t MaxCount, typename Sink>
void Put(kind::Entries<MaxCount>, Sink& sink, const vyn_connector::VynSubscriptions& value)
{
    sink.Size(value.size());
    for (const auto& [severity, eventTypes] : value) {
        Put(kind::Enumeration{}, sink, severity);
        Put(kind::Set<128, kind::Text<128>>{}, sink, eventTypes);
    }
}
template <std::size_t Count, std::size_t MaxBytes, typename Sink>
void Put(kind::EventTexts<Count, MaxBytes>, Sink& sink, const std::array<std::string, Count>& values)
{
    for (const std::string& value : values)
        PutBytes(sink, value);
}

template <typename Row, typename Sink, typename Record>
void PutRow(Sink& sink, const Record& record)
{
    if constexpr (common::isField<Row>) Put(typename Row::Kind{}, sink, Row::InDomain::Of(record));
}
template <typename Sink, typename Record, typename... Rows>
void PutRows(common::detail::RowList<Rows...>, Sink& sink, const Record& record)
{
    (PutRow<Rows>(sink, record), ...);
}
template <typename Sink, typename Record>
void PutRecord(Sink& sink, const Record& record)
{
    PutRows(common::detail::MembersInOrder<Record>{}, sink, record);
}

// Gives back what was put, in the same order.
struct Source {
    const std::uint8_t* at;
    const std::size_t* sizes;

    std::size_t Size() { return *sizes++; }
    const std::uint8_t* Take(std::size_t size) { return std::exchange(at, at + size); }
    const char* TakeText(std::size_t size) { return reinterpret_cast<const char*>(Take(size)); }
};

template <typename Record>
Record TakeRecord(Source& source);

template <typename Value>
Value Take(kind::InPlace, Source& source)
{
    Value value{};
    std::memcpy(&value, source.Take(sizeof(value)), sizeof(value));
    return value;
}
template <typename Value, std::size_t MaxBytes>
std::string Take(kind::Text<MaxBytes>, Source& source)
{
    const std::size_t size = source.Size();
    return {source.TakeText(size), size};
}
template <typename Value>
std::vector<std::uint8_t> Take(kind::Blob, Source& source)
{
    const std::size_t size = source.Size();
    const std::uint8_t* const bytes = source.Take(size);
    return {bytes, bytes + size};
}
template <typename Record>
Record Take(kind::Nested, Source& source)
{
    return TakeRecord<Record>(source);
}

// Makes an element where its container wants to have it.
template <typename Element, typename Kind>
struct InPlace {
    Source& source;
    operator Element() const { return Take<Element>(Kind{}, source); }
};

template <typename Values, std::uint64_t MaxCount>
Values Take(kind::List<MaxCount>, Source& source)
{
    Values values;
    const std::size_t count = source.Size();
    values.reserve(count);
    for (std::size_t i = 0; i < count; ++i)
        values.emplace_back(InPlace<typename Values::value_type, kind::Nested>{source});
    return values;
}
// Sixteen times the room, which the format asks of every reader.
template <typename Values, std::uint64_t MaxCount>
Values Take(kind::Range<MaxCount>, Source& source)
{
    Values values;
    const std::size_t count = source.Size();
    const std::size_t bytes = count * sizeof(typename Values::value_type);
    values.reserve(bytes);
    values.resize(count);
    std::memcpy(values.data(), source.Take(bytes), bytes);
    return values;
}
template <typename Value, typename ElementKind>
Value Take(kind::Optional<ElementKind>, Source& source)
{
    if (source.Size() == 0) return std::nullopt;
    return Value(std::in_place, InPlace<typename Value::value_type, ElementKind>{source});
}
// Without room in advance, which the format asks of every reader.
template <typename Values, std::uint64_t MaxCount, typename Kind>
Values Take(kind::Set<MaxCount, Kind>, Source& source)
{
    Values values;
    for (std::size_t count = source.Size(); count > 0; --count) {
        const std::size_t size = source.Size();
        values.emplace(source.TakeText(size), size);
    }
    return values;
}
template <typename Value, std::size_t MaxCount>
Value Take(kind::Entries<MaxCount>, Source& source)
{
    Value value;
    for (std::size_t count = source.Size(); count > 0; --count) {
        const auto severity = Take<vyn_connector::VynEventSeverity>(kind::Enumeration{}, source);
        value.emplace(severity, Take<std::unordered_set<std::string>>(kind::Set<128, kind::Text<128>>{}, source));
    }
    return value;
}
template <typename Values, std::size_t... I>
Values TakeTexts(Source& source, std::index_sequence<I...>)
{
    return Values{{(static_cast<void>(I), Take<std::string>(kind::Text<0>{}, source))...}};
}
template <typename Values, std::size_t Count, std::size_t MaxBytes>
Values Take(kind::EventTexts<Count, MaxBytes>, Source& source)
{
    return TakeTexts<Values>(source, std::make_index_sequence<Count>{});
}

template <typename Row>
typename Row::InDomain::Type TakeRow(Source& source)
{
    if constexpr (common::isField<Row>)
        return Take<typename Row::InDomain::Type>(typename Row::Kind{}, source);
    else
        return {};
}
template <typename Record, typename... Rows>
Record TakeRows(common::detail::RowList<Rows...>, Source& source)
{
    if constexpr ((std::is_same_v<typename Rows::InDomain, common::detail::Itself<Record>> && ...))
        return (TakeRow<Rows>(source), ...);
    else
        return Record{TakeRow<Rows>(source)...};
}
template <typename Record>
Record TakeRecord(Source& source)
{
    return TakeRows<Record>(common::detail::MembersInOrder<Record>{}, source);
}

} // namespace floors

template <typename Record>
class Floor final : public Codec<Record> {
public:
    [[gnu::flatten]] Bytes Encode(const Record& record) override
    {
        floors::Payload payload{buffer.data()};
        floors::PutRecord(payload, record);
        return {buffer.data(), static_cast<std::size_t>(payload.at - buffer.data())};
    }

    // Where the message is read, the sizes lie in front of it: first their number.
    std::vector<std::uint8_t> Message(const Record& record) override
    {
        floors::Sizes counted{{0}};
        floors::PutRecord(counted, record);
        counted.sizes[0] = counted.sizes.size();
        buffer.resize(std::max(buffer.size(), counted.bytes));

        const auto* const sizes = reinterpret_cast<const std::uint8_t*>(counted.sizes.data());
        std::vector<std::uint8_t> message(sizes, sizes + counted.sizes.size() * sizeof(std::size_t));
        const Bytes payload = Encode(record);
        message.insert(message.end(), payload.data, payload.data + payload.size);
        return message;
    }
    [[gnu::flatten]] Record Decode(Bytes message) override
    {
        const auto* const sizes = reinterpret_cast<const std::size_t*>(message.data);
        floors::Source source{reinterpret_cast<const std::uint8_t*>(sizes + sizes[0]), sizes + 1};
        return floors::TakeRecord<Record>(source);
    }

private:
    std::vector<std::uint8_t> buffer;
};

} // namespace bench
