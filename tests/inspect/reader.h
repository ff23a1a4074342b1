// What the library makes of a captured message, for comparison with what the inspector says of it.
#pragma once

#include <capture.h>

#include <common/all_records.h>
#include <common/message.h>
#include <common/verify.h>
#include <mur/utf8.h>

#include <cstring>
#include <functional>
#include <new>
#include <optional>
#include <string>
#include <vector>

namespace reader {

namespace common = vyn_connector::common;

struct Reading {
    std::string exception; // empty where a record was read
    std::string text;
};

struct Answers {
    Reading read;
    bool isSound = false;
    bool isCanonical = false;
    std::string departure;
    struct Fault {
        std::string path;
        Reading reader;
    };
    std::vector<Fault> faults; // in the order of the reader
};

template <typename Record>
Reading Read(const common::WireOf<Record>& wire, const inspect::Capture& capture)
{
    try {
        common::Decode<Record>(wire, capture.arena.data(), capture.arena.size());
        return {};
    } catch (const mur::InvalidArgumentException& error) {
        return {"mur::InvalidArgumentException", mur::to_utf8(error.Text())};
    } catch (const mur::ResultCodeException& error) {
        return {"mur::ResultCodeException", mur::to_utf8(error.Text())};
    } catch (const std::out_of_range& error) {
        return {"std::out_of_range", error.what()};
    } catch (const std::bad_alloc&) {
        return {"std::bad_alloc", ""};
    }
}

template <typename Record>
Answers AskAs(const inspect::Capture& capture)
{
    common::WireOf<Record> wire;
    std::memcpy(&wire, capture.wire.data(), sizeof(wire));
    alignas(8) std::uint8_t none[16] = {};
    // A vector's bytes are aligned as an arena of the platform is.
    inspect::ByteString bytes(capture.arena.size() + 8);
    std::uint8_t* const begin = capture.arena.empty() ? none + capture.start : bytes.data() + capture.start;
    std::copy(capture.arena.begin(), capture.arena.end(), begin);
    const zt_arena arena{begin, begin + capture.arena.size(), begin + capture.arena.size()};

    Answers answers;
    answers.read = Read<Record>(wire, capture);
    answers.isSound = !common::Verify<Record>(wire, &arena);
    const auto departure = common::VerifyCanonical<Record>(wire, &arena);
    answers.isCanonical = !departure;
    if (departure) answers.departure = departure->Path() + ": " + departure->Text();
    common::Verify<Record>(wire, &arena, [&](const common::Fault& fault) {
        answers.faults.push_back({fault.Path(), {std::string(fault.Exception()), fault.Text()}});
    });
    return answers;
}

inline Answers Ask(const inspect::Capture& capture)
{
    std::optional<Answers> answers;
    common::ForEach(common::AllRecords{}, [&](auto tag) {
        using Record = typename decltype(tag)::Type;
        if (capture.record == common::Description<Record>::name) answers = AskAs<Record>(capture);
    });
    return answers.value();
}

} // namespace reader
