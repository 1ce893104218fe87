// The parser: an LALR(1) automaton over the tables that Bison makes of T3Grammar.y, with lookahead beyond
// one token for the decisions that need it, and repair of faults by skipping and inserting tokens, so that
// the parse always reaches the end of the file.
#pragma once

#include <string>
#include <vector>

#include "frontend/T3ParserTables.h"
#include "frontend/T3Scanner.h"

class Errors;

/// A parse stack deeper than this is refused with a message: passes over the tree recurse over nesting.
inline constexpr size_t kMaxParseDepth = 6000;

class T3Parser {
 public:
  /// Both objects stay the caller's.
  T3Parser(T3Scanner* scanner, Errors* errors);
  /// Parses one source file and appends its modules to the list of gT3AST. Returns the number of syntax
  /// errors, which are also counted in gParseErrors.
  long Parse();
  /// Returns to the start.
  void Reset();

 private:
  struct Token {
    int symbol;
    T3Token token;
    T3Scanner_tScanAttribute attribute;
  };
  /// The states of the automaton, and the depths at which a list of recipients was opened.
  struct Stack {
    std::vector<int> states;
    std::vector<size_t> address_lists;
  };

  const Token& Peek(size_t ahead) {
    if (first_ + ahead < buffer_.size()) [[likely]]
      return buffer_[first_ + ahead];
    return ReadAhead(ahead);
  }
  const Token& ReadAhead(size_t ahead);
  void DropToken() {
    if (++first_ == buffer_.size()) {
      buffer_.clear();
      first_ = 0;
    }
  }
  int Decide(const Stack& stack, int symbol, size_t ahead, int shift);
  int Action(const Stack& stack, size_t ahead);
  void PushState(Stack& stack, int state, int symbol, size_t ahead);
  bool Trial(int goal_rule, size_t ahead, int first_symbol);
  bool InAddressList(const Stack& stack) const;
  void NoteScope(const Token& token);
  void Shift(int state, const Token& token);
  void Reduce(int rule);
  void RefuseDepth();
  void Recover();
  void ReportFault(const Token& token);
  bool CouldRestart(int symbol) const;
  void InsertUntilAccepted();

  T3Scanner* scanner_;
  Errors* errors_;
  Stack stack_;
  std::vector<T3Value> values_;
  // Tokens read ahead; those before `first_` have been shifted.
  std::vector<Token> buffer_;
  size_t first_ = 0;
  T3ParserState state_;
  T3Token last_shifted_ = T3Token::EndOfFile;
  long errors_found_ = 0;
  int trial_depth_ = 0;
  bool given_up_ = false;
};
