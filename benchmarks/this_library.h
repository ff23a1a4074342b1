// This library's conversions, called as its users call them: the shared library's functions, through pointers, with an
// arena of the caller's.
#pragma once

#include "conversion.h"

#include <common/vyn_connector_common.h>

#include <algorithm>

namespace bench {

namespace common = vyn_connector::common;

template <typename Record>
struct Functions {
    common::WireOf<Record> (*write)(const Record&, zt_arena*) = &common::CastToZt;
    Record (*read)(const common::WireOf<Record>&, const zt_arena*) = &common::CastFromZt;

    common::WireOf<Record> Write(const Record& record, zt_arena& arena) const { return write(record, &arena); }
    Record Read(const common::WireOf<Record>& wire, const zt_arena& arena) const { return read(wire, &arena); }
};

template <typename Record>
struct FunctionsWithoutArena {
    common::WireOf<Record> (*write)(const Record&) = &common::CastToZt;
    Record (*read)(const common::WireOf<Record>&) = &common::CastFromZt;

    common::WireOf<Record> Write(const Record& record, zt_arena&) const { return write(record); }
    Record Read(const common::WireOf<Record>& wire, const zt_arena&) const { return read(wire); }
};
template <>
struct Functions<vyn_connector::VynConnectorSettings> : FunctionsWithoutArena<vyn_connector::VynConnectorSettings> {
};
template <>
struct Functions<vyn_connector::VynServerData> : FunctionsWithoutArena<vyn_connector::VynServerData> {
};
template <>
struct Functions<vyn_connector::DynamicAppInfo> : FunctionsWithoutArena<vyn_connector::DynamicAppInfo> {
};

template <>
struct Functions<vyn_connector::VynUpdateIdentifiers> {
    using Record = vyn_connector::VynUpdateIdentifiers;
    using Range = common::VynUpdateIdentifierRange;
    common::WireOf<Record> (*write)(const Range&, zt_arena*) = &common::CastToZt;
    Record (*read)(const common::WireOf<Record>&, const zt_arena*) = &common::CastFromZt;

    common::WireOf<Record> Write(const Record& record, zt_arena& arena) const
    {
        return write(Range{record.begin(), record.end()}, &arena);
    }
    Record Read(const common::WireOf<Record>& wire, const zt_arena& arena) const { return read(wire, &arena); }
};

template <>
struct Functions<vyn_connector::VynEvent> {
    using Record = vyn_connector::VynEvent;
    using Status = lyr::ipc::arena::conv::Status;
    common::WireOf<Record> (*write)(zt_arena&, const Record&, Status&) = &lyr::ipc::arena::conv::ToZt;
    Record (*read)(const zt_arena&, const common::WireOf<Record>&, Status&) = &lyr::ipc::arena::conv::FromZt;

    common::WireOf<Record> Write(const Record& record, zt_arena& arena) const
    {
        Status status = Status::Ok;
        return write(arena, record, status);
    }
    Record Read(const common::WireOf<Record>& wire, const zt_arena& arena) const
    {
        Status status = Status::Ok;
        return read(arena, wire, status);
    }
};

// A message with the arena that it refers to.
template <typename Record>
struct Received {
    common::WireOf<Record> wire;
    std::vector<std::uint8_t> bytes;

    zt_arena Arena() const
    {
        auto* const start = const_cast<std::uint8_t*>(bytes.data()); // readers leave it alone
        return {start, start + bytes.size(), start + bytes.size()};
    }
};

template <typename Record>
void AddThisLibrary(Conversions& conversions, const std::string& name, const std::vector<Record>& records)
{
    if (!conversions.Wants(name, "this library")) return;
    Functions<Record> functions;
    functions.write = Opaque(functions.write);
    functions.read = Opaque(functions.read);

    std::vector<Received<Record>> messages;
    std::size_t bytes = 0;
    std::size_t largest = 0;
    for (const Record& original : records) {
        std::vector<std::uint8_t> buffer(common::ArenaSize(original, 0) + 8);
        zt_arena arena{buffer.data(), buffer.data(), buffer.data() + buffer.size()};
        const common::WireOf<Record> wire = functions.Write(original, arena);
        buffer.resize(static_cast<std::size_t>(arena.top - arena.start));
        ExpectSame(name, original, functions.Read(wire, arena));
        bytes += (sizeof(wire) + buffer.size()) / records.size();
        largest = std::max(largest, buffer.size() + 8);
        messages.push_back({wire, std::move(buffer)});
    }

    const auto buffer = std::make_shared<std::vector<std::uint8_t>>(largest);
    conversions.Add(name + "/write/this library", bytes, [=](std::size_t times) {
        zt_arena arena{buffer->data(), buffer->data(), buffer->data() + buffer->size()};
        Cycle(records, times, [&](const Record& original) {
            arena.top = arena.start;
            Keep(functions.Write(original, arena));
        });
    });
    conversions.Add(name + "/read/this library", bytes, [functions, messages = std::move(messages)](std::size_t times) {
        Cycle(messages, times, [&](const Received<Record>& message) {
            const zt_arena arena = message.Arena();
            const Record copy = functions.Read(message.wire, arena);
            Keep(copy);
        });
    });
}

} // namespace bench
