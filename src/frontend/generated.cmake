# Tokens: numbers, texts and keywords come from one table.
set(FRONTEND ${CMAKE_CURRENT_SOURCE_DIR}/frontend)
add_custom_command(
  OUTPUT ${GEN}/T3Tokens.h ${GEN}/T3TokenTables.inc
  COMMAND ${Python3_EXECUTABLE} ${CMAKE_SOURCE_DIR}/cmake/gen_tokens.py code ${FRONTEND}/tokens.def ${GEN}
  DEPENDS ${CMAKE_SOURCE_DIR}/cmake/gen_tokens.py ${FRONTEND}/tokens.def
  COMMENT "Generating the token tables")
list(APPEND GENERATED_SOURCES ${GEN}/T3Tokens.h ${GEN}/T3TokenTables.inc)
