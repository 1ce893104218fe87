# Skeleton for the rules of the TTCN-3 grammar: a function for each action, and the table of rules. The tables
# of the automaton are made from Bison's report, and the driver that walks them is T3Parser.cpp.
m4_include(b4_skeletonsdir/[c.m4])

m4_define([b4_symbol_value], [$1])
m4_define([b4_lhs_value], [yyval])
m4_define([b4_rhs_value], [yyvsp@{b4_subtract([$2], [$1])@}])
m4_define([b4_lhs_location], [yyval.position])
m4_define([b4_rhs_location], [yyvsp@{b4_subtract([$2], [$1])@}.position])

b4_output_begin([b4_dir_prefix], [T3GrammarSizes.h])[
// Made by Bison from T3Grammar.y; do not edit.
#pragma once

inline constexpr int kSymbolCount = ]b4_tokens_number[;
inline constexpr int kRuleCount = ]b4_rules_number[;
]b4_output_end

m4_pushdef([b4_case], [$1
])b4_output_begin([b4_dir_prefix], [T3GrammarActions.txt])[
]b4_user_actions[
]b4_output_end
m4_popdef([b4_case])

b4_output_begin([b4_parser_file_name])[
// Made by Bison from T3Grammar.y; do not edit.
]b4_percent_code_get([[top]])[
#include "frontend/T3ParserTables.h"

#include <cstddef>

]b4_percent_code_get[
namespace {
constexpr short kR1[] = {]b4_r1[};
constexpr unsigned char kR2[] = {]b4_r2[};

template <int rule>
constexpr T3Action kAction = nullptr;

]m4_pushdef([b4_case], [
void Action$1([[[maybe_unused]]] T3Value& yyval, [[[maybe_unused]]] T3Value* yyvsp, [[[maybe_unused]]] T3ParserState& state) {
$2
}
template <>
constexpr T3Action kAction<$1> = Action$1;
])b4_user_actions[
]m4_popdef([b4_case])[
template <int... rules>
constexpr std::array<T3RuleRow, kRuleCount + 1> Rows(std::integer_sequence<int, rules...>) {
  return {T3RuleRow{kAction<rules>, static_cast<short>(kR1[rules] - kSymbolCount), kR2[rules]}...};
}
}  // namespace

constexpr std::array<T3RuleRow, kRuleCount + 1> gParserRules =
    Rows(std::make_integer_sequence<int, kRuleCount + 1>());
]b4_output_end
