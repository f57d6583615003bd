# Has a library load functions of one of Windows' libraries when it first calls one of them, not when it is loaded.
# The import library for that is made from the names; whatever else links the same static libraries is not concerned.
function(zavo_delay_imports target library)
    set(base ${CMAKE_CURRENT_BINARY_DIR}/delayed_${library})
    list(JOIN ARGN "\n    " names)
    file(CONFIGURE OUTPUT ${base}.def CONTENT "LIBRARY ${library}.dll\nEXPORTS\n    ${names}\n")
    add_custom_command(OUTPUT ${base}.a
        # Without folders, which would end in the symbols and so in the checksum of the debug information.
        COMMAND ${CMAKE_DLLTOOL} -m i386:x86-64 -d ${base}.def -y delayed_${library}.a
        WORKING_DIRECTORY ${CMAKE_CURRENT_BINARY_DIR} DEPENDS ${base}.def VERBATIM)
    add_custom_target(delayed_${library} DEPENDS ${base}.a)
    add_dependencies(${target} delayed_${library})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${base}.a)
    # Whole, so that its names are there before those of the ordinary import library.
    target_link_options(${target} PRIVATE LINKER:--whole-archive,${base}.a,--no-whole-archive)
    target_link_libraries(${target} PRIVATE delayimp)
endfunction()
