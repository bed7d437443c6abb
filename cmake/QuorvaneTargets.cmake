# The settings of all our targets: language level, warnings, sanitizers, and includes from the root.

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${CMAKE_BINARY_DIR}/bin")

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)

# All except the sanitizers.
add_library(quorvane_plain_options INTERFACE)
target_compile_options(quorvane_plain_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wnon-virtual-dtor -Woverloaded-virtual
    -Wformat=2 -Wimplicit-fallthrough)
if(CMAKE_UNITY_BUILD) # in which a file-local name is visible in all following files, and counts as of a header
    target_compile_options(quorvane_plain_options INTERFACE
        -Wno-shadow $<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
endif()
if(QUORVANE_WARNINGS_AS_ERRORS)
    target_compile_options(quorvane_plain_options INTERFACE -Werror)
endif()
# GCC 12 falsely reports overlaps in the standard library's own string appends, and unlike Clang wants every member
# where some are initialized by name.
target_compile_options(quorvane_plain_options INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-restrict -Wno-missing-field-initializers>)
target_include_directories(quorvane_plain_options INTERFACE "${PROJECT_SOURCE_DIR}")

add_library(quorvane_options INTERFACE)
target_link_libraries(quorvane_options INTERFACE quorvane_plain_options)
if(QUORVANE_SANITIZERS)
    set(sanitizer_flags "-fsanitize=${QUORVANE_SANITIZERS}" -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(quorvane_options INTERFACE ${sanitizer_flags})
    target_link_options(quorvane_options INTERFACE ${sanitizer_flags})
    target_compile_definitions(quorvane_options INTERFACE _GLIBCXX_ASSERTIONS)
endif()

# quorvane_library(NAME SOURCES file... LINKS target...)
# A static library quorvane_NAME of one folder. Its links are public: they are the dependencies between the folders.
function(quorvane_library name)
    cmake_parse_arguments(LIB "" "" "SOURCES;LINKS" ${ARGN})
    add_library(quorvane_${name} STATIC ${LIB_SOURCES})
    target_link_libraries(quorvane_${name} PUBLIC ${LIB_LINKS} PRIVATE quorvane_options)
endfunction()

# quorvane_program(NAME SOURCES file... LINKS target...)
function(quorvane_program name)
    cmake_parse_arguments(PROGRAM "" "" "SOURCES;LINKS" ${ARGN})
    add_executable(${name} ${PROGRAM_SOURCES})
    target_link_libraries(${name} PRIVATE ${PROGRAM_LINKS} quorvane_options)
endfunction()
