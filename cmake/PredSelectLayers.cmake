# One way to declare a layer (a set of folders compiled once) and a library made of layers.

add_library(predselect_flags INTERFACE)
# The same input gives the same bits on every machine: no fused contraction, no fast-math.
target_compile_options(predselect_flags INTERFACE -ffp-contract=off -fno-semantic-interposition -Wall -Wextra -Wpedantic
  -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual $<$<BOOL:${PREDSELECT_WERROR}>:-Werror>)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  # GCC 12 sees overlapping copies in every `"text" + std::string` (its bug 105651).
  target_compile_options(predselect_flags INTERFACE -Wno-restrict)
endif()
# What a mistake must not become: addresses that can be guessed, tables of functions that can be written
# over, returns into what was written beyond an array's end. A test reads the binaries for it.
include(CheckPIESupported)
check_pie_supported()
if(PREDSELECT_SANITIZE)
  target_compile_definitions(predselect_flags INTERFACE _GLIBCXX_ASSERTIONS)
else()
  target_compile_options(predselect_flags INTERFACE -fstack-protector-strong
    "$<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=3>")
endif()
target_link_options(predselect_flags INTERFACE LINKER:-z,relro LINKER:-z,now)
if(PREDSELECT_SANITIZE)
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Instrumented code makes GCC doubt variables that are set (its bug 105562, in <regex>).
    target_compile_options(predselect_flags INTERFACE -Wno-maybe-uninitialized)
  endif()
  target_compile_options(predselect_flags INTERFACE -fsanitize=${PREDSELECT_SANITIZE}
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(predselect_flags INTERFACE -fsanitize=${PREDSELECT_SANITIZE})
endif()

# predselect_headers(<layer> <folder>...): a folder of the build that shows the headers of these folders
# and of no others, under their paths from the top. It is what makes a layer visible.
function(predselect_headers name)
  set(tree ${PROJECT_BINARY_DIR}/include/${name})
  file(REMOVE_RECURSE ${tree})
  foreach(folder IN LISTS ARGN)
    file(GLOB headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.h
      ${PROJECT_SOURCE_DIR}/${folder}/*.inc)
    file(MAKE_DIRECTORY ${tree}/${folder})
    foreach(header IN LISTS headers)
      get_filename_component(file ${header} NAME)
      file(CREATE_LINK ${header} ${tree}/${folder}/${file} SYMBOLIC)
    endforeach()
  endforeach()
endfunction()

# predselect_layer(<name> <folder>... [USES <layer>...] [LIBRARIES <target>...])
# Compiles the sources of the folders once. They, and whoever uses the layer, see its headers and
# those of the layers that it uses; nothing else of the project is on their include path.
function(predselect_layer name)
  cmake_parse_arguments(ARG "" "" "USES;LIBRARIES" ${ARGN})
  set(folders ${ARG_UNPARSED_ARGUMENTS})
  set(sources)
  foreach(folder IN LISTS folders)
    file(GLOB found CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${folder}/*.cpp)
    list(APPEND sources ${found})
  endforeach()
  predselect_headers(${name} ${folders})
  if(sources)
    add_library(layer_${name} OBJECT ${sources})
    set(scope PUBLIC)
  else()
    add_library(layer_${name} INTERFACE)
    set(scope INTERFACE)
  endif()
  target_link_libraries(layer_${name} ${scope} predselect_flags ${ARG_LIBRARIES})
  target_include_directories(layer_${name} ${scope} ${PROJECT_BINARY_DIR}/include/${name})
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
    target_include_directories(${target} PRIVATE
      $<TARGET_PROPERTY:layer_${layer},INTERFACE_INCLUDE_DIRECTORIES>)
    target_link_libraries(${target} PRIVATE
      $<BUILD_INTERFACE:$<TARGET_PROPERTY:layer_${layer},INTERFACE_LINK_LIBRARIES>>)
  endforeach()
endfunction()

# predselect_exports(<library>): shows what cmake/<library>.exports lists, and hides the rest.
function(predselect_exports name)
  set(exports ${PROJECT_SOURCE_DIR}/cmake/${name}.exports)
  target_link_options(${name} PRIVATE "LINKER:--version-script=${exports}" "LINKER:-z,defs")
  set_target_properties(${name} PROPERTIES LINK_DEPENDS ${exports})
endfunction()

# predselect_library(<name> LAYERS <layer>... [LINKS <library>...]): an installed shared library made
# of layers, over other libraries.
function(predselect_library name)
  cmake_parse_arguments(ARG "" "" "LAYERS;LINKS" ${ARGN})
  add_library(${name} SHARED ${PROJECT_SOURCE_DIR}/cmake/empty.cpp)
  predselect_objects(${name} ${ARG_LAYERS})
  add_library(PredSelect::${name} ALIAS ${name})
  target_link_libraries(${name} PUBLIC ${ARG_LINKS})
  foreach(layer IN LISTS ARG_LAYERS)
    target_include_directories(${name} INTERFACE
      $<BUILD_INTERFACE:$<TARGET_PROPERTY:layer_${layer},INTERFACE_INCLUDE_DIRECTORIES>>)
  endforeach()
  target_include_directories(${name} INTERFACE
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}/predselect>)
  target_compile_features(${name} INTERFACE cxx_std_20)
  set_target_properties(${name} PROPERTIES
    VERSION ${PROJECT_VERSION} SOVERSION ${PROJECT_VERSION_MAJOR}
    INSTALL_RPATH "$ORIGIN;$ORIGIN/predselect")
  install(TARGETS ${name} EXPORT PredSelectTargets
    LIBRARY COMPONENT runtime NAMELINK_COMPONENT development)
endfunction()
