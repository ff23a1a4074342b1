// How cost grows with a record's size, and with the number of threads.
#include "conversions.h"
#include "records.h"
#include "this_library.h"

#include <initializer_list>

namespace bench {

namespace {

// Makes the record only where it is wanted: the largest take a while.
template <typename Record, typename Make>
void Add(Conversions& conversions, const std::string& name, std::size_t size, Make make)
{
    const std::string record = name + " " + std::to_string(size);
    if (conversions.Wants(record, "this library")) AddThisLibrary<Record>(conversions, record, {make(size)});
}

using Sizes = std::initializer_list<std::size_t>;

} // namespace

void AddGrowth(Conversions& conversions)
{
    for (const std::size_t count : Sizes{1, 3, 10, 30, 100, 300, 1000, 3000, 10'000, 30'000, 100'000})
        Add<Parameters>(conversions, "list", count, ParameterList);
    for (const std::size_t size : Sizes{0, 1, 4, 16, 64, 256, 1024, 4096, 16384})
        Add<ClientCertParams>(conversions, "strings", size, [](std::size_t length) {
            return ClientCertParams{Text(length), Text(length, 1), true, 1};
        });
    for (const std::size_t count : Sizes{1, 2, 4, 8, 16, 32, 64, 128})
        Add<VynSubscription>(conversions, "set", count, [](std::size_t names) {
            return VynSubscription{VynEventSeverity::Severity1, EventTypes(names)};
        });
}

void AddForThread(Conversions& conversions)
{
    AddThisLibrary<AppInfo>(conversions, "B", {App()});
}

} // namespace bench
