// Every conversion of the benchmark: each record, both ways, by this library, its floor and the peers.
#pragma once

#include "conversion.h"

namespace bench {

void AddRecords(Conversions& conversions);
void AddRandomLengths(Conversions& conversions);

// Looking at messages where they stand: record/verify, record/touch and record/one text, by everybody who can.
void AddLooks(Conversions& conversions);

// This library's alone: lists, strings and sets from small to large.
void AddGrowth(Conversions& conversions);

// The same conversions made once more, so that each thread has records and an arena of its own.
void AddForThread(Conversions& conversions);

} // namespace bench
