// The exception classes, emitted and exported here with their type information, and their texts.
#include <mur/exception.h>
#include <mur/result_code.h>
#include <mur/stream.h>

#include <cstdint>
#include <cwchar>
#include <memory>
#include <string_view>
#include <utility>

namespace mur {

namespace {

// Codes of the platform's facility. Only texts of exceptions know them.
std::string_view platform_result_code_message(std::uint32_t code) noexcept
{
    switch (code) {
    case 0x80010100:
        return "Unspecified platform error";
    case 0x80010101:
        return "Invalid handle";
    case 0x80010102:
        return "File not found";
    case 0x80010103:
        return "Path not found";
    case 0x80010104:
        return "Sharing violation";
    case 0x80010105:
        return "Already exists";
    case 0x80010106:
        return "Wait abandoned";
    case 0x80010107:
        return "Symbol not found";
    case 0x80010108:
        return "Sxs is incorrect";
    case 0x80010109:
        return "Invalid path name";
    case 0x80010110:
        return "Cannot open an anonymous level security token";
    case 0x80010111:
        return "Password is invalid";
    case 0x80010112:
        return "Module not found";
    case 0x80010113:
        return "System image bad signature";
    case 0x80010114:
        return "Cloud file request aborted";
    case 0x80010115:
        return "Memory mapping failed";
    case 0x80010116:
        return "Network error";
    default:
        return "Unknown result code";
    }
}

std::string_view result_code_message(int code) noexcept
{
    const auto bits = static_cast<std::uint32_t>(code);
    switch (bits >> 16 & 0x7FFF) {
    case 0:
        return rtl_result_code_message(code);
    case 1:
        return platform_result_code_message(bits);
    default:
        return "Unknown result code";
    }
}

// Widens as the C library's current locale does. A byte that has no 16-bit character ends the literal.
void append_literal(types::wide_string& text, std::string_view literal)
{
    for (const char& byte : literal) {
        std::mbstate_t state{};
        wchar_t wide = 0;
        if (std::mbrtowc(&wide, &byte, 1, &state) != 1) return;
        if (wide < 1 || wide > 0xFFFF) return;
        text.append(1, static_cast<char16_t>(wide));
    }
}

void append_sign_extended(types::wide_string& text, std::string_view bytes)
{
    for (const char byte : bytes)
        text.append(1, static_cast<char16_t>(static_cast<signed char>(byte)));
}

} // namespace

Exception::Exception() = default;

Exception::Exception(int detailCode, const types::wide_string& text) : detail(detailCode), message(text) {}

Exception::Exception(const Exception& other)
    : std::exception(other),
      file(other.file),
      line(other.line),
      detail(other.detail),
      message(other.message),
      nested(other.nested != nullptr ? other.nested->Clone() : nullptr)
{
}

// The innermost goes first, and each with nothing nested in it any more: a chain may be longer than the stack is deep.
Exception::~Exception()
{
    std::unique_ptr<Exception> innermost;
    while (nested != nullptr) {
        std::swap(nested->nested, innermost);
        std::swap(nested, innermost);
    }
    while (innermost != nullptr) {
        std::unique_ptr<Exception> next = std::move(innermost->nested);
        innermost = std::move(next);
    }
}

types::wide_string Exception::Text() const
{
    return message;
}

ResultCodeException::ResultCodeException() = default;

ResultCodeException::ResultCodeException(int detailCode, const types::wide_string& text)
    : ExceptionBase(detailCode, text)
{
}

ResultCodeException::ResultCodeException(const ResultCodeException& other) = default;

ResultCodeException::~ResultCodeException() = default;

const char* ResultCodeException::what() const noexcept
{
    return "ResultCodeException";
}

types::wide_string ResultCodeException::Text() const
{
    constexpr stream::format_options_t eightHexDigits{8, 16, -1, 1, U'0', false};

    types::wide_string text(message.allocator);
    if (message.size != 0) {
        text.append(message.data, message.size);
        append_literal(text, ": ");
    }
    append_literal(text, "0x");
    stream::stream_put_int(text, eightHexDigits, static_cast<int>(resultCode));
    append_literal(text, " (");
    append_sign_extended(text, result_code_message(resultCode));
    append_literal(text, ")");
    return text;
}

InvalidArgumentException::InvalidArgumentException() = default;

InvalidArgumentException::InvalidArgumentException(int detailCode, const types::wide_string& text)
    : ExceptionBase(detailCode, text)
{
}

InvalidArgumentException::InvalidArgumentException(const InvalidArgumentException& other) = default;

InvalidArgumentException::~InvalidArgumentException() = default;

const char* InvalidArgumentException::what() const noexcept
{
    return "InvalidArgumentException";
}

template class ExceptionBase<ResultCodeException, Exception>;
template class ExceptionBase<InvalidArgumentException, ResultCodeException>;

} // namespace mur
