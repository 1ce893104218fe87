# Skeleton for the tables of the TTCN-3 grammar: the LALR tables and one function with the actions of the
# rules. The driver that walks the tables is T3Parser.cpp.
m4_include(b4_skeletonsdir/[c.m4])

m4_define([b4_symbol_value], [$1])
m4_define([b4_lhs_value], [yyval])
m4_define([b4_rhs_value], [yyvsp@{b4_subtract([$2], [$1])@}])
m4_define([b4_lhs_location], [yyval.position])
m4_define([b4_rhs_location], [yyvsp@{b4_subtract([$2], [$1])@}.position])

b4_output_begin([b4_parser_file_name])[
// Made by Bison from T3Grammar.y; do not edit.
]b4_percent_code_get([[top]])[
#include "frontend/T3ParserTables.h"

]b4_percent_code_get[
#define YYPACT_NINF ]b4_pact_ninf[
#define YYTABLE_NINF ]b4_table_ninf[

namespace {
]b4_parser_tables_define[
}  // namespace

const T3ParserTables gParserTables = {
    yypact, yydefact, yypgoto, yydefgoto, yytable, yycheck, yyr1, yyr2,
    YYPACT_NINF, YYTABLE_NINF, ]b4_last[, ]b4_tokens_number[, ]b4_nterms_number[, ]b4_states_number[, ]b4_rules_number[, ]b4_final_state_number[};

void T3Actions(int yyn, T3Value& yyval, T3Value* yyvsp, T3ParserState& state) {
  (void)yyvsp;
  (void)yystos;
  (void)state;
  switch (yyn) {
]b4_user_actions[
    default:
      break;
  }
}

]m4_pushdef([b4_case], [    case $1:
])[bool T3HasAction(int rule) {
  switch (rule) {
]b4_user_actions[      return true;
    default:
      return false;
  }
}
]m4_popdef([b4_case])[]b4_output_end
