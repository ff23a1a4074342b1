// What the inspector says of a message is what the library does with it: for every record, each bit of a full message
// flipped, each of its pointers turned to telling places, each two of them at once, and each length of its arena.
#include "../../fuzz/library.h"
#include "../../fuzz/memory_limit.h"
#include "../../fuzz/model/message.h"
#include "reader.h"

#include <common/connector_state.h>
#include <message.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

namespace {

inspect::ByteString BytesOf(const std::string& text)
{
    return {text.begin(), text.end()};
}

std::string Text(const reader::Reading& reading)
{
    return reading.exception + ": " + reading.text;
}

class Agreement : public testing::TestWithParam<library::Conversions> {
protected:
    const model::Layout& Layout() const { return *GetParam().layout; }
    model::Message Full() const { return MakeMessage(Layout(), FullValue(Layout()), 0); }

    void Expect(const model::Message& spoilt, const std::string& how)
    {
        if (HasFailure()) return; // the others would say the same
        inspect::Capture capture;
        capture.record = Layout().name;
        capture.wire = BytesOf(spoilt.wire);
        capture.arena = BytesOf(spoilt.arena.bytes);
        const reader::Answers library = reader::Ask(capture);
        const inspect::Message message = inspect::Inspect(capture);

        // A range's reader asks for memory before it looks at the pointer.
        if (library.read.exception == "std::bad_alloc")
            EXPECT_GT(message.memory, model::memoryLimit) << how;
        else
            EXPECT_EQ(Text({message.exception, message.exceptionText}), Text(library.read)) << how;
        EXPECT_EQ(message.IsA() != inspect::Standing::Refused, library.isSound) << how;
        EXPECT_EQ(message.IsA() == inspect::Standing::Canonical, library.isCanonical) << how << library.departure;
        EXPECT_EQ(message.refused, library.faults.size()) << how;
        ExpectReadersWords(message, library, how);
    }

    // Each refused field says what the reader would throw there, and the first one is where it throws.
    void ExpectReadersWords(const inspect::Message& message, const reader::Answers& library, const std::string& how)
    {
        const std::string record = message.record + ".";
        std::vector<std::string> said;
        for (const inspect::Finding& finding : message.findings)
            if (IsRefused(finding.reason))
                said.push_back(finding.path + ": " + Text({finding.exception, finding.text}));
        std::vector<std::string> expected;
        for (const reader::Answers::Fault& fault : library.faults)
            expected.push_back(record + fault.path + ": " + Text(fault.reader));
        EXPECT_EQ(message.exceptionPath, expected.empty() ? "" : record + library.faults[0].path) << how;
        std::sort(said.begin(), said.end());
        std::sort(expected.begin(), expected.end());
        EXPECT_EQ(said, expected) << how;
    }
};

std::string& BytesWith(model::Message& message, const model::PointerAt& pointer)
{
    return pointer.inArena ? message.arena.bytes : message.wire;
}

TEST_P(Agreement, UnspoiltMessage)
{
    Expect(Full(), "nothing");
}

TEST_P(Agreement, EachBitFlipped)
{
    const model::Message message = Full();
    for (std::size_t bit = 0; bit < message.wire.size() * 8; ++bit) {
        model::Message spoilt = message;
        spoilt.wire[bit / 8] = static_cast<char>(spoilt.wire[bit / 8] ^ (1 << bit % 8));
        Expect(spoilt, "bit " + std::to_string(bit) + " of the structure");
    }
    for (std::size_t bit = 0; bit < message.arena.bytes.size() * 8; ++bit) {
        model::Message spoilt = message;
        spoilt.arena.bytes[bit / 8] = static_cast<char>(spoilt.arena.bytes[bit / 8] ^ (1 << bit % 8));
        Expect(spoilt, "bit " + std::to_string(bit) + " of the arena");
    }
}

TEST_P(Agreement, EachPointerTurned)
{
    const model::Message message = Full();
    const auto capacity = static_cast<std::uint32_t>(message.arena.bytes.size());
    for (const model::PointerAt& pointer : PointersOf(Layout(), message)) {
        const auto element = static_cast<std::uint32_t>(pointer.elementSize);
        for (const std::uint32_t offset : {0u, 1u, 4u, 8u, capacity / 2, capacity, capacity + 1, 0xFFFFFFFFu})
            for (const std::uint32_t size : {0u, 1u, element, 2 * element, capacity - 1, capacity, 0xFFFFFFF0u}) {
                model::Message spoilt = message;
                model::PutPointer(BytesWith(spoilt, pointer), pointer.at, offset, size);
                Expect(spoilt, "the pointer at " + std::to_string(pointer.at) + " set to {" + std::to_string(offset) +
                                   ", " + std::to_string(size) + "}");
            }
    }
}

// What the reader raises tells which of them it met first.
TEST_P(Agreement, EveryTwoPointersOutside)
{
    const model::Message message = Full();
    const std::vector<model::PointerAt> pointers = PointersOf(Layout(), message);
    for (const model::PointerAt& a : pointers) {
        for (const model::PointerAt& b : pointers) {
            if (a.inArena == b.inArena && a.at == b.at) continue;
            model::Message spoilt = message;
            model::PutPointer(BytesWith(spoilt, a), a.at, 0x40000001, 16 * a.elementSize);
            model::PutPointer(BytesWith(spoilt, b), b.at, 0x40000002, 16 * b.elementSize);
            Expect(spoilt, "the pointers at " + std::to_string(a.at) + " and " + std::to_string(b.at));
        }
    }
}

TEST_P(Agreement, EachLengthOfTheArena)
{
    const model::Message message = Full();
    for (std::size_t size = 0; size <= message.arena.bytes.size(); ++size) {
        model::Message spoilt = message;
        spoilt.arena.bytes.resize(size);
        Expect(spoilt, "an arena of " + std::to_string(size));
    }
}

// A state has no reader that throws: what is refused is what reading gives nothing for.
TEST(AgreementOfStates, EachCode)
{
    for (int code = -1; code <= 300; ++code) {
        inspect::Capture capture;
        capture.record = "VynConnectorState";
        capture.wire.resize(sizeof(code));
        std::memcpy(capture.wire.data(), &code, sizeof(code));
        const inspect::Message message = inspect::Inspect(capture);
        const bool isState = vyn_connector::common::CastFromZt(code).has_value();
        EXPECT_EQ(message.IsA(), isState ? inspect::Standing::Canonical : inspect::Standing::Refused) << code;
        EXPECT_EQ(message.exception, "") << code;
    }
}

INSTANTIATE_TEST_SUITE_P(Records, Agreement, testing::ValuesIn(library::Records()), testing::PrintToStringParamName());

} // namespace
