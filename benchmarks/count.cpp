// Counts the conversions whose name begins with the argument; with none, prints all names.
#include "count.h"
#include "conversions.h"

int main(int argc, char** argv)
{
    bench::Conversions conversions(argc > 1 ? argv[1] : "");
    bench::AddRecords(conversions);
    bench::AddLooks(conversions);
    bench::AddGrowth(conversions);
    for (const bench::Conversion& conversion : conversions) {
        if (argc > 1)
            bench::Count(conversion);
        else
            std::puts(conversion.name.c_str());
    }
}
