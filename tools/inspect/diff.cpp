#include "diff.h"

#include "printable.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <unordered_set>

namespace inspect {

namespace {

constexpr std::size_t mostValue = 22;
constexpr std::size_t nameColumn = 34;
constexpr std::size_t sideColumn = 50;

std::string_view BytesAt(const Message& message, const Place& place)
{
    return {reinterpret_cast<const char*>(message.At(place)), place.size};
}

bool HasSameValue(const Message& a, const Node& inA, const Message& b, const Node& inB)
{
    if (inA.content != inB.content || inA.resolves != inB.resolves) return false;
    switch (inA.content) {
    case Content::Number:
    case Content::Flag:
    case Content::Time:
        return inA.bits == inB.bits;
    case Content::Raw:
        return BytesAt(a, inA.ValuePlace()) == BytesAt(b, inB.ValuePlace());
    case Content::Text:
    case Content::Blob:
        return inA.pointer.size == inB.pointer.size &&
               (!inA.resolves || BytesAt(a, inA.Target()) == BytesAt(b, inB.Target()));
    case Content::Array:
    case Content::Optional:
        return !inA.hasPointer || inA.pointer.size == inB.pointer.size;
    case Content::None:
    case Content::Unused:
        break;
    }
    return inA.role != Role::Padding || BytesAt(a, inA.place) == BytesAt(b, inB.place);
}

std::vector<std::string> KeysOf(const Message& message)
{
    std::vector<std::string> keys;
    for (std::uint32_t i = 0; i < message.nodes.size(); ++i)
        keys.push_back(PathOf(message, i) + (message.nodes[i].role == Role::Slot ? "." : ""));
    return keys;
}

class DiffPrinter {
public:
    DiffPrinter(const Message& a, const Message& b, const Look& look) : a_(a), b_(b), look_(look) {}

    std::string Text()
    {
        text_ = fmt::format("a: {}\nb: {}\n", HeadingOf(a_), HeadingOf(b_));
        const std::vector<std::string> keysOfA = KeysOf(a_);
        const std::vector<std::string> keysOfB = KeysOf(b_);
        const std::unordered_set<std::string_view> inA(keysOfA.begin(), keysOfA.end());
        const std::unordered_set<std::string_view> inB(keysOfB.begin(), keysOfB.end());
        std::size_t i = 1; // the records themselves are the same
        std::size_t j = 1;
        while (i < keysOfA.size() || j < keysOfB.size()) {
            if (i < keysOfA.size() && (j == keysOfB.size() || inB.count(keysOfA[i]) == 0))
                Line(&a_.nodes[i++], nullptr);
            else if (i == keysOfA.size() || inA.count(keysOfB[j]) == 0)
                Line(nullptr, &b_.nodes[j++]);
            else
                Line(&a_.nodes[i++], &b_.nodes[j++]);
        }
        text_ += fmt::format("{} with another value, {} elsewhere in the arena, {} only in a, {} only in b\n",
                             Amount(changed_, "field"), moved_, onlyInA_, onlyInB_);
        return std::move(text_);
    }

private:
    // Either may be missing.
    void Line(const Node* inA, const Node* inB)
    {
        char mark = ' ';
        if (inB == nullptr) {
            mark = '-';
            ++onlyInA_;
        } else if (inA == nullptr) {
            mark = '+';
            ++onlyInB_;
        } else if (!HasSameValue(a_, *inA, b_, *inB)) {
            mark = '*';
            ++changed_;
        } else if (inA->pointer.offset != inB->pointer.offset || inA->place.offset != inB->place.offset) {
            mark = '>';
            ++moved_;
        }
        const Node& node = inA != nullptr ? *inA : *inB;
        const std::size_t indent = 2 * (node.depth - std::size_t{1});
        std::string line =
            fmt::format("{} {:<{}}  {:<{}}  {}", mark, std::string(indent, ' ') + node.name, nameColumn,
                        inA != nullptr ? Side(a_, *inA) : "", sideColumn, inB != nullptr ? Side(b_, *inB) : "");
        line.erase(line.find_last_not_of(' ') + 1);
        if (look_.isColoured && mark != ' ')
            line = fmt::format("\x1b[{}m{}\x1b[0m", mark == '*' ? "1;33" : mark == '>' ? "36" : "35", line);
        text_ += line + "\n";
        const auto faults = [&](const char* of, const Message& message, const Node* at) {
            if (at == nullptr) return;
            for (const std::uint32_t finding : at->findings)
                text_ += fmt::format("{:{}}{}: {}\n", "", indent + 6, of, message.findings[finding].words);
        };
        faults("a", a_, inA);
        faults("b", b_, inB);
    }
    std::string Side(const Message& message, const Node& node) const
    {
        std::string side = ValueOf(message, node, look_.showsSecrets, mostValue);
        if (node.hasPointer && (node.content != Content::Optional || node.pointer.size != 0))
            side += fmt::format("{}{} -> 0x{:04x}", side.empty() ? "" : "  ", Amount(node.pointer.size, "byte"),
                                node.pointer.offset);
        return side;
    }

    const Message& a_;
    const Message& b_;
    const Look& look_;
    std::size_t changed_ = 0;
    std::size_t moved_ = 0;
    std::size_t onlyInA_ = 0;
    std::size_t onlyInB_ = 0;
    std::string text_;
};

} // namespace

std::string Diff(const Message& a, const Message& b, const Look& look)
{
    return DiffPrinter(a, b, look).Text();
}

} // namespace inspect
