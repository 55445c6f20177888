# Adds the cases of a doctest program to CTest, each as a test "PROGRAM: CASE". Included by CTest, so that the cases are those of the
# built program, with
#   _program  the program's path
#   _runner   the command that runs it, empty for programs of this machine
get_filename_component(_name ${_program} NAME_WE)
set(_properties TIMEOUT 300 LABELS ${_name} FAIL_REGULAR_EXPRESSION "test cases: +0 ")
if(DEFINED ENV{KELUTILS_TORTURE})
  list(APPEND _properties TIMEOUT 7200) # the long form of the endurance tests
endif()
if(_runner)
  list(APPEND _properties RESOURCE_LOCK wine) # the programs share registry, display and named objects
endif()
execute_process(COMMAND ${_runner} ${_program} --list-test-cases OUTPUT_VARIABLE _output RESULT_VARIABLE _result)
if(NOT _result EQUAL 0)
  add_test("${_name}: its list of cases" ${_runner} ${_program} --list-test-cases)
endif()
string(REGEX REPLACE "\\[doctest\\][^\n]*\n|=====*\n" "" _output "${_output}")
string(REGEX REPLACE "[];[]" "," _cases "${_output}")  # characters of lists
string(REGEX MATCHALL "[^\n]+" _cases "${_cases}")
foreach(_case IN LISTS _cases)
  # In a pattern of doctest a question mark matches any character: it replaces those with a special meaning.
  string(REGEX REPLACE "[,*\\]" "?" _pattern "${_case}")
  add_test("${_name}: ${_case}" ${_runner} ${_program} "--test-case=${_pattern}")
  set_tests_properties("${_name}: ${_case}" PROPERTIES ${_properties})
endforeach()
