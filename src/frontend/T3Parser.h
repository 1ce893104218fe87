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
  /// The states of the automaton with the values of their symbols, and the depths at which a list of
  /// recipients was opened. Whoever pushes makes room before.
  class Stack {
   public:
    explicit Stack(int start) : slots_(kFirstRoom) { Restart(start); }
    Stack(const Stack&) = delete;
    Stack& operator=(const Stack&) = delete;
    void Restart(int start) {
      Place(0);
      top_->state = start;
      innermost_list_ = 0;
      outer_lists_.clear();
    }
    size_t size() const { return static_cast<size_t>(top_ - slots_.data()) + 1; }
    int back() const { return top_->state; }
    int at(size_t depth) const { return slots_[depth].state; }
    /// Makes room for one more state.
    void MakeRoom() {
      if (top_ == last_) [[unlikely]]
        Grow();
    }
    /// Whether there is no room for another state; a stack that is too deep has none when it has become so.
    bool IsFull() const { return top_ == last_; }
    /// A new slot on top, whose state and value the caller sets.
    T3Value& Push() { return *++top_; }
    /// The first of `count` slots on top, or the free one above for none.
    T3Value* Top(size_t count) { return top_ + 1 - count; }
    void Pop(size_t count) {
      top_ -= count;
      if (innermost_list_ != 0) [[unlikely]]
        CloseAddressLists();
    }
    int BelowTop() const { return top_[-1].state; }
    /// Exchanges the state on top, which is not the parenthesis of a list of recipients.
    void Replace(int state) { top_->state = state; }
    void OpenAddressList() {
      outer_lists_.push_back(innermost_list_);
      innermost_list_ = size();
    }
    bool InAddressList() const {
      // On top lies the first element, below it the parenthesis.
      return innermost_list_ != 0 && innermost_list_ == size() - 1;
    }
    /// Whether a list of recipients was opened at a depth.
    bool IsAddressList(size_t depth) const {
      return depth != 0 &&
             (depth == innermost_list_ || std::ranges::find(outer_lists_, depth) != outer_lists_.end());
    }

   private:
    void Place(size_t top) {
      const size_t last = slots_.size() - 1;
      top_ = slots_.data() + top;
      last_ = slots_.data() + (top < kMaxParseDepth ? std::min(last, kMaxParseDepth) : last);
    }
    void Grow() {
      const size_t top = size() - 1;
      if (top + 1 == slots_.size()) slots_.resize(2 * slots_.size());
      Place(top);
    }
    void CloseAddressLists() {
      while (innermost_list_ > size()) {
        innermost_list_ = outer_lists_.back();
        outer_lists_.pop_back();
      }
    }

    static constexpr size_t kFirstRoom = 64;
    std::vector<T3Value> slots_;
    // The slot on top, and the one that is it when the stack is full or too deep.
    T3Value* top_ = nullptr;
    T3Value* last_ = nullptr;
    // The depths at which lists of recipients were opened; 0 for none.
    size_t innermost_list_ = 0;
    std::vector<size_t> outer_lists_;
  };

  const Token& Peek(size_t ahead) {
    if (first_ + ahead < end_) [[likely]]
      return buffer_[first_ + ahead];
    return ReadAhead(ahead);
  }
  const Token& Peek() {
    if (first_ == end_) ReadNext();
    return buffer_[first_];
  }
  void Read(Token& token);
  void ReadNext();
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
  template <class Next>
  int Action(const Stack& stack, size_t ahead, const Next& next);
  bool IsTooDeep();
  void PushState(Stack& stack, int state, int symbol, size_t ahead);
  bool Trial(int goal_rule, size_t ahead, int first_symbol);
  void NoteScope(const Token& token);
  void Shift(int state, const Token& token);
  void Reduce(int rule);
  void JoinInserted(size_t depth);
  void ActOnRepaired(const T3RuleRow& row, T3Value* result);
  void Recover();
  void ReportFault(const Token& token);
  bool IsSurplusBrace();
  bool InBlock(const Overlay& states);
  bool CouldRestart();
  void InsertUntilAccepted();

  T3Scanner* scanner_;
  Errors* errors_;
  Stack stack_;
  // That of a trial, of which there is one at a time.
  Stack trial_stack_;
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
