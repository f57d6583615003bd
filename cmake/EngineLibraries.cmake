# The engine's third-party libraries as one target, zavo_engine_libraries.
set(ZAVO_ENGINE_LIBRARIES "" CACHE PATH "The folder that scripts/engine-libraries prints")

if(WIN32)
    set(libraries ${ZAVO_ENGINE_LIBRARIES}/windows)
else()
    set(libraries ${ZAVO_ENGINE_LIBRARIES}/native)
endif()
if(NOT EXISTS ${libraries}/lib/libqpdf.a)
    message(FATAL_ERROR "The engine's libraries are missing: build with scripts/build, or configure with "
        "-DZAVO_ENGINE_LIBRARIES=FOLDER, the folder that scripts/engine-libraries prints.")
endif()
find_library(ZAVO_ZLIB libz.a REQUIRED)

# As a system's folder, because these headers do not compile without warnings under our flags.
add_library(zavo_engine_libraries INTERFACE)
target_include_directories(zavo_engine_libraries SYSTEM INTERFACE ${libraries}/include)
target_link_libraries(zavo_engine_libraries INTERFACE
    ${libraries}/lib/libqpdf.a ${libraries}/lib/libjpeg.a ${libraries}/lib/libdeflate.a ${ZAVO_ZLIB}
    $<$<PLATFORM_ID:Windows>:advapi32>)
