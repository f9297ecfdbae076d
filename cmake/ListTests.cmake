# Run by ctest: lists the tests of a program and makes entries of them. Each suite is one, each test whose name matches
# test_alone has its own, with the label "slow". Where test_quick is set, small suites share entries, which have the
# program's name: to start a process takes longer than their tests.
#
# Set before: test_name, test_program, test_folder, test_prefix, test_filter, test_most (tests in one entry), test_quick,
# test_alone, test_labels, test_environment, test_cost, test_timeout, test_cmake (its path). Sets ${test_name}_TESTS.

set(list_file "${test_folder}/${test_name}_list.cmake")
if(NOT EXISTS "${test_program}")
  add_test(${test_name}_NOT_BUILT ${test_name}_NOT_BUILT)
  return()
endif()

# A file that is not there counts as older.
set(settings_file "${test_folder}/${test_name}_tests.cmake")
if("${test_program}" IS_NEWER_THAN "${list_file}" OR "${settings_file}" IS_NEWER_THAN "${list_file}")
  execute_process(
    COMMAND "${test_cmake}" -E env ${test_environment}
            "${test_program}" --gtest_list_tests "--gtest_filter=${test_filter}"
    OUTPUT_VARIABLE listed
    ERROR_VARIABLE errors
    RESULT_VARIABLE result
    TIMEOUT 60)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "${test_program} does not list its tests: ${result}\n${listed}\n${errors}")
  endif()
  # A comment of a name shows the values of parameters.
  string(REGEX REPLACE " +#[^\n]*" "" listed "${listed}")
  string(REGEX MATCHALL "[^\n]+" lines "${listed}")

  set(suites "")
  set(singles "")
  foreach(line IN LISTS lines)
    if(line MATCHES "^  ([^ ]+)$")
      set(test "${suite}${CMAKE_MATCH_1}")
      if(test_alone AND test MATCHES "${test_alone}")
        list(APPEND singles "${test}")
      else()
        list(APPEND "tests_${suite}" "${test}")
      endif()
    elseif(line MATCHES "^[^ ]+[.]$")
      set(suite "${line}")
      list(APPEND suites "${suite}")
      set("tests_${suite}" "") # another program may have a suite of the same name
    endif()
  endforeach()

  set(content "")
  set(entries "")
  set(slow_entries "")
  macro(add_entry name) # of the tests in ${tests}
    list(JOIN tests ":" filter)
    string(APPEND content "add_test([==[${name}]==] [==[${test_program}]==] [==[--gtest_filter=${filter}]==])\n")
    list(APPEND entries "${name}")
  endmacro()
  foreach(test IN LISTS singles)
    set(tests "${test}")
    add_entry("${test_prefix}${test}")
    list(APPEND slow_entries "${test_prefix}${test}")
  endforeach()
  set(small_suite 20) # tests, fewer in a small one
  set(shared "")
  set(sharing 0)
  macro(add_shared_entry)
    math(EXPR sharing "${sharing} + 1")
    set(tests "${shared}")
    add_entry("${test_prefix}${test_name}.${sharing}")
    set(shared "")
  endmacro()
  foreach(suite IN LISTS suites)
    string(REGEX REPLACE "[.]$" "" name "${test_prefix}${suite}")
    set(rest "${tests_${suite}}")
    list(LENGTH rest count)
    if(test_quick AND count LESS small_suite)
      list(APPEND shared ${rest})
      list(LENGTH shared count)
      if(NOT count LESS test_most)
        add_shared_entry()
      endif()
      continue()
    endif()
    if(count GREATER 0 AND NOT count GREATER test_most)
      set(tests "${rest}")
      add_entry("${name}")
      continue()
    endif()
    set(number 0)
    set(at 0)
    while(at LESS count)
      math(EXPR number "${number} + 1")
      list(SUBLIST rest ${at} ${test_most} tests)
      add_entry("${name}.${number}")
      math(EXPR at "${at} + ${test_most}")
    endwhile()
  endforeach()
  if(shared)
    add_shared_entry()
  endif()
  string(APPEND content "set(${test_name}_TESTS [==[${entries}]==])\nset(${test_name}_SLOW [==[${slow_entries}]==])\n")
  file(WRITE "${list_file}" "${content}")
endif()

include("${list_file}")
if(${test_name}_TESTS)
  set_tests_properties(${${test_name}_TESTS} PROPERTIES
    LABELS "${test_labels}"
    ENVIRONMENT "${test_environment}"
    TIMEOUT ${test_timeout})
  if(test_cost)
    set_tests_properties(${${test_name}_TESTS} PROPERTIES COST ${test_cost})
  endif()
endif()
if(${test_name}_SLOW)
  set_tests_properties(${${test_name}_SLOW} PROPERTIES LABELS "${test_labels};slow" COST 10)
endif()
