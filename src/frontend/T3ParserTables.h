// What the tables that Bison makes of the grammar look like to the driver, and the values that the actions
// of the rules pass on.
#pragma once

#include <array>

#include "T3GrammarSizes.h"
#include "frontend/T3Tree.h"

/// The value of a symbol, and the position of its first token. An action knows which member holds.
struct T3Value {
  union {
    T3Tree_Node* node = nullptr;
    tStringRef string;
    tIdent ident;
    long number;
    bool flag;
  };
  tPosition position;
};

/// Where the actions of a state begin in the tables, and the rule to reduce where they name none.
struct T3StateRow {
  short actions;
  short default_rule;
};
/// A rule: its left symbol, where the states that follow its reduction begin in the tables, the one that
/// follows where they name none, and the number of symbols on the right.
struct T3RuleRow {
  short left;
  short gotos;
  short default_goto;
  unsigned char length;
  /// The reduction exchanges one state for another and does nothing else.
  bool plain;
};

/// The LALR tables in Bison's compressed form, what belongs to a state or a rule in one row. What a row
/// names begins there in `gParserTable`, and holds where `gParserCheck` names the symbol or the state.
extern const std::array<T3StateRow, kStateCount> gParserStates;
extern const std::array<T3RuleRow, kRuleCount + 1> gParserRules;
extern const std::array<short, kTableLast + 1> gParserTable;
extern const std::array<short, kTableLast + 1> gParserCheck;

/// The token, as an internal symbol, that leads from each state by a short way to the end of the input, or
/// minus the rule to reduce.
extern const short gParserContinuation[];

/// A reduction that lost against a shift when the tables were made; some are decided by the driver.
struct T3LostReduction {
  short state;
  short symbol;
  short rule;
};
extern const T3LostReduction gParserLostReductions[];
/// Where those of a state begin, which lie together; -1 for none. One entry for each state.
extern const short gParserFirstLost[];
/// Whether a list of recipients may begin in a state. One entry for each state.
extern const bool gParserRecipient[];
/// Whether an alternative's head begins in a state. One entry for each state.
extern const bool gParserAlternative[];
/// Whether the symbol that led to a state is a dot. One entry for each state.
extern const bool gParserBehindDot[];

/// What actions leave for later actions of the same file.
struct T3ParserState {
  /// The module being read, and the scope for __SCOPE__: -2 in the control part, -1 outside of behaviour.
  tIdent macroModuleIdent = NoIdent;
  tIdent macroScopeIdent = -1;
  /// The import statement being read.
  tIdent gModuleId = NoIdent;
  tPosition module_position;
  tStringRef gLangSpec = nullptr;
  bool gRecursiveSa = false;
  /// A repair touched what is being reduced.
  bool repaired = false;
  /// The position of the last token shifted.
  tPosition last_token;
};

/// Runs the action of rule `rule`: `values` points to the value of its last symbol.
/// Without an action the result stays what it is: the value of the rule's first symbol.
void T3Actions(int rule, T3Value& result, T3Value* values, T3ParserState& state);
