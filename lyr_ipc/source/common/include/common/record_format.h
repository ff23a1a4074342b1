// Shows records and views in words, for logs, tests and whoever debugs: `fmt::print("{}", appInfo)` prints a tree, a
// field to a line, `"{:c}"` the same on one line, and `operator<<` the tree, which GoogleTest uses too. What there is
// to show comes from the record's table.
//
// Text is escaped, so that nothing in it steers a terminal; a value of over 128 bytes is shortened and its length
// given, a list of over 100 elements cut. Secrets are never shown. Formatting allocates; formatting a view throws what
// its Get throws.
#pragma once

#include <common/all_records.h>
#include <common/record_view.h>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <chrono>
#include <ostream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vyn_connector::common {

// One line of a record's tree.
struct RecordLine {
    std::size_t depth; // how many fields are around it
    std::string name;
    std::string value;  // empty where the fields below it are the value
    const void* member; // whose it is, as MemberId says; null for the elements of a list

    friend bool operator==(const RecordLine& a, const RecordLine& b)
    {
        return a.depth == b.depth && a.name == b.name && a.value == b.value && a.member == b.member;
    }
};

namespace detail {

template <typename InDomain>
inline constexpr char memberId = 0;

inline constexpr std::size_t mostShownBytes = 128;
inline constexpr std::size_t mostShownElements = 100;
inline constexpr std::size_t valueColumn = 32;

// Cut between characters, of which none has more than four bytes.
inline std::string_view Beginning(std::string_view text)
{
    std::size_t end = mostShownBytes;
    while (end > mostShownBytes - 3 && (static_cast<unsigned char>(text[end]) & 0xC0) == 0x80)
        --end;
    return text.substr(0, end);
}

inline std::string Quoted(std::string_view text)
{
    if (text.size() <= mostShownBytes) return fmt::format("{:?}", text);
    return fmt::format("{:?}... ({} bytes)", Beginning(text), text.size());
}

// As it is, but for a text that looks like one of the words that stand for a value.
inline std::string Unquoted(std::string_view text)
{
    if (text.empty()) return "(empty)";
    if (text.front() == '(' || text == "********") return Quoted(text);
    const std::string quoted = fmt::format("{:?}", text.size() <= mostShownBytes ? text : Beginning(text));
    std::string plain;
    for (std::size_t i = 1; i + 1 < quoted.size(); ++i) {
        // An escape is two characters at least; of the quotes' only the second one is left.
        if (quoted[i] == '\\' && quoted[++i] != '"') plain += '\\';
        plain += quoted[i];
    }
    return text.size() <= mostShownBytes ? plain : fmt::format("{}... ({} bytes)", plain, text.size());
}

inline std::string TimeText(wem::types::Timestamp time)
{
    const auto seconds = std::chrono::floor<std::chrono::seconds>(static_cast<wem::types::Timestamp::time_point>(time));
    return fmt::format("{:%F %T} UTC", fmt::gmtime(seconds.time_since_epoch().count()));
}

template <typename Source>
struct ShownRecord {
    using Type = Source;
};
template <typename Record, typename Access>
struct ShownRecord<RecordView<Record, Access>> {
    using Type = Record;
};
// The entry of a map.
template <typename Key, typename Value>
struct ShownRecord<std::pair<const Key, Value>> {
    using Type = std::pair<Key, Value>;
};

// Calls `use(row, value)` for each field of a record or a view.
template <typename Source, typename Use>
void ForEachField(const Source& source, Use use)
{
    using Record = typename ShownRecord<Source>::Type;
    ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (isField<Row>) {
            if constexpr (std::is_same_v<Source, Record>)
                use(row, Row::InDomain::Of(source));
            else
                use(row, Row::InDomain::In(source));
        }
    });
}
template <typename Key, typename Value, typename Use>
void ForEachField(const std::pair<const Key, Value>& entry, Use use)
{
    ForEachRow<std::pair<Key, Value>>([&](auto row) { use(row, decltype(row)::InDomain::Of(entry)); });
}

// What the forms share: the values that are a few words.
template <typename Self>
class ShowWords {
public:
    template <typename Value>
    void Number(Value value)
    {
        Write(fmt::to_string(value));
    }
    void Flag(bool value) { Write(value ? "true" : "false"); }
    void Digits(const std::array<std::byte, 16>& bytes)
    {
        std::string text;
        for (const std::byte byte : bytes)
            text += fmt::format("{:02x}", static_cast<unsigned>(byte));
        Write(text);
    }
    void Time(wem::types::Timestamp time) { Write(TimeText(time)); }
    void Blob(const std::uint8_t*, std::size_t size) { Write(fmt::format("({} byte{})", size, size == 1 ? "" : "s")); }
    void Absent() { Write("(absent)"); }
    void Masked() { Write("********"); }

protected:
    void Write(const std::string& text) { static_cast<Self&>(*this).Put(text); }

    // A set has no order, so it is shown in that of its texts.
    template <typename Values>
    static std::vector<std::string_view> Shown(const Values& values, bool isSet)
    {
        std::vector<std::string_view> texts(values.begin(), values.end());
        if (isSet) std::sort(texts.begin(), texts.end());
        if (texts.size() > mostShownElements) texts.resize(mostShownElements);
        return texts;
    }
    static std::string More(std::size_t size)
    {
        return size > mostShownElements ? fmt::format("({} more)", size - mostShownElements) : std::string();
    }
};

// On one line: `{field1: 7, field2: "text"}`.
class ShowOnOneLine : public ShowWords<ShowOnOneLine> {
public:
    std::string out;

    void Put(const std::string& text) { out += text; }
    void Text(std::string_view text) { out += Quoted(text); }
    template <typename Values>
    void Texts(const Values& values, bool isSet)
    {
        std::vector<std::string> quoted;
        for (const std::string_view text : Shown(values, isSet))
            quoted.push_back(Quoted(text));
        if (values.size() > mostShownElements) quoted.push_back(More(values.size()));
        out += fmt::format("[{}]", fmt::join(quoted, ", "));
    }
    template <typename Source>
    void Record(const Source& source)
    {
        const char* separator = "{";
        ForEachField(source, [&](auto row, const auto& value) {
            out += fmt::format("{}{}: ", std::exchange(separator, ", "), row.name);
            decltype(row)::Kind::Show(value, *this);
        });
        out += '}';
    }
    template <typename Values>
    void List(const Values& values)
    {
        out += '[';
        std::size_t count = 0;
        for (const auto& value : values) {
            if (count == mostShownElements) break;
            if (count++ != 0) out += ", ";
            Record(value);
        }
        if (values.size() > mostShownElements) out += ", " + More(values.size());
        out += ']';
    }
    template <typename Values>
    void Entries(const Values& values)
    {
        List(values);
    }
};

// An element of a list, or an entry, in the tree: its values alone.
class ShowInBrief : public ShowWords<ShowInBrief> {
public:
    std::vector<std::string> values;

    void Put(const std::string& text) { values.push_back(text); }
    void Text(std::string_view text) { Put(Unquoted(text)); }
    template <typename Values>
    void Texts(const Values& texts, bool isSet)
    {
        std::vector<std::string> plain;
        for (const std::string_view text : Shown(texts, isSet))
            plain.push_back(isSet && text.find(',') == std::string_view::npos ? Unquoted(text) : Quoted(text));
        if (texts.size() > mostShownElements) plain.push_back(More(texts.size()));
        if (isSet)
            Put(plain.empty() ? "(none)" : fmt::format("{}", fmt::join(plain, ", ")));
        else
            Put(fmt::format("[{}]", fmt::join(plain, ", ")));
    }
    template <typename Source>
    void Record(const Source& source)
    {
        ForEachField(source, [&](auto row, const auto& value) { decltype(row)::Kind::Show(value, *this); });
    }
    template <typename Values>
    void List(const Values& elements)
    {
        for (const auto& element : elements)
            Record(element);
    }
    template <typename Values>
    void Entries(const Values& entries)
    {
        List(entries);
    }
};

// In lines, the fields of a record below its own.
template <typename Use>
class ShowAsTree : public ShowWords<ShowAsTree<Use>> {
public:
    explicit ShowAsTree(Use& u) : use(u) {}

    template <typename Source>
    void Fields(const Source& source)
    {
        ForEachField(source, [&](auto row, const auto& value) {
            name = row.name;
            member = &memberId<typename decltype(row)::InDomain>;
            decltype(row)::Kind::Show(value, *this);
        });
    }

    void Put(const std::string& text) { use(RecordLine{depth, name, text, member}); }
    void Text(std::string_view text) { Put(Unquoted(text)); }
    template <typename Values>
    void Texts(const Values& values, bool isSet)
    {
        ShowInBrief brief;
        brief.Texts(values, isSet);
        Put(brief.values.front());
    }
    template <typename Source>
    void Record(const Source& source)
    {
        Put("");
        ++depth;
        Fields(source);
        --depth;
    }
    template <typename Values>
    void List(const Values& values)
    {
        Put(values.empty() ? "(none)" : "");
        std::size_t count = 0;
        for (const auto& value : values) {
            if (count++ == mostShownElements) break;
            ShowInBrief brief;
            brief.Record(value);
            use(RecordLine{depth + 1, fmt::format("{}", fmt::join(brief.values, ": ")), "", nullptr});
        }
        if (values.size() > mostShownElements) use(RecordLine{depth + 1, this->More(values.size()), "", nullptr});
    }
    // The key has its name, the values have not.
    template <typename Values>
    void Entries(const Values& values)
    {
        Put("");
        for (const auto& value : values) {
            ShowInBrief brief;
            std::string key;
            ForEachField(value, [&](auto row, const auto&) {
                if (key.empty()) key = row.name;
            });
            brief.Record(value);
            use(RecordLine{depth + 1, key + " " + brief.values.front(), brief.values.back(), nullptr});
        }
    }

private:
    Use& use;
    std::size_t depth = 0;
    const char* name = "";
    const void* member = nullptr;
};

} // namespace detail

// What RecordLine::member is for the lines of one field, for whoever has words of their own for it:
// `MemberId<&Credentials::userName>()`.
template <auto Member>
const void* MemberId() noexcept
{
    return &detail::memberId<typename RowOf<Member>::InDomain>;
}

// Calls `use(line)` for each line of the tree of a record or of a view.
template <typename Source, typename Use>
void ForEachLine(const Source& source, Use use)
{
    detail::ShowAsTree<Use>(use).Fields(source);
}

// The forms as text. The tree has no line break at its end.
template <typename Source>
std::string ToTree(const Source& source)
{
    std::string text;
    ForEachLine(source, [&text](const RecordLine& line) {
        if (!text.empty()) text += '\n';
        const std::string name(2 * line.depth, ' ');
        text += line.value.empty() ? name + line.name
                                   : fmt::format("{:<{}}{}", name + line.name + " ", detail::valueColumn, line.value);
    });
    return text;
}
template <typename Source>
std::string ToOneLine(const Source& source)
{
    detail::ShowOnOneLine line;
    line.Record(source);
    return line.out;
}

namespace detail {

struct RecordFormatter {
    bool isOneLine = false;

    template <typename Context>
    constexpr auto parse(Context& context)
    {
        auto at = context.begin();
        if (at != context.end() && *at == 'c') {
            isOneLine = true;
            ++at;
        }
        if (at != context.end() && *at != '}') throw fmt::format_error(R"(a record's format is "" or "c")");
        return at;
    }
    template <typename Source, typename Context>
    auto format(const Source& source, Context& context) const
    {
        const std::string text = isOneLine ? ToOneLine(source) : ToTree(source);
        return std::copy(text.begin(), text.end(), context.out());
    }
};

// Asked where every record has said what it is to fmt.
template <typename... Records>
constexpr bool AreShownAsRecords(RecordList<Records...>)
{
    return ((!fmt::is_range<Records, char>::value && !fmt::is_tuple_like<Records>::value) && ...);
}

} // namespace detail

template <typename Record, typename Access>
std::ostream& operator<<(std::ostream& out, const RecordView<Record, Access>& view)
{
    return out << ToTree(view);
}

} // namespace vyn_connector::common

namespace vyn_connector {

template <typename Record, std::enable_if_t<common::isDescribed<Record>, int> = 0>
std::ostream& operator<<(std::ostream& out, const Record& record)
{
    return out << common::ToTree(record);
}

namespace common {

// For the records of this namespace.
using vyn_connector::operator<<;

} // namespace common
} // namespace vyn_connector

namespace fmt {

template <typename Record>
struct formatter<Record, char, std::enable_if_t<vyn_connector::common::isDescribed<Record>>>
    : vyn_connector::common::detail::RecordFormatter {
};
template <typename Record, typename Access>
struct formatter<vyn_connector::common::RecordView<Record, Access>, char>
    : vyn_connector::common::detail::RecordFormatter {
};

// Records that are containers or pairs are shown as records.
template <>
struct is_range<std::vector<vyn_connector::common::RawVynParam>, char> : std::false_type {
};
template <>
struct is_range<std::vector<vyn_connector::ClientCertInfo>, char> : std::false_type {
};
template <>
struct is_range<vyn_connector::VynSubscriptions, char> : std::false_type {
};
template <>
struct is_range<vyn_connector::VynUpdateIdentifier, char> : std::false_type {
};
template <>
struct is_range<vyn_connector::VynUpdateIdentifiers, char> : std::false_type {
};
template <>
struct is_tuple_like<vyn_connector::VynSubscription> : std::false_type {
};
template <>
struct is_tuple_like<vyn_connector::VynSubscriptionsWithHash> : std::false_type {
};
static_assert(vyn_connector::common::detail::AreShownAsRecords(vyn_connector::common::AllRecords{}),
              "a record that is a container or a pair is to be listed above");

} // namespace fmt
