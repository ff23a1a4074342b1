#include "json.h"

#include "printable.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <limits>

namespace inspect {

namespace {

using Json = nlohmann::ordered_json;

// Nothing in it does anything to a terminal.
std::string Ascii(const Json& json, int indent = -1)
{
    return json.dump(indent, ' ', true);
}

class JsonWriter {
public:
    // Fields of a valid message do not share their bytes; where they do, what is written is bounded all the same.
    JsonWriter(const Message& message, bool showsSecrets, std::size_t mostFields)
        : message_(message),
          showsSecrets_(showsSecrets),
          mostFields_(mostFields),
          budget_(4096 + 2 * std::uint64_t{message.arena.size()})
    {
    }

    // Lists go out line by line: as objects they would take many times their text.
    std::string Text()
    {
        std::string text = Ascii(Head(), 2);
        text.resize(text.size() - 2); // the end of the line and the brace
        text += ",\n  \"faults\": ";
        Faults(text);
        text += ",\n  \"fields\": ";
        Fields(text);
        text += ",\n  \"value\": ";
        for (const char c : Ascii(Value(), 2)) {
            text += c;
            if (c == '\n') text += "  ";
        }
        return text + "\n}\n";
    }

private:
    class Lines {
    public:
        explicit Lines(std::string& text) : text_(text) { text_ += '['; }
        Lines(const Lines&) = delete;
        Lines& operator=(const Lines&) = delete;
        ~Lines() { text_ += isEmpty_ ? "]" : "\n  ]"; }

        void Add(const Json& line)
        {
            text_ += isEmpty_ ? "\n    " : ",\n    ";
            text_ += Ascii(line);
            isEmpty_ = false;
        }

    private:
        std::string& text_;
        bool isEmpty_ = true;
    };

    Json Head() const
    {
        Json json;
        json["record"] = Utf8(message_.record);
        json["standing"] = NameOf(message_.IsA());
        json["refused"] = message_.refused;
        json["tolerated"] = message_.tolerated;
        json["reader"] = nullptr;
        if (!message_.exception.empty())
            json["reader"] = {
                {"exception", message_.exception}, {"text", message_.exceptionText}, {"path", message_.exceptionPath}};
        json["memory"] = message_.memory;
        json["wire"] = {{"size", message_.wire.size()}};
        json["arena"] = {{"size", message_.arena.size()}, {"top", message_.top}, {"start", message_.start}};
        for (const Node& node : message_.nodes) {
            if (!node.leavesByte || message_.IsSecret({true, node.pointer.offset, 1})) continue;
            if (const std::uint8_t byte = message_.arena[node.pointer.offset]; byte != 0)
                json["arena"]["left"].push_back({{"offset", node.pointer.offset}, {"byte", byte}});
        }
        return json;
    }

    void Faults(std::string& text) const
    {
        Lines lines(text);
        for (const Finding& finding : message_.findings) {
            Json fault;
            fault["reason"] = NameOf(finding.reason);
            fault["refused"] = IsRefused(finding.reason);
            fault["path"] = Utf8(finding.path);
            fault["in"] = finding.place.inArena ? "arena" : "wire";
            fault["offset"] = finding.place.offset;
            fault["size"] = finding.place.size;
            fault["words"] = Utf8(finding.words);
            if (!finding.exception.empty())
                fault["reader"] = {{"exception", finding.exception}, {"text", finding.text}};
            lines.Add(fault);
        }
    }
    void Fields(std::string& text) const
    {
        Lines lines(text);
        std::size_t left = mostFields_;
        std::size_t cut = 0;
        for (std::uint32_t i = 1; i < message_.nodes.size(); ++i) {
            const Node& node = message_.nodes[i];
            if (left == 0 && node.role == Role::Element) {
                ++cut;
                while (i + 1 < message_.nodes.size() && message_.nodes[i + 1].depth > node.depth)
                    ++i;
                continue;
            }
            lines.Add(Field(i));
            left -= left == 0 ? 0 : 1;
        }
        if (cut != 0) lines.Add({{"cut", cut}});
    }
    Json Field(std::uint32_t i) const
    {
        const Node& node = message_.nodes[i];
        Json field;
        field["path"] = Utf8(PathOf(message_, i));
        field["kind"] = node.kind;
        field["in"] = node.place.inArena ? "arena" : "wire";
        field["offset"] = node.place.offset;
        field["width"] = node.place.size;
        if (node.hasPointer) {
            field["limit"] = node.limit;
            field["target"] = {{"offset", node.pointer.offset}, {"size", node.pointer.size}};
            if (node.resolves) field["target"]["elements"] = node.Count();
        }
        if (const std::string value = ValueOf(message_, node, showsSecrets_); !value.empty()) field["shown"] = value;
        if (!node.findings.empty()) field["faults"] = node.findings;
        return field;
    }

    Json Value()
    {
        std::size_t next = 1;
        return Members(next, 1);
    }
    // NOLINTBEGIN(misc-no-recursion): no deeper than the records' tables nest
    // The nodes from `next` on that stand as deep as `depth`, as an object.
    Json Members(std::size_t& next, std::size_t depth)
    {
        Json members = Json::object();
        while (next < message_.nodes.size() && message_.nodes[next].depth == depth) {
            const Node& node = message_.nodes[next];
            Json value = ValueAt(next);
            if (node.role != Role::Padding) members[node.name] = std::move(value);
        }
        return members;
    }
    Json Elements(const Node& node, std::size_t& next)
    {
        Json elements = Json::array();
        while (next < message_.nodes.size() && message_.nodes[next].depth == node.depth + 1u) {
            const bool isUnused = message_.nodes[next].content == Content::Unused;
            Json value = ValueAt(next);
            if (!isUnused) elements.push_back(std::move(value));
        }
        if (node.cut != 0) elements.push_back({{"cut", node.cut}});
        return elements;
    }
    // Takes the node at `next` and all under it.
    Json ValueAt(std::size_t& next)
    {
        const Node& node = message_.nodes[next++];
        if (IsMasked(message_, node, showsSecrets_)) return {{"masked", true}};
        if (node.hasPointer && !node.resolves) return {{"refused", true}};
        const bool hasChild = next < message_.nodes.size() && message_.nodes[next].depth == node.depth + 1u;
        switch (node.content) {
        case Content::None:
        case Content::Unused:
            return Members(next, node.depth + 1u);
        case Content::Number:
        case Content::Time:
            return Number(node);
        case Content::Flag:
            return node.bits != 0;
        case Content::Raw:
            return Hex(message_.At(node.ValuePlace()), node.ValuePlace().size);
        case Content::Text:
            return Text(node);
        case Content::Blob:
            if (!Takes(2 * std::uint64_t{node.pointer.size})) return {{"cut", node.pointer.size}};
            return Hex(message_.At(node.Target()), node.pointer.size);
        case Content::Array:
            return Elements(node, next);
        case Content::Optional:
            break;
        }
        if (node.pointer.size == 0) return nullptr;
        if (hasChild && message_.nodes[next].role == Role::Slot) return ValueAt(next);
        return Members(next, node.depth + 1u);
    }

    // NOLINTEND(misc-no-recursion)

    static Json Number(const Node& node)
    {
        if (node.isSigned) return static_cast<std::int64_t>(node.bits);
        return node.bits;
    }
    Json Text(const Node& node)
    {
        if (!Takes(node.pointer.size)) return {{"cut", node.pointer.size}};
        const auto* const bytes = message_.At(node.Target());
        const std::string_view text(reinterpret_cast<const char*>(bytes), node.pointer.size);
        if (IsUtf8(text)) return text;
        return {{"hex", Hex(bytes, text.size())}};
    }
    bool Takes(std::uint64_t bytes)
    {
        if (bytes > budget_) return false;
        budget_ -= bytes;
        return true;
    }
    // What a message calls itself may be anything.
    static std::string Utf8(const std::string& text) { return IsUtf8(text) ? text : Printable(text); }

    const Message& message_;
    const bool showsSecrets_;
    const std::size_t mostFields_;
    std::uint64_t budget_;
};

} // namespace

Message InspectForJson(const Capture& capture, const Extent& extent)
{
    Message message = Inspect(capture, extent);
    const bool isCut =
        std::any_of(message.nodes.begin(), message.nodes.end(), [](const Node& node) { return node.cut != 0; });
    if (!isCut || message.IsA() != Standing::Canonical) return message;
    // Its fields share no bytes, so there are not more of them than the arena has room for.
    constexpr std::size_t all = std::numeric_limits<std::size_t>::max();
    message = {};
    return Inspect(capture, {all, all, extent.mostFindings});
}

std::string ToJson(const Message& message, bool showsSecrets, std::size_t mostFields)
{
    return JsonWriter(message, showsSecrets, mostFields).Text();
}

} // namespace inspect
