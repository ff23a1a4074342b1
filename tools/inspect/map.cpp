#include "map.h"

#include "markup.h"
#include "printable.h"
#include "regions.h"
#include "tree.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

namespace inspect {

namespace {

constexpr std::size_t bytesInRow = 64;
constexpr std::size_t byteWidth = 14;
constexpr std::size_t left = 64; // of the first byte
constexpr std::size_t mapWidth = bytesInRow * byteWidth;
constexpr std::size_t legendLeft = left + mapWidth + 28;
constexpr std::size_t legendWidth = 400;
constexpr std::size_t legendLine = 17;
constexpr std::size_t mostLegend = 80;
constexpr std::size_t mostFaults = 12;
constexpr double characterWidth = 6.1; // of the labels

constexpr const char* style = R"svg(
  text { font: 12px ui-monospace, "DejaVu Sans Mono", monospace; fill: #1d2430; }
  .paper { fill: #ffffff; }
  .quiet { fill: #66707f; }
  .title { font-size: 15px; font-weight: bold; }
  .label { font-size: 10px; fill: #10151d; pointer-events: none; }
  .cell { stroke: #3c4657; stroke-width: .6; }
  .f0 { fill: #a9d3ff; } .f1 { fill: #ffd9a0; } .f2 { fill: #b6e6b3; } .f3 { fill: #e3c4f5; }
  .f4 { fill: #fff09a; } .f5 { fill: #a8e5e0; } .f6 { fill: #f9c9d8; } .f7 { fill: #cfd6ff; }
  .f8 { fill: #d8e89a; } .f9 { fill: #f2cdb4; } .f10 { fill: #bfe0f0; } .f11 { fill: #dcd3c4; }
  .padding { fill: #e9ebef; }
  .nobody { fill: url(#nobody); }
  .shared { fill: url(#shared); stroke: none; }
  .tolerated { fill: none; stroke: #d3202a; stroke-width: 1.6; stroke-dasharray: 4 2; }
  .refused { fill: #ff4d57; fill-opacity: .6; stroke: #c00812; stroke-width: 2; }
  .words { fill: #c00812; }
  @media (prefers-color-scheme: dark) {
    text { fill: #dfe5ee; } .paper { fill: #15191f; } .quiet { fill: #97a3b4; } .label { fill: #10151d; }
    .words { fill: #ff8088; }
  }
)svg";

constexpr const char* patterns = R"svg(<defs>
<pattern id="nobody" width="7" height="7" patternUnits="userSpaceOnUse" patternTransform="rotate(45)">
<rect width="7" height="7" fill="#e4e7ec"/><rect width="2.2" height="7" fill="#8d97a6"/></pattern>
<pattern id="shared" width="7" height="7" patternUnits="userSpaceOnUse" patternTransform="rotate(-45)">
<rect width="1.6" height="7" fill="#d3202a" fill-opacity=".6"/></pattern>
</defs>
)svg";

class MapPainter {
public:
    MapPainter(const Message& message, bool showsSecrets) : message_(message), showsSecrets_(showsSecrets) {}

    std::string Picture()
    {
        const std::vector<Region> wire = RegionsOfWire(message_);
        const std::vector<Region> arena = RegionsOfArena(message_);
        rowHeight_ = arena.size() > 400 || message_.arena.size() > 8192 ? 14 : 22;
        std::size_t y = Head();
        const std::size_t legendTop = y;
        y = Part("wire structure", wire, message_.wire.size(), y);
        y = Part("arena", arena, message_.arena.size(), y + 14);
        const std::size_t legendEnd = Legend(arena, wire, legendTop);
        const std::size_t height = std::max(y, legendEnd) + 12;
        const std::size_t width = legendLeft + legendWidth;
        return fmt::format(R"(<svg xmlns="http://www.w3.org/2000/svg" width="{0}" height="{1}" viewBox="0 0 {0} )"
                           R"({1}">
<style>{2}</style>
{3}<rect class="paper" width="{0}" height="{1}"/>
{4}</svg>)"
                           "\n",
                           width, height, style, patterns, svg_);
    }

private:
    template <typename... Arguments>
    void Add(fmt::format_string<Arguments...> format, Arguments&&... arguments)
    {
        fmt::format_to(std::back_inserter(svg_), format, std::forward<Arguments>(arguments)...);
    }

    // Returns where it ends, as all of them do.
    std::size_t Head()
    {
        std::size_t y = 24;
        Add(R"(<text class="title" x="12" y="{}">{}</text>)"
            "\n",
            y, Escaped(HeadingOf(message_)));
        std::vector<Finding> worstFirst = message_.findings;
        std::stable_partition(worstFirst.begin(), worstFirst.end(),
                              [](const Finding& finding) { return IsRefused(finding.reason); });
        const std::size_t count = std::min(worstFirst.size(), mostFaults);
        for (std::size_t i = 0; i < count; ++i) {
            const Finding& finding = worstFirst[i];
            y += legendLine;
            Add(R"(<text class="words" x="12" y="{}">{} {}{}{}</text>)"
                "\n",
                y, IsRefused(finding.reason) ? "!!" : " ~", Escaped(Printable(finding.path)),
                finding.path.empty() ? "" : ": ", Escaped(Printable(finding.words)));
        }
        if (const std::uint64_t all = message_.refused + message_.tolerated; all > count)
            Add(R"(<text class="words" x="12" y="{}">   ... {} more</text>)"
                "\n",
                y += legendLine, all - count);
        return y + 12;
    }

    std::size_t Part(std::string_view name, const std::vector<Region>& regions, std::size_t size, std::size_t y)
    {
        Add(R"(<text class="quiet" x="{}" y="{}">{}, {}, {} in a row</text>)"
            "\n",
            left, y + 14, name, Amount(size, "byte"), bytesInRow);
        y += 22;
        const std::size_t rows = (size + bytesInRow - 1) / bytesInRow;
        for (std::size_t row = 0; row < rows; ++row)
            Add(R"(<text class="quiet" x="12" y="{}" style="font-size:11px">{:04x}</text>)"
                "\n",
                y + row * rowHeight_ + rowHeight_ / 2 + 4, row * bytesInRow);
        top_ = y;
        for (const Region& region : regions)
            Draw(region);
        // Above what is drawn later, so that a neighbour does not hide it.
        for (const Region& region : regions)
            if (region.isShared || region.isFaulty) Mark(region);
        for (const Region& region : regions)
            Label(region);
        return y + rows * rowHeight_;
    }

    void Draw(const Region& region)
    {
        Add(R"(<g><title>{}</title><path class="cell {}" d="{}"/>)", Escaped(TooltipOf(region)), ClassOf(region),
            Outline(region));
        Add("</g>\n");
    }
    void Mark(const Region& region)
    {
        const std::string outline = Outline(region);
        Add(R"(<g pointer-events="none">)");
        if (region.isShared) Add(R"(<path class="shared" d="{}"/>)", outline);
        if (region.isFaulty) Add(R"(<path class="{}" d="{}"/>)", region.isRefused ? "refused" : "tolerated", outline);
        Add("</g>\n");
    }

    std::string ClassOf(const Region& region) const
    {
        if (region.node == noNode) return "nobody";
        if (message_.nodes[region.node].role == Role::Padding) return "padding";
        return fmt::format("f{}", ColourOf(message_, region.node));
    }

    // Around the bytes of all the rows that it covers.
    std::string Outline(const Region& region) const
    {
        const std::size_t end = std::size_t{region.offset} + region.size;
        const std::size_t firstRow = region.offset / bytesInRow;
        const std::size_t lastRow = (end - 1) / bytesInRow;
        const std::size_t x0 = left + region.offset % bytesInRow * byteWidth;
        const std::size_t x1 = left + ((end - 1) % bytesInRow + 1) * byteWidth;
        const std::size_t y0 = top_ + firstRow * rowHeight_;
        const std::size_t y1 = top_ + lastRow * rowHeight_;
        const std::size_t right = left + mapWidth;
        const auto bar = [&](std::size_t from, std::size_t to, std::size_t y) {
            return fmt::format("M{} {}H{}v{}H{}z", from, y, to, rowHeight_, from);
        };
        if (firstRow == lastRow) return bar(x0, x1, y0);
        if (firstRow + 1 == lastRow && x1 <= x0) return bar(x0, right, y0) + bar(left, x1, y1);
        return fmt::format("M{} {}H{}V{}H{}V{}H{}V{}H{}z", x0, y0, right, y1, x1, y1 + rowHeight_, left,
                           y0 + rowHeight_, x0);
    }

    // As much of the path, from its end, as there is room for; in a long one, again and again.
    void Label(const Region& region)
    {
        if (region.node == noNode || message_.nodes[region.node].role == Role::Padding) return;
        const std::size_t end = std::size_t{region.offset} + region.size;
        const std::string path = Printable(PathOf(message_, region.node));
        for (std::size_t at = region.offset; at < end;) {
            const std::size_t rowEnd = std::min(end, (at / bytesInRow + 1) * bytesInRow);
            const auto room =
                static_cast<std::size_t>(static_cast<double>((rowEnd - at) * byteWidth - 6) / characterWidth);
            std::string_view label = path;
            while (label.size() > room && !label.empty()) {
                const std::size_t dot = label.find('.');
                label.remove_prefix(dot == std::string_view::npos ? label.size() : dot + 1);
            }
            if (!label.empty()) {
                Add(R"(<text class="label" x="{}" y="{}">{}</text>)", left + at % bytesInRow * byteWidth + 4,
                    top_ + at / bytesInRow * rowHeight_ + rowHeight_ / 2 + 4, Escaped(label));
                at = (at / bytesInRow + 16) * bytesInRow;
            } else {
                at = rowEnd;
            }
        }
    }

    std::string TooltipOf(const Region& region) const
    {
        const std::size_t end = std::size_t{region.offset} + region.size;
        std::string text;
        if (region.node == noNode) {
            text = "no field";
        } else {
            const Node& node = message_.nodes[region.node];
            text = PathOf(message_, region.node) + " " + node.kind;
            if (const std::string value = ValueOf(message_, node, showsSecrets_); !value.empty()) text += "\n" + value;
            if (const std::string target = TargetOf(node); !target.empty()) text += "\n" + target;
        }
        text += fmt::format("\nbytes 0x{:04x}..0x{:04x}{}", region.offset, end,
                            region.isShared ? ", of several fields" : "");
        if (region.node != noNode)
            for (const std::uint32_t finding : message_.nodes[region.node].findings)
                text += "\n" + message_.findings[finding].words;
        return text;
    }

    std::size_t Legend(const std::vector<Region>& arena, const std::vector<Region>& wire, std::size_t y)
    {
        const auto entry = [&](std::string_view swatch, std::string_view text) {
            y += legendLine;
            Add(R"(<rect class="cell {}" x="{}" y="{}" width="22" height="12"/>)", swatch, legendLeft, y - 10);
            Add(R"(<text x="{}" y="{}" style="font-size:11px">{}</text>)"
                "\n",
                legendLeft + 30, y, Escaped(text));
        };
        entry("nobody", "bytes that no field owns, and gaps");
        entry("shared", "bytes of several fields");
        entry("padding", "padding of the wire structure");
        entry("tolerated", "a fault that readers tolerate");
        entry("refused", "a fault that readers refuse");
        y += legendLine / 2;

        std::vector<std::uint32_t> nodes;
        for (const auto* const regions : {&wire, &arena})
            for (const Region& region : *regions)
                if (region.node != noNode && message_.nodes[region.node].role != Role::Padding)
                    nodes.push_back(FieldOf(message_, region.node));
        std::sort(nodes.begin(), nodes.end());
        nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
        for (std::size_t i = 0; i < std::min(nodes.size(), mostLegend); ++i) {
            std::string path = Printable(PathOf(message_, nodes[i]));
            path.erase(0, std::min(path.size(), path.find('.') + 1));
            if (path.size() > 50) path = "..." + path.substr(path.size() - 47);
            entry(fmt::format("f{}", ColourOf(message_, nodes[i])), path);
        }
        if (nodes.size() > mostLegend)
            Add(R"(<text class="quiet" x="{}" y="{}">... {} more</text>)"
                "\n",
                legendLeft + 30, y += legendLine, nodes.size() - mostLegend);
        return y;
    }

    const Message& message_;
    const bool showsSecrets_;
    std::size_t rowHeight_ = 0;
    std::size_t top_ = 0; // of the first row of the part that is drawn
    std::string svg_;
};

} // namespace

std::string Map(const Message& message, bool showsSecrets)
{
    return MapPainter(message, showsSecrets).Picture();
}

} // namespace inspect
