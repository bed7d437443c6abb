# The program that runs during the build. When building for another machine, programs built for it cannot run here: a second
# run of CMake builds it for this one.

if(NOT CMAKE_CROSSCOMPILING)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Gui)
    # Renders drawings, so that no rendered image has to be stored beside its drawing.
    quorvane_program(quorvane-render-image SOURCES resources/RenderImage.cpp LINKS Qt6::Gui)
    return()
endif()

include(ExternalProject)
set(build_tools_folder "${CMAKE_BINARY_DIR}/build-tools")
set(render_image "${build_tools_folder}/bin/quorvane-render-image")
ExternalProject_Add(quorvane_build_tools
    SOURCE_DIR "${PROJECT_SOURCE_DIR}"
    BINARY_DIR "${build_tools_folder}"
    CMAKE_ARGS -DQUORVANE_BUILD_TOOLS_ONLY=ON -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=c++ -DCMAKE_CXX_FLAGS=
        -DCMAKE_EXE_LINKER_FLAGS=
    BUILD_BYPRODUCTS "${render_image}"
    INSTALL_COMMAND "")
add_executable(quorvane-render-image IMPORTED GLOBAL)
set_target_properties(quorvane-render-image PROPERTIES IMPORTED_LOCATION "${render_image}")
add_dependencies(quorvane-render-image quorvane_build_tools)
