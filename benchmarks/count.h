// Runs a conversion for Callgrind: twice, a few times and then some more, with a call of an empty function before and
// after either. These are the marks at which instructions.py lets it reset and write its counters.
#pragma once

#include "conversion.h"

#include <cstdio>

extern "C" {
[[gnu::noinline]] inline void BeginCount()
{
    asm volatile("");
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
    for (const std::size_t times : {5, 15}) {
        BeginCount();
        conversion.run(times);
        EndCount();
    }
}

} // namespace bench
