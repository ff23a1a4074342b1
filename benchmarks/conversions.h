// Every conversion of the benchmark: each record, both ways, by this library, its floor and the peers.
#pragma once

#include "conversion.h"

namespace bench {

void AddRecords(Conversions& conversions);
void AddRandomLengths(Conversions& conversions);

} // namespace bench
