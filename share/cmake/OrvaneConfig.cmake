# find_package(Orvane): the compiler, the run-time library, and test suites as targets.
#
#   Orvane::lumos        the run-time library with what it needs, in a project with C or C++
#   orvane_add_suite(NAME target ROOT module SOURCES file... [ASN1 file...] [ADAPTER file...]
#                    [OPTIONS option...] [ARGUMENTS argument...] [PROPERTIES property value...] [MCFG file] [NO_TESTS])
#                        builds the executable `target.suite/target` by orvane-run. Sources are the files that it takes,
#                        also $<TARGET_FILE:library> of a static library; ASN1 names modules in files of any name, and
#                        ADAPTER is another word for SOURCES. Each test case without parameters becomes a test of
#                        CTest, "target.module.testcase" with the label "target", found by asking the executable;
#                        where it names none, all of the control part is the test "target.control".
#                        OPTIONS are the compiler's, ARGUMENTS those of the executable in each test, PROPERTIES those
#                        of the tests, such as TIMEOUT 10. The target looks each time whether files have changed,
#                        headers of sources included. A source of another name is TTCN-3.
get_filename_component(ORVANE_ROOT "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
set(ORVANE_EXECUTABLE "${ORVANE_ROOT}/bin/orvane")
set(ORVANE_DISCOVER "${CMAKE_CURRENT_LIST_DIR}/OrvaneDiscover.cmake")

get_property(ORVANE_LANGUAGES GLOBAL PROPERTY ENABLED_LANGUAGES)
if(NOT TARGET Orvane::lumos AND ORVANE_LANGUAGES MATCHES "(^|;)(C|CXX)(;|$)")
  find_package(Threads REQUIRED)
  add_library(Orvane::lumos STATIC IMPORTED)
  set_target_properties(Orvane::lumos PROPERTIES
    IMPORTED_LOCATION "${ORVANE_ROOT}/lib/liblumos.a"
    IMPORTED_LINK_INTERFACE_LANGUAGES CXX
    INTERFACE_INCLUDE_DIRECTORIES "${ORVANE_ROOT}/include"
    INTERFACE_LINK_LIBRARIES "m;Threads::Threads")
endif()

function(orvane_add_suite)
  cmake_parse_arguments(PARSE_ARGV 0 SUITE "NO_TESTS" "NAME;ROOT;MCFG"
                        "SOURCES;ASN1;ADAPTER;OPTIONS;ARGUMENTS;PROPERTIES")
  foreach(key NAME ROOT SOURCES)
    if(NOT DEFINED SUITE_${key}) # a module may be called N
      message(FATAL_ERROR "orvane_add_suite: ${key} is missing")
    endif()
  endforeach()
  if(DEFINED SUITE_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "orvane_add_suite: ${SUITE_UNPARSED_ARGUMENTS} is unknown")
  endif()
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${SUITE_NAME}.suite")
  file(MAKE_DIRECTORY "${folder}")
  set(command "${ORVANE_ROOT}/bin/orvane-run" --build -d build -r "${SUITE_ROOT}")
  if(DEFINED SUITE_MCFG)
    get_filename_component(mcfg "${SUITE_MCFG}" ABSOLUTE)
    list(APPEND command -f "${mcfg}")
  endif()
  foreach(option ${SUITE_OPTIONS})
    list(APPEND command -X "${option}")
  endforeach()
  set(files)
  foreach(kind SOURCES ADAPTER ASN1)
    foreach(file ${SUITE_${kind}})
      if(NOT file MATCHES "^\\$<")
        get_filename_component(file "${file}" ABSOLUTE)
      endif()
      list(APPEND files "${file}")
      if(kind STREQUAL "ASN1")
        list(APPEND command --asn1)
      elseif(NOT file MATCHES "^\\$<|\\.(ttcn3?|3mp|asn1?|c|cc|cpp|cxx|o|a)$")
        list(APPEND command --ttcn)
      endif()
      list(APPEND command "${file}")
    endforeach()
  endforeach()

  foreach(list ARGUMENTS PROPERTIES)
    set(${list} "")
    foreach(word IN LISTS SUITE_${list})
      string(APPEND ${list} " [==[${word}]==]")
    endforeach()
  endforeach()
  file(CONFIGURE OUTPUT "${folder}/discover.cmake" @ONLY CONTENT [[
set(NAME "@SUITE_NAME@")
set(SUITE "@folder@/@SUITE_NAME@")
set(PROGRAM "build/@SUITE_ROOT@.run")
set(ARGUMENTS [=[@ARGUMENTS@]=])
set(PROPERTIES [=[@PROPERTIES@]=])
include("@ORVANE_DISCOVER@")
]])
  add_custom_target(${SUITE_NAME} ALL
    COMMAND ${command}
    COMMAND "${CMAKE_COMMAND}" -P discover.cmake
    WORKING_DIRECTORY "${folder}"
    DEPENDS ${files}
    BYPRODUCTS "${folder}/${SUITE_NAME}"
    COMMENT "Building test suite ${SUITE_NAME}" VERBATIM)
  if(NOT SUITE_NO_TESTS)
    file(CONFIGURE OUTPUT "${folder}/include.cmake" @ONLY CONTENT [[
if(EXISTS "@folder@/@SUITE_NAME@")
  include("@folder@/tests.cmake")
else()
  # a test without its program would count as skipped
  add_test(@SUITE_NAME@.not_built "@CMAKE_COMMAND@" -E cat "@folder@/@SUITE_NAME@")
endif()
]])
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${folder}/include.cmake")
  endif()
endfunction()
