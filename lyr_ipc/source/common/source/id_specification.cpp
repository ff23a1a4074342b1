#include <common/id_specification.h>

namespace vyn_connector::common::meta {

// First of all, so that in a static library too it is there before the objects of the program that read it.
[[gnu::init_priority(101)]] const ivo::IdSpec IdSpecification{"/\\\"'`%"};

} // namespace vyn_connector::common::meta
