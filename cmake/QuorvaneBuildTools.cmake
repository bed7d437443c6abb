# The programs that run while building. For another machine nothing runs that was built for it: a second run of CMake
# builds these for this one.

if(NOT CMAKE_CROSSCOMPILING)
    find_package(Qt6 6.4 REQUIRED COMPONENTS Gui)
    # Drawings are rendered here, so that no image has to be kept beside its drawing.
    quorvane_program(quorvane-render-image SOURCES resources/RenderImage.cpp LINKS Qt6::Gui)
    # The user guide: Markdown to PDF with what Qt has anyway.
    quorvane_program(quorvane-make-guide SOURCES docs/guide/GuideStyle.cpp docs/guide/MakeGuide.cpp LINKS Qt6::Gui)
    return()
endif()

include(ExternalProject)
set(build_tools quorvane-render-image quorvane-make-guide)
set(build_tools_folder "${CMAKE_BINARY_DIR}/build-tools")
list(TRANSFORM build_tools PREPEND "${build_tools_folder}/bin/" OUTPUT_VARIABLE build_tool_files)
ExternalProject_Add(quorvane_build_tools
    SOURCE_DIR "${PROJECT_SOURCE_DIR}"
    BINARY_DIR "${build_tools_folder}"
    CMAKE_ARGS -DQUORVANE_BUILD_TOOLS_ONLY=ON -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=c++ -DCMAKE_CXX_FLAGS=
        -DCMAKE_EXE_LINKER_FLAGS=
    BUILD_BYPRODUCTS ${build_tool_files}
    INSTALL_COMMAND "")
foreach(tool file IN ZIP_LISTS build_tools build_tool_files)
    add_executable(${tool} IMPORTED GLOBAL)
    set_target_properties(${tool} PROPERTIES IMPORTED_LOCATION "${file}")
    add_dependencies(${tool} quorvane_build_tools)
endforeach()
