# quorvane_python_tests(FOLDER PROGRAM target MODULES name...)
# A test FOLDER.name for each test_name.py beside the caller. The system's own Python has the bindings that the
# tests need; another one found first on the path may not.
function(quorvane_python_tests folder)
    cmake_parse_arguments(TEST "" "PROGRAM" "MODULES" ${ARGN})
    foreach(module ${TEST_MODULES})
        add_test(NAME ${folder}.${module} COMMAND /usr/bin/python3 -B
            "${PROJECT_SOURCE_DIR}/tests/support/run_module.py"
            "${CMAKE_CURRENT_SOURCE_DIR}/test_${module}.py" $<TARGET_FILE:${TEST_PROGRAM}>)
        set_tests_properties(${folder}.${module} PROPERTIES
            TIMEOUT 300
            WORKING_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}"
            ENVIRONMENT "QUORVANE_PICTURES=${CMAKE_BINARY_DIR}/pictures")
    endforeach()
endfunction()
