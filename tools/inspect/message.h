// A message as the inspector sees it: a tree of its fields and a list of its faults. Everything that shows a message
// takes it from here; Inspect() makes it of any bytes whatever, in time and memory bounded by their number.
#pragma once

#include "capture.h"

#include <common/zt_arena.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace inspect {

enum class Reason : std::uint8_t {
    // What readers refuse.
    Damaged, // not a message at all: the file, the record's name or the wire structure's size
    OutsideArena,
    PartOfElement,
    OutsideUsedPart,
    Value, // one that the reader knows no meaning for
    // What readers tolerate and no writer writes.
    OverLimit,
    Empty,
    Unaligned,
    Misplaced,
    Overlap,
    BehindTop,
    Gap,
    Padding,
    Flag,
    Repeated,
    Absent,
    UnusedEntry,
    Unowned,
};
constexpr bool IsRefused(Reason reason)
{
    return reason <= Reason::Value;
}
// "outside the arena"
std::string_view NameOf(Reason reason);

// Bytes of the wire structure or of the arena.
struct Place {
    bool inArena = false;
    std::uint32_t offset = 0;
    std::uint32_t size = 0;
};

inline constexpr std::uint32_t noNode = 0xFFFFFFFF;

struct Finding {
    Reason reason;
    std::uint32_t node; // whose fault it is, or noNode
    std::string path;   // "AppInfo.productInfo.updCfgArray.items[3].field2"
    Place place;        // the bytes that it is about
    std::string words;  // "outside the arena by 5 bytes"
    // What the reader throws there, where it refuses it; of a fault that is not the first, what it would throw.
    std::string exception; // "std::out_of_range"; empty where none is thrown
    std::string text;
};

// What a line of the tree stands for. A slot is what an optional points to, where that is a pointer again; it has the
// path of its field.
enum class Role : std::uint8_t { Record, Field, Element, Slot, Padding };

enum class Content : std::uint8_t { None, Number, Flag, Time, Raw, Text, Blob, Array, Optional, Unused };

// One line of the tree. Its children follow it, each one level deeper.
struct Node {
    std::uint32_t parent = noNode;
    std::uint16_t depth = 0;
    std::string name; // "field2", "[3]", "padding"
    std::string kind; // "Text<128>"
    Place place;
    Role role = Role::Record;
    Content content = Content::None;
    bool isSecret = false;
    bool isFaulty = false;
    bool isSigned = false;
    std::uint64_t bits = 0; // of a number, a flag or a time
    // A pointer, and what is said of it.
    bool hasPointer = false;
    bool resolves = false;
    bool leavesByte = false; // it is empty and takes a byte all the same, which its writer leaves as it was
    zt_ptr_t pointer{};
    std::uint32_t elementSize = 1;
    std::uint64_t limit = 0; // bytes of a text or blob, elements of all others
    std::uint64_t cut = 0;   // elements that are not shown
    std::vector<std::uint32_t> findings;

    std::uint64_t Count() const { return pointer.size / elementSize; }
    Place Target() const { return {true, pointer.offset, pointer.size}; }
    // Where a value stands that has no pointer of its own: in the wire structure, in an element, in a slot.
    Place ValuePlace() const { return hasPointer ? Place{true, pointer.offset, elementSize} : place; }
};

enum class Standing { Canonical, Tolerated, Refused };
std::string_view NameOf(Standing standing);

struct Message {
    std::string record;
    bool isKnown = false; // the record; of another nobody knows which bytes are secret
    ByteString wire;
    ByteString arena;
    std::size_t top = 0;
    std::size_t start = 0;   // the arena begins so far past a multiple of 8
    std::vector<Node> nodes; // the first is the record itself
    // In the order of the tree: of each node the first one and all that readers refuse, and the others up to a number.
    std::vector<Finding> findings;
    // All of them, shown or not.
    std::uint64_t refused = 0;
    std::uint64_t tolerated = 0;
    // What reading the message throws, and where; empty where it throws nothing.
    std::string exception;
    std::string exceptionText;
    std::string exceptionPath;
    std::uint64_t memory = 0; // that reading it takes
    // Bytes of the arena that hold secrets: offset and end, in order, none overlapping another.
    std::vector<std::pair<std::uint32_t, std::uint32_t>> secrets;

    Standing IsA() const
    {
        return refused != 0 ? Standing::Refused : tolerated != 0 ? Standing::Tolerated : Standing::Canonical;
    }
    // Whether any byte of it is.
    bool IsSecret(const Place& place) const;
    const std::uint8_t* At(const Place& place) const { return (place.inArena ? arena : wire).data() + place.offset; }
};

// "AppInfo.productInfo.field1"
std::string PathOf(const Message& message, std::uint32_t node);

struct Extent {
    std::size_t mostElements = 1000; // of each array
    std::size_t mostNodes = 50000;
    std::size_t mostFindings = 1000; // beside those that every field keeps
};

// Never fails; bytes that are no message of any record are one with faults.
Message Inspect(const Capture& capture, const Extent& extent = {});

// A state is a bare number and no record with a table.
inline constexpr std::string_view stateName = "VynConnectorState";

// The names of the records whose messages are known.
std::vector<std::string_view> RecordNames();

} // namespace inspect
