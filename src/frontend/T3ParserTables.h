// What the tables that Bison makes of the grammar look like to the driver, and the values that the actions
// of the rules pass on.
#pragma once

#include <array>
#include <utility>

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
  /// The state of the parser behind the symbol; of no concern to the actions.
  int state = 0;
};

/// What the action of a rule does: `values` points to the value of its last symbol, and the result lies in
/// the place of the first, which an action reads before it sets the result. The result of a rule without
/// symbols is zero before.
struct T3ParserState;
using T3Action = void (*)(T3Value& result, T3Value* values, T3ParserState& state);

/// A state: where its actions begin in the table, or below 0 minus the rule that it reduces whatever follows;
/// and where the states begin that follow a reduction.
struct T3StateRow {
  short actions;
  short gotos;
};
/// An action belongs to a state where it names the symbol: above 0 a state to shift to, below 0 minus a rule
/// to reduce. Where no action does, there is a fault.
struct T3TableEntry {
  short symbol;
  short action;
};
/// A rule: its action or null, its left symbol, and the number of symbols on the right.
struct T3RuleRow {
  T3Action action;
  short left;
  unsigned char length;
  /// The reduction exchanges one state for another and does nothing else.
  bool IsPlain() const { return length == 1 && action == nullptr; }
};

/// The LALR tables. The rows of the states lie over each other, so that an action and its check are one look
/// at memory; a step leads past the states that only exchange themselves for another.
extern const T3StateRow gParserStates[];
extern const T3TableEntry gParserTable[];
extern const short gParserGotos[];
extern const std::array<T3RuleRow, kRuleCount + 1> gParserRules;

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
