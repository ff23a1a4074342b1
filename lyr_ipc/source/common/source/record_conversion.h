// Makes the writer and the reader of a record out of its table. The sources of the records instantiate ToWire and
// FromWire; callers see CastToZt and CastFromZt. Each kind of field has a Write and a Read, which call its codec; they
// stand in the kinds' namespace, so that a record with a kind of its own adds the two in its own source.
#pragma once

#include <common/record.h>
#include <common/timestamp.h>

namespace vyn_connector::common {

// Returns the wire structure of `value`, padding zero, and puts what it refers to into the arena. `Source` differs from
// `Domain` only where a list is written from a part of it.
template <typename Domain, typename Source = Domain>
WireOf<Domain> ToWire(const Source& value, zt_arena* arena);

// Returns a record that owns all its data. Where a member cannot be read, the members built before it are destroyed.
template <typename Domain>
Domain FromWire(const WireOf<Domain>& wire, const zt_arena* arena);

// Fills a wire structure that is all zero.
template <typename Domain, typename Source>
void FillWire(const Source& value, WireOf<Domain>& wire, zt_arena* arena);

// The converters of strings that are elements.
inline constexpr zt_ptr_t (*stringToZt)(const std::string&, zt_arena*) = &CastToZt;
inline constexpr std::string (*stringFromZt)(const zt_ptr_t&, const zt_arena*) = &CastFromZt;

namespace kind {

template <typename T>
void Write(Number, const T& value, T& wire, zt_arena*)
{
    wire = value;
}
template <typename T>
T Read(Number, const T& wire, const zt_arena*)
{
    return wire;
}

// The byte as it stands: a writer does not make 0 or 1 of it.
inline void Write(Flag, const bool& value, std::uint8_t& wire, zt_arena*)
{
    std::memcpy(&wire, &value, 1);
}
template <typename Domain>
Domain Read(Flag, std::uint8_t wire, const zt_arena*)
{
    return wire != 0;
}

template <typename Domain, typename Wire>
void Write(Enumeration, const Domain& value, Wire& wire, zt_arena*)
{
    wire = static_cast<Wire>(value);
}
template <typename Domain, typename Wire>
Domain Read(Enumeration, const Wire& wire, const zt_arena*)
{
    return static_cast<Domain>(wire);
}

inline void Write(Bytes, const std::array<std::byte, 16>& value, std::uint8_t (&wire)[16], zt_arena*)
{
    std::memcpy(wire, value.data(), sizeof(wire));
}
template <typename Domain>
Domain Read(Bytes, const std::uint8_t (&wire)[16], const zt_arena*)
{
    Domain value;
    std::memcpy(value.data(), wire, sizeof(wire));
    return value;
}

inline void Write(Time, const wem::types::Timestamp& value, std::int64_t& wire, zt_arena* arena)
{
    wire = CastToZt(value, arena);
}
template <typename Domain>
Domain Read(Time, const std::int64_t& wire, const zt_arena* arena)
{
    return CastFromZt(wire, arena);
}

template <std::size_t MaxBytes>
void Write(Text<MaxBytes>, const std::string& value, zt_ptr_t& wire, zt_arena* arena)
{
    StringToZt<MaxBytes>(value, &wire, arena);
}
template <typename Domain, std::size_t MaxBytes>
Domain Read(Text<MaxBytes>, const zt_ptr_t& wire, const zt_arena* arena)
{
    return ZtToString(&wire, arena);
}

// In place: the outer structure is zero already, so is the inner one.
template <typename Domain>
void Write(Nested, const Domain& value, WireOf<Domain>& wire, zt_arena* arena)
{
    FillWire<Domain>(value, wire, arena);
}
template <typename Domain>
Domain Read(Nested, const WireOf<Domain>& wire, const zt_arena* arena)
{
    return FromWire<Domain>(wire, arena);
}

inline void Write(Blob, const std::vector<std::uint8_t>& value, zt_ptr_t& wire, zt_arena* arena)
{
    BlobToZt(value, &wire, arena);
}
template <typename Domain>
Domain Read(Blob, const zt_ptr_t& wire, const zt_arena* arena)
{
    return ZtToBlob(&wire, arena);
}

template <std::uint64_t MaxCount, typename Element>
void Write(List<MaxCount>, const std::vector<Element>& values, zt_ptr_t& wire, zt_arena* arena)
{
    VectorToZt<MaxCount, WireOf<Element>>(values, &wire, arena, WriterOf<Element>{&ToWire<Element>});
}
template <typename Domain, std::uint64_t MaxCount>
Domain Read(List<MaxCount>, const zt_ptr_t& wire, const zt_arena* arena)
{
    using Element = typename Domain::value_type;
    return ZtToVector<WireOf<Element>, Element>(&wire, arena, ReaderOf<Element>{&FromWire<Element>});
}

template <typename Element>
void Write(Optional<Nested>, const std::optional<Element>& value, zt_ptr_t& wire, zt_arena* arena)
{
    OptionalToZt<WireOf<Element>>(value, &wire, arena, WriterOf<Element>{&ToWire<Element>});
}
template <typename Domain>
Domain Read(Optional<Nested>, const zt_ptr_t& wire, const zt_arena* arena)
{
    using Element = typename Domain::value_type;
    return ZtToOptional<WireOf<Element>, Element>(&wire, arena, ReaderOf<Element>{&FromWire<Element>});
}

inline void Write(Optional<Text<128>>, const std::optional<std::string>& value, zt_ptr_t& wire, zt_arena* arena)
{
    OptionalToZt<zt_ptr_t>(value, &wire, arena, stringToZt);
}
template <typename Domain>
Domain Read(Optional<Text<128>>, const zt_ptr_t& wire, const zt_arena* arena)
{
    return ZtToOptional<zt_ptr_t, std::string>(&wire, arena, stringFromZt);
}

inline void Write(Optional<Time>, const std::optional<wem::types::Timestamp>& value, zt_ptr_t& wire, zt_arena* arena)
{
    std::int64_t (*const toZt)(const wem::types::Timestamp&, zt_arena*) = &CastToZt;
    OptionalToZt<std::int64_t>(value, &wire, arena, toZt);
}
template <typename Domain>
Domain Read(Optional<Time>, const zt_ptr_t& wire, const zt_arena* arena)
{
    wem::types::Timestamp (*const fromZt)(const long&, const zt_arena*) = &CastFromZt;
    return ZtToOptional<std::int64_t, wem::types::Timestamp>(&wire, arena, fromZt);
}

} // namespace kind

namespace table {

template <typename Row, typename Source, typename Wire>
void WriteRow(const Source& value, Wire& wire, zt_arena* arena)
{
    if constexpr (isField<Row>) Write(typename Row::Kind{}, Row::InDomain::Of(value), Row::OnWire::Of(wire), arena);
}

template <typename Row, typename Wire>
typename Row::InDomain::Type ReadRow(const Wire& wire, const zt_arena* arena)
{
    using kind::Read;
    if constexpr (isField<Row>)
        return Read<typename Row::InDomain::Type>(typename Row::Kind{}, Row::OnWire::Of(wire), arena);
    else
        return {};
}

// Braces keep the order of their elements, so the members are read in the order in which they are built.
template <typename Domain, typename... Rows>
Domain Build(RowList<Rows...>, const WireOf<Domain>& wire, const zt_arena* arena)
{
    if constexpr ((std::is_same_v<typename Rows::InDomain, Itself<Domain>> && ...))
        return (ReadRow<Rows>(wire, arena), ...);
    else
        return Domain{ReadRow<Rows>(wire, arena)...};
}

} // namespace table

template <typename Domain, typename Source>
void FillWire(const Source& value, WireOf<Domain>& wire, zt_arena* arena)
{
    Description<Domain>::Rows([&](auto... row) { (table::WriteRow<decltype(row)>(value, wire, arena), ...); });
}

template <typename Domain, typename Source>
WireOf<Domain> ToWire(const Source& value, zt_arena* arena)
{
    WireOf<Domain> wire;
    std::memset(&wire, 0, sizeof(wire));
    FillWire<Domain>(value, wire, arena);
    return wire;
}

template <typename Domain>
Domain FromWire(const WireOf<Domain>& wire, const zt_arena* arena)
{
    return table::Build<Domain>(MembersInOrder<Domain>{}, wire, arena);
}

} // namespace vyn_connector::common

// The exported pair of a record, which its header declares.
#define VYN_DEFINE_CONVERSIONS(DOMAIN)                                                                                 \
    WireOf<DOMAIN> CastToZt(const DOMAIN& value, zt_arena* arena)                                                      \
    {                                                                                                                  \
        return ToWire<DOMAIN>(value, arena);                                                                           \
    }                                                                                                                  \
    DOMAIN CastFromZt(const WireOf<DOMAIN>& wire, const zt_arena* arena)                                               \
    {                                                                                                                  \
        return FromWire<DOMAIN>(wire, arena);                                                                          \
    }

// The same for records of plain numbers, whose pair takes no arena.
#define VYN_DEFINE_CONVERSIONS_WITHOUT_ARENA(DOMAIN)                                                                   \
    WireOf<DOMAIN> CastToZt(const DOMAIN& value)                                                                       \
    {                                                                                                                  \
        return ToWire<DOMAIN>(value, nullptr);                                                                         \
    }                                                                                                                  \
    DOMAIN CastFromZt(const WireOf<DOMAIN>& wire)                                                                      \
    {                                                                                                                  \
        return FromWire<DOMAIN>(wire, nullptr);                                                                        \
    }
