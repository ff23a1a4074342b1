// Everything a caller needs: the records with their conversions, the arena, the generic codecs, and the runtime's
// exceptions.
//
// CastToZt writes a record. It throws std::length_error where a string, a blob or a list is over its limit, and
// mur::ResultCodeException (out of space) where the arena is full; what was placed by then stays in the arena, and the
// message is to be discarded. CastFromZt returns a record that owns all its data. It throws std::out_of_range where a
// pointer leads outside the arena or its size is not a whole number of elements; it applies no limit. A null arena
// raises mur::InvalidArgumentException, which is a mur::ResultCodeException with the code 0 and is caught first. Update
// identifiers have errors of their own, and an event's conversion throws nothing but clears a status: their headers say
// which. Reading allocates memory and may throw std::bad_alloc.
#pragma once

#include <common/app_info.h>
#include <common/arena_size.h>
#include <common/client_certs.h>
#include <common/connection_settings.h>
#include <common/connector_parameters.h>
#include <common/connector_state.h>
#include <common/event.h>
#include <common/file_transfer.h>
#include <common/id_specification.h>
#include <common/license_info.h>
#include <common/message.h>
#include <common/product_status.h>
#include <common/server_connection.h>
#include <common/subscriptions.h>
#include <common/timestamp.h>
#include <common/update_identifiers.h>
#include <common/version.h>
#include <common/zt_arena.h>
#include <common/zt_blob.h>
#include <common/zt_optional.h>
#include <common/zt_range.h>
#include <common/zt_set.h>
#include <common/zt_string.h>
#include <common/zt_vector.h>
#include <ivo/constants.h>
#include <mur/exception.h>
#include <mur/result_code.h>
#include <mur/stream.h>
#include <wem/types/timestamp.h>
