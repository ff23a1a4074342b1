// Reads the message files of tests/messages, whose format messages/README.md describes. Strict: a slip in a file throws
// MessageFileError with the file and the line, so that no row of a file is passed over.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <map>
#include <optional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

class MessageFileError : public std::runtime_error {
public:
    MessageFileError(const std::string& file, std::size_t line, const std::string& what)
        : std::runtime_error(file + ":" + std::to_string(line) + ": " + what)
    {
    }
};

struct MessageFile {
    // The arena that is handed to the conversion: one that holds the file's bytes; a null pointer; one whose addresses
    // are null; or none, because the conversion takes none.
    enum class Arena { Bytes, Null, Unset, None };

    // A byte that is no value is one that the writer leaves as it was.
    using Byte = std::optional<std::uint8_t>;
    struct Row {
        std::string value;
        std::size_t line{};
    };

    std::string path;
    std::string record;
    std::size_t start{}; // the arena begins so far past a multiple of 8
    std::size_t top{};   // from the arena's start
    bool encode{};       // the record that was read is written again, to the same bytes
    std::vector<Byte> wire;
    std::size_t wireLine{};
    Arena arenaKind{};
    std::vector<Byte> arena;
    std::size_t arenaLine{};
    std::string raised; // the exception's type; empty where the message is read
    std::size_t outcomeLine{};
    std::map<std::string, Row> outcome; // what can be seen of the record that was read, or of the exception
};

class MessageParser {
public:
    explicit MessageParser(std::string path) { file.path = std::move(path); }

    MessageFile Parse(std::istream& text)
    {
        for (std::string content; std::getline(text, content);) {
            ++line;
            if (content.empty() || content[0] == '#') continue;
            if (content.substr(0, 2) == "  ")
                TakeRow(content.substr(2));
            else
                TakeKey(content);
        }
        ++line;
        Finish();
        return std::move(file);
    }

private:
    [[noreturn]] void Fail(const std::string& what) const { throw MessageFileError(file.path, line, what); }

    void TakeKey(const std::string& content)
    {
        const std::size_t colon = content.find(':');
        if (colon == content.npos) Fail("neither a key nor a row: " + content);
        const std::string key = content.substr(0, colon);
        const std::string value = content.size() > colon + 2 ? content.substr(colon + 2) : "";
        if (content.size() > colon + 1 && content[colon + 1] != ' ') Fail("no blank behind the colon");
        if (!keys.insert(key).second) Fail("a second " + key);

        section = Section::Header;
        if (key == "record") {
            file.record = value;
        } else if (key == "start") {
            file.start = Decimal(value);
            if (file.start > 7) Fail("start is not below 8");
        } else if (key == "top") {
            file.top = Decimal(value);
        } else if (key == "encode") {
            if (value != "yes" && value != "no") Fail("encode is neither yes nor no");
            file.encode = value == "yes";
        } else if (key == "wire") {
            section = Section::Wire;
            file.wireLine = line;
            wireSize = Size(value);
        } else if (key == "arena") {
            section = Section::Arena;
            file.arenaLine = line;
            TakeArena(value);
        } else if (key == "decoded" || key == "raises") {
            if (section = Section::Outcome; file.outcomeLine != 0) Fail("both decoded and raises");
            if (value.empty() == (key == "raises")) Fail("raises names a type, decoded nothing");
            file.outcomeLine = line;
            file.raised = value;
        } else {
            Fail("unknown key " + key);
        }
    }

    void TakeArena(const std::string& value)
    {
        if (value == "null")
            file.arenaKind = MessageFile::Arena::Null;
        else if (value == "unset")
            file.arenaKind = MessageFile::Arena::Unset;
        else if (value == "none")
            file.arenaKind = MessageFile::Arena::None;
        else
            arenaSize = Size(value);
    }

    void TakeRow(const std::string& row)
    {
        switch (section) {
        case Section::Header:
            Fail("a row outside wire, arena, decoded and raises");
        case Section::Wire:
            return TakeBytes(row, file.wire);
        case Section::Arena:
            return TakeBytes(row, file.arena);
        case Section::Outcome:
            break;
        }
        const std::size_t equals = row.find(" = ");
        if (equals == row.npos || equals == 0) Fail("no \"name = value\": " + row);
        const std::string name = row.substr(0, equals);
        if (!file.outcome.emplace(name, MessageFile::Row{row.substr(equals + 3), line}).second)
            Fail("a second " + name);
    }

    // "0010: 61 62 *3 ..  # comment"
    void TakeBytes(const std::string& row, std::vector<MessageFile::Byte>& bytes)
    {
        std::istringstream words(row.substr(0, row.find('#')));
        std::string word;
        words >> word;
        if (word != Label(bytes.size()))
            Fail("the row begins with " + word + " where " + Label(bytes.size()) + " is due");
        const std::size_t before = bytes.size();
        while (words >> word) {
            if (word[0] == '*') {
                const std::size_t times = Decimal(word.substr(1));
                if (bytes.size() == before || times == 0) Fail("nothing to repeat " + word);
                bytes.insert(bytes.end(), times - 1, MessageFile::Byte(bytes.back()));
            } else if (word == ".." && section == Section::Arena) {
                bytes.emplace_back();
            } else {
                bytes.emplace_back(HexByte(word));
            }
        }
        if (bytes.size() == before) Fail("a row without bytes");
    }

    void Finish()
    {
        for (const char* const key : {"record", "encode", "wire", "arena"}) {
            if (keys.count(key) == 0) Fail("no " + std::string(key));
        }
        if (file.outcomeLine == 0) Fail("neither decoded nor raises");
        if (file.outcome.empty()) FailAt(file.outcomeLine, "nothing follows");
        if (file.wire.size() != wireSize) FailAt(file.wireLine, "followed by " + Count(file.wire.size()));
        if (file.arena.size() != arenaSize) FailAt(file.arenaLine, "followed by " + Count(file.arena.size()));
        if (keys.count("top") == 0) file.top = arenaSize;
        if (file.top > arenaSize) Fail("top lies behind the arena's end");
        if (file.encode && !file.raised.empty()) Fail("encode is yes, but there is no record to encode");
    }

    [[noreturn]] void FailAt(std::size_t where, const std::string& what)
    {
        line = where;
        Fail(what);
    }

    static std::string Count(std::size_t bytes) { return std::to_string(bytes) + " bytes"; }

    static std::string Label(std::size_t offset)
    {
        std::string digits;
        for (; offset != 0 || digits.size() < 4; offset /= 16)
            digits.insert(digits.begin(), "0123456789abcdef"[offset % 16]);
        return digits + ":";
    }

    std::size_t Size(const std::string& value) const
    {
        const std::size_t blank = value.find(' ');
        if (blank == value.npos || value.substr(blank) != " bytes") Fail("no number of bytes: " + value);
        return Decimal(value.substr(0, blank));
    }

    std::size_t Decimal(const std::string& digits) const
    {
        if (digits.empty() || digits.size() > 9 || digits.find_first_not_of("0123456789") != digits.npos)
            Fail("no number: " + digits);
        return std::stoul(digits);
    }

    std::uint8_t HexByte(const std::string& digits) const
    {
        if (digits.size() != 2 || digits.find_first_not_of("0123456789abcdef") != digits.npos)
            Fail("no hexadecimal byte: " + digits);
        return static_cast<std::uint8_t>(std::stoul(digits, nullptr, 16));
    }

    enum class Section { Header, Wire, Arena, Outcome };

    MessageFile file;
    std::size_t line = 0;
    Section section = Section::Header;
    std::set<std::string> keys;
    std::size_t wireSize = 0;
    std::size_t arenaSize = 0;
};

// `path` is what errors name.
inline MessageFile ParseMessage(const std::string& text, const std::string& path)
{
    std::istringstream stream(text);
    return MessageParser(path).Parse(stream);
}

inline MessageFile ReadMessage(const std::filesystem::path& path)
{
    std::ifstream stream(path);
    if (!stream) throw MessageFileError(path.string(), 0, "cannot be opened");
    return MessageParser(path.string()).Parse(stream);
}
