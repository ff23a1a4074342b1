// The message string, with an allocator object that runs out of memory, and the integer formatter.
#include "target.h"

#include <mur/basic_string.h>
#include <mur/exception.h>
#include <mur/stream.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <stdexcept>
#include <string>

namespace {

using mur::types::wide_string;

constexpr std::size_t mostCharacters = 0x7FFFFFFFFFFFFFFE;

// Has so many allocations left, none of them large.
class Allocator : public mur::allocator_interface {
public:
    explicit Allocator(std::size_t allocations) : left(allocations) {}
    ~Allocator() { Require(references == 0 && buffers == 0, "references or buffers are left"); }
    Allocator(const Allocator&) = delete;
    Allocator& operator=(const Allocator&) = delete;

    void AddReference() override { ++references; }
    void ReleaseReference() override { Require(--references >= 0, "released once too often"); }
    void* Allocate(std::size_t bytes) override
    {
        if (!WouldAllocate(bytes)) return nullptr;
        --left;
        ++buffers;
        return std::malloc(bytes);
    }
    void Free(void* memory) override
    {
        Require(--buffers >= 0, "freed once too often");
        std::free(memory);
    }

    bool WouldAllocate(std::size_t bytes) const { return left > 0 && bytes <= 1 << 16; }

private:
    std::size_t left;
    std::ptrdiff_t references = 0;
    std::ptrdiff_t buffers = 0;
};

enum class Result { Done, TooLong, NoMemory };

// What the string is to be: its characters and its capacity.
struct Model {
    std::u16string text;
    std::size_t capacity = 7;

    Result Grow(std::size_t extra, const Allocator& allocator)
    {
        if (capacity - text.size() >= extra) return Result::Done;
        if (extra > mostCharacters - text.size()) return Result::TooLong;
        const std::size_t grown = std::max(text.size() + extra, 2 * capacity);
        if (grown > mostCharacters || !allocator.WouldAllocate((grown + 1) * 2)) return Result::NoMemory;
        capacity = grown;
        return Result::Done;
    }
};

template <typename Operation>
Result ResultOf(Operation&& operation)
{
    try {
        operation();
    } catch (const std::length_error& error) {
        Require(std::string(error.what()) == "mur::basic_string_t::reserve_extra()", "another length error");
        return Result::TooLong;
    } catch (const std::bad_alloc&) {
        return Result::NoMemory;
    }
    return Result::Done;
}

void RequireEqual(const wide_string& string, const Model& model)
{
    Require(std::u16string_view(string) == model.text, "another text");
    Require(string.data[string.size] == 0, "no terminator");
    Require(string.capacity == model.capacity, "another capacity");
}

// The formatter once more, by the book.
std::u16string Format(const mur::stream::format_options_t& options, std::int32_t value)
{
    const bool negative = options.radix == 10 && value < 0;
    std::uint64_t magnitude = static_cast<std::uint32_t>(value);
    if (negative) magnitude = (std::uint64_t{1} << 32) - magnitude;

    std::u16string prefix = negative ? u"-" : u"";
    if (!negative && options.showBase && options.radix == 16) prefix = u"0x";
    if (!negative && options.showBase && options.radix == 8) prefix = u"0";

    const std::uint64_t radix = std::clamp<std::uint64_t>(options.radix, 2, 39);
    std::u16string digits;
    for (; magnitude != 0 || digits.empty(); magnitude /= radix) {
        const auto digit = static_cast<unsigned>(magnitude % radix);
        const unsigned character = digit < 10 ? u'0' + digit : u'a' + digit - 10;
        digits.insert(digits.begin(), static_cast<char16_t>(digit < 36 ? character : 0));
    }

    std::u16string padding;
    if (options.fill < 0x10000 && options.width > prefix.size() + digits.size())
        padding.assign(options.width - prefix.size() - digits.size(), static_cast<char16_t>(options.fill));
    if (options.alignment > 0) return padding + prefix + digits;
    if (options.alignment == 0) return prefix + padding + digits;
    return prefix + digits + padding;
}

std::u16string Text(Input& input, std::size_t size)
{
    std::u16string text;
    for (; size > 0; --size)
        text += static_cast<char16_t>(input.Number(2));
    return text;
}

void Append(Input& input, wide_string& string, Model& model, const Allocator& allocator)
{
    const std::u16string text = Text(input, input.Byte() % 40);
    const Result expected = model.Grow(text.size(), allocator);
    Require(ResultOf([&] { string.append(text.data(), text.size()); }) == expected, "appending");
    if (expected == Result::Done) model.text += text;
}

void AppendItself(Input& input, wide_string& string, Model& model, const Allocator& allocator)
{
    const std::size_t at = input.Byte() % (model.text.size() + 1);
    const std::size_t count = input.Byte() % (model.text.size() - at + 1);
    const std::u16string part = model.text.substr(at, count);
    const Result expected = model.Grow(count, allocator);
    Require(ResultOf([&] { string.append(string.data + at, count); }) == expected, "appending a part of itself");
    if (expected == Result::Done) model.text += part;
}

// Any count, also one that no memory holds.
void AppendTimes(Input& input, wide_string& string, Model& model, const Allocator& allocator)
{
    std::size_t count = input.Byte();
    if (count >= 0xF0) count = input.Number(8);
    const auto character = static_cast<char16_t>(input.Number(2));
    const Result expected = model.Grow(count, allocator);
    Require(ResultOf([&] { string.append(count, character); }) == expected, "appending many times");
    if (expected == Result::Done) model.text.append(count, character);
}

void AppendNumber(Input& input, wide_string& string, Model& model, const Allocator& allocator)
{
    mur::stream::format_options_t options;
    options.width = input.Byte();
    options.radix = input.Byte() % 48;
    if (options.radix == 47) options.radix = static_cast<std::uint32_t>(input.Number(4));
    options.alignment = static_cast<std::int8_t>(input.Byte());
    options.showBase = (input.Byte() & 1) != 0;
    options.fill = static_cast<std::uint32_t>(input.Number(3));
    const auto value = static_cast<std::int32_t>(static_cast<std::uint32_t>(input.Number(4)));
    const std::u16string formatted = Format(options, value);
    const Result expected = model.Grow(formatted.size(), allocator);
    std::size_t appended = 0;
    Require(ResultOf([&] { appended = mur::stream::stream_put_int(string, options, value); }) == expected,
            "formatting");
    if (expected != Result::Done) return;
    Require(appended == formatted.size(), "another number of characters");
    model.text += formatted;
}

// A copy, alone or as the message of an exception and of its clone, is a copy or nothing.
void Copy(const wide_string& string, const Model& model, const Allocator& allocator)
{
    Model copied{model.text, model.text.size() <= 7 ? 7 : std::max<std::size_t>(model.text.size(), 14)};
    const bool fits = copied.capacity == 7 || allocator.WouldAllocate((copied.capacity + 1) * 2);
    const Result result = ResultOf([&] {
        const wide_string copy(string);
        RequireEqual(copy, copied);
    });
    Require(result == (fits ? Result::Done : Result::NoMemory), "copying");

    const Result cloning = ResultOf([&] {
        mur::ResultCodeException exception(0, string);
        const std::unique_ptr<mur::Exception> clone(exception.Clone());
        Require(std::u16string_view(clone->message) == model.text, "another message");
        exception.nested.reset(exception.Clone());
        exception.Text();
    });
    Require(cloning != Result::TooLong && (fits || cloning == Result::NoMemory), "cloning");
}

} // namespace

void Check(const std::uint8_t* data, std::size_t size)
{
    Input input(data, size);
    Allocator allocator(input.Byte() % 32);
    Model model;
    wide_string string(&allocator);
    for (int operations = 0; !input.AtEnd() && operations < 64 && model.text.size() < 20000; ++operations) {
        switch (input.Byte() % 5) {
        case 0:
            Append(input, string, model, allocator);
            break;
        case 1:
            AppendItself(input, string, model, allocator);
            break;
        case 2:
            AppendTimes(input, string, model, allocator);
            break;
        case 3:
            AppendNumber(input, string, model, allocator);
            break;
        default:
            Copy(string, model, allocator);
            break;
        }
        RequireEqual(string, model);
    }
}
