#include "encode.h"

#include "message.h"
#include "printable.h"

#include <common/all_records.h>
#include <common/arena_size.h>
#include <common/connector_state.h>
#include <common/fault.h>
#include <mur/utf8.h>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstring>
#include <limits>
#include <numeric>
#include <optional>
#include <set>
#include <type_traits>

namespace inspect {

namespace common = vyn_connector::common;
namespace kind = vyn_connector::common::kind;

namespace {

using Json = nlohmann::json;

[[noreturn]] void Fail(const std::string& path, std::string_view what)
{
    throw EncodeError(fmt::format("{}: {}", path, what));
}

ByteString HexBytes(const Json& json, const std::string& path)
{
    if (!json.is_string()) Fail(path, "not a string of hexadecimal digits");
    const auto& digits = json.get_ref<const std::string&>();
    const auto digit = [&](char c) -> unsigned {
        if (c >= '0' && c <= '9') return static_cast<unsigned>(c - '0');
        if (c >= 'a' && c <= 'f') return static_cast<unsigned>(c - 'a') + 10;
        if (c >= 'A' && c <= 'F') return static_cast<unsigned>(c - 'A') + 10;
        Fail(path, "not a string of hexadecimal digits");
    };
    if (digits.size() % 2 != 0) Fail(path, "an odd number of hexadecimal digits");
    ByteString bytes;
    for (std::size_t i = 0; i < digits.size(); i += 2)
        bytes.push_back(static_cast<std::uint8_t>(digit(digits[i]) << 4 | digit(digits[i + 1])));
    return bytes;
}

// Makes values of the JSON text, but none of what is not needed, and refuses what no message has: depths, more values,
// and a name that stands twice in its object.
// NOLINTNEXTLINE(bugprone-exception-escape): what a null Json asserts of itself holds
class JsonReader : public Json::json_sax_t {
public:
    // Throws EncodeError.
    Json Read(std::string_view text)
    {
        if (!Json::sax_parse(text, this)) throw EncodeError("not JSON");
        return std::move(whole_);
    }
    // The path of a name that occurs twice; empty where none does. That of the value begins with "value".
    const std::string& Repeated() const { return repeated_; }

    bool null() override { return Put(nullptr) != nullptr; }
    bool boolean(bool value) override { return Put(value) != nullptr; }
    bool number_integer(Json::number_integer_t value) override { return Put(value) != nullptr; }
    bool number_unsigned(Json::number_unsigned_t value) override { return Put(value) != nullptr; }
    bool number_float(Json::number_float_t value, const std::string&) override { return Put(value) != nullptr; }
    bool string(std::string& value) override { return Put(std::move(value)) != nullptr; }
    bool binary(Json::binary_t&) override { return false; } // GCOVR_EXCL_LINE: no text has any
    bool start_object(std::size_t) override { return Open(Json::object()); }
    bool start_array(std::size_t) override { return Open(Json::array()); }
    bool end_object() override { return Close(); }
    bool end_array() override { return Close(); }
    bool key(std::string& name) override
    {
        if (around_.size() == 1) isNeeded_ = name == "record" || name == "arena" || name == "value";
        around_.back().name = std::move(name);
        if (isNeeded_ && repeated_.empty() && around_.back().values->contains(around_.back().name)) repeated_ = Path();
        return true;
    }
    bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception&) override { return false; }

private:
    // The object around it, the value, and each step of a path, of which FieldPath has twice as many as any record: an
    // object, or an array with its objects.
    static constexpr std::size_t mostDepth = 2 + common::FieldPath::mostSteps;
    // A parameter, the smallest element of a list without a limit, is three values and 16 bytes of the arena.
    static constexpr std::size_t mostValues = mostArenaBytes / 4;

    struct Level {
        Json* values;     // an array or an object
        std::string name; // in the object
    };

    // Where the value went.
    Json* Put(Json value)
    {
        if (!isNeeded_) return &unneeded_;
        if (++count_ > mostValues) throw EncodeError("more values than any message has");
        if (around_.empty()) return &(whole_ = std::move(value));
        Level& level = around_.back();
        if (level.values->is_object()) return &((*level.values)[level.name] = std::move(value));
        level.values->push_back(std::move(value));
        return &level.values->back();
    }
    bool Open(Json empty)
    {
        if (around_.size() == mostDepth) throw EncodeError("nested deeper than any message");
        around_.push_back({Put(std::move(empty)), {}});
        return true;
    }
    bool Close()
    {
        around_.pop_back();
        return true;
    }
    std::string Path() const
    {
        std::string path;
        for (const Level& level : around_) {
            if (level.values->is_array())
                path += fmt::format("[{}]", level.values->size() - 1);
            else
                path += fmt::format("{}{}", path.empty() ? "" : ".", Printable(level.name));
        }
        return path;
    }

    Json whole_;
    Json unneeded_;
    std::vector<Level> around_; // the objects and arrays around what is read
    bool isNeeded_ = true;
    std::size_t count_ = 0;
    std::string repeated_;
};

template <typename Number>
Number NumberOf(const Json& json, const std::string& path)
{
    const auto refuse = [&] {
        Fail(path, fmt::format("not an integer from {} to {}", std::numeric_limits<Number>::min(),
                               std::numeric_limits<Number>::max()));
    };
    if (json.is_number_unsigned()) {
        const auto number = json.get<std::uint64_t>();
        if (number > static_cast<std::uint64_t>(std::numeric_limits<Number>::max())) refuse();
        return static_cast<Number>(number);
    }
    if (!json.is_number_integer()) refuse();
    const auto number = json.get<std::int64_t>(); // negative
    if (std::is_unsigned_v<Number> || number < static_cast<std::int64_t>(std::numeric_limits<Number>::min())) refuse();
    return static_cast<Number>(number);
}

// Says why it is not an array, a text and so on, where json.h says so.
void RefuseMarks(const Json& json, const std::string& path)
{
    if (!json.is_object()) return;
    if (json.contains("masked")) Fail(path, "masked; print the message with --secrets");
    if (json.contains("cut")) Fail(path, "cut; print the message with more --elements");
    if (json.contains("refused")) Fail(path, "not in the message, which is refused");
}

const Json& ArrayOf(const Json& json, const std::string& path)
{
    RefuseMarks(json, path);
    if (!json.is_array()) Fail(path, "not an array");
    return json;
}

void CheckLimit(std::size_t size, std::uint64_t limit, std::string_view unit, const std::string& path)
{
    if (size > limit) Fail(path, fmt::format("{}, at most {}", Amount(size, unit), limit));
}

std::string TextOf(const Json& json, std::uint64_t limit, const std::string& path)
{
    std::string text;
    if (json.is_object() && json.size() == 1 && json.contains("hex")) {
        const ByteString bytes = HexBytes(json["hex"], path);
        text.assign(bytes.begin(), bytes.end());
    } else {
        RefuseMarks(json, path);
        if (!json.is_string()) Fail(path, "not a string");
        text = json.get<std::string>();
    }
    CheckLimit(text.size(), limit, "byte", path);
    return text;
}

[[noreturn]] void FailAtRepeated(const std::vector<std::string>& values, const std::string& path)
{
    std::size_t i = 0;
    for (std::set<std::string_view> before; before.insert(values[i]).second;)
        ++i;
    Fail(fmt::format("{}[{}]", path, i), "occurs before");
}

// A set that is gone over in the order given: with each element in a bucket of its own, the last one that was inserted
// comes first.
std::unordered_set<std::string> InOrder(const std::vector<std::string>& values, const std::string& path)
{
    const std::set<std::string_view> sorted(values.begin(), values.end());
    if (sorted.size() != values.size()) FailAtRepeated(values, path);
    std::unordered_set<std::string> set;
    std::vector<std::size_t> buckets;
    // The elements of few hundred strings hardly ever miss each other later; where somebody chose them, they never do.
    for (std::size_t count = values.size(); count <= values.size() << 14; count = 2 * count + 1) {
        set.rehash(count);
        buckets.clear();
        for (const std::string& value : values)
            buckets.push_back(set.bucket(value));
        std::sort(buckets.begin(), buckets.end());
        if (std::adjacent_find(buckets.begin(), buckets.end()) == buckets.end()) break;
    }
    for (auto value = values.rbegin(); value != values.rend(); ++value)
        set.insert(*value);
    if (!std::equal(set.begin(), set.end(), values.begin(), values.end()))
        Fail(path, "no set has its elements in this order");
    return set;
}

template <typename Record>
void TakeRecord(Record& record, const Json& json, const std::string& path);

// --- one overload for each kind that does it in its own way ---

template <typename Value>
void Take(kind::InPlace, Value& value, const Json& json, const std::string& path)
{
    RefuseMarks(json, path);
    if constexpr (std::is_same_v<Value, bool>) {
        if (!json.is_boolean()) Fail(path, "neither true nor false");
        value = json.get<bool>();
    } else if constexpr (std::is_enum_v<Value>) {
        value = static_cast<Value>(NumberOf<std::underlying_type_t<Value>>(json, path));
    } else if constexpr (std::is_integral_v<Value>) {
        value = NumberOf<Value>(json, path);
    } else if constexpr (std::is_same_v<Value, wem::types::Timestamp>) {
        value.count = NumberOf<std::int64_t>(json, path);
    } else {
        const ByteString bytes = HexBytes(json, path);
        if (bytes.size() != value.size()) Fail(path, fmt::format("not {} bytes", value.size()));
        std::memcpy(value.data(), bytes.data(), bytes.size());
    }
}
template <std::size_t Most>
void Take(kind::Text<Most>, std::string& value, const Json& json, const std::string& path)
{
    value = TextOf(json, Most, path);
}
void Take(kind::Blob, ByteString& value, const Json& json, const std::string& path)
{
    RefuseMarks(json, path);
    value = HexBytes(json, path);
    CheckLimit(value.size(), kind::Blob::limit, "byte", path);
}
template <typename Value>
void Take(kind::Nested, Value& value, const Json& json, const std::string& path)
{
    TakeRecord(value, json, path);
}
template <typename Kind, typename Value>
void Take(kind::Optional<Kind>, std::optional<Value>& value, const Json& json, const std::string& path)
{
    value.reset();
    if (!json.is_null()) Take(Kind{}, value.emplace(), json, path);
}
template <std::uint64_t Most, typename Value>
void Take(kind::List<Most>, std::vector<Value>& values, const Json& json, const std::string& path)
{
    CheckLimit(ArrayOf(json, path).size(), Most, "element", path);
    for (std::size_t i = 0; i < json.size(); ++i)
        TakeRecord(values.emplace_back(), json[i], fmt::format("{}[{}]", path, i));
}
template <std::uint64_t Most, typename Value>
void Take(kind::Range<Most>, std::vector<Value>& values, const Json& json, const std::string& path)
{
    if (ArrayOf(json, path).empty()) Fail(path, "empty, which no writer writes");
    Take(kind::List<Most>{}, values, json, path);
}
template <std::uint64_t Most, typename Kind>
void Take(kind::Set<Most, Kind>, std::unordered_set<std::string>& values, const Json& json, const std::string& path)
{
    CheckLimit(ArrayOf(json, path).size(), Most, "element", path);
    std::vector<std::string> texts;
    for (std::size_t i = 0; i < json.size(); ++i)
        texts.push_back(TextOf(json[i], Kind::limit, fmt::format("{}[{}]", path, i)));
    values = InOrder(texts, path);
}
// A writer goes over the map in the map's order. Some order of inserting gives the one in which the entries stand here.
template <std::size_t Most, typename Map>
void Take(kind::Entries<Most>, Map& map, const Json& json, const std::string& path)
{
    CheckLimit(ArrayOf(json, path).size(), Most, "element", path);
    using Record = typename kind::Entries<Most>::template RecordIn<Map>;
    std::vector<Record> entries(json.size());
    for (std::size_t i = 0; i < entries.size(); ++i)
        TakeRecord(entries[i], json[i], fmt::format("{}[{}]", path, i));
    std::vector<std::size_t> order(entries.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    do {
        map = Map();
        for (const std::size_t i : order)
            if (!map.emplace(entries[i]).second) Fail(fmt::format("{}[{}]", path, i), "occurs before");
        if (std::equal(map.begin(), map.end(), entries.begin(),
                       [](const auto& a, const Record& b) { return a.first == b.first; }))
            return;
    } while (std::next_permutation(order.begin(), order.end()));
    Fail(path, "no map has its entries in this order");
}
template <std::size_t Count, std::size_t Most>
void Take(kind::EventTexts<Count, Most>, std::array<std::string, Count>& values, const Json& json,
          const std::string& path)
{
    if (ArrayOf(json, path).size() != Count) Fail(path, fmt::format("not {} elements", Count));
    for (std::size_t i = 0; i < Count; ++i)
        values[i] = TextOf(json[i], Most, fmt::format("{}[{}]", path, i));
}

template <typename Kind>
constexpr bool IsOptional(const kind::Optional<Kind>*)
{
    return true;
}
constexpr bool IsOptional(const void*)
{
    return false;
}

template <typename Record>
void TakeRecord(Record& record, const Json& json, const std::string& path)
{
    RefuseMarks(json, path);
    if (!json.is_object()) Fail(path, "not an object");
    std::size_t known = 0;
    common::ForEachRow<Record>([&](auto row) {
        using Row = decltype(row);
        if constexpr (common::isField<Row>) {
            using Kind = typename Row::Kind;
            const std::string inside = fmt::format("{}.{}", path, row.name);
            const auto member = json.find(row.name);
            if (member != json.end()) {
                ++known;
                Take(Kind{}, Row::InDomain::Of(record), *member, inside);
            } else if (!IsOptional(static_cast<const Kind*>(nullptr))) {
                Fail(inside, "missing");
            }
        }
    });
    if (known == json.size()) return;
    for (const auto& [name, value] : json.items()) {
        bool isField = false;
        common::ForEachRow<Record>([&, member = name](auto row) {
            if constexpr (common::isField<decltype(row)>) isField = isField || member == row.name;
        });
        if (!isField) Fail(path, fmt::format("there is no field \"{}\"", Printable(name)));
    }
}

// Bytes of the arena that stood there before.
void PutLeft(std::uint8_t* begin, std::size_t size, const Json& arena)
{
    const auto left = arena.find("left");
    if (left == arena.end()) return;
    for (std::size_t i = 0; i < ArrayOf(*left, "arena.left").size(); ++i) {
        const std::string path = fmt::format("arena.left[{}]", i);
        const Json& each = (*left)[i];
        if (!each.is_object() || !each.contains("offset") || !each.contains("byte"))
            Fail(path, R"(not an object with an "offset" and a "byte")");
        const auto offset = NumberOf<std::uint32_t>(each["offset"], path + ".offset");
        if (offset >= size) Fail(path + ".offset", "outside the arena");
        begin[offset] = NumberOf<std::uint8_t>(each["byte"], path + ".byte");
    }
}

template <typename Record>
void EncodeAs(Capture& capture, const Json& value, const Json& before)
{
    Record record{};
    TakeRecord(record, value, capture.record);
    try {
        ByteString room(common::ArenaSize(record, capture.start) + 8);
        std::uint8_t* const begin = room.data() + capture.start;
        PutLeft(begin, room.size() - 8, before);
        zt_arena arena{begin, begin, begin + (room.size() - 8)};
        const common::WireOf<Record> wire = common::Conversion<Record>::Write(record, &arena);
        capture.wire.resize(sizeof(wire));
        std::memcpy(capture.wire.data(), &wire, sizeof(wire));
        capture.arena.assign(begin, arena.top);
    } catch (const mur::Exception& error) {
        Fail(capture.record, mur::to_utf8(error.Text()));
    } catch (const std::length_error& error) {
        Fail(capture.record, error.what());
    }
    CheckLimit(capture.arena.size(), mostArenaBytes, "byte", capture.record);
}

void EncodeState(Capture& capture, const Json& value)
{
    const std::string path = capture.record + ".state";
    if (!value.is_object() || value.size() != 1 || !value.contains("state")) Fail(path, "missing");
    const auto state = static_cast<vyn_connector::VynConnectorState>(NumberOf<std::int32_t>(value["state"], path));
    const std::optional<int> code = common::CastToZt(state);
    if (!code) Fail(path, fmt::format("there is no state {}", value["state"].dump()));
    capture.wire.resize(sizeof(*code));
    std::memcpy(capture.wire.data(), &*code, sizeof(*code));
}

} // namespace

Capture Encode(std::string_view text)
{
    JsonReader reader;
    Json json = reader.Read(text);
    if (!json.is_object() || !json.contains("record") || !json["record"].is_string() || !json.contains("value"))
        throw EncodeError(R"(not an object with a "record" and a "value")");
    Capture capture;
    capture.record = json["record"].get<std::string>();
    if (std::string path = reader.Repeated(); !path.empty()) {
        if (path.rfind("value", 0) == 0 && path != "value") path.replace(0, 5, Printable(capture.record));
        Fail(path, "occurs twice");
    }
    Json& arena = json["arena"];
    if (arena.is_null()) arena = Json::object();
    if (!arena.is_object()) Fail("arena", "not an object");
    if (arena.contains("start")) capture.start = NumberOf<std::uint64_t>(arena["start"], "arena.start") % 8;

    bool isKnown = capture.record == stateName;
    if (isKnown) EncodeState(capture, json["value"]);
    common::ForEach(common::AllRecords{}, [&](auto tag) {
        using Record = typename decltype(tag)::Type;
        if (capture.record != common::Description<Record>::name) return;
        isKnown = true;
        EncodeAs<Record>(capture, json["value"], arena);
    });
    if (!isKnown) throw EncodeError(fmt::format("there is no record \"{}\"", Printable(capture.record)));
    return capture;
}

} // namespace inspect
