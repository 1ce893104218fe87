# Gives the executable PROGRAM its name SUITE, asks it for its test cases, and writes them to tests.cmake as tests of
# CTest, with ARGUMENTS and PROPERTIES, which are texts for that.
file(CREATE_LINK "${PROGRAM}" "${SUITE}" SYMBOLIC)
execute_process(COMMAND "${SUITE}" --verbose none --list -t "*" OUTPUT_VARIABLE names RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  set(names "")
endif()
string(REPLACE "\n" ";" names "${names}")
set(text "")
foreach(name ${names})
  string(APPEND text "add_test(\"${NAME}.${name}\" \"${SUITE}\" -t \"${name}\"${ARGUMENTS})\n"
                     "set_tests_properties(\"${NAME}.${name}\" PROPERTIES LABELS \"${NAME}\"${PROPERTIES})\n")
endforeach()
file(WRITE tests.cmake "${text}")
