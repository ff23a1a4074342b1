#include "page.h"

#include "markup.h"
#include "printable.h"
#include "regions.h"
#include "tree.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <iterator>

namespace inspect {

namespace {

using Json = nlohmann::ordered_json;

constexpr std::size_t bytesInRow = 16;
// What is not in sight is laid out a hundred lines at a time.
constexpr std::size_t linesInChunk = 100;
// Faults on top; all of them are marked in the tree.
constexpr std::size_t mostListed = 1000;

class PageWriter {
public:
    PageWriter(const Message& message, bool showsSecrets) : message_(message), showsSecrets_(showsSecrets) {}

    std::string Whole()
    {
        const std::string record = message_.record.empty() ? "message" : Escaped(Printable(message_.record));
        Add(R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'">
<title>{0}: {1}</title>
<style>
{2}</style>
</head>
<body>)"
            "\n",
            record, NameOf(message_.IsA()), pageStyle);
        Head(record);
        Faults();
        Add(R"(<main>
<section class="pane"><h2>Fields</h2>)"
            "\n");
        Tree();
        Add(R"(</section>
<section class="pane"><h2>Bytes</h2>
<div class="bytes" tabindex="0" role="group" )"
            R"(aria-label="bytes of the message">)"
            "\n");
        Bytes("Wire structure", "wire", RegionsOfWire(message_), message_.wire);
        Bytes("Arena", "arena", RegionsOfArena(message_), message_.arena);
        Add(R"(</div></section>
</main>
<section class="detail" aria-live="polite" aria-label="the )"
            R"(field"></section>)"
            "\n"
            R"(<script type="application/json" id="data">{}</script>
<script>
{}</script>
</body>
</html>
)",
            Data(), pageScript);
        return std::move(html_);
    }

private:
    template <typename... Arguments>
    void Add(fmt::format_string<Arguments...> format, Arguments&&... arguments)
    {
        fmt::format_to(std::back_inserter(html_), format, std::forward<Arguments>(arguments)...);
    }

    void Head(const std::string& record)
    {
        Add(R"(<header><span class="hint"><kbd>&uarr;</kbd> <kbd>&darr;</kbd> <kbd>&larr;</kbd> <kbd>&rarr;</kbd> )"
            R"(move, <kbd>f</kbd> <kbd>F</kbd> next and previous fault</span><h1>{}</h1><span class="badge )"
            R"({}">{}</span> )"
            "{} in the wire structure, {} in the arena; reading takes {} of memory",
            record, NameOf(message_.IsA()), Escaped(StandingOf(message_)), Amount(message_.wire.size(), "byte"),
            message_.arena.size(), Amount(message_.memory, "byte"));
        if (const std::string words = ReadersWords(message_); !words.empty())
            Add(R"(<p class="reader">{}</p>)", Escaped(Printable(words)));
        Add("</header>\n");
    }

    void Faults()
    {
        Add(R"(<ul class="faults" aria-label="faults">)");
        std::size_t listed = 0;
        for (const bool isRefused : {true, false})
            for (const Finding& finding : message_.findings) {
                if (IsRefused(finding.reason) != isRefused || listed == mostListed) continue;
                Fault(finding);
                ++listed;
            }
        if (const std::uint64_t all = message_.refused + message_.tolerated; all > listed)
            Add("<li><p>... and {} more</p></li>", all - listed);
        Add("</ul>\n");
    }

    void Fault(const Finding& finding)
    {
        Add(R"(<li><button type="button" class="{}" data-node="{}" data-at="{}-{}"><span )"
            R"(class="where">{}</span>{}{}</button></li>)"
            "\n",
            IsRefused(finding.reason) ? "r" : "t", finding.node == noNode ? "-1" : std::to_string(finding.node),
            finding.place.inArena ? "arena" : "wire", finding.place.offset, Escaped(Printable(finding.path)),
            finding.path.empty() ? "" : ": ", Escaped(Printable(finding.words)));
    }

    void Tree()
    {
        Add(R"(<div class="tree" role="tree" aria-label="fields of the message">)"
            "\n");
        std::size_t lines = 0;
        const auto chunk = [&] {
            if (lines++ % linesInChunk == 0)
                Add(R"({}<div class="chunk" role="presentation">)"
                    "\n",
                    lines == 1 ? "" : "</div>");
        };
        std::vector<std::uint32_t> cuts;
        for (std::uint32_t i = 0; i < message_.nodes.size(); ++i) {
            const Node& node = message_.nodes[i];
            const bool isLast = i + 1 == message_.nodes.size();
            const std::size_t after = isLast ? 0 : message_.nodes[i + 1].depth;
            chunk();
            Line(i, !isLast && after > node.depth);
            if (node.cut != 0) cuts.push_back(i);
            while (!cuts.empty() && (isLast || after <= message_.nodes[cuts.back()].depth)) {
                chunk();
                const Node& cut = message_.nodes[cuts.back()];
                Add(R"(<div class="n more" data-under="{}" style="padding-left:{}px">... {} more</div>)"
                    "\n",
                    cuts.back(), 12 + 18 * (cut.depth + 1), cut.cut);
                cuts.pop_back();
            }
        }
        Add("</div></div>");
    }

    void Line(std::uint32_t i, bool hasChildren)
    {
        const Node& node = message_.nodes[i];
        Add(R"(<div class="n" role="treeitem" data-n="{}" aria-level="{}" aria-selected="false"{} )"
            R"(tabindex="-1" )"
            R"(style="padding-left:{}px"><span class="tw">{}</span><span class="name">{}</span><span )"
            R"(class="kind">{}</span>)",
            i, node.depth + 1, hasChildren ? R"( aria-expanded="true")" : "", 12 + 18 * node.depth,
            hasChildren ? "&#9662;" : "", Escaped(Printable(node.name)), Escaped(node.kind));
        if (!node.findings.empty()) {
            const bool isRefused = std::any_of(node.findings.begin(), node.findings.end(), [&](std::uint32_t finding) {
                return IsRefused(message_.findings[finding].reason);
            });
            Add(R"(<span class="mark {}">{}</span>)", isRefused ? "r" : "t",
                NameOf(message_.findings[node.findings.front()].reason));
        }
        if (const std::string value = ValueOf(message_, node, showsSecrets_); !value.empty())
            Add(R"(<span class="value">{}</span>)", Escaped(value));
        Add("</div>\n");
    }

    // `place` is what the faults' list calls it.
    void Bytes(std::string_view name, std::string_view place, const std::vector<Region>& regions,
               const ByteString& content)
    {
        Add(R"(<div class="part">{}, {}</div>)"
            "\n",
            name, Amount(content.size(), "byte"));
        auto region = regions.begin();
        for (std::size_t begin = 0; begin < content.size(); begin += bytesInRow) {
            if (begin / bytesInRow % linesInChunk == 0)
                Add(R"({}<div class="chunk">)"
                    "\n",
                    begin == 0 ? "" : "</div>");
            Row(place, region, content, begin);
        }
        if (!content.empty()) Add("</div>\n");
    }
    // From `region` on, which is left at the region of the row's last byte.
    void Row(std::string_view place, std::vector<Region>::const_iterator& region, const ByteString& content,
             std::size_t begin)
    {
        const std::size_t end = std::min(content.size(), begin + bytesInRow);
        std::string characters;
        Add(R"(<div class="row"><b>{:04x}</b><span class="hex">)", begin);
        for (std::size_t at = begin; at < end;) {
            while (region->offset + region->size <= at)
                ++region;
            const std::size_t runEnd = std::min<std::size_t>(end, region->offset + region->size);
            const std::string tag = TagOf(*region, at == region->offset ? fmt::format("{}-{}", place, at) : "");
            const Run run = RunOf(content, at, runEnd, place == "arena");
            Add("<i{}>{}</i>{}", tag, run.hex, runEnd % 8 == 0 ? "  " : " ");
            characters += fmt::format("<i{}>{}</i>", tag, Escaped(run.characters));
            at = runEnd;
        }
        Add("</span><span>{}</span></div>\n", characters);
    }
    struct Run {
        std::string hex;
        std::string characters;
    };
    Run RunOf(const ByteString& content, std::size_t begin, std::size_t end, bool inArena) const
    {
        Run run;
        for (std::size_t i = begin; i < end; ++i) {
            const Place byte{inArena, static_cast<std::uint32_t>(i), 1};
            const bool isMasked = !showsSecrets_ && message_.IsSecret(byte);
            const char c = static_cast<char>(content[i]);
            const bool isPrintable = c >= 0x20 && c < 0x7F;
            run.hex += isMasked ? "**" : fmt::format("{:02x}", content[i]);
            if (i + 1 < end) run.hex += i % 8 == 7 ? "  " : " ";
            run.characters += isMasked ? '*' : isPrintable ? c : '.';
        }
        return run;
    }

    std::string TagOf(const Region& region, const std::string& at) const
    {
        std::string classes;
        if (region.node == noNode)
            classes = "u";
        else if (message_.nodes[region.node].role == Role::Padding)
            classes = "p";
        else
            classes = fmt::format("c{}", ColourOf(message_, region.node));
        if (region.isShared) classes += " s";
        if (region.isFaulty) classes += region.isRefused ? " r" : " t";
        std::string tag = fmt::format(R"( class="{}")", classes);
        if (region.node != noNode) tag += fmt::format(R"( data-n="{}")", region.node);
        if (region.isFaulty && !at.empty()) tag += fmt::format(R"( data-at="{}")", at);
        return tag;
    }

    // What the script knows of the fields. It cannot end the element that it stands in.
    std::string Data() const
    {
        Json nodes = Json::array();
        for (std::uint32_t i = 0; i < message_.nodes.size(); ++i) {
            const Node& node = message_.nodes[i];
            Json json;
            json["p"] = Printable(PathOf(message_, i));
            json["d"] = node.depth;
            json["at"] = fmt::format("{}, {}", At(node.place), Amount(node.place.size, "byte"));
            if (!node.kind.empty()) json["k"] = node.kind;
            if (const std::string target = TargetOf(node); !target.empty()) json["to"] = target;
            if (node.hasPointer) json["l"] = LimitOf(node);
            if (const std::string value = ValueOf(message_, node, showsSecrets_, 400); !value.empty())
                json["v"] = value;
            if (!node.findings.empty()) json["f"] = node.findings;
            nodes.push_back(std::move(json));
        }
        Json faults = Json::array();
        for (const Finding& finding : message_.findings) {
            Json json{{"r", IsRefused(finding.reason)}, {"w", Printable(finding.words)}};
            if (!finding.exception.empty()) json["x"] = fmt::format("{}: {}", finding.exception, finding.text);
            faults.push_back(std::move(json));
        }
        const std::string text = Json{{"nodes", std::move(nodes)}, {"faults", std::move(faults)}}.dump();
        std::string safe;
        for (const char c : text) {
            if (c == '<')
                safe += "\\u003c";
            else
                safe += c;
        }
        return safe;
    }
    static std::string LimitOf(const Node& node)
    {
        const bool isBytes = node.content == Content::Text || node.content == Content::Blob;
        return isBytes ? Amount(node.limit, "byte")
                       : fmt::format("{} of {}", Amount(node.limit, "element"), Amount(node.elementSize, "byte"));
    }

    const Message& message_;
    const bool showsSecrets_;
    std::string html_;
};

} // namespace

std::string Page(const Message& message, bool showsSecrets)
{
    return PageWriter(message, showsSecrets).Whole();
}

} // namespace inspect
