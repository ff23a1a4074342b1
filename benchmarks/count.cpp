// Runs the conversions whose name begins with the argument, each twice, a few times and then some more, and calls an
// empty function before and after either: the marks at which instructions.py lets Callgrind reset and write its
// counters. Prints the conversions' names in order. With no argument, just prints all names.
#include "conversions.h"

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

int main(int argc, char** argv)
{
    bench::Conversions conversions(argc > 1 ? argv[1] : "");
    bench::AddRecords(conversions);
    for (const bench::Conversion& conversion : conversions) {
        std::puts(conversion.name.c_str());
        if (argc == 1) continue;
        conversion.run(4); // the heap and the linker's tables are then as they stay
        for (const std::size_t times : {5, 15}) {
            BeginCount();
            conversion.run(times);
            EndCount();
        }
    }
}
