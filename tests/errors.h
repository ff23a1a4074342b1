// What a call must raise, asserted whole: the exact class, the text, and for the runtime's exceptions every field.
// A failure is reported at the line of the test that asked. Where the codecs' checks stand and what their texts say is
// written here once.
#pragma once

#include <mur/exception.h>

#include <gtest/gtest.h>

#include <cstring>
#include <exception>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <typeinfo>

namespace errors {

// Calls `call`, expects it to throw exactly an `Error`, and shows the exception to `inspect`.
template <typename Error, typename Call, typename Inspect>
void Expect(Call&& call, Inspect&& inspect)
{
    try {
        call();
    } catch (const Error& error) {
        const std::type_info& thrown = typeid(error);
        EXPECT_TRUE(thrown == typeid(Error)) << "thrown was the derived " << thrown.name() << ": " << error.what();
        inspect(error);
        return;
    } catch (const std::exception& error) {
        ADD_FAILURE() << "expected " << typeid(Error).name() << ", thrown was " << typeid(error).name() << ": "
                      << error.what();
        return;
    } catch (...) {
        ADD_FAILURE() << "expected " << typeid(Error).name() << ", thrown was something else";
        return;
    }
    ADD_FAILURE() << "expected " << typeid(Error).name() << ", nothing was thrown";
}

template <typename Error, typename Call>
void ExpectText(Call&& call, std::string_view text)
{
    Expect<Error>(call, [&](const Error& error) { EXPECT_EQ(std::string_view(error.what()), text); });
}

// The characters of a text that is plain ASCII; '?' stands for any other.
inline std::string Ascii(std::u16string_view text)
{
    std::string ascii;
    for (const char16_t c : text)
        ascii += c < 0x80 ? static_cast<char>(c) : '?';
    return ascii;
}

// `file` null: not recorded.
inline void ExpectFields(const mur::ResultCodeException& error, const char* file, int line, std::uint32_t resultCode)
{
    if (file == nullptr)
        EXPECT_EQ(error.file, nullptr);
    else
        EXPECT_STREQ(error.file, file);
    EXPECT_EQ(error.line, line);
    EXPECT_EQ(static_cast<std::uint32_t>(error.resultCode), resultCode);
    EXPECT_EQ(error.detail, 0);
    EXPECT_EQ(error.message.size, 0u);
    EXPECT_EQ(error.nested, nullptr);
}

} // namespace errors

// A codec by its name in texts, and the file that its argument checks record.
struct Codec {
    const char* name;
    const char* file;
};
inline constexpr Codec stringCodec{"string", "lyr_ipc/source/common/include/common/zt_string"};
inline constexpr Codec blobCodec{"blob", "lyr_ipc/source/common/source/zt_blob"};
inline constexpr Codec vectorCodec{"vector", "lyr_ipc/source/common/include/common/zt_vector"};
inline constexpr Codec rangeCodec{"range", "lyr_ipc/source/common/include/common/zt_range"};
inline constexpr Codec optionalCodec{"optional", "lyr_ipc/source/common/include/common/zt_optional"};
inline constexpr Codec setCodec{"set", "lyr_ipc/source/common/include/common/zt_set"};

inline bool operator==(const Codec& a, const Codec& b)
{
    return std::string_view(a.name) == b.name;
}

// An argument check: it records its own file and line, and its code is that of success.
template <typename Call>
void ExpectInvalidArgument(Call&& call, const Codec& codec, int line, int testLine = __builtin_LINE(),
                           const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected an argument error");
    errors::Expect<mur::InvalidArgumentException>(call, [&](const mur::InvalidArgumentException& error) {
        EXPECT_STREQ(error.what(), "InvalidArgumentException");
        errors::ExpectFields(error, codec.file, line, 0);
        EXPECT_EQ(errors::Ascii(error.Text()), "0x00000000 (No error)");
    });
}

// A result code without file, line and message; `text` is what a person is shown.
template <typename Call>
void ExpectResultCode(Call&& call, std::uint32_t resultCode, const char* text, int testLine = __builtin_LINE(),
                      const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected a result code");
    errors::Expect<mur::ResultCodeException>(call, [&](const mur::ResultCodeException& error) {
        EXPECT_STREQ(error.what(), "ResultCodeException");
        errors::ExpectFields(error, nullptr, 0, resultCode);
        EXPECT_EQ(errors::Ascii(error.Text()), text);
    });
}

// The arena is full.
template <typename Call>
void ExpectOutOfSpace(Call&& call, int testLine = __builtin_LINE(), const char* testFile = __builtin_FILE())
{
    ExpectResultCode(call, 0x80000062, "0x80000062 (Out of space)", testLine, testFile);
}

template <typename Call>
void ExpectLengthError(Call&& call, std::string_view text, int testLine = __builtin_LINE(),
                       const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected a length error");
    errors::ExpectText<std::length_error>(call, text);
}

template <typename Call>
void ExpectOutOfRange(Call&& call, std::string_view text, int testLine = __builtin_LINE(),
                      const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected an out-of-range error");
    errors::ExpectText<std::out_of_range>(call, text);
}

// More bytes or elements than the codec's limit were to be written.
template <typename Call>
void ExpectOverLimit(Call&& call, const Codec& codec, int testLine = __builtin_LINE(),
                     const char* testFile = __builtin_FILE())
{
    const std::string name = codec.name;
    ExpectLengthError(call, "zt " + name + ": " + name + " size larger than zt buffer", testLine, testFile);
}

// A pointer of this offset was read that leads outside the arena or does not hold whole elements. The range codec alone
// reports that like a full arena.
template <typename Call>
void ExpectOutside(Call&& call, const Codec& codec, std::uint32_t offset, int testLine = __builtin_LINE(),
                   const char* testFile = __builtin_FILE())
{
    if (codec == rangeCodec) {
        ExpectOutOfSpace(call, testLine, testFile);
        return;
    }
    const std::string name = codec.name;
    ExpectOutOfRange(call,
                     "zt " + name + ": zt_arena does not contain an element with the address " + std::to_string(offset),
                     testLine, testFile);
}

// An absent optional was read; the words are the standard library's.
template <typename Call>
void ExpectBadOptionalAccess(Call&& call, int testLine = __builtin_LINE(), const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected a bad optional access");
    errors::Expect<std::bad_optional_access>(call, [](const std::bad_optional_access&) {});
}
