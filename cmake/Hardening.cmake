# vyn_connector_common_harden(<target>) makes a mistake in a shipped binary hard to use: tests/check_hardening.py reads
# from the library that it is so. The forms are those that no conversion pays over 3 % for, in instructions with GCC 12:
#
# - The stack protector guards functions with arrays of bytes on the stack. -fstack-protector-strong, which guards
#   whatever has its address taken, costs conversions 8 % in the median and up to 31 %.
# - _FORTIFY_SOURCE=3 costs writers up to 61 %, and level 2 nothing.
# - Shadow stacks are free. Landing pads for indirect calls (the other half of -fcf-protection) cost up to 13 %, and
#   protect nobody: Linux has them for the kernel alone, and Debian 12's start-up code has none.
function(vyn_connector_common_harden target)
    # Sanitizers find more than these guards do, and are to find it first.
    if(VYN_CONNECTOR_COMMON_SANITIZE OR VYN_CONNECTOR_COMMON_BUILD_FUZZERS)
        return()
    endif()
    target_compile_options(${target} PRIVATE -fstack-protector)
    if(CMAKE_SYSTEM_PROCESSOR MATCHES "^(x86_64|amd64)$")
        target_compile_options(${target} PRIVATE -fcf-protection=return)
        # Debian's start-up code does not say that it keeps to shadow stacks, although it does.
        target_link_options(${target} PRIVATE LINKER:-z,shstk)
    elseif(CMAKE_SYSTEM_PROCESSOR MATCHES "^(aarch64|arm64)$")
        target_compile_options(${target} PRIVATE -mbranch-protection=standard)
    endif()
    # The C library's checks need an optimising compiler. Undefined first, as compilers of some systems define it.
    target_compile_options(${target} PRIVATE "$<$<NOT:$<CONFIG:Debug,>>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>")
    target_link_options(
        ${target}
        PRIVATE
        # The addresses that the loader fills in are all filled in at once, and read-only afterwards.
        LINKER:-z,relro
        LINKER:-z,now
        LINKER:-z,noexecstack)
endfunction()
