// What the tables that Bison makes of the grammar look like to the driver, and the values that the actions
// of the rules pass on.
#pragma once

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

/// The LALR tables in Bison's compressed form.
struct T3ParserTables {
  const short* pact;
  const short* defact;
  const short* pgoto;
  const short* defgoto;
  const short* table;
  const short* check;
  const short* r1;
  const signed char* r2;
  int pact_ninf;
  int table_ninf;
  int last;
  int tokens;
  int nonterminals;
  int states;
  int rules;
  int final_state;
};
extern const T3ParserTables gParserTables;

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
extern const int gParserLostReductionCount;
/// The states in which a list of recipients may begin, ended by -1.
extern const short gParserRecipientStates[];

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
  /// The position of the last token shifted.
  tPosition last_token;
};

/// Runs the action of rule `rule`: `values` points to the value of its last symbol.
void T3Actions(int rule, T3Value& result, T3Value* values, T3ParserState& state);
/// Whether a rule has an action; the value of one that has none is that of its first symbol.
bool T3HasAction(int rule);
