# Checks that configuring for a target that the library does not run on fails, and says why:
#
#     cmake -D SOURCE_DIR=<this tree> -D BINARY_DIR=<scratch folder> -P unsupported_targets.cmake
cmake_minimum_required(VERSION 3.25)

set(only "vyn_connector_common runs on 64-bit Linux, little-endian, built with GCC 12 or Clang 14 and later")

# What the check says, on one line, of a target that is supported but for the changes in ARGN; empty when it passes.
function(judge result)
    execute_process(
        COMMAND
            ${CMAKE_COMMAND} -D CMAKE_SYSTEM_NAME=Linux -D CMAKE_SIZEOF_VOID_P=8 -D
            CMAKE_CXX_BYTE_ORDER=LITTLE_ENDIAN -D CMAKE_CXX_COMPILER_ID=GNU -D CMAKE_CXX_COMPILER_VERSION=12.0.0
            ${ARGN} -P ${SOURCE_DIR}/cmake/SupportedTarget.cmake
        RESULT_VARIABLE failed
        ERROR_VARIABLE said)
    string(REGEX REPLACE "[ \n]+" " " said "${said}")
    if(said STREQUAL "" AND NOT failed EQUAL 0)
        set(said "failed without a word")
    endif()
    set(${result} "${said}" PARENT_SCOPE)
endfunction()

function(expect_supported)
    judge(said ${ARGN})
    if(NOT said STREQUAL "")
        message(SEND_ERROR "refused although it is supported: ${ARGN}: ${said}")
    endif()
endfunction()

function(expect_refused reason)
    judge(said ${ARGN})
    string(FIND "${said}" "${only}; ${reason}." found)
    if(found EQUAL -1)
        message(SEND_ERROR "expected \"${reason}\" for ${ARGN}: ${said}")
    endif()
endfunction()

expect_supported()
expect_supported(-D CMAKE_CXX_COMPILER_VERSION=15.2.0)
expect_supported(-D CMAKE_CXX_COMPILER_ID=Clang -D CMAKE_CXX_COMPILER_VERSION=14.0.0)
expect_supported(-D CMAKE_CXX_COMPILER_ID=Clang -D CMAKE_CXX_COMPILER_VERSION=21.1.0)

expect_refused("the target system is Windows" -D CMAKE_SYSTEM_NAME=Windows)
expect_refused("the target's pointers have 4 bytes" -D CMAKE_SIZEOF_VOID_P=4)
expect_refused("the target's byte order is BIG_ENDIAN" -D CMAKE_CXX_BYTE_ORDER=BIG_ENDIAN)
expect_refused("the compiler is GNU 11.4.0" -D CMAKE_CXX_COMPILER_VERSION=11.4.0)
expect_refused("the compiler is Clang 13.0.1" -D CMAKE_CXX_COMPILER_ID=Clang -D CMAKE_CXX_COMPILER_VERSION=13.0.1)
expect_refused("the compiler is MSVC 19.44.0" -D CMAKE_CXX_COMPILER_ID=MSVC -D CMAKE_CXX_COMPILER_VERSION=19.44.0)

# The project itself asks: configuring it for another system ends with the same words.
file(REMOVE_RECURSE ${BINARY_DIR})
file(WRITE ${BINARY_DIR}/toolchain.cmake "set(CMAKE_SYSTEM_NAME FreeBSD)\nset(CMAKE_CXX_COMPILER_WORKS ON)\n")
execute_process(
    COMMAND ${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${BINARY_DIR}/build --toolchain ${BINARY_DIR}/toolchain.cmake
    RESULT_VARIABLE failed
    OUTPUT_QUIET
    ERROR_VARIABLE said)
string(REGEX REPLACE "[ \n]+" " " said "${said}")
string(FIND "${said}" "${only}; the target system is FreeBSD." found)
if(failed EQUAL 0 OR found EQUAL -1)
    message(SEND_ERROR "the project was configured for FreeBSD: ${said}")
endif()
