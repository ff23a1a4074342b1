// docs/message.svg: a message as it really is encoded, its wire structure on the left and its arena on the right.
#include "reference.h"

#include <common/all_records.h>
#include <common/arena_size.h>

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

namespace {

using namespace vyn_connector::common;
using vyn_connector::LicenseKeyInfo;

// The message that docs/format.md shows: the arena starts 5 bytes past a multiple of 8, so that it begins with a gap.
constexpr std::size_t start = 5;
LicenseKeyInfo Shown()
{
    LicenseKeyInfo info;
    info.field1 = 0x01010101;
    info.field2 = 0x02020202;
    info.field3 = 0x03030303;
    info.field4 = wem::types::Timestamp{1700000000};
    info.field5 = wem::types::Timestamp{-2};
    info.field6 = 0x06060606;
    info.field7 = 0x07070707;
    info.field8 = "KEY-0001";
    return info;
}

struct Box {
    std::size_t offset;
    std::size_t width;
    std::string name;
    std::string value;
    std::optional<std::size_t> leadsTo; // an offset in the arena
};

using Boxes = std::vector<Box>;

// The boxes of the kinds that the record has, each as it lies in the message.
struct Layout {
    const std::uint8_t* arena;
    Boxes inArena;

    template <typename Value>
    static Value Load(const std::uint8_t* bytes)
    {
        Value value;
        std::memcpy(&value, bytes, sizeof(value));
        return value;
    }

    static Box Pointer(zt_ptr_t pointer, std::size_t offset, const std::string& name)
    {
        return {offset, sizeof(pointer), name, fmt::format("offset {}, size {}", pointer.offset, pointer.size),
                pointer.offset};
    }

    template <typename Value>
    Box Lay(const kind::Number*, const Value*, const std::uint8_t* bytes, std::size_t offset, const std::string& name)
    {
        return {offset, sizeof(Value), name, std::to_string(Load<Value>(bytes)), std::nullopt};
    }
    Box Lay(const kind::Time*, const wem::types::Timestamp*, const std::uint8_t* bytes, std::size_t offset,
            const std::string& name)
    {
        return {offset, sizeof(std::int64_t), name, std::to_string(Load<std::int64_t>(bytes)), std::nullopt};
    }
    template <std::size_t N>
    Box Lay(const kind::Text<N>*, const std::string*, const std::uint8_t* bytes, std::size_t offset,
            const std::string& name)
    {
        const auto pointer = Load<zt_ptr_t>(bytes);
        const std::string text(reinterpret_cast<const char*>(arena) + pointer.offset, pointer.size);
        inArena.push_back({pointer.offset, pointer.size, "bytes", "\"" + text + "\"", std::nullopt});
        return Pointer(pointer, offset, name);
    }
    template <typename Kind, typename Value>
    Box Lay(const kind::Optional<Kind>*, const std::optional<Value>*, const std::uint8_t* bytes, std::size_t offset,
            const std::string& name)
    {
        const auto pointer = Load<zt_ptr_t>(bytes);
        const std::uint8_t* const slot = arena + pointer.offset;
        Box box =
            Lay(static_cast<const Kind*>(nullptr), static_cast<const Value*>(nullptr), slot, pointer.offset, "slot");
        // What the slot leads to lies behind it.
        const auto isBehind = [&](const Box& other) { return other.offset > box.offset; };
        inArena.insert(std::find_if(inArena.begin(), inArena.end(), isBehind), std::move(box));
        return Pointer(pointer, offset, name);
    }
};

// The bytes that no box has are the gaps of the alignment.
Boxes WithGaps(const Boxes& boxes)
{
    Boxes all;
    std::size_t end = 0;
    for (const Box& box : boxes) {
        if (box.offset > end)
            all.push_back({end, box.offset - end, "gap", fmt::format("{} zero bytes", box.offset - end), std::nullopt});
        all.push_back(box);
        end = box.offset + box.width;
    }
    return all;
}

constexpr int rowHeight = 28;
constexpr int boxWidth = 178;
constexpr int wireLeft = 36;
constexpr int arenaLeft = 314;
constexpr int firstRow = 44;

int MiddleOf(std::size_t row)
{
    return firstRow + static_cast<int>(row) * rowHeight + (rowHeight - 4) / 2;
}

void DrawBoxes(const Boxes& boxes, int left, const std::string& title)
{
    fmt::print("<text x=\"{}\" y=\"28\" class=\"title\">{}</text>\n", left, title);
    for (std::size_t row = 0; row < boxes.size(); ++row) {
        const Box& box = boxes[row];
        const int text = MiddleOf(row) + 4;
        fmt::print("<text x=\"{}\" y=\"{}\" class=\"offset\">{}</text>\n", left - 6, text, box.offset);
        fmt::print("<rect x=\"{}\" y=\"{}\" width=\"{}\" height=\"{}\" rx=\"3\" class=\"{}\"/>\n", left,
                   MiddleOf(row) - (rowHeight - 4) / 2, boxWidth, rowHeight - 4,
                   box.leadsTo         ? "pointer"
                   : box.name == "gap" ? "gap"
                                       : "value");
        fmt::print("<text x=\"{}\" y=\"{}\">{}</text>\n", left + 8, text, box.name);
        fmt::print("<text x=\"{}\" y=\"{}\" class=\"right\">{}</text>\n", left + boxWidth - 8, text, box.value);
    }
}

// A line from the right edge of each pointer to the box that it names; inside the arena, round its right edge.
void DrawPointers(const Boxes& from, int left, const Boxes& arena)
{
    for (std::size_t row = 0; row < from.size(); ++row) {
        if (!from[row].leadsTo) continue;
        std::size_t target = 0;
        while (arena[target].offset != *from[row].leadsTo)
            ++target;
        const bool inside = left == arenaLeft;
        const int x = left + boxWidth;
        const int end = inside ? x : arenaLeft - 26;
        const int bend = inside ? 26 : 40;
        fmt::print("<path d=\"M{} {} C{} {} {} {} {} {}\" class=\"line\" marker-end=\"url(#head)\"/>\n", x,
                   MiddleOf(row), x + bend, MiddleOf(row), inside ? end + bend : end - bend, MiddleOf(target),
                   inside ? end + 5 : end - 5, MiddleOf(target));
    }
}

} // namespace

void DrawMessage()
{
    const LicenseKeyInfo record = Shown();
    alignas(8) std::uint8_t buffer[128] = {};
    zt_arena arena{buffer + start, buffer + start, buffer + sizeof(buffer)};
    const WireOf<LicenseKeyInfo> wire = CastToZt(record, &arena);

    Layout layout{arena.start, {}};
    Boxes inWire;
    ForEachRow<LicenseKeyInfo>([&](const auto& row) {
        using Row = std::decay_t<decltype(row)>;
        static_assert(isField<Row>, "a row of padding is not drawn");
        inWire.push_back(layout.Lay(static_cast<const typename Row::Kind*>(nullptr),
                                    static_cast<const typename Row::InDomain::Type*>(nullptr),
                                    reinterpret_cast<const std::uint8_t*>(&wire) + row.offset, row.offset, row.name));
    });
    const Boxes inArena = WithGaps(layout.inArena);

    const int height = firstRow + static_cast<int>(std::max(inWire.size(), inArena.size())) * rowHeight + 8;
    fmt::print("<svg xmlns=\"http://www.w3.org/2000/svg\" viewBox=\"0 0 528 {0}\" width=\"528\" height=\"{0}\" "
               "font-family=\"sans-serif\" font-size=\"12\">\n"
               "<title>A {1} with its arena</title>\n"
               "<style>\n"
               "text {{ fill: #1f2937 }} .title {{ font-weight: bold; font-size: 13px }}\n"
               ".offset {{ text-anchor: end; fill: #6b7280; font-size: 11px }} .right {{ text-anchor: end }}\n"
               "rect {{ stroke: #6b7280 }} .value {{ fill: #e5e7eb }} .pointer {{ fill: #bfdbfe }}\n"
               ".gap {{ fill: none; stroke-dasharray: 4 3 }}\n"
               ".line {{ fill: none; stroke: #2563eb; stroke-width: 1.5 }} marker path {{ fill: #2563eb }}\n"
               "@media (prefers-color-scheme: dark) {{\n"
               "text {{ fill: #e5e7eb }} .offset {{ fill: #9ca3af }} .value {{ fill: #374151 }}\n"
               ".pointer {{ fill: #1e3a8a }} .line {{ stroke: #93c5fd }} marker path {{ fill: #93c5fd }}\n"
               "}}\n"
               "</style>\n"
               "<defs><marker id=\"head\" viewBox=\"0 0 8 8\" refX=\"2\" refY=\"4\" markerWidth=\"6\" "
               "markerHeight=\"6\" orient=\"auto\"><path d=\"M0 0 L8 4 L0 8 z\"/></marker></defs>\n",
               height, Description<LicenseKeyInfo>::name);
    DrawBoxes(inWire, wireLeft, fmt::format("Wire structure, {} bytes", sizeof(wire)));
    DrawBoxes(inArena, arenaLeft, fmt::format("Arena, {} bytes", arena.top - arena.start));
    DrawPointers(inWire, wireLeft, inArena);
    DrawPointers(inArena, arenaLeft, inArena);
    fmt::print("</svg>\n");
}
