# GoogleTest, built from the sources of Debian's package "googletest" (or from ZAVO_GOOGLETEST_DIR elsewhere).
set(ZAVO_GOOGLETEST_DIR /usr/src/googletest CACHE PATH "GoogleTest's source folder")
if(NOT EXISTS ${ZAVO_GOOGLETEST_DIR}/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest's sources are missing: install the package googletest, set ZAVO_GOOGLETEST_DIR, "
        "or configure with -DZAVO_TESTS=OFF.")
endif()
set(gtest_force_shared_crt ON CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
add_subdirectory(${ZAVO_GOOGLETEST_DIR} googletest EXCLUDE_FROM_ALL)
target_compile_options(gtest PRIVATE $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict>)  # GCC 12 finds overlaps that are none
include(GoogleTest)
