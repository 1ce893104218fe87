# Skeleton for the tables of the TTCN-3 grammar: the LALR tables and one function with the actions of the
# rules. The driver that walks the tables is T3Parser.cpp.
m4_include(b4_skeletonsdir/[c.m4])

m4_define([b4_symbol_value], [$1])
m4_define([b4_lhs_value], [yyval])
m4_define([b4_rhs_value], [yyvsp@{b4_subtract([$2], [$1])@}])
m4_define([b4_lhs_location], [yyval.position])
m4_define([b4_rhs_location], [yyvsp@{b4_subtract([$2], [$1])@}.position])

b4_output_begin([b4_dir_prefix], [T3GrammarSizes.h])[
// Made by Bison from T3Grammar.y; do not edit.
#pragma once

// In the row of a state: it has its default rule only. In the table: a fault.
inline constexpr int kNoActions = ]b4_pact_ninf[;
inline constexpr int kTableFault = ]b4_table_ninf[;
inline constexpr int kTableLast = ]b4_last[;
inline constexpr int kSymbolCount = ]b4_tokens_number[;
inline constexpr int kStateCount = ]b4_states_number[;
inline constexpr int kRuleCount = ]b4_rules_number[;
inline constexpr int kFinalState = ]b4_final_state_number[;
]b4_output_end

b4_output_begin([b4_parser_file_name])[
// Made by Bison from T3Grammar.y; do not edit.
]b4_percent_code_get([[top]])[
#include "frontend/T3ParserTables.h"

#include <cstddef>

]b4_percent_code_get[
namespace {
constexpr short kPact[] = {]b4_pact[};
constexpr short kDefact[] = {]b4_defact[};
constexpr short kPgoto[] = {]b4_pgoto[};
constexpr short kDefgoto[] = {]b4_defgoto[};
constexpr short kR1[] = {]b4_r1[};
constexpr unsigned char kR2[] = {]b4_r2[};

]m4_pushdef([b4_case], [    case $1:
])[constexpr bool HasAction(int rule) {
  switch (rule) {
]b4_user_actions[      return true;
    default:
      return false;
  }
}
]m4_popdef([b4_case])[
}  // namespace

constexpr std::array<T3StateRow, kStateCount> gParserStates = [] {
  std::array<T3StateRow, kStateCount> rows{};
  for (std::size_t i = 0; i < rows.size(); ++i) rows[i] = {kPact[i], kDefact[i]};
  return rows;
}();
constexpr std::array<T3RuleRow, kRuleCount + 1> gParserRules = [] {
  std::array<T3RuleRow, kRuleCount + 1> rows{};
  for (std::size_t i = 1; i < rows.size(); ++i) {
    const int symbol = kR1[i] - kSymbolCount;
    rows[i] = {kR1[i], kPgoto[symbol], kDefgoto[symbol], kR2[i],
               kR2[i] == 1 && !HasAction(static_cast<int>(i))};
  }
  return rows;
}();
constexpr std::array<short, kTableLast + 1> gParserTable = {]b4_table[};
constexpr std::array<short, kTableLast + 1> gParserCheck = {]b4_check[};

void T3Actions(int yyn, T3Value& yyval, T3Value* yyvsp, T3ParserState& state) {
  (void)yyvsp;
  (void)state;
  switch (yyn) {
]b4_user_actions[
    default:
      break;
  }
}

]b4_output_end
