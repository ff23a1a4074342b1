#include <common/id_specification.h>

// Included so that they are constructed before this unit's own constant.
#include <ivo/constants.h>

namespace vyn_connector::common::meta {

const ivo::IdSpec IdSpecification{"/\\\"'`%"};

} // namespace vyn_connector::common::meta
