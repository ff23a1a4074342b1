// The characters that have a meaning of their own in the paths of the connector's identifiers. For the library's users;
// nothing in the library reads it.
#pragma once

#include <common/export.h>
#include <ivo/id_spec.h>

namespace vyn_connector::common::meta {

VYN_EXPORT extern const ivo::IdSpec IdSpecification;

} // namespace vyn_connector::common::meta
