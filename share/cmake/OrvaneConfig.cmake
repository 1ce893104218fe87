# find_package(Orvane): the compiler, the run-time library, and test suites as targets.
#
#   Orvane::lumos        the run-time library with what it needs
#   orvane_add_suite(NAME target ROOT module SOURCES file... [ASN1 file...] [ADAPTER file...]
#                    [OPTIONS option...] [ARGUMENTS argument...] [MCFG file] [NO_TESTS])
#                        builds the executable `target`. Sources are TTCN-3, and by their names ASN.1 (.asn, .asn1)
#                        and C of an adapter (.c), which may also be named as what they are. Each test case without
#                        parameters becomes a test of CTest, "target.module.testcase", found by asking the
#                        executable. OPTIONS are the compiler's, ARGUMENTS those of the executable in each test.
get_filename_component(ORVANE_ROOT "${CMAKE_CURRENT_LIST_DIR}/../../.." ABSOLUTE)
find_program(ORVANE_EXECUTABLE orvane HINTS "${ORVANE_ROOT}/bin" NO_DEFAULT_PATH)
set(ORVANE_DISCOVER "${CMAKE_CURRENT_LIST_DIR}/OrvaneDiscover.cmake")

if(NOT TARGET Orvane::lumos)
  find_package(Threads REQUIRED)
  add_library(Orvane::lumos STATIC IMPORTED)
  set_target_properties(Orvane::lumos PROPERTIES
    IMPORTED_LOCATION "${ORVANE_ROOT}/lib/liblumos.a"
    IMPORTED_LINK_INTERFACE_LANGUAGES CXX
    INTERFACE_INCLUDE_DIRECTORIES "${ORVANE_ROOT}/include"
    INTERFACE_LINK_LIBRARIES "m;Threads::Threads")
endif()

function(orvane_add_suite)
  cmake_parse_arguments(SUITE "NO_TESTS" "NAME;ROOT;MCFG" "SOURCES;ASN1;ADAPTER;OPTIONS;ARGUMENTS" ${ARGN})
  foreach(key NAME ROOT SOURCES)
    if(NOT SUITE_${key})
      message(FATAL_ERROR "orvane_add_suite: ${key} is missing")
    endif()
  endforeach()
  if(SUITE_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "orvane_add_suite: ${SUITE_UNPARSED_ARGUMENTS} is unknown")
  endif()
  set(SOURCES)
  set(ASN1)
  set(ADAPTER)
  foreach(kind SOURCES ASN1 ADAPTER)
    foreach(file ${SUITE_${kind}})
      set(list ${kind})
      if(kind STREQUAL "SOURCES" AND file MATCHES "\\.c$")
        set(list ADAPTER)
      elseif(kind STREQUAL "SOURCES" AND file MATCHES "\\.asn1?$")
        set(list ASN1)
      endif()
      get_filename_component(file "${file}" ABSOLUTE)
      list(APPEND ${list} "${file}")
    endforeach()
  endforeach()

  set(folder "${CMAKE_CURRENT_BINARY_DIR}/${SUITE_NAME}.suite")
  set(program "${folder}/${SUITE_NAME}")
  set(base "${SUITE_MCFG}")
  if(NOT base)
    set(base "${ORVANE_ROOT}/share/orvane/make_linux.mcfg")
  endif()
  file(MAKE_DIRECTORY "${folder}")
  file(READ "${base}" mcfg)
  string(APPEND mcfg "ETS_NAME = ${SUITE_NAME}\n")
  foreach(file ${ADAPTER})
    string(APPEND mcfg "USER_SRCS += \"${file}\"\n")
  endforeach()
  file(CONFIGURE OUTPUT "${folder}/suite.mcfg" CONTENT "${mcfg}" @ONLY)
  set(asn1)
  if(ASN1)
    set(asn1 -A ${ASN1})
  endif()

  add_custom_command(OUTPUT "${program}"
    COMMAND "${ORVANE_EXECUTABLE}" -v 2 -K -f suite.mcfg -r ${SUITE_ROOT} ${SUITE_OPTIONS} -F ${SOURCES} ${asn1}
    COMMAND make -s
    COMMAND "${CMAKE_COMMAND}" "-DSUITE=${program}" "-DNAME=${SUITE_NAME}" "-DARGUMENTS=${SUITE_ARGUMENTS}"
            "-DOUT=${folder}/tests.cmake" -P "${ORVANE_DISCOVER}"
    WORKING_DIRECTORY "${folder}"
    DEPENDS ${SOURCES} ${ASN1} ${ADAPTER} "${folder}/suite.mcfg" "${ORVANE_EXECUTABLE}" "${ORVANE_ROOT}/lib/liblumos.a"
    COMMENT "Building test suite ${SUITE_NAME}" VERBATIM)
  add_custom_target(${SUITE_NAME} ALL DEPENDS "${program}")
  if(NOT SUITE_NO_TESTS)
    file(CONFIGURE OUTPUT "${folder}/include.cmake" @ONLY CONTENT [[
if(EXISTS "@folder@/tests.cmake")
  include("@folder@/tests.cmake")
else()
  add_test(@SUITE_NAME@.not_built "@program@")
endif()
]])
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES "${folder}/include.cmake")
  endif()
endfunction()
