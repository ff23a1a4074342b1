// Standard output as a program uses it whose output matters: a failed write is an error and is noticed.
#pragma once

#include <stdexcept>
#include <string_view>

namespace exchange {

// Nobody reads the output any more ("| head -1"): a reason to end, and none to complain.
class OutputClosed : public std::runtime_error {
public:
    OutputClosed() : runtime_error("nobody reads the output any more") {}
};

// Call it before any file is opened: one that is opened while descriptors 0 to 2 are closed would become the standard
// output, and be written to. A pipe without a reader is an error from here on, not a signal.
void PrepareStandardStreams();

// Writes all of it, unbuffered. Throws OutputClosed, or std::system_error.
void WriteOutput(std::string_view text);

// What the system has put off until the end is an error as well (a network's file system). Throws std::system_error.
void FinishOutput();

} // namespace exchange
