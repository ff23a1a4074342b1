// The two ways in which the codecs raise a runtime exception. Called by every argument check and wherever space
// or a count runs out; neither returns. Both are inline because the library exports nothing beyond a fixed list,
// yet the codec templates that callers instantiate need them.
#pragma once

#include <mur/exception.h>

namespace mur {

// `file` must live as long as the exception (a literal); `line` is the line of the failed check.
[[noreturn, gnu::cold, gnu::noinline]] inline void raise_invalid_argument(const char* file, int line)
{
    InvalidArgumentException error;
    error.file = file;
    error.line = line;
    throw error;
}

[[noreturn, gnu::cold, gnu::noinline]] inline void raise_result_code(int code)
{
    ResultCodeException error(0, types::wide_string());
    error.resultCode = code;
    throw error;
}

} // namespace mur
