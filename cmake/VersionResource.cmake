# Version information for the libraries that we ship.
string(REPLACE "." "," ZAVO_VERSION_NUMBERS ${PROJECT_VERSION},0)

function(zavo_add_version target description)
    set(resource ${CMAKE_CURRENT_BINARY_DIR}/${target}.rc)
    configure_file(${PROJECT_SOURCE_DIR}/src/resources/version.rc.in ${resource} @ONLY)
    target_sources(${target} PRIVATE ${resource})
endfunction()
