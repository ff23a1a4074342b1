// Prints one part of the reference: reference records|checks|result-codes|drawing. update.py compares what it prints
// with the pages.
#include "reference.h"

#include <cstdio>
#include <string_view>
#include <utility>

int main(int count, char** arguments)
{
    constexpr std::pair<std::string_view, void (*)()> parts[] = {{"records", PrintRecords},
                                                                 {"checks", PrintChecks},
                                                                 {"result-codes", PrintResultCodes},
                                                                 {"drawing", DrawMessage}};
    const std::string_view wanted = count == 2 ? arguments[1] : "";
    for (const auto& [name, print] : parts)
        if (name == wanted) {
            print();
            return 0;
        }
    std::fputs("usage: reference records|checks|result-codes|drawing\n", stderr);
    return 2;
}
