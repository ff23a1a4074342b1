// Puts every conversion under Google Benchmark's clock. The number of runs between two looks at the clock's counter is
// chosen so that the counting is no part of the result.
#include "conversions.h"

#include <benchmark/benchmark.h>

#include <algorithm>

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

    bench::Conversions conversions;
    bench::AddRecords(conversions);
    bench::AddRandomLengths(conversions);
    for (const bench::Conversion& conversion : conversions) {
        const auto batch = static_cast<benchmark::IterationCount>(1 + 30'000 / (conversion.bytes + 100));
        benchmark::RegisterBenchmark(conversion.name.c_str(), [&conversion, batch](benchmark::State& state) {
            while (state.KeepRunningBatch(batch))
                conversion.run(static_cast<std::size_t>(batch));
        });
    }
    benchmark::RunSpecifiedBenchmarks();
}
