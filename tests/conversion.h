// Every record for the suites of GoogleTest, each with a value that has everything in it. For properties that hold for
// all of them; their pairs are called through Conversion, whatever their signatures.
#pragma once

#include "any_record.h"

#include <common/all_records.h>

#include <gtest/gtest.h>

#include <algorithm>

namespace conversion {

using namespace vyn_connector;
using common::Conversion;

template <typename... Records>
testing::Types<Records...> TypesOf(common::RecordList<Records...>);
using Records = decltype(TypesOf(common::AllRecords{}));

// A record with everything in it: optional members present, lists of some elements, and texts too long for a string to
// hold without allocating.
template <typename Record>
Record Full()
{
    return any_record::Make<Record>([](std::uint64_t limit) { return std::min<std::uint64_t>(limit, 20); });
}

} // namespace conversion
