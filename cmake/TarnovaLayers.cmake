# Who may include whom. Each folder below src/ is one library whose headers are reached through an include
# folder of its own, which holds nothing but a link to that folder. A target sees the include folders of the
# layers it names and no others, so an include across a border that isn't open doesn't compile.

set(TARNOVA_INCLUDE_ROOT "${CMAKE_BINARY_DIR}/include")

# tarnova_layer(toolkit engine/toolkit SEES ... LINKS ...)
#   SEES   layers whose headers this one may include, and which it is linked with
#   LINKS  outside libraries
function(tarnova_layer name folder)
    cmake_parse_arguments(ARG "" "" "SEES;LINKS" ${ARGN})
    set(include_folder "${TARNOVA_INCLUDE_ROOT}/${name}")
    get_filename_component(parent "${include_folder}/${folder}" DIRECTORY)
    file(MAKE_DIRECTORY "${parent}")
    file(CREATE_LINK "${CMAKE_SOURCE_DIR}/src/${folder}" "${include_folder}/${folder}" SYMBOLIC)

    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_SOURCE_DIR}/src/${folder}/*.cpp")
    if(NOT sources)
        file(WRITE "${CMAKE_BINARY_DIR}/empty/${name}.cpp" "")
        set(sources "${CMAKE_BINARY_DIR}/empty/${name}.cpp")
    endif()
    add_library(tarnova_${name} STATIC ${sources})
    target_include_directories(tarnova_${name} PUBLIC "${include_folder}")
    target_link_libraries(tarnova_${name} PRIVATE tarnova_compiler PUBLIC ${ARG_LINKS})
    # The engine's folders call each other in rings longer than the two rounds that the linker gets by itself.
    set_property(TARGET tarnova_${name} PROPERTY LINK_INTERFACE_MULTIPLICITY 4)
    foreach(layer IN LISTS ARG_SEES)
        target_include_directories(tarnova_${name} PRIVATE "${TARNOVA_INCLUDE_ROOT}/${layer}")
        target_link_libraries(tarnova_${name} INTERFACE tarnova_${layer})
    endforeach()
endfunction()

# A program or test that wires layers together.
function(tarnova_program name)
    cmake_parse_arguments(ARG "" "" "SOURCES;LAYERS;LINKS" ${ARGN})
    add_executable(${name} ${ARG_SOURCES})
    list(TRANSFORM ARG_LAYERS PREPEND tarnova_)
    target_link_libraries(${name} PRIVATE tarnova_compiler ${ARG_LAYERS} ${ARG_LINKS})
    # A run makes and frees many small blocks for each record. Sanitizers bring an allocator of their own.
    if(NOT TARNOVA_SANITIZE AND NOT TARNOVA_FUZZ)
        target_link_libraries(${name} PRIVATE mimalloc)
    endif()
endfunction()
