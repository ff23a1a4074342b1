# vyn_connector_common_build_options(<target>) gives a target of this tree the project's warnings and whatever
# instrumentation the build was configured with. Nothing of it reaches those who link the library.
function(vyn_connector_common_build_options target)
    target_compile_options(${target} PRIVATE -Wall -Wextra -Wpedantic -Wconversion -Wshadow)
    if(VYN_CONNECTOR_COMMON_WERROR)
        target_compile_options(${target} PRIVATE -Werror)
    endif()
    if(VYN_CONNECTOR_COMMON_SANITIZE)
        set(sanitize -fsanitize=${VYN_CONNECTOR_COMMON_SANITIZE} -fno-sanitize-recover=all)
        target_compile_options(${target} PRIVATE ${sanitize} -fno-omit-frame-pointer)
        target_link_options(${target} PRIVATE ${sanitize})
        # The standard library checks its own preconditions as well: operator[] and the like.
        target_compile_definitions(${target} PRIVATE _GLIBCXX_ASSERTIONS)
    endif()
    if(VYN_CONNECTOR_COMMON_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage)
        target_link_options(${target} PRIVATE --coverage)
    endif()
endfunction()
