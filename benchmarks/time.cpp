// Puts every conversion under Google Benchmark's clock. A look at its counter is taken after so many runs that it is no
// part of the result.
#include "conversions.h"

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <thread>

namespace {

void Time(benchmark::State& state, const bench::Conversion& conversion)
{
    // Once beforehand: the heap, the caches and the linker's tables are then as they stay.
    conversion.run(1);
    const auto batch = static_cast<benchmark::IterationCount>(5 + 30'000 / (conversion.bytes + 100));
    while (state.KeepRunningBatch(batch))
        conversion.run(static_cast<std::size_t>(batch));
    state.counters["bytes"] =
        benchmark::Counter(static_cast<double>(conversion.bytes), benchmark::Counter::kAvgThreads);
}

} // namespace

int main(int argc, char** argv)
{
    // Memory that was given back stays with the process, as in one that has converted messages all day; otherwise the
    // system is asked again and again for that of the largest records.
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    mallopt(M_MMAP_THRESHOLD, 1 << 30);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;

    bench::Conversions conversions;
    bench::AddRecords(conversions);
    bench::AddRandomLengths(conversions);
    bench::AddLooks(conversions);
    bench::AddGrowth(conversions);
    for (const bench::Conversion& conversion : conversions)
        benchmark::RegisterBenchmark(conversion.name.c_str(),
                                     [&conversion](benchmark::State& state) { Time(state, conversion); });

    const unsigned cores = std::max(std::thread::hardware_concurrency(), 1U);
    std::vector<bench::Conversions> ofThread(cores);
    for (bench::Conversions& own : ofThread)
        bench::AddForThread(own);
    for (std::size_t i = 0; i < 2; ++i) {
        const std::string name = "threads: " + ofThread[0].begin()[static_cast<std::ptrdiff_t>(i)].name;
        const auto run = [&ofThread, i](benchmark::State& state) {
            const auto thread = static_cast<std::size_t>(state.thread_index());
            Time(state, ofThread[thread].begin()[static_cast<std::ptrdiff_t>(i)]);
        };
        benchmark::RegisterBenchmark(name.c_str(), run)->ThreadRange(1, static_cast<int>(cores))->UseRealTime();
    }
    benchmark::RunSpecifiedBenchmarks();
}
