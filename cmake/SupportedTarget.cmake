# Stops the configuration for a target that the library does not run on, and says why.

set(only "vyn_connector_common runs on 64-bit Linux, little-endian, built with GCC 12 or Clang 14 and later")

if(NOT CMAKE_SYSTEM_NAME STREQUAL "Linux")
    message(FATAL_ERROR "${only}; the target system is ${CMAKE_SYSTEM_NAME}.")
endif()
if(NOT CMAKE_SIZEOF_VOID_P EQUAL 8)
    message(FATAL_ERROR "${only}; the target's pointers have ${CMAKE_SIZEOF_VOID_P} bytes.")
endif()
# The integers of a message are copied as they lie in memory.
if(NOT CMAKE_CXX_BYTE_ORDER STREQUAL "LITTLE_ENDIAN")
    message(FATAL_ERROR "${only}; the target's byte order is ${CMAKE_CXX_BYTE_ORDER}.")
endif()
if(NOT (CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 12)
   AND NOT (CMAKE_CXX_COMPILER_ID STREQUAL "Clang" AND CMAKE_CXX_COMPILER_VERSION VERSION_GREATER_EQUAL 14))
    message(FATAL_ERROR "${only}; the compiler is ${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION}.")
endif()

unset(only)
