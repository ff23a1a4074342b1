// The version of these headers: for the preprocessor, and as text for people. Programs that were built with one version
// run with every later one of the same major number. The numbers stand here and nowhere else; the build takes them from
// here.
#pragma once

#include <string_view>

#define VYN_CONNECTOR_COMMON_VERSION_MAJOR 0
#define VYN_CONNECTOR_COMMON_VERSION_MINOR 1
#define VYN_CONNECTOR_COMMON_VERSION_PATCH 0

// "0.1.0"
#define VYN_CONNECTOR_COMMON_VERSION                                                                                   \
    VYN_CONNECTOR_COMMON_VERSION_TEXT(VYN_CONNECTOR_COMMON_VERSION_MAJOR, VYN_CONNECTOR_COMMON_VERSION_MINOR,          \
                                      VYN_CONNECTOR_COMMON_VERSION_PATCH)
#define VYN_CONNECTOR_COMMON_VERSION_TEXT(MAJOR, MINOR, PATCH) VYN_CONNECTOR_COMMON_VERSION_JOINED(MAJOR, MINOR, PATCH)
#define VYN_CONNECTOR_COMMON_VERSION_JOINED(MAJOR, MINOR, PATCH) #MAJOR "." #MINOR "." #PATCH

namespace vyn_connector::common {

constexpr std::string_view Version() noexcept
{
    return VYN_CONNECTOR_COMMON_VERSION;
}

} // namespace vyn_connector::common
