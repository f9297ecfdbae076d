# Settings that every target of the project shares, and the two functions that make targets.

add_library(camera_options INTERFACE)
target_include_directories(camera_options INTERFACE "${PROJECT_SOURCE_DIR}")
if(MSVC)
  target_compile_options(camera_options INTERFACE /W4 /utf-8 $<$<BOOL:${CAMERA_WARNINGS_AS_ERRORS}>:/WX>)
else()
  target_compile_options(camera_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wold-style-cast
    $<$<BOOL:${CAMERA_WARNINGS_AS_ERRORS}>:-Werror>)
  if(CAMERA_FAST_BUILD)
    # Where several sources are one, a local name may hide one of another source, and GCC takes them for headers, whose
    # classes must not use local types. Where much is optimised as one, GCC 12 reports overruns of vectors that do not
    # happen. Builds without this option keep the warnings.
    target_compile_options(camera_options INTERFACE
      $<$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>:-Wno-shadow>
      $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overflow;-Wno-stringop-overread;-Wno-restrict;-Wno-subobject-linkage>)
  endif()
endif()

if(WIN32) # the system's headers define macros named min and max
  target_compile_definitions(camera_options INTERFACE NOMINMAX)
endif()

if(CAMERA_SANITIZE)
  add_compile_options(-fsanitize=${CAMERA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${CAMERA_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang") # GCC defines these itself
    foreach(sanitizer IN ITEMS address thread)
      if(CAMERA_SANITIZE MATCHES "${sanitizer}")
        string(TOUPPER "${sanitizer}" upper)
        add_compile_definitions(__SANITIZE_${upper}__=1)
      endif()
    endforeach()
  endif()
endif()
if(CAMERA_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# Where nothing is kept between builds, the compiler reads what many sources include once; clang also what it
# instantiates. What shares it has the same options.
set(camera_precompiled OFF)
if(CAMERA_FAST_BUILD AND CMAKE_CXX_COMPILER_ID MATCHES "Clang|GNU")
  set(camera_precompiled ON)
endif()

# camera_headers(name HEADERS headers... LINK targets...): compiled once, for target_precompile_headers(REUSE_FROM).
function(camera_headers name)
  cmake_parse_arguments(arg "" "" "HEADERS;LINK" ${ARGN})
  set(source "${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp")
  file(CONFIGURE OUTPUT "${source}" CONTENT "")
  add_library(${name} OBJECT "${source}")
  target_link_libraries(${name} PRIVATE camera_options ${arg_LINK})
  target_precompile_headers(${name} PRIVATE ${arg_HEADERS})
endfunction()

# camera_links(variable wanted links...): whether one of these targets is the wanted one or links it.
function(camera_links variable wanted)
  set(${variable} FALSE PARENT_SCOPE)
  foreach(link IN LISTS ARGN)
    if(link STREQUAL wanted)
      set(${variable} TRUE PARENT_SCOPE)
      return()
    endif()
    if(TARGET "${link}")
      get_target_property(further "${link}" INTERFACE_LINK_LIBRARIES)
      camera_links(found ${wanted} ${further})
      if(found)
        set(${variable} TRUE PARENT_SCOPE)
        return()
      endif()
    endif()
  endforeach()
endfunction()

# camera_fast_build(name headers links...): what CAMERA_FAST_BUILD means for a library or program. HEADERS: a target of
# camera_headers; "" stands for those of windows, command lines or Qt's core, whichever is linked.
function(camera_fast_build name headers)
  if(NOT CAMERA_FAST_BUILD)
    return()
  endif()
  set_target_properties(${name} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 6)
  if(NOT camera_precompiled)
    return()
  endif()
  if(headers)
    target_precompile_headers(${name} REUSE_FROM ${headers})
    return()
  endif()
  camera_links(core Qt6::Core ${ARGN})
  if("Qt6::Widgets" IN_LIST ARGN)
    set(headers window_headers)
    set(kind <QtWidgets> LINK Qt6::Widgets)
  elseif(core AND "CLI11::CLI11" IN_LIST ARGN)
    set(headers command_headers)
    set(kind <CLI/CLI.hpp> <QCoreApplication> <QDir> <QFile> <QString> LINK CLI11::CLI11 Qt6::Core)
  elseif(core)
    set(headers core_headers)
    set(kind <QCoreApplication> <QDir> <QFile> <QString> LINK Qt6::Core)
  else()
    return()
  endif()
  if(NOT TARGET ${headers})
    camera_headers(${headers}
      HEADERS <algorithm> <array> <chrono> <condition_variable> <deque> <fstream> <functional> <map> <memory> <mutex>
              <optional> <set> <span> <sstream> <string> <thread> <vector> ${kind})
  endif()
  target_precompile_headers(${name} REUSE_FROM ${headers})
endfunction()

# camera_library(name SOURCES... [LINK targets...]): a static library of one folder.
function(camera_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE camera_options)
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  camera_fast_build(${name} "" ${arg_LINK})
endfunction()

# camera_program(name SOURCES... [LINK targets...] [HEADERS target]): see camera_fast_build.
function(camera_program name)
  cmake_parse_arguments(arg "" "HEADERS" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINK} camera_options)
  if(TARGET camera_late_library)
    # A run path of the old kind: what Qt and the sanitizers load for the program is sought there too.
    target_link_options(${name} PRIVATE LINKER:--disable-new-dtags)
    set(product "${PROJECT_BINARY_DIR}")
    if(CAMERA_PRODUCT)
      set(product "${CAMERA_PRODUCT}")
    endif()
    file(RELATIVE_PATH folder "${CMAKE_CURRENT_BINARY_DIR}" "${product}/late")
    set_target_properties(${name} PROPERTIES BUILD_RPATH "\$ORIGIN/${folder}")
  endif()
  camera_fast_build(${name} "${arg_HEADERS}" ${arg_LINK})
endfunction()

# targets_below(variable folder): the libraries and programs of a folder and of those in it.
function(targets_below variable folder)
  get_property(found DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
  set(targets "")
  foreach(target IN LISTS found)
    get_target_property(type ${target} TYPE)
    if(NOT type STREQUAL "UTILITY" AND NOT target MATCHES "^(window|command|core)_headers$")
      list(APPEND targets ${target})
    endif()
  endforeach()
  get_property(subfolders DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
  foreach(subfolder IN LISTS subfolders)
    targets_below(more "${subfolder}")
    list(APPEND targets ${more})
  endforeach()
  set(${variable} ${targets} PARENT_SCOPE)
endfunction()

# camera_export_product(folders...): describes their targets for a build that tests them, see CAMERA_PRODUCT. That has
# options of its own.
function(camera_export_product)
  set_target_properties(camera_options PROPERTIES EXPORT_NAME camera_product_options)
  set(all camera_options)
  foreach(folder IN LISTS ARGN)
    targets_below(targets "${PROJECT_SOURCE_DIR}/${folder}")
    list(APPEND all ${targets})
  endforeach()
  export(TARGETS ${all} FILE "${PROJECT_BINARY_DIR}/camera-product.cmake")
endfunction()

# camera_import_product(build): the targets that this build folder exports, under the same names. Warnings in their
# headers count as if they were built here.
function(camera_import_product build)
  get_property(before DIRECTORY PROPERTY IMPORTED_TARGETS)
  include("${build}/camera-product.cmake")
  get_property(targets DIRECTORY PROPERTY IMPORTED_TARGETS)
  list(REMOVE_ITEM targets ${before})
  set_target_properties(${targets} PROPERTIES IMPORTED_NO_SYSTEM ON)
endfunction()
