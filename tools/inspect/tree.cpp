#include "tree.h"

#include "printable.h"

#include <fmt/format.h>

#include <algorithm>

namespace inspect {

namespace {

constexpr std::size_t mostNameColumn = 40;
constexpr std::size_t mostKindColumn = 24;

class Painter {
public:
    explicit Painter(bool isColoured) : isColoured_(isColoured) {}

    std::string Refused(std::string_view text) const { return In("1;31", text); }
    std::string Tolerated(std::string_view text) const { return In("33", text); }
    std::string Quiet(std::string_view text) const { return In("2", text); }
    std::string Strong(std::string_view text) const { return In("1", text); }

private:
    std::string In(const char* colour, std::string_view text) const
    {
        return isColoured_ ? fmt::format("\x1b[{}m{}\x1b[0m", colour, text) : std::string(text);
    }

    bool isColoured_;
};

std::size_t IndentOf(const Node& node)
{
    return std::size_t{2} * (node.depth - std::size_t{1});
}

class TreePrinter {
public:
    TreePrinter(const Message& message, const Look& look) : message_(message), look_(look), paint_(look.isColoured)
    {
        for (const Node& node : message.nodes) {
            if (node.depth == 0) continue;
            nameColumn_ = std::max(nameColumn_, std::min(mostNameColumn, IndentOf(node) + node.name.size()));
            kindColumn_ = std::max(kindColumn_, std::min(mostKindColumn, node.kind.size()));
        }
    }

    std::string Text()
    {
        const std::string words = ReadersWords(message_);
        text_ = paint_.Strong(HeadingOf(message_)) + "\n";
        if (!words.empty()) text_ += paint_.Refused(words) + "\n";
        for (const Finding& finding : message_.findings)
            if (finding.node == noNode) Fault(finding, 0);
        for (std::size_t i = 1; i < message_.nodes.size(); ++i) {
            Line(message_.nodes[i]);
            while (!cuts_.empty() && IsLastUnder(cuts_.back(), i)) {
                More(message_.nodes[cuts_.back()]);
                cuts_.pop_back();
            }
            if (message_.nodes[i].cut != 0) {
                if (IsLastUnder(i, i))
                    More(message_.nodes[i]);
                else
                    cuts_.push_back(i);
            }
        }
        if (const std::uint64_t all = message_.refused + message_.tolerated; all > message_.findings.size())
            text_ += fmt::format("... and {} that {} not shown\n", Amount(all - message_.findings.size(), "fault"),
                                 all - message_.findings.size() == 1 ? "is" : "are");
        return std::move(text_);
    }

private:
    // Whether the node at `i` is the last of those under the one at `above`.
    bool IsLastUnder(std::size_t above, std::size_t i) const
    {
        return i + 1 == message_.nodes.size() || message_.nodes[i + 1].depth <= message_.nodes[above].depth;
    }

    void Line(const Node& node)
    {
        const std::string value = ValueOf(message_, node, look_.showsSecrets);
        const std::string target = TargetOf(node);
        std::string line =
            fmt::format("  {} {:04x}  {:<{}}  {:<{}}", node.place.inArena ? "arena" : " wire", node.place.offset,
                        std::string(IndentOf(node), ' ') + node.name, nameColumn_, node.kind, kindColumn_);
        if (!value.empty()) line += "  " + value;
        if (!target.empty()) line += "  " + paint_.Quiet(target);
        line.erase(line.find_last_not_of(' ') + 1);
        text_ += line + "\n";
        for (const std::uint32_t finding : node.findings)
            Fault(message_.findings[finding], IndentOf(node) + 2);
    }
    void Fault(const Finding& finding, std::size_t indent)
    {
        const bool isRefused = IsRefused(finding.reason);
        const std::string where = finding.path.empty() ? "" : finding.path + ": ";
        const std::string line =
            fmt::format("{} {:{}}{}{}", isRefused ? "!!" : " ~", "", indent + 11, where, Printable(finding.words));
        text_ += (isRefused ? paint_.Refused(line) : paint_.Tolerated(line)) + "\n";
        if (!finding.exception.empty())
            text_ +=
                paint_.Refused(fmt::format("{:{}}{}: {}", "", indent + 16, finding.exception, finding.text)) + "\n";
    }
    void More(const Node& node) { text_ += fmt::format("{:{}}... {} more\n", "", IndentOf(node) + 16, node.cut); }

    const Message& message_;
    const Look& look_;
    const Painter paint_;
    std::size_t nameColumn_ = 0;
    std::size_t kindColumn_ = 0;
    std::string text_;
    std::vector<std::size_t> cuts_; // nodes that have more elements than are shown
};

} // namespace

std::string Tree(const Message& message, const Look& look)
{
    return TreePrinter(message, look).Text();
}

std::string TargetOf(const Node& node)
{
    if (!node.hasPointer) return "";
    if (node.content == Content::Optional && node.pointer.size == 0) return "";
    const bool isBytes = node.content == Content::Text || node.content == Content::Blob;
    const std::uint64_t end = std::uint64_t{node.pointer.offset} + node.pointer.size;
    std::string amount;
    if (isBytes)
        amount = fmt::format("{} of {} bytes", node.pointer.size, node.limit);
    else if (node.resolves)
        amount = fmt::format("{} of {}", Amount(node.Count(), "element"), node.limit);
    else
        amount = Amount(node.pointer.size, "byte");
    return fmt::format("{} -> 0x{:04x}..0x{:04x}", amount, node.pointer.offset, end);
}

std::string StandingOf(const Message& message)
{
    switch (message.IsA()) {
    case Standing::Canonical:
        return "canonical";
    case Standing::Tolerated:
        return fmt::format("tolerated ({})", Amount(message.tolerated, "fault"));
    case Standing::Refused:
        break;
    }
    if (message.tolerated == 0) return fmt::format("refused ({})", Amount(message.refused, "fault"));
    return fmt::format("refused ({}, and {} tolerated)", Amount(message.refused, "fault"), message.tolerated);
}

std::string HeadingOf(const Message& message)
{
    const std::string name = message.record.empty() ? "a message without a name" : Printable(message.record);
    return fmt::format("{}, {} and an arena of {}: {}", name, Amount(message.wire.size(), "byte"), message.arena.size(),
                       StandingOf(message));
}

std::string ReadersWords(const Message& message)
{
    if (message.exception.empty()) return "";
    return fmt::format("reading it throws {} at {}: {}", message.exception, message.exceptionPath,
                       message.exceptionText);
}

} // namespace inspect
