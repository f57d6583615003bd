# How our own code is compiled and linked. zavo_flags carries both; every target of ours links it.

add_library(zavo_flags INTERFACE)
target_include_directories(zavo_flags INTERFACE ${PROJECT_SOURCE_DIR})
# No -Wnon-virtual-dtor: COM interfaces have no virtual destructor; the classes that implement them are final.
# No -Wrestrict: GCC 12 reports sums of texts, "a" + text, without reason.
target_compile_options(zavo_flags INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror>
    $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>
    $<$<COMPILE_LANGUAGE:CXX>:-fstack-protector-strong -ffunction-sections -fdata-sections>
    # The source path stays out of the binaries: two checkouts give the same bytes.
    $<$<COMPILE_LANGUAGE:CXX>:-ffile-prefix-map=${PROJECT_SOURCE_DIR}=.>)
target_compile_definitions(zavo_flags INTERFACE $<$<CONFIG:Release>:_FORTIFY_SOURCE=2>)
# Debug information goes; zavo_keep_debug_information moves that of its target to a file of its own.
target_link_options(zavo_flags INTERFACE -fstack-protector-strong -Wl,--gc-sections
    $<$<AND:$<CONFIG:Release>,$<NOT:$<BOOL:$<TARGET_PROPERTY:ZAVO_DEBUG_INFORMATION>>>>:-s>)

if(WIN32)
    target_compile_definitions(zavo_flags INTERFACE
        UNICODE _UNICODE STRICT NOMINMAX
        WINVER=0x0A00 _WIN32_WINNT=0x0A00)
    # Everything is linked statically: what we ship imports Windows' own DLLs and the engine, nothing of the
    # compiler's. No automatic imports: for those the start-up code writes to places that the linker noted, instead of
    # the loader. No time stamp: the linker takes it from the clock.
    target_link_options(zavo_flags INTERFACE
        -static -Wl,--dynamicbase,--high-entropy-va,--nxcompat,--disable-auto-import,--no-insert-timestamp)
else()
    find_package(Threads REQUIRED)
    target_link_libraries(zavo_flags INTERFACE Threads::Threads)
endif()

# Has a program or library use our own form of the stack protector, which asks the system for less than the compiler's.
function(zavo_own_stack_protector target)
    set(source ${PROJECT_SOURCE_DIR}/runtime/StackProtector.cpp)
    target_sources(${target} PRIVATE ${source})
    set_source_files_properties(${source} PROPERTIES COMPILE_OPTIONS -fno-stack-protector)
    target_link_libraries(${target} PRIVATE advapi32)
endfunction()

# A library that we ship: at a base of its own, which the linker would derive from the name of its folder.
function(zavo_shipped_library target base)
    target_link_options(${target} PRIVATE -Wl,--image-base=${base})
    zavo_own_stack_protector(${target})
endfunction()

# Has a static library compiled with debug information in a release build, too.
function(zavo_add_debug_information target)
    target_compile_options(${target} PRIVATE $<$<AND:$<CONFIG:Release>,$<COMPILE_LANGUAGE:CXX>>:-g>)
endfunction()

# The same for a library that we ship. What the linker made of the debug information ends in a file beside the library,
# whose name and checksum are in the library: debuggers find it.
function(zavo_keep_debug_information target)
    zavo_add_debug_information(${target})
    if(CMAKE_BUILD_TYPE STREQUAL "Release")
        set_property(TARGET ${target} PROPERTY ZAVO_DEBUG_INFORMATION ON)
        set(library $<TARGET_FILE:${target}>)
        add_custom_command(TARGET ${target} POST_BUILD VERBATIM
            BYPRODUCTS ${ZAVO_BIN}/${target}.dll.debug
            COMMAND ${CMAKE_OBJCOPY} -p --only-keep-debug ${library} ${library}.debug
            # -p keeps the time in the headers, which is none; without it there would be that of the build.
            COMMAND ${CMAKE_OBJCOPY} -p --strip-all --add-gnu-debuglink=${library}.debug ${library})
    endif()
endfunction()
