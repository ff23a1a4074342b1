// Runs each conversion twice, a few times and then some more, and calls an empty function before and after either: the
// marks at which instructions.py lets Callgrind reset and write its counters. Prints the conversions' names in order.
#include "conversion.h"
#include "records.h"

#include <cstdio>

extern "C" {
void __attribute__((noinline)) BeginCount()
{
    asm volatile("");
}
void __attribute__((noinline)) EndCount()
{
    asm volatile("");
}
}

int main()
{
    std::vector<bench::Conversion> conversions;
    bench::AddThisLibrary(conversions, "A", bench::Server());
    bench::AddThisLibrary(conversions, "B", bench::App());
    bench::AddThisLibrary(conversions, "C", bench::Chunk());
    bench::AddThisLibrary(conversions, "D", bench::ParameterList(1000));

    for (const bench::Conversion& conversion : conversions) {
        conversion.run(4); // the heap and the linker's tables are then as they stay
        for (const std::size_t times : {5, 15}) {
            BeginCount();
            conversion.run(times);
            EndCount();
        }
        std::puts(conversion.name.c_str());
    }
}
