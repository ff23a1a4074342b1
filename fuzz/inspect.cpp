// The inspector, on any bytes as a capture file and as a message of any record. It says what the reader then does; its
// pictures, pages and JSON come to an end; what it prints of a canonical message is what it makes the same bytes of.
#include "library.h"
#include "memory_limit.h"
#include "message_input.h"

#include <encode.h>
#include <json.h>
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

    const MessageInput input = ParseMessageInput(data, size);
    inspect::Capture capture;
    capture.record = input.layout->name;
    capture.wire.assign(input.message.wire.begin(), input.message.wire.end());
    capture.arena.assign(input.message.arena.bytes.begin(), input.message.arena.bytes.end());
    capture.top = input.message.arena.top;
    capture.start = input.startMod16 % 8;
    CheckShown(inspect::Inspect(capture, small));

    const inspect::Message message = inspect::Inspect(capture, inspect::jsonExtent);
    CheckReader(library::Records()[input.number], capture, message);
    if (message.IsA() != inspect::Standing::Canonical) return;
    const inspect::Capture again = inspect::Encode(inspect::ToJson(message, true));
    const auto used = static_cast<std::ptrdiff_t>(message.top);
    const inspect::ByteString arena(capture.arena.begin(), capture.arena.begin() + used);
    Require(again.wire == capture.wire, "another wire structure");
    Require(again.arena == arena || capture.record == "VynEvent",
            "another arena"); // an empty string's byte is anybody's
}
