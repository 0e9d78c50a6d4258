# One way to declare a layer (a set of folders compiled once) and a library made of layers.

add_library(predselect_flags INTERFACE)
target_include_directories(predselect_flags INTERFACE ${PROJECT_SOURCE_DIR})
# The same input gives the same bits on every machine: no fused contraction, no fast-math.
target_compile_options(predselect_flags INTERFACE -ffp-contract=off -Wall -Wextra -Wpedantic
  -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual $<$<BOOL:${PREDSELECT_WERROR}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlapping copies in every `"text" + std::string` (its bug 105651).
  target_compile_options(predselect_flags INTERFACE -Wno-restrict)
endif()
if(PREDSELECT_SANITIZE)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented code makes GCC doubt variables that are set (its bug 105562, in <regex>).
    target_compile_options(predselect_flags INTERFACE -Wno-maybe-uninitialized)
  endif()
  target_compile_options(predselect_flags INTERFACE -fsanitize=${PREDSELECT_SANITIZE}
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(predselect_flags INTERFACE -fsanitize=${PREDSELECT_SANITIZE})
endif()

# predselect_layer(<name> <folder>... [USES <layer>...] [LIBRARIES <target>...])
# Compiles every source of the folders into layer_<name>.
function(predselect_layer name)
  cmake_parse_arguments(ARG "" "" "USES;LIBRARIES" ${ARGN})
  set(sources)
  foreach(folder IN LISTS ARG_UNPARSED_ARGUMENTS)
    file(GLOB found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
    list(APPEND sources ${found})
  endforeach()
  if(sources)
    add_library(layer_${name} OBJECT ${sources})
    set(scope PUBLIC)
  else()
    add_library(layer_${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_link_libraries(layer_${name} ${scope} predselect_flags ${ARG_LIBRARIES})
  foreach(layer IN LISTS ARG_USES)
    # Only the usage requirements: objects are placed by the libraries below.
    target_include_directories(layer_${name} ${scope}
      $<TARGET_PROPERTY:layer_${layer},INTERFACE_INCLUDE_DIRECTORIES>)
  endforeach()
endfunction()

# predselect_objects(<target> <layer>...): puts the layers' objects and libraries into a target.
function(predselect_objects target)
  target_link_libraries(${target} PRIVATE $<BUILD_INTERFACE:predselect_flags>)
  foreach(layer IN LISTS ARGN)
    get_target_property(type layer_${layer} TYPE)
    if(type STREQUAL "OBJECT_LIBRARY")
      target_sources(${target} PRIVATE $<TARGET_OBJECTS:layer_${layer}>)
    endif()
    target_link_libraries(${target} PRIVATE
      $<BUILD_INTERFACE:$<TARGET_PROPERTY:layer_${layer},INTERFACE_LINK_LIBRARIES>>)
  endforeach()
endfunction()

# predselect_library(<name> SHARED|STATIC <layer>...): an installed library made of layers.
function(predselect_library name kind)
  add_library(${name} ${kind} ${PROJECT_SOURCE_DIR}/cmake/empty.cpp)
  predselect_objects(${name} ${ARGN})
  add_library(PredSelect::${name} ALIAS ${name})
  target_include_directories(${name} INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/predselect>)
  target_compile_features(${name} INTERFACE cxx_std_20)
  if(kind STREQUAL "SHARED")
    set_target_properties(${name} PROPERTIES
      VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR} INSTALL_RPATH "$ORIGIN")
  endif()
  install(TARGETS ${name} EXPORT PredSelectTargets)
endfunction()
