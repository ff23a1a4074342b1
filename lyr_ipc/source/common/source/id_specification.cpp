#include <common/id_specification.h>

#include <ivo/constants.h>

namespace vyn_connector::common::meta {

const ivo::IdSpec IdSpecification{"/\\\"'`%"};

} // namespace vyn_connector::common::meta
