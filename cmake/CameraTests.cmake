# The function that makes a test program and registers its tests with ctest.

# Tests of a suite that ctest starts as one process: those that wait for nothing, and others.
set(camera_most_quick_tests 100)
set(camera_most_waiting_tests 10)

# Builds all test programs: what a run of the sanitizers needs. Those that hold tests labelled "threads": what one of the
# thread sanitizer needs.
add_custom_target(test_programs)
add_custom_target(thread_tests)

# Environment of the sanitizers' run-time libraries; tests started by hand have to set it themselves.
# The leak check skips thread-local storage: reading that of ending threads crashes in some tests. lsan.supp names what
# libraries keep nowhere else. Ten callers of an allocation tell where it was; to keep thirty, as without the option,
# takes a tenth of the time.
set(camera_test_environment "")
if(CAMERA_SANITIZE MATCHES "address")
  list(APPEND camera_test_environment
    "ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1:malloc_context_size=10"
    "LSAN_OPTIONS=print_suppressions=0:use_tls=0:suppressions=${PROJECT_SOURCE_DIR}/tests/lsan.supp")
endif()
if(CAMERA_SANITIZE MATCHES "undefined")
  list(APPEND camera_test_environment "UBSAN_OPTIONS=print_stacktrace=1")
endif()
if(CAMERA_SANITIZE MATCHES "thread")
  list(APPEND camera_test_environment
    "TSAN_OPTIONS=second_deadlock_stack=1:suppressions=${PROJECT_SOURCE_DIR}/tests/tsan.supp")
endif()

# Two sets of headers for all tests: without windows, and with them. Qt's test library gives each folder macros of its
# own, so that its include folders alone are named.
set(camera_test_options "")
if(camera_precompiled)
  if(CAMERA_SANITIZE MATCHES "undefined")
    # Checks of the tests themselves would cost a third of the time.
    set(camera_test_options -fno-sanitize=undefined)
  endif()
  set(headers <gmock/gmock.h> <gtest/gtest.h> <chrono> <functional> <thread>)
  camera_headers(test_headers HEADERS ${headers} LINK GTest::gmock Qt6::Core)
  camera_headers(test_window_headers
    HEADERS ${headers} <QApplication> <QTest> <QtWidgets>
    LINK GTest::gmock Qt6::Widgets)
  target_include_directories(test_window_headers SYSTEM PRIVATE
    $<TARGET_PROPERTY:Qt6::Test,INTERFACE_INCLUDE_DIRECTORIES>)
  foreach(name IN ITEMS test_headers test_window_headers)
    target_compile_options(${name} PRIVATE ${camera_test_options})
  endforeach()
endif()

# camera_test_main(variable headers [VIRTUAL_TIME] [APPLICATION class header]): names the object library with the main
# function of such programs.
function(camera_test_main variable headers)
  cmake_parse_arguments(arg "VIRTUAL_TIME" "" "APPLICATION" ${ARGN})
  list(JOIN arg_APPLICATION "_" name)
  string(MAKE_C_IDENTIFIER "test_main_${name}_${arg_VIRTUAL_TIME}" name)
  set(${variable} ${name} PARENT_SCOPE)
  if(TARGET ${name})
    return()
  endif()
  add_library(${name} OBJECT "${PROJECT_SOURCE_DIR}/tests/support/testmain.cpp")
  target_link_libraries(${name} PRIVATE camera_options GTest::gmock Qt6::Core)
  if(arg_VIRTUAL_TIME)
    target_compile_definitions(${name} PRIVATE CAMERA_VIRTUAL_TIME)
  endif()
  if(arg_APPLICATION)
    list(GET arg_APPLICATION 0 application)
    list(GET arg_APPLICATION 1 header)
    target_link_libraries(${name} PRIVATE Qt6::Widgets)
    target_compile_definitions(${name} PRIVATE TEST_APPLICATION=${application} TEST_APPLICATION_HEADER="${header}")
  endif()
  target_compile_options(${name} PRIVATE ${camera_test_options})
  camera_fast_build(${name} ${headers})
endfunction()

# camera_list_tests(program MOST number [QUICK] [FILTER filter] [PREFIX prefix] [ALONE regexes...] [LABELS labels...]
#                   [ENVIRONMENT variables...] [COST number] [TIMEOUT seconds])
#
# Registers the tests of a GoogleTest program that match the filter: each suite as "<prefix><suite>", or
# "<prefix><suite>.1" and so on of at most so many tests; small QUICK suites together as "<prefix><program>.1" and so
# on; tests whose names match ALONE by themselves, labelled "slow".
# Later files of TEST_INCLUDE_FILES find the names in ${program}_TESTS.
function(camera_list_tests program)
  cmake_parse_arguments(arg "QUICK" "MOST;FILTER;PREFIX;COST;TIMEOUT" "ALONE;LABELS;ENVIRONMENT" ${ARGN})
  if(NOT arg_FILTER)
    set(arg_FILTER "*")
  endif()
  list(JOIN arg_ALONE "|" alone)
  set(file "${CMAKE_CURRENT_BINARY_DIR}/${program}_tests.cmake")
  file(GENERATE OUTPUT "${file}" CONTENT "set(test_name ${program})
set(test_program [==[$<TARGET_FILE:${program}>]==])
set(test_folder [==[${CMAKE_CURRENT_BINARY_DIR}]==])
set(test_prefix [==[${arg_PREFIX}]==])
set(test_filter [==[${arg_FILTER}]==])
set(test_most ${arg_MOST})
set(test_quick ${arg_QUICK})
set(test_alone [==[${alone}]==])
set(test_labels [==[${arg_LABELS}]==])
set(test_environment [==[${arg_ENVIRONMENT}]==])
set(test_cost [==[${arg_COST}]==])
set(test_timeout ${arg_TIMEOUT})
set(test_cmake [==[${CMAKE_COMMAND}]==])
include([==[${PROJECT_SOURCE_DIR}/cmake/ListTests.cmake]==])
")
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${file}")
endfunction()

# camera_test(name SOURCES... [LINK targets...] [GUI | APPLICATION] [VIRTUAL_TIME | REAL_TIME filter]
#             [QUICK] [MOST number] [LABELS labels...] [SLOW regexes...] [COST number] [TIMEOUT seconds])
#
# A GoogleTest program. ctest runs its suites as processes, several at once. A test starts in an empty working directory,
# which is deleted afterwards: downloads go into the working directory.
#   GUI          main makes a QApplication on the offscreen platform; Qt6::Test and test_windows are linked
#   APPLICATION  as GUI, with the product's own application object
#   VIRTUAL_TIME waits take no time; unless fake_serial is linked, TestFront is a camera on a line in memory. Instead of
#                a linked library X, X_virtual is linked if there is one. No effect under the thread sanitizer
#   REAL_TIME    another program runs these sources in virtual time; this one runs the tests that match the GoogleTest
#                filter, as "RealTime.<name>". Left out under the address sanitizer: it sees the same calls in the other
#   QUICK        the tests wait for nothing: a suite is not divided, small ones share a process
#   MOST         tests of a suite in one process: fewer where each takes much of the processor
#   LABELS       "threads" for tests worth running under the thread sanitizer
#   SLOW         tests whose names match run by themselves, get the label "slow" and start first: they take more than
#                two seconds
#   COST         of a suite: ctest starts what costs most first; 10 for SLOW ones
#   TIMEOUT      for one process, 60 s if not given; sanitizers get three times as much
function(camera_test name)
  cmake_parse_arguments(arg "GUI;APPLICATION;VIRTUAL_TIME;QUICK" "REAL_TIME;MOST;COST;TIMEOUT" "SOURCES;LINK;LABELS;SLOW" ${ARGN})
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "camera_test(${name}): what is ${arg_UNPARSED_ARGUMENTS}?")
  endif()
  if(arg_REAL_TIME AND CAMERA_SANITIZE MATCHES "address")
    return()
  endif()
  if(NOT arg_TIMEOUT)
    set(arg_TIMEOUT 60)
  endif()
  if(CAMERA_SANITIZE)
    math(EXPR arg_TIMEOUT "${arg_TIMEOUT} * 3")
  endif()

  set(virtual_time ${arg_VIRTUAL_TIME})
  if(CAMERA_SANITIZE MATCHES "thread")
    set(virtual_time FALSE) # it has to see the threads as they are
  endif()

  set(environment ${camera_test_environment})
  set(libraries "")
  foreach(library IN LISTS arg_LINK)
    if(virtual_time AND TARGET ${library}_virtual)
      string(APPEND library _virtual)
    endif()
    list(APPEND libraries ${library})
  endforeach()
  list(APPEND libraries GTest::gmock GTest::gtest)
  set(sources ${arg_SOURCES})
  set(headers test_headers)
  set(application "")
  if(arg_APPLICATION)
    set(application Application app/application.h)
  elseif(arg_GUI)
    set(application QApplication QApplication)
  endif()
  if(application)
    set(headers test_window_headers)
    list(APPEND libraries test_windows Qt6::Widgets Qt6::Test)
    list(APPEND environment "QT_QPA_PLATFORM=offscreen")
  endif()
  if(application AND CAMERA_SANITIZE MATCHES "thread")
    list(APPEND sources "${PROJECT_SOURCE_DIR}/tests/support/qthandover.cpp")
    list(APPEND libraries ${CMAKE_DL_LIBS})
  endif()

  if(virtual_time)
    if(NOT fake_serial IN_LIST arg_LINK AND NOT camera_memory_line IN_LIST arg_LINK)
      list(PREPEND libraries camera_memory_line)
    endif()
    list(PREPEND libraries virtual_time)
  endif()

  set(virtual_time_option "")
  if(virtual_time)
    set(virtual_time_option VIRTUAL_TIME)
  endif()
  camera_test_main(main ${headers} ${virtual_time_option} APPLICATION ${application})
  camera_program(${name} SOURCES ${sources} LINK ${main} ${libraries} HEADERS ${headers})
  target_compile_options(${name} PRIVATE ${camera_test_options})
  if(virtual_time)
    target_compile_definitions(${name} PRIVATE CAMERA_VIRTUAL_TIME)
  endif()
  set(prefix "")
  if(arg_REAL_TIME)
    set(prefix RealTime.)
  endif()
  set(most ${camera_most_waiting_tests})
  set(quick "")
  if(virtual_time OR arg_QUICK)
    set(most ${camera_most_quick_tests})
    set(quick QUICK)
  endif()
  if(arg_MOST AND arg_MOST LESS most)
    set(most ${arg_MOST})
  endif()
  camera_list_tests(${name} ${quick}
    FILTER "${arg_REAL_TIME}"
    PREFIX "${prefix}"
    MOST ${most}
    ALONE ${arg_SLOW}
    LABELS ${arg_LABELS}
    ENVIRONMENT ${environment}
    COST "${arg_COST}"
    TIMEOUT ${arg_TIMEOUT})
  add_dependencies(test_programs ${name})
  if("threads" IN_LIST arg_LABELS)
    add_dependencies(thread_tests ${name})
  endif()
endfunction()
