// What Verify and VerifyCanonical must say of a message, asserted whole: where, what, by how much, and what is thrown.
// A failure is reported at the line of the test that asked.
#pragma once

#include "arena.h"
#include "errors.h"

#include <common/verify.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace faults {

using vyn_connector::common::Fault;
using vyn_connector::common::FaultKind;

struct Where {
    std::string_view path;
    FaultKind kind;
    zt_ptr_t pointer;
    std::uint64_t missesBy;
};

inline void ExpectMur(const mur::Exception& error, std::string_view text)
{
    EXPECT_EQ(errors::Ascii(error.Text()), text);
}

inline void ExpectRaises(const Fault& fault, std::string_view exception, std::string_view text)
{
    const auto raise = [&] { fault.Raise(); };
    if (exception == "std::out_of_range")
        errors::ExpectText<std::out_of_range>(raise, text);
    else if (exception == "std::runtime_error")
        errors::ExpectText<std::runtime_error>(raise, text);
    else if (exception == "mur::InvalidArgumentException")
        errors::Expect<mur::InvalidArgumentException>(raise, [&](const auto& error) { ExpectMur(error, text); });
    else if (exception == "mur::ResultCodeException")
        errors::Expect<mur::ResultCodeException>(raise, [&](const auto& error) { ExpectMur(error, text); });
    else
        ADD_FAILURE() << "nothing throws " << exception;
}

// One that readers refuse throws what they throw; any other a std::runtime_error.
inline void ExpectFault(const std::optional<Fault>& fault, const Where& where, std::string_view exception,
                        std::string_view text, int testLine = __builtin_LINE(), const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected a fault");
    ASSERT_TRUE(fault.has_value());
    EXPECT_EQ(fault->Path(), where.path);
    EXPECT_EQ(static_cast<int>(fault->Kind()), static_cast<int>(where.kind));
    EXPECT_EQ(fault->Pointer(), where.pointer);
    EXPECT_EQ(fault->MissesBy(), where.missesBy);
    EXPECT_EQ(fault->IsRefused(), exception != "std::runtime_error");
    EXPECT_EQ(fault->Exception(), exception);
    EXPECT_EQ(fault->Text(), text);
    ExpectRaises(*fault, exception, text);
}

// Of a pointer that does not resolve.
inline void ExpectOutOfRangeFault(const std::optional<Fault>& fault, const Where& where, const Codec& codec,
                                  int testLine = __builtin_LINE(), const char* testFile = __builtin_FILE())
{
    const std::string text = "zt " + std::string(codec.name) +
                             ": zt_arena does not contain an element with the address " +
                             std::to_string(where.pointer.offset);
    ExpectFault(fault, where, "std::out_of_range", text, testLine, testFile);
}

// The arena is null: the exception names the codec's check.
inline void ExpectNullArenaFault(const std::optional<Fault>& fault, std::string_view path, zt_ptr_t pointer,
                                 const Codec& codec, int checkLine, int testLine = __builtin_LINE(),
                                 const char* testFile = __builtin_FILE())
{
    const testing::ScopedTrace trace(testFile, testLine, "expected a null arena");
    const std::uint64_t end = std::uint64_t{pointer.offset} + pointer.size;
    ExpectFault(fault, {path, FaultKind::NullArena, pointer, end}, "mur::InvalidArgumentException",
                "0x00000000 (No error)", testLine, testFile);
    if (fault.has_value()) ExpectInvalidArgument([&] { fault->Raise(); }, codec, checkLine);
}

// A fault that readers tolerate.
inline void ExpectTolerated(const std::optional<Fault>& fault, const Where& where, std::string_view text,
                            int testLine = __builtin_LINE(), const char* testFile = __builtin_FILE())
{
    ExpectFault(fault, where, "std::runtime_error", text, testLine, testFile);
}

} // namespace faults
