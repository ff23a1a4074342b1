// Runs a conversion for Callgrind: twice, a few times and then some more. instructions.py has Callgrind count inside of
// CountedRun alone, and write its counters where EndCount is entered.
#pragma once

#include "conversion.h"

#include <cstdio>

extern "C" {
[[gnu::noinline]] inline void CountedRun(const bench::Conversion* conversion, std::size_t times)
{
    conversion->run(times);
    asm volatile(""); // so that the call above returns to here
}
[[gnu::noinline]] inline void EndCount()
{
    asm volatile("");
}
}

namespace bench {

inline void Count(const Conversion& conversion)
{
    std::puts(conversion.name.c_str());
    conversion.run(4); // the heap and the linker's tables are then as they stay
    for (const std::size_t times : {std::size_t{5}, std::size_t{15}}) {
        CountedRun(&conversion, times);
        EndCount();
    }
}

} // namespace bench
