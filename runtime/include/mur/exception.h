// The runtime's exceptions: a message, the place of the failed check and, for most, a result code. Callers catch
// them by any class of the tree and may copy, rethrow or clone them without knowing the exact class. Their functions
// are the library's: whoever unloads it has let go of them before. The order of fields and of virtual functions is
// part of the binary interface.
#pragma once

#include <mur/basic_string.h>
#include <mur/export.h>

#include <cstdint>
#include <exception>
#include <memory>

namespace mur {

class MUR_EXPORT Exception : public std::exception {
public:
    Exception();
    Exception(int detailCode, const types::wide_string& text); // shares the allocator object of `text`
    Exception(const Exception& other);                         // clones `nested`
    ~Exception() override;

    // What a person may be shown, without file and line. Throws std::length_error or std::bad_alloc when the
    // text cannot be built; so do copying, Throw() and Clone() when the message cannot be copied.
    virtual types::wide_string Text() const;

    // Throws a copy of the most derived class.
    [[noreturn]] virtual void Throw() const = 0;

    // A copy of the most derived class; the caller deletes it.
    virtual Exception* Clone() const = 0;

    const char* file = nullptr; // not owned; null when not given
    std::int32_t line = 0;      // 0 when not given
    std::int32_t detail = 0;    // free for whoever raises; 0 in everything this library raises
    types::wide_string message;
    // A chain of any length is destroyed; copying goes into itself at each level, on no more than 1 KiB of stack.
    std::unique_ptr<Exception> nested;
};

// Gives `Derived`, which names itself, the operations that need its exact class.
template <typename Derived, typename Base>
class MUR_EXPORT ExceptionBase : public Base {
public:
    ExceptionBase();
    ExceptionBase(int detailCode, const types::wide_string& text);
    ExceptionBase(const ExceptionBase& other);
    ~ExceptionBase() override;

    [[noreturn]] void Throw() const override;
    Exception* Clone() const override;
};

class MUR_EXPORT ResultCodeException : public ExceptionBase<ResultCodeException, Exception> {
public:
    ResultCodeException();
    ResultCodeException(int detailCode, const types::wide_string& text);
    ResultCodeException(const ResultCodeException& other);
    ~ResultCodeException() override;

    const char* what() const noexcept override;

    // "message: 0x80000062 (Out of space)"; without a message it begins with the code.
    types::wide_string Text() const override;

    std::int32_t resultCode = 0;
};

// A failed check of an argument: told apart by its type, `file` and `line`; the result code stays 0.
class MUR_EXPORT InvalidArgumentException : public ExceptionBase<InvalidArgumentException, ResultCodeException> {
public:
    InvalidArgumentException();
    InvalidArgumentException(int detailCode, const types::wide_string& text);
    InvalidArgumentException(const InvalidArgumentException& other);
    ~InvalidArgumentException() override;

    const char* what() const noexcept override;
};

template <typename Derived, typename Base>
ExceptionBase<Derived, Base>::ExceptionBase() = default;

template <typename Derived, typename Base>
ExceptionBase<Derived, Base>::ExceptionBase(int detailCode, const types::wide_string& text) : Base(detailCode, text)
{
}

template <typename Derived, typename Base>
ExceptionBase<Derived, Base>::ExceptionBase(const ExceptionBase& other) = default;

template <typename Derived, typename Base>
ExceptionBase<Derived, Base>::~ExceptionBase() = default;

template <typename Derived, typename Base>
void ExceptionBase<Derived, Base>::Throw() const
{
    throw Derived(static_cast<const Derived&>(*this));
}

template <typename Derived, typename Base>
Exception* ExceptionBase<Derived, Base>::Clone() const
{
    return new Derived(static_cast<const Derived&>(*this));
}

extern template class ExceptionBase<ResultCodeException, Exception>;
extern template class ExceptionBase<InvalidArgumentException, ResultCodeException>;

} // namespace mur
