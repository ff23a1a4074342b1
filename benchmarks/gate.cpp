// Every described record, full, both ways, for the instruction gate. It has the memory of steady_memory.cpp, so that
// its counts are those of the library and not of a C library's version or of the processor.
#include "count.h"
#include "this_library.h"

#include "../tests/any_record.h"

#include <common/all_records.h>

#include <cstdio>

namespace {

using namespace vyn_connector;

// Every optional member is there, short lists are full, and texts have all lengths up to 47.
template <typename Record>
void Add(bench::Conversions& conversions)
{
    std::uint64_t previous = 0;
    const auto choose = [&](std::uint64_t limit) {
        if (limit <= 10) return limit;
        previous = (previous + 13) % 47;
        return 1 + previous % limit;
    };
    bench::AddThisLibrary<Record>(conversions, common::Description<Record>::name, {any_record::Make<Record>(choose)});
}

} // namespace

int main()
{
#ifdef __clang__
    std::printf("Clang %d\n", __clang_major__);
#else
    std::printf("GCC %d\n", __GNUC__);
#endif
    bench::Conversions conversions;
    common::ForEach(common::AllRecords{}, [&](auto record) { Add<typename decltype(record)::Type>(conversions); });
    for (const bench::Conversion& conversion : conversions)
        bench::Count(conversion);
}
