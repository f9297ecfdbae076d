# The function that makes a test program and registers each of its tests with ctest.

include(GoogleTest)

# Builds all programs that hold tests labelled "threads": what a thread-sanitizer run needs.
add_custom_target(thread_tests)

# Environment of the sanitizers' run-time libraries; tests started by hand have to set it themselves.
# The leak check skips thread-local storage: reading that of ending threads crashes in some tests. lsan.supp names what
# libraries keep nowhere else.
set(camera_test_environment "")
if(CAMERA_SANITIZE MATCHES "address")
  list(APPEND camera_test_environment
    "ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1"
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

# camera_test(name SOURCES... [LINK targets...] [GUI | APPLICATION] [VIRTUAL_TIME | REAL_TIME filter]
#             [LABELS labels...] [SLOW regexes...] [TIMEOUT seconds])
#
# A GoogleTest program. ctest runs each of its tests as a process, several at once. A test starts in an empty working
# directory, which is deleted afterwards: downloads go into the working directory.
#   GUI          main makes a QApplication on the offscreen platform; Qt6::Test and test_windows are linked
#   APPLICATION  as GUI, with the product's own application object
#   VIRTUAL_TIME waits take no time; unless fake_serial is linked, TestFront is a camera on a simulated line. Instead of
#                a linked library X, X_virtual is linked if there is one. No effect under the thread sanitizer
#   REAL_TIME    another program runs these sources in virtual time; this one runs the tests that match the GoogleTest
#                filter, as "RealTime.<name>"
#   LABELS       "threads" for tests worth running under the thread sanitizer
#   SLOW         tests whose names match get the label "slow", some or all of them take more than two seconds, and start first
#   TIMEOUT      for one test, 60 s if not given; sanitizers get three times as much
function(camera_test name)
  cmake_parse_arguments(arg "GUI;APPLICATION;VIRTUAL_TIME" "REAL_TIME;TIMEOUT" "SOURCES;LINK;LABELS;SLOW" ${ARGN})
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "camera_test(${name}): what is ${arg_UNPARSED_ARGUMENTS}?")
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
  set(sources ${arg_SOURCES} "${PROJECT_SOURCE_DIR}/tests/support/testmain.cpp")
  set(headers test_headers)
  set(application "")
  if(arg_APPLICATION)
    set(application Application)
    set(header app/application.h)
  elseif(arg_GUI)
    set(application QApplication)
    set(header QApplication)
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
    if(NOT fake_serial IN_LIST arg_LINK)
      list(PREPEND libraries simulated_line)
    endif()
    list(PREPEND libraries virtual_time)
  endif()

  camera_program(${name} SOURCES ${sources} LINK ${libraries})
  if(virtual_time)
    target_compile_definitions(${name} PRIVATE CAMERA_VIRTUAL_TIME)
  endif()
  if(application)
    target_compile_definitions(${name} PRIVATE
      TEST_APPLICATION=${application}
      TEST_APPLICATION_HEADER="${header}")
  endif()
  if(camera_precompiled)
    target_precompile_headers(${name} REUSE_FROM ${headers})
    target_compile_options(${name} PRIVATE ${camera_test_options})
  endif()
  set(selection "")
  if(arg_REAL_TIME)
    set(selection TEST_FILTER "${arg_REAL_TIME}" TEST_PREFIX RealTime.)
  endif()
  gtest_discover_tests(${name} ${selection}
    DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 60 PROPERTIES TIMEOUT ${arg_TIMEOUT})
  # Discovery loses properties that are lists: ctest sets them after it has read the names of the tests.
  set(properties_file "${CMAKE_CURRENT_BINARY_DIR}/${name}_properties.cmake")
  file(WRITE "${properties_file}" "if(${name}_TESTS)
  set_tests_properties(\${${name}_TESTS} PROPERTIES
    LABELS [==[${arg_LABELS}]==]
    ENVIRONMENT [==[${environment}]==])
endif()
")
  if(arg_SLOW)
    list(JOIN arg_SLOW "|" slow)
    file(APPEND "${properties_file}" "foreach(test IN LISTS ${name}_TESTS)
  if(test MATCHES [==[${slow}]==])
    set_tests_properties(\"\${test}\" PROPERTIES LABELS [==[${arg_LABELS};slow]==] COST 10)
  endif()
endforeach()
")
  endif()
  set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${properties_file}")
  if("threads" IN_LIST arg_LABELS)
    add_dependencies(thread_tests ${name})
  endif()
endfunction()
