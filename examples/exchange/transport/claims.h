// What a message makes its reader allocate. A few bytes can claim gigabytes: all the elements of a list may point to the
// same long string, and each of them becomes a string of its own. So the pointers' sizes are summed up, by the record's
// table, before anything is decoded.
#pragma once

#include <common/vyn_connector_common.h>

#include <fmt/format.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <vector>

namespace exchange {

// Honest messages claim about as many bytes as they have; the reader of update identifiers reserves sixteen times that.
constexpr std::uint64_t mostClaimed = 16;

class Claims {
public:
    Claims(const std::vector<std::uint8_t>& arena, std::uint64_t limit) : arena_(arena), limit_(limit) {}

    // `wire` is the wire structure, wherever it lies. Throws std::length_error where the sum is over the limit, before it
    // looks any further.
    template <typename Record>
    void Add(const std::uint8_t* wire)
    {
        vyn_connector::common::ForEachRow<Record>([&](auto row) {
            using Row = decltype(row);
            if constexpr (vyn_connector::common::isField<Row>)
                Walk<typename Row::InDomain::Type>(typename Row::Kind{}, wire + Row::offset);
        });
    }

private:
    template <typename Value>
    void Walk(vyn_connector::common::kind::InPlace, const std::uint8_t*)
    {
    }
    template <typename Value, std::size_t MaxBytes>
    void Walk(vyn_connector::common::kind::Text<MaxBytes>, const std::uint8_t* wire)
    {
        Elements(wire, 1);
    }
    template <typename Value>
    void Walk(vyn_connector::common::kind::Blob, const std::uint8_t* wire)
    {
        Elements(wire, 1);
    }
    template <typename Value>
    void Walk(vyn_connector::common::kind::Nested, const std::uint8_t* wire)
    {
        Add<Value>(wire);
    }
    template <typename Values, std::uint64_t MaxCount>
    void Walk(vyn_connector::common::kind::List<MaxCount>, const std::uint8_t* wire)
    {
        using Element = typename Values::value_type;
        constexpr std::size_t size = sizeof(vyn_connector::common::WireOf<Element>);
        const Array array = Elements(wire, size);
        for (std::size_t i = 0; i < array.count; ++i)
            Add<Element>(array.data + i * size);
    }
    // Its reader reserves an element for each byte that is claimed, before it looks where the pointer leads.
    template <typename Values, std::uint64_t MaxCount>
    void Walk(vyn_connector::common::kind::Range<MaxCount>, const std::uint8_t* wire)
    {
        Count(sizeof(typename Values::value_type) * std::uint64_t{PointerAt(wire).size});
    }
    template <typename Value, typename Kind>
    void Walk(vyn_connector::common::kind::Optional<Kind>, const std::uint8_t* wire)
    {
        using Content = typename Value::value_type;
        const Array slots = Elements(wire, sizeof(typename Kind::template Element<Content>));
        if (slots.count != 0) Walk<Content>(Kind{}, slots.data);
    }
    template <typename Value, std::uint64_t MaxCount, typename Kind>
    void Walk(vyn_connector::common::kind::Set<MaxCount, Kind>, const std::uint8_t* wire)
    {
        const Array texts = Elements(wire, sizeof(zt_ptr_t));
        for (std::size_t i = 0; i < texts.count; ++i)
            Elements(texts.data + i * sizeof(zt_ptr_t), 1);
    }
    template <typename Value, std::size_t MaxCount>
    void Walk(vyn_connector::common::kind::Entries<MaxCount>, const std::uint8_t* wire)
    {
        using Entry = vyn_connector::VynSubscription;
        for (std::size_t i = 0; i < MaxCount; ++i)
            Add<Entry>(wire + i * sizeof(vyn_connector::common::WireOf<Entry>));
    }
    template <typename Value, std::size_t MaxCount, std::size_t MaxBytes>
    void Walk(vyn_connector::common::kind::EventTexts<MaxCount, MaxBytes>, const std::uint8_t* wire)
    {
        for (std::size_t i = 0; i < MaxCount; ++i)
            Elements(wire + i * sizeof(zt_ptr_t), 1);
    }

    struct Array {
        const std::uint8_t* data;
        std::size_t count;
    };

    static zt_ptr_t PointerAt(const std::uint8_t* wire)
    {
        zt_ptr_t pointer;
        std::memcpy(&pointer, wire, sizeof(pointer));
        return pointer;
    }

    // A pointer that leads nowhere claims nothing: decoding refuses it, and says what is wrong with it.
    Array Elements(const std::uint8_t* wire, std::size_t elementSize)
    {
        const zt_ptr_t pointer = PointerAt(wire);
        const bool isInside = std::uint64_t{pointer.offset} + pointer.size <= arena_.size();
        if (!isInside || pointer.size % elementSize != 0) return {nullptr, 0};
        Count(pointer.size);
        return {arena_.data() + pointer.offset, pointer.size / elementSize};
    }

    void Count(std::uint64_t bytes)
    {
        sum_ += bytes;
        if (sum_ > limit_)
            throw std::length_error(fmt::format("its pointers claim more than {} bytes, {} times what the message has",
                                                limit_, mostClaimed));
    }

    const std::vector<std::uint8_t>& arena_;
    std::uint64_t limit_;
    std::uint64_t sum_ = 0;
};

// Throws std::length_error where the record's pointers claim too much for the message that it came in.
template <typename Record>
void CheckClaims(const std::uint8_t* wire, const std::vector<std::uint8_t>& arena)
{
    Claims(arena, mostClaimed * (sizeof(vyn_connector::common::WireOf<Record>) + arena.size())).Add<Record>(wire);
}

} // namespace exchange
