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
    # Where several sources are one, a local name may hide one of another source. Where much is optimised as one, GCC 12
    # reports overruns of vectors that do not happen. Builds without this option keep the warnings.
    target_compile_options(camera_options INTERFACE
      $<$<BOOL:$<TARGET_PROPERTY:UNITY_BUILD>>:-Wno-shadow>
      -Wno-array-bounds -Wno-stringop-overflow -Wno-stringop-overread -Wno-restrict)
  endif()
endif()

if(WIN32) # the system's headers define macros named min and max
  target_compile_definitions(camera_options INTERFACE NOMINMAX)
endif()

if(CAMERA_SANITIZE)
  add_compile_options(-fsanitize=${CAMERA_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${CAMERA_SANITIZE})
endif()
if(CAMERA_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()

# camera_library(name SOURCES... [LINK targets...]): a static library of one folder.
function(camera_library name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  target_link_libraries(${name} PUBLIC ${arg_LINK} PRIVATE camera_options)
  target_include_directories(${name} PUBLIC "${PROJECT_SOURCE_DIR}")
  set_target_properties(${name} PROPERTIES UNITY_BUILD ${CAMERA_FAST_BUILD} UNITY_BUILD_BATCH_SIZE 6)
endfunction()

# camera_program(name SOURCES... [LINK targets...])
function(camera_program name)
  cmake_parse_arguments(arg "" "" "SOURCES;LINK" ${ARGN})
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_LINK} camera_options)
endfunction()
