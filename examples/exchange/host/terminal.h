// What can be known of the terminal behind a descriptor, if there is one.
#pragma once

#include <cstddef>

namespace exchange {

// How wide a line may be: without limit in a pipe or file; on a terminal as COLUMNS says, or else the terminal itself,
// or 80.
std::size_t ColumnsOf(int descriptor);

// Whether control sequences do what they say there: not in a pipe or file, and not on a dumb terminal.
bool TakesControlSequences(int descriptor);

} // namespace exchange
