// The parser: an LALR(1) automaton over the tables that Bison makes of T3Grammar.y, with lookahead beyond
// one token for the decisions that need it, and repair of faults by skipping and inserting tokens, so that
// the parse always reaches the end of the file.
#pragma once

#include <algorithm>
#include <cstdint>
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
  /// The states of the automaton, and the depths at which a list of recipients was opened. A state is set
  /// when the one below it is on top; nothing is moved or cleared for one that is taken off.
  class Stack {
   public:
    explicit Stack(int start) : states_(kFirstRoom), depth_(1) { states_[0] = start; }
    size_t size() const { return depth_; }
    int back() const { return states_[depth_ - 1]; }
    int at(size_t depth) const { return states_[depth]; }
    void Push(int state) {
      if (depth_ == states_.size()) [[unlikely]]
        states_.resize(2 * depth_);
      states_[depth_++] = state;
    }
    void Pop(size_t count) {
      depth_ -= count;
      while (innermost_list_ > depth_) CloseAddressList();
    }
    int BelowTop() const { return states_[depth_ - 2]; }
    /// Exchanges the state on top, which is not the parenthesis of a list of recipients.
    void Replace(int state) { states_[depth_ - 1] = state; }
    void OpenAddressList() {
      outer_lists_.push_back(innermost_list_);
      innermost_list_ = depth_;
    }
    bool InAddressList() const {
      // On top lies the first element, below it the parenthesis.
      return innermost_list_ != 0 && innermost_list_ == depth_ - 1;
    }
    /// Whether a list of recipients was opened at a depth.
    bool IsAddressList(size_t depth) const {
      return depth != 0 &&
             (depth == innermost_list_ || std::ranges::find(outer_lists_, depth) != outer_lists_.end());
    }

   private:
    void CloseAddressList() {
      innermost_list_ = outer_lists_.back();
      outer_lists_.pop_back();
    }

    static constexpr size_t kFirstRoom = 512;
    std::vector<int> states_;
    size_t depth_;
    // The depths at which lists of recipients were opened; 0 for none.
    size_t innermost_list_ = 0;
    std::vector<size_t> outer_lists_;
  };

  const Token& Peek(size_t ahead) {
    if (first_ + ahead < end_) [[likely]]
      return buffer_[first_ + ahead];
    return ReadAhead(ahead);
  }
  void Read(Token& token);
  const Token& ReadAhead(size_t ahead);
  void DropToken() {
    if (++first_ == end_) first_ = end_ = 0;
  }
  class Overlay;
  /// In place of a number of tokens ahead: what stands there is not known.
  static constexpr size_t kUnread = SIZE_MAX;
  enum class Test;
  struct Condition;
  template <class States>
  bool Holds(const Condition& condition, const States& states, size_t ahead);
  template <class States>
  int Decide(const States& states, int symbol, size_t ahead, int shift);
  bool Take(Overlay& states, int symbol, size_t ahead);
  bool CouldContinue(const Overlay& states, int symbol, size_t ahead);
  int Action(const Stack& stack, size_t ahead);
  void PushState(Stack& stack, int state, int symbol, size_t ahead);
  bool Trial(int goal_rule, size_t ahead, int first_symbol);
  void NoteScope(const Token& token);
  void Shift(int state, const Token& token);
  void Reduce(int rule);
  void JoinInserted(size_t depth);
  T3Value& ValueAt(size_t at);
  void RefuseDepth();
  void Recover();
  void ReportFault(const Token& token);
  bool IsSurplusBrace();
  bool InBlock(const Overlay& states);
  bool CouldRestart();
  void InsertUntilAccepted();

  T3Scanner* scanner_;
  Errors* errors_;
  Stack stack_;
  // The value of each state on the stack.
  std::vector<T3Value> values_;
  size_t value_room_ = 0;
  // Tokens read ahead lie from `first_` up to `end_`.
  std::vector<Token> buffer_;
  size_t first_ = 0;
  size_t end_ = 0;
  // The depths of the values that a repair touched, lowest first: they hold a token that it inserted, or
  // others were left out behind them.
  std::vector<size_t> inserted_;
  // Where reading went on after the last fault: what begins there follows from it.
  tPosition resumed_ = NoPosition;
  T3ParserState state_;
  T3Token last_shifted_ = T3Token::EndOfFile;
  long errors_found_ = 0;
  int trial_depth_ = 0;
  bool given_up_ = false;
  // Opening braces that were skipped, closing ones that were inserted for none of these, and opening ones
  // that were.
  int skipped_braces_ = 0, closed_braces_ = 0, inserted_braces_ = 0;
};
