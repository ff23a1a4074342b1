# vyn_connector_common_hide_paths(<target>) lets what a binary or its debugging information records of a path begin in
# the tree, so that the same sources give the same bytes wherever they are built (tests/abi/reproducible.sh).
function(vyn_connector_common_hide_paths target)
    target_compile_options(${target} PRIVATE -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
                                             -ffile-prefix-map=${PROJECT_BINARY_DIR}=.)
    # Relative to the program: the path to the library would be part of the build ID.
    set_target_properties(${target} PROPERTIES BUILD_RPATH_USE_ORIGIN ON)
endfunction()
