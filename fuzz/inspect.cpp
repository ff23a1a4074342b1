// The inspector, on any bytes as a capture file, as a message of any record, as two files to compare and as JSON. It
// says what the reader then does; its pictures, pages and JSON come to an end; what it prints of a canonical message is
// what it makes the same bytes of; and what it makes of any JSON is a canonical message.
#include "library.h"
#include "memory_limit.h"
#include "message_input.h"

#include <diff.h>
#include <encode.h>
#include <json.h>
#include <listing.h>
#include <map.h>
#include <message.h>
#include <page.h>
#include <tree.h>

#include <string>
#include <vector>

const std::vector<const model::Layout*>& InputLayouts()
{
    static const std::vector<const model::Layout*> layouts = [] {
        std::vector<const model::Layout*> all;
        for (const library::Conversions& record : library::Records())
            all.push_back(record.layout);
        return all;
    }();
    return layouts;
}

namespace {

// Small enough that inputs reach what is cut.
constexpr inspect::Extent small{20, 200, 30};

// For an input of some kilobytes; a page has a part for each byte and each field.
constexpr std::size_t mostOutput = std::size_t{8} << 20;

void CheckShown(const inspect::Message& message)
{
    Require(inspect::Tree(message, {true, false}).size() < mostOutput, "a tree without end");
    Require(inspect::Map(message, false).size() < mostOutput, "a picture without end");
    Require(inspect::Page(message, false).size() < mostOutput, "a page without end");
    Require(inspect::ToJson(message, false).size() < mostOutput, "JSON without end");
}

void CheckTwo(const std::uint8_t* data, std::size_t size)
{
    const inspect::Message a = inspect::Inspect(inspect::ParseFrame(data, size / 2), small);
    const inspect::Message b = inspect::Inspect(inspect::ParseFrame(data + size / 2, size - size / 2), small);
    Require(inspect::Diff(a, b, {true, false}).size() < mostOutput, "a difference without end");
    const std::string name(reinterpret_cast<const char*>(data), size / 2);
    const std::string line = inspect::ListingLine(name, b, {false, false});
    for (const char c : line)
        Require(static_cast<unsigned char>(c) >= 0x20, "a line of a listing that is more than text");
}

void CheckJson(const std::uint8_t* data, std::size_t size)
{
    try {
        const inspect::Capture made = inspect::Encode({reinterpret_cast<const char*>(data), size});
        Require(inspect::Inspect(made, small).IsA() == inspect::Standing::Canonical, "JSON of no canonical message");
    } catch (const inspect::EncodeError&) {
        return;
    }
}

void CheckReader(const library::Conversions& record, const inspect::Capture& capture, const inspect::Message& message)
{
    // Where it stood, and with bytes behind its end that nobody is to touch.
    std::vector<std::uint8_t> room(capture.arena.size() + 8);
    std::uint8_t* const begin = room.data() + capture.start;
    std::copy(capture.arena.begin(), capture.arena.end(), begin);
    const zt_arena arena{begin, begin + *capture.top, begin + capture.arena.size()};
    const model::Outcome read = record.read(std::string(capture.wire.begin(), capture.wire.end()), &arena);
    const bool isSound = !read.failure.has_value() && read.status;
    if (read.failure.has_value() && read.failure->type == "std::bad_alloc") return; // of a range, before its pointer
    Require(isSound == (message.IsA() != inspect::Standing::Refused), "reading does not do what the inspector says");
    if (read.failure.has_value()) {
        Require(read.failure->type == message.exception, "another exception than " + message.exception);
        Require(read.failure->text == message.exceptionText, "another text than " + message.exceptionText);
    }
}

} // namespace

void Check(const std::uint8_t* data, std::size_t size)
{
    CheckShown(inspect::Inspect(inspect::ParseFrame(data, size), small));
    CheckTwo(data, size);
    CheckJson(data, size);

    const MessageInput input = ParseMessageInput(data, size);
    inspect::Capture capture;
    capture.record = input.layout->name;
    capture.wire.assign(input.message.wire.begin(), input.message.wire.end());
    capture.arena.assign(input.message.arena.bytes.begin(), input.message.arena.bytes.end());
    capture.top = input.message.arena.top;
    capture.start = input.startMod16 % 8;
    CheckShown(inspect::Inspect(capture, small));

    const inspect::Message message = inspect::InspectForJson(capture);
    CheckReader(library::Records()[input.number], capture, message);
    if (message.IsA() != inspect::Standing::Canonical) return;
    const inspect::Capture again = inspect::Encode(inspect::ToJson(message, true));
    const auto used = static_cast<std::ptrdiff_t>(message.top);
    const inspect::ByteString arena(capture.arena.begin(), capture.arena.begin() + used);
    Require(again.wire == capture.wire, "another wire structure");
    Require(again.arena == arena, "another arena");
}
