// Every message of tests/messages: the library must read it as its file says and, where the file says so, write it
// again to the same bytes. How a record is shown follows from its own table, so no list of fields is kept here.
#include "arena.h"
#include "errors.h"
#include "message_file.h"

#include <common/all_records.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <iterator>
#include <map>
#include <optional>
#include <ostream>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <unordered_set>
#include <utility>
#include <vector>

namespace {

using namespace vyn_connector;
using namespace vyn_connector::common;

// --- How a decoded record is shown ---

using Shown = std::map<std::string, std::string>;

std::string Hex(std::uint8_t byte)
{
    const char* const digits = "0123456789abcdef";
    return {digits[byte >> 4], digits[byte & 15]};
}

template <typename Sequence>
bool IsRun(const Sequence& bytes)
{
    return bytes.size() > 16 && std::adjacent_find(bytes.begin(), bytes.end(), std::not_equal_to<>()) == bytes.end();
}

std::string Repeated(const std::string& one, std::size_t times)
{
    return one + " * " + std::to_string(times);
}

std::string Quoted(const std::string& text)
{
    std::string quoted = "\"";
    for (const char c : IsRun(text) ? text.substr(0, 1) : text) {
        if (c == '"' || c == '\\')
            quoted += {'\\', c};
        else if (c >= 0x20 && c < 0x7F)
            quoted += c;
        else
            quoted += "\\x" + Hex(static_cast<std::uint8_t>(c));
    }
    quoted += '"';
    return IsRun(text) ? Repeated(quoted, text.size()) : quoted;
}

template <typename Sequence>
std::string HexBytes(const Sequence& bytes)
{
    if (IsRun(bytes)) return Repeated(Hex(static_cast<std::uint8_t>(bytes[0])), bytes.size());
    std::string hex;
    for (const auto byte : bytes)
        hex += (hex.empty() ? "" : " ") + Hex(static_cast<std::uint8_t>(byte));
    return hex.empty() ? "empty" : hex;
}

std::string Names(const std::unordered_set<std::string>& names)
{
    std::string listed;
    for (const std::string& name : std::set<std::string>(names.begin(), names.end()))
        listed += (listed.empty() ? "" : ", ") + Quoted(name);
    return "{" + listed + "}";
}

template <typename Domain>
void ShowRows(const std::string& path, const Domain& record, Shown& shown);

template <typename Value>
void Show(const std::string& path, const Value& value, Shown& shown)
{
    if constexpr (std::is_same_v<Value, bool>)
        shown[path] = value ? "true" : "false";
    else if constexpr (std::is_integral_v<Value>)
        shown[path] = std::to_string(value);
    else if constexpr (std::is_enum_v<Value>)
        shown[path] = std::to_string(static_cast<std::underlying_type_t<Value>>(value));
    else
        ShowRows(path, value, shown);
}

void Show(const std::string& path, const std::string& value, Shown& shown)
{
    shown[path] = Quoted(value);
}

void Show(const std::string& path, const std::vector<std::uint8_t>& value, Shown& shown)
{
    shown[path] = HexBytes(value);
}

void Show(const std::string& path, const VynUpdateIdentifier& value, Shown& shown)
{
    shown[path] = HexBytes(value);
}

void Show(const std::string& path, const wem::types::Timestamp& value, Shown& shown)
{
    shown[path] = std::to_string(value.count);
}

void Show(const std::string& path, const std::unordered_set<std::string>& value, Shown& shown)
{
    shown[path] = Names(value);
}

void Show(const std::string& path, const VynSubscriptions& value, Shown& shown)
{
    for (const auto& [severity, names] : value)
        shown[path + ".severity[" + std::to_string(static_cast<std::int32_t>(severity)) + "]"] = Names(names);
}

template <typename Value>
void Show(const std::string& path, const std::optional<Value>& value, Shown& shown)
{
    if (value)
        Show(path, *value, shown);
    else
        shown[path] = "absent";
}

template <typename Sequence>
void ShowElements(const std::string& path, const Sequence& values, Shown& shown)
{
    if (values.empty()) shown[path] = "empty";
    for (std::size_t i = 0; i < values.size(); ++i)
        Show(path + "[" + std::to_string(i) + "]", values[i], shown);
}

template <typename Value>
void Show(const std::string& path, const std::vector<Value>& values, Shown& shown)
{
    ShowElements(path, values, shown);
}

template <std::size_t Count>
void Show(const std::string& path, const std::array<std::string, Count>& values, Shown& shown)
{
    ShowElements(path, values, shown);
}

template <typename Domain>
void ShowRows(const std::string& path, const Domain& record, Shown& shown)
{
    ForEachRow<Domain>([&](auto row) {
        if constexpr (isInDomain<decltype(row)>)
            Show((path.empty() ? "" : path + ".") + row.name, decltype(row)::InDomain::Of(record), shown);
    });
}

// --- How an exception is shown ---

std::string ShowException(const std::exception& error, Shown& shown)
{
    shown["text"] = error.what();
    if (const auto* const code = dynamic_cast<const mur::ResultCodeException*>(&error)) {
        std::array<char, 11> digits{};
        std::snprintf(digits.data(), digits.size(), "0x%08x", static_cast<std::uint32_t>(code->resultCode));
        shown["rendered"] = errors::Ascii(code->Text());
        shown["code"] = digits.data();
        shown["file"] = code->file == nullptr ? "none" : code->file;
        shown["line"] = std::to_string(code->line);
    }
    const std::type_info& type = typeid(error);
    if (type == typeid(std::out_of_range)) return "std::out_of_range";
    if (type == typeid(mur::ResultCodeException)) return "mur::ResultCodeException";
    if (type == typeid(mur::InvalidArgumentException)) return "mur::InvalidArgumentException";
    return type.name();
}

// --- Converting ---

template <typename Domain>
Domain Read(const WireOf<Domain>& wire, const zt_arena* arena, Shown&)
{
    return Conversion<Domain>::Read(wire, arena);
}

// An event's reader does not throw; what it says beside the record is its status.
template <>
VynEvent Read(const WireOf<VynEvent>& wire, const zt_arena* arena, Shown& shown)
{
    using lyr::ipc::arena::conv::Status;
    Status status = Status::Ok;
    VynEvent event = lyr::ipc::arena::conv::FromZt(*arena, wire, status);
    shown["status"] = status == Status::Ok ? "ok" : status == Status::Failed ? "failed" : "neither ok nor failed";
    return event;
}

// --- Comparing ---

struct Problem {
    std::size_t line;
    std::string what;
};
using Problems = std::vector<Problem>;

// A byte that a file leaves open is one that nobody has written.
Bytes BytesOfFile(const std::vector<MessageFile::Byte>& bytes)
{
    std::vector<std::uint8_t> values;
    for (const MessageFile::Byte byte : bytes)
        values.push_back(byte.value_or(TestArena::stale));
    return Bytes(values.data(), values.size());
}

void CompareBytes(const std::string& what, std::size_t line, const Bytes& expected, const Bytes& actual,
                  Problems& problems)
{
    const auto end = expected.data() + std::min(expected.size(), actual.size());
    const auto at = std::mismatch(expected.data(), end, actual.data());
    if (at.first == end && expected.size() == actual.size()) return;
    const std::string offset = std::to_string(at.first - expected.data());
    std::string difference = "ends there";
    if (at.first != end) difference = "is " + Hex(*at.second) + ", not " + Hex(*at.first);
    problems.push_back({line, what + ", byte " + offset + ", " + difference});
}

void CompareOutcome(const MessageFile& file, const std::string& raised, const Shown& shown, Problems& problems)
{
    if (raised != file.raised) {
        const auto named = [](const std::string& type) { return type.empty() ? "a record" : type; };
        problems.push_back({file.outcomeLine, "expected " + named(file.raised) + ", got " + named(raised)});
    }
    for (const auto& [name, row] : file.outcome) {
        const auto found = shown.find(name);
        if (found == shown.end())
            problems.push_back({row.line, "there is no " + name});
        else if (found->second != row.value)
            problems.push_back({row.line, name + " is " + found->second + ", not " + row.value});
    }
    for (const auto& [name, value] : shown) {
        if (file.outcome.count(name) == 0)
            problems.push_back({file.outcomeLine, name + " = " + value + " is not listed"});
    }
}

template <typename Domain>
void CompareEncoded(const MessageFile& file, const Domain& value, std::size_t start, std::size_t room,
                    Problems& problems)
{
    // With room beyond the message, what lies there must stay as it was.
    TestArena arena(file.arena.size() + room, start);
    WireOf<Domain> wire{};
    try {
        wire = Conversion<Domain>::Write(value, file.arenaKind == MessageFile::Arena::Bytes ? arena.Get() : nullptr);
    } catch (const std::exception& error) {
        Shown shown;
        const std::string type = ShowException(error, shown);
        problems.push_back({file.wireLine, "is not written: " + type + ": " + shown["text"]});
        return;
    }
    CompareBytes("written again, the wire structure", file.wireLine, BytesOfFile(file.wire), BytesOf(wire), problems);
    if (arena.Top() != file.arena.size())
        problems.push_back({file.arenaLine, "written again, the top is at " + std::to_string(arena.Top())});
    const std::vector<std::uint8_t> untouched(room, TestArena::stale);
    CompareBytes("written again, the arena", file.arenaLine,
                 BytesOfFile(file.arena) + Bytes(untouched.data(), untouched.size()), arena.Contents(), problems);
}

// Everything in which the library and the file disagree.
template <typename Domain>
Problems Check(const MessageFile& file)
{
    Problems problems;
    WireOf<Domain> wire;
    if (file.wire.size() != sizeof(wire)) {
        problems.push_back({file.wireLine, "the wire structure has " + std::to_string(sizeof(wire)) + " bytes"});
        return problems;
    }
    if ((file.arenaKind == MessageFile::Arena::None) == takesArena<Domain>) {
        problems.push_back({file.arenaLine, "the conversion takes an arena, or takes none"});
        return problems;
    }
    std::memcpy(&wire, BytesOfFile(file.wire).data(), sizeof(wire));

    TestArena received(file.arena.size(), file.start, file.top);
    received.Put(0, BytesOfFile(file.arena));
    const zt_arena unset{};
    const zt_arena* arena = nullptr;
    if (file.arenaKind == MessageFile::Arena::Bytes) arena = received.Get();
    if (file.arenaKind == MessageFile::Arena::Unset) arena = &unset;

    Domain value;
    Shown shown;
    std::string raised;
    try {
        value = Read<Domain>(wire, arena, shown);
        ShowRows("", value, shown);
    } catch (const std::exception& error) {
        raised = ShowException(error, shown);
    }
    CompareOutcome(file, raised, shown, problems);

    if (file.encode && raised.empty()) {
        for (const std::size_t start : {file.start, file.start + 8}) {
            for (const std::size_t room : {std::size_t{0}, std::size_t{2000}})
                CompareEncoded(file, value, start, room, problems);
        }
    }
    return problems;
}

struct Record {
    const char* name;
    Problems (*check)(const MessageFile& file);
};

void PrintTo(const Record& record, std::ostream* out)
{
    *out << record.name;
}

template <typename... Domains>
constexpr std::array<Record, sizeof...(Domains)> TableOf(RecordList<Domains...>)
{
    return {Record{Description<Domains>::name, &Check<Domains>}...};
}

constexpr auto records = TableOf(AllRecords{});

Problems CheckAny(const MessageFile& file)
{
    const auto record =
        std::find_if(records.begin(), records.end(), [&](const Record& one) { return one.name == file.record; });
    if (record == records.end()) return {{1, "there is no record " + file.record}};
    return record->check(file);
}

const std::filesystem::path messages = "messages"; // from the folder of the tests, in which they run

std::vector<std::filesystem::path> EntriesOf(const std::filesystem::path& folder)
{
    std::vector<std::filesystem::path> entries;
    if (std::filesystem::is_directory(folder)) {
        const std::filesystem::directory_iterator found(folder);
        std::copy(begin(found), end(found), std::back_inserter(entries));
    }
    std::sort(entries.begin(), entries.end());
    return entries;
}

} // namespace

// --- The messages ---

class MessagesOfOneRecord : public testing::TestWithParam<Record> {};

TEST_P(MessagesOfOneRecord, AreReadAndWrittenAsTheirFilesSay)
{
    const std::filesystem::path folder = messages / GetParam().name;
    for (const char* const name : {"full.msg", "minimal.msg"})
        EXPECT_TRUE(std::filesystem::exists(folder / name)) << folder / name << " is missing";
    for (const std::filesystem::path& path : EntriesOf(folder)) {
        EXPECT_EQ(path.extension(), ".msg") << path;
        const MessageFile file = ReadMessage(path);
        EXPECT_EQ(file.record, GetParam().name) << path;
        for (const Problem& problem : CheckAny(file))
            ADD_FAILURE_AT(path.c_str(), static_cast<int>(problem.line)) << problem.what;
    }
}

INSTANTIATE_TEST_SUITE_P(Of, MessagesOfOneRecord, testing::ValuesIn(records),
                         [](const auto& instance) { return std::string(instance.param.name); });

TEST(Messages, StandInTheFolderOfTheirRecord)
{
    for (const std::filesystem::path& path : EntriesOf(messages)) {
        const bool isKnown = std::any_of(records.begin(), records.end(),
                                         [&](const Record& record) { return path.filename() == record.name; });
        EXPECT_TRUE(isKnown || !std::filesystem::is_directory(path)) << path << " belongs to no record";
        EXPECT_NE(path.extension(), ".msg") << path << " stands in no folder";
    }
}

// --- The runner itself ---

namespace {

const std::string proxy = "record: ProxySettings\n"
                          "encode: yes\n"
                          "wire: 28 bytes\n"
                          "  0000: 00 00 00 00 01 00 00 00\n"
                          "  0008: 39 30 00 00\n"
                          "  000c: 01 00 00 00 02 00 00 00\n"
                          "  0014: 03 00 00 00 00 00 00 00\n"
                          "arena: 3 bytes\n"
                          "  0000: 61 62 63\n"
                          "decoded:\n"
                          "  address = \"a\"\n"
                          "  port = 12345\n"
                          "  credentials.userName = \"bc\"\n"
                          "  credentials.password = \"\"\n";

const std::string outside = "record: VynUpdateIdentifierContainer\n"
                            "encode: no\n"
                            "wire: 8 bytes\n"
                            "  0000: 01 00 00 00 10 00 00 00\n"
                            "arena: 16 bytes\n"
                            "  0000: 00 *16\n"
                            "raises: mur::ResultCodeException\n"
                            "  text = ResultCodeException\n"
                            "  rendered = 0x80000062 (Out of space)\n"
                            "  code = 0x80000062\n"
                            "  file = none\n"
                            "  line = 0\n";

const std::string nothing = "record: VynSubscription\n"
                            "encode: no\n"
                            "wire: 12 bytes\n"
                            "  0000: 00 *12\n"
                            "arena: null\n"
                            "raises: mur::InvalidArgumentException\n"
                            "  text = InvalidArgumentException\n"
                            "  rendered = 0x00000000 (No error)\n"
                            "  code = 0x00000000\n"
                            "  file = lyr_ipc/source/common/include/common/zt_set\n"
                            "  line = 43\n";

const std::string plain = "record: VynServerData\n"
                          "encode: yes\n"
                          "wire: 8 bytes\n"
                          "  0000: 07 00 *7\n"
                          "arena: none\n"
                          "decoded:\n"
                          "  field1 = 7\n";

// What the runner says about a message in which `from` was replaced by `to`, one problem in a line.
std::string Complaints(std::string text, std::string_view from = "", std::string_view to = "")
{
    const std::size_t at = text.find(from);
    if (at == text.npos) throw std::logic_error("not in the message: " + std::string(from));
    std::string complaints;
    for (const Problem& problem : CheckAny(ParseMessage(text.replace(at, from.size(), to), "a.msg"))) {
        const std::string complaint = std::to_string(problem.line) + ": " + problem.what + "\n";
        // An encoded message is compared in four arenas.
        if (complaints.find(complaint) == complaints.npos) complaints += complaint;
    }
    return complaints;
}

} // namespace

TEST(MessageRunner, HasNoComplaintAboutARightMessage)
{
    EXPECT_EQ(Complaints(proxy), "");
    EXPECT_EQ(Complaints(outside), "");
    EXPECT_EQ(Complaints(nothing), "");
    EXPECT_EQ(Complaints(plain), "");
}

TEST(MessageRunner, SeesAWrongField)
{
    EXPECT_EQ(Complaints(proxy, "12345", "12346"), "12: port is 12345, not 12346\n");
    EXPECT_EQ(Complaints(proxy, "\"a\"", "\"b\""), "11: address is \"a\", not \"b\"\n");
    EXPECT_EQ(Complaints(proxy, "  port = 12345\n", ""), "10: port = 12345 is not listed\n");
    EXPECT_EQ(Complaints(proxy, "  port", "  pork = 1\n  port"), "12: there is no pork\n");
}

TEST(MessageRunner, SeesAWrongByteThatChangesWhatIsRead)
{
    EXPECT_EQ(Complaints(proxy, "0000: 61", "0000: 62"), "11: address is \"b\", not \"a\"\n");
    EXPECT_EQ(Complaints(proxy, "0008: 39 30", "0008: 38 30"), "12: port is 12344, not 12345\n");
}

TEST(MessageRunner, SeesAWrongByteThatOnlyAWriterCouldTell)
{
    EXPECT_EQ(Complaints(proxy, "39 30 00", "39 30 01"),
              "3: written again, the wire structure, byte 10, is 00, not 01\n");
    EXPECT_EQ(Complaints(proxy, "0014: 03", "0014: 02"),
              "3: written again, the wire structure, byte 20, is 03, not 02\n");
    EXPECT_EQ(Complaints(proxy, "3 bytes\n  0000: 61 62 63", "4 bytes\n  0000: 61 62 63 a5"),
              "8: written again, the top is at 3\n");
    EXPECT_EQ(Complaints(proxy, "3 bytes\n  0000: 61 62 63", "4 bytes\n  0000: 61 62 63 00"),
              "8: written again, the top is at 3\n8: written again, the arena, byte 3, is a5, not 00\n");
    EXPECT_EQ(Complaints(plain, "07 00 *7", "07 01 00 *6"), "7: field1 is 263, not 7\n");
}

TEST(MessageRunner, SeesThatAMessageCannotBeWrittenAgain)
{
    EXPECT_EQ(Complaints("record: FileInfoParams\nencode: yes\nwire: 8 bytes\n  0000: 00 00 00 00 01 04 00 00\n"
                         "arena: 1025 bytes\n  0000: 61 *1025\ndecoded:\n  fileName = \"a\" * 1025\n"),
              "3: is not written: " + std::string(typeid(std::length_error).name()) +
                  ": zt string: string size larger than zt buffer\n");
}

TEST(MessageRunner, SeesAWrongException)
{
    EXPECT_EQ(Complaints(outside, "raises: mur::ResultCode", "raises: mur::InvalidArgument"),
              "7: expected mur::InvalidArgumentException, got mur::ResultCodeException\n");
    EXPECT_EQ(Complaints(outside, "text = Result", "text = A result"),
              "8: text is ResultCodeException, not A resultCodeException\n");
    EXPECT_EQ(Complaints(outside, "code = 0x80000062", "code = 0x80000046"),
              "10: code is 0x80000062, not 0x80000046\n");
    EXPECT_EQ(Complaints(outside, "file = none", "file = some"), "11: file is none, not some\n");
    EXPECT_EQ(Complaints(nothing, "zt_set", "zt_range"), "10: file is lyr_ipc/source/common/include/common/zt_set, not "
                                                         "lyr_ipc/source/common/include/common/zt_range\n");
    EXPECT_EQ(Complaints(nothing, "line = 43", "line = 44"), "11: line is 43, not 44\n");
    EXPECT_EQ(Complaints(nothing, "  line = 43\n", ""), "6: line = 43 is not listed\n");
    EXPECT_EQ(Complaints(nothing, "(No error)", "()"), "8: rendered is 0x00000000 (No error), not 0x00000000 ()\n");
}

TEST(MessageRunner, SeesAnExceptionWhereARecordIsExpectedAndTheOtherWayRound)
{
    const std::string text = "zt string: zt_arena does not contain an element with the address 4";
    EXPECT_EQ(Complaints(proxy, "0014: 03", "0014: 04"),
              "10: expected a record, got std::out_of_range\n11: there is no address\n"
              "14: there is no credentials.password\n13: there is no credentials.userName\n12: there is no port\n"
              "10: text = " +
                  text + " is not listed\n");
    EXPECT_EQ(Complaints(outside, "0000: 01", "0000: 00").substr(0, 57),
              "7: expected mur::ResultCodeException, got a record\n10: th");
}

TEST(MessageRunner, SeesAMessageOfAnotherShape)
{
    EXPECT_EQ(Complaints(proxy, "record: Proxy", "record: No"), "1: there is no record NoSettings\n");
    EXPECT_EQ(Complaints(proxy, "record: ProxySettings", "record: SslSettings"),
              "3: the wire structure has 36 bytes\n");
    EXPECT_EQ(Complaints(plain, "arena: none", "arena: null"), "5: the conversion takes an arena, or takes none\n");
    EXPECT_EQ(Complaints(nothing, "arena: null", "arena: none"), "5: the conversion takes an arena, or takes none\n");
}
