#include "json.h"

#include "printable.h"

#include <fmt/format.h>
#include <nlohmann/json.hpp>

namespace inspect {

namespace {

using Json = nlohmann::ordered_json;

class JsonWriter {
public:
    // Fields of a valid message do not share their bytes; where they do, what is written is bounded all the same.
    JsonWriter(const Message& message, bool showsSecrets)
        : message_(message), showsSecrets_(showsSecrets), budget_(4096 + 2 * std::uint64_t{message.arena.size()})
    {
    }

    Json Whole()
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
        json["faults"] = Faults();
        json["fields"] = Fields();
        json["value"] = Value();
        return json;
    }

private:
    Json Faults() const
    {
        Json faults = Json::array();
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
            faults.push_back(std::move(fault));
        }
        return faults;
    }
    Json Fields() const
    {
        Json fields = Json::array();
        for (std::uint32_t i = 1; i < message_.nodes.size(); ++i) {
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
            if (const std::string value = ValueOf(message_, node, showsSecrets_); !value.empty())
                field["shown"] = value;
            if (!node.findings.empty()) field["faults"] = node.findings;
            fields.push_back(std::move(field));
        }
        return fields;
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
    std::uint64_t budget_;
};

} // namespace

std::string ToJson(const Message& message, bool showsSecrets)
{
    return JsonWriter(message, showsSecrets).Whole().dump(2) + "\n";
}

} // namespace inspect
