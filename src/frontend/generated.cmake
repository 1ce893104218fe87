# Tokens: numbers, texts and keywords come from one table.
set(FRONTEND ${CMAKE_CURRENT_SOURCE_DIR}/frontend)
add_custom_command(
  OUTPUT ${GEN}/T3Tokens.h ${GEN}/T3TokenTables.inc
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/cmake/gen_tokens.py code ${FRONTEND}/tokens.def ${GEN}
  DEPENDS ${CMAKE_SOURCE_DIR}/cmake/gen_tokens.py ${FRONTEND}/tokens.def
  COMMENT "Generating the token tables")
list(APPEND GENERATED_SOURCES ${GEN}/T3Tokens.h ${GEN}/T3TokenTables.inc)

# The parser: Bison makes the tables, and refuses a grammar whose number of conflicts has changed.
find_program(BISON_EXECUTABLE bison REQUIRED)
add_custom_command(
  OUTPUT ${GEN}/T3Grammar.cpp ${GEN}/T3GrammarSizes.h ${GEN}/T3GrammarActions.txt ${GEN}/T3ParserContinuation.cpp
         ${GEN}/T3GrammarRules.h ${GEN}/T3ParserTables.cpp
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/cmake/gen_grammar.py
          ${FRONTEND}/T3Grammar.y ${FRONTEND}/tokens.def ${GEN}/T3Grammar.y
  COMMAND ${BISON_EXECUTABLE} -l -Wno-yacc -Wno-precedence -S ${CMAKE_SOURCE_DIR}/cmake/t3parser.m4
          -o ${GEN}/T3Grammar.cpp --xml=${GEN}/T3Grammar.xml ${GEN}/T3Grammar.y
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/cmake/gen_continuation.py ${GEN}/T3Grammar.xml
          ${GEN}/T3ParserContinuation.cpp ${GEN}/T3GrammarRules.h
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/cmake/gen_parser_tables.py ${GEN}/T3Grammar.xml
          ${GEN}/T3GrammarActions.txt ${GEN}/T3ParserTables.cpp
  DEPENDS ${FRONTEND}/T3Grammar.y ${FRONTEND}/tokens.def ${CMAKE_SOURCE_DIR}/cmake/t3parser.m4
          ${CMAKE_SOURCE_DIR}/cmake/gen_grammar.py ${CMAKE_SOURCE_DIR}/cmake/gen_continuation.py
          ${CMAKE_SOURCE_DIR}/cmake/gen_parser_tables.py
  COMMENT "Generating the parser")
list(APPEND GENERATED_SOURCES ${GEN}/T3Grammar.cpp ${GEN}/T3GrammarSizes.h ${GEN}/T3ParserContinuation.cpp
     ${GEN}/T3GrammarRules.h ${GEN}/T3ParserTables.cpp)
