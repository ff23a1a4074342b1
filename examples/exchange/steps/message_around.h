// Which message a record travels inside, by the records' tables.
#pragma once

#include <string_view>

namespace exchange {

// The message's name; empty where there is no such record, or where it travels by itself.
std::string_view MessageAround(std::string_view record);

} // namespace exchange
