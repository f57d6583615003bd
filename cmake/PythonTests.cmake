# Tests in Python's unittest: each method of the files test_SUITE.py in the current folder becomes a test of its own,
# PREFIX.Class.Method. LOCKS names what a test needs for itself; further properties of the tests follow.
function(zavo_python_tests prefix)
    cmake_parse_arguments(TESTS "" "" "SUITES;LOCKS;PROPERTIES" ${ARGN})
    foreach(suite IN LISTS TESTS_SUITES)
        file(STRINGS test_${suite}.py lines REGEX "^class [A-Za-z]+\\(|^    def test_")
        set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/test_${suite}.py)
        foreach(line IN LISTS lines)
            if(line MATCHES "^class ([A-Za-z]+)")
                set(class ${CMAKE_MATCH_1})
            elseif(line MATCHES "def (test_([A-Za-z0-9_]+))")
                set(name ${prefix}.${class}.${CMAKE_MATCH_2})
                add_test(NAME ${name}
                    COMMAND /usr/bin/python3 -B -m unittest -q test_${suite}.${class}.${CMAKE_MATCH_1}
                    WORKING_DIRECTORY ${CMAKE_CURRENT_SOURCE_DIR})
                set_tests_properties(${name} PROPERTIES ${TESTS_PROPERTIES})
                set_property(TEST ${name} PROPERTY RESOURCE_LOCK ${TESTS_LOCKS})
            endif()
        endforeach()
    endforeach()
endfunction()
