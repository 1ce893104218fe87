#include "frontend/T3Parser.h"

#include <algorithm>
#include <array>

#include "T3GrammarRules.h"
#include "driver/diagnostics/Errors.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3ParserDefs.h"

namespace {

constexpr int kStart = 0;
constexpr size_t kExpectedTextLimit = 5000;
constexpr long kMaxInsertions = 100000;
constexpr size_t kFirstTokens = 64;

// Internal symbols: the end of the input is 0, 1 and 2 are Bison's own, tokens follow in their order.
int SymbolOf(T3Token token) {
  const int number = static_cast<int>(token);
  return number == 0 ? 0 : number + 2;
}
T3Token TokenOf(int symbol) {
  return static_cast<T3Token>(symbol == 0 ? 0 : symbol - 2);
}

/// What the tables say: above 0 a state to shift to, below 0 minus a rule to reduce, 0 a fault.
inline int TableAction(int state, int symbol) {
  const int actions = gParserStates[state].actions;
  if (actions < 0) return actions;
  const T3TableEntry entry = gParserTable[actions + symbol];
  return entry.symbol == symbol ? entry.action : 0;
}

inline const T3RuleRow& RuleRow(int rule) {
  return gParserRules[static_cast<size_t>(rule)];
}

inline int Goto(int state, const T3RuleRow& rule) {
  return gParserGotos[gParserStates[state].gotos + rule.left];
}

/// The rule that lost against the shift of `symbol` in `state`, or 0.
int LostRule(int state, int symbol) {
  const int first = gParserFirstLost[state];
  if (first < 0) return 0;
  for (const T3LostReduction* lost = gParserLostReductions + first; lost->state == state; ++lost)
    if (lost->symbol == symbol) return lost->rule;
  return 0;
}

bool IsGuardOperation(int symbol) {
  static constexpr std::array operations = {kSym_kw_timeout, kSym_kw_receive,  kSym_kw_check,
                                            kSym_kw_catch,   kSym_kw_getreply, kSym_kw_getcall,
                                            kSym_kw_trigger, kSym_kw_done,     kSym_kw_killed};
  return std::find(operations.begin(), operations.end(), symbol) != operations.end();
}
}  // namespace

/// What settles a conflict; the shift stands where it does not hold.
enum class T3Parser::Test {
  /// The name before the dot is no field's: no assignment to it follows.
  NoQualifiedField,
  /// An operation that an alternative waits for stands behind the dot.
  GuardOperation,
  /// A list of recipients is being read.
  AddressList,
  /// The head of an alternative is being read: the bracket begins the next one.
  AlternativeHead,
  /// No object identifier stands behind the dot.
  NoObjIdValue,
  /// More than a number stands in the parentheses.
  NoNumberForm
};

/// Where a test is asked: the rule that is reduced, instead of shifting `symbol`, where it holds.
struct T3Parser::Condition {
  int rule;
  int symbol;
  Test test;

  /// The condition for a rule that lost against a symbol, or null.
  static const Condition* For(int rule, int symbol);
};

const T3Parser::Condition* T3Parser::Condition::For(int rule, int symbol) {
  static constexpr Condition conditions[] = {
      {kRule_plain_id_1, kSym_Dot, Test::NoQualifiedField},
      {kRule_variable_ref_1, kSym_Dot, Test::GuardOperation},
      {kRule_variable_ref_2, kSym_Dot, Test::GuardOperation},
      {kRule_template_instance_1, kSym_Comma, Test::AddressList},
      {kRule_simple_template_2, kSym_RightParen, Test::AddressList},
      {kRule_parameterized_id_3, kSym_LeftBracket, Test::AlternativeHead},
      {kRule_ref_tail_3, kSym_LeftBracket, Test::AlternativeHead},
      {kRule_builtin_type_9, kSym_LeftBrace, Test::NoObjIdValue},
      {kRule_actual_par_prefix_1, kSym_integer_value, Test::NoNumberForm},
  };
  for (const Condition& condition : conditions)
    if (condition.rule == rule && condition.symbol == symbol) return &condition;
  return nullptr;
}

/// A stack of states that looks at another one without copying it: reductions take from below as needed.
class T3Parser::Overlay {
 public:
  explicit Overlay(const Stack& stack) : stack_(stack), kept_(stack.size()) {}

  size_t size() const { return kept_ + top_.size(); }
  int back() const { return at(size() - 1); }
  int at(size_t depth) const { return depth < kept_ ? stack_.at(depth) : top_[depth - kept_]; }
  bool InAddressList() const { return stack_.IsAddressList(size() - 1) && size() - 1 <= kept_; }
  void Push(int state) { top_.push_back(state); }
  void Reduce(int rule) {
    const T3RuleRow& row = RuleRow(rule);
    int length = row.length;
    for (; length > 0 && !top_.empty(); --length) top_.pop_back();
    kept_ -= static_cast<size_t>(length);
    Push(Goto(back(), row));
  }

 private:
  const Stack& stack_;
  size_t kept_;
  std::vector<int> top_;
};

T3Parser::T3Parser(T3Scanner* scanner, Errors* errors)
    : scanner_(scanner), errors_(errors), stack_(kStart), trial_stack_(kStart), buffer_(kFirstTokens) {
  Reset();
}

void T3Parser::Reset() {
  stack_.Restart(kStart);
  first_ = end_ = 0;
  state_ = T3ParserState{};
  state_.gLangSpec = gStringM.EmptyString();
  inserted_.clear();
  gRepairedNodes.clear();
  errors_found_ = 0;
  given_up_ = false;
  skipped_braces_ = closed_braces_ = inserted_braces_ = 0;
}

inline void T3Parser::Read(Token& token) {
  token.token = scanner_->GetToken();
  token.symbol = SymbolOf(token.token);
  token.attribute = scanner_->Attribute();
}

/// Reads the next token where none has been read ahead.
void T3Parser::ReadNext() {
  first_ = 0;
  end_ = 1;
  Read(buffer_[0]);
}

const T3Parser::Token& T3Parser::ReadAhead(size_t ahead) {
  do {
    if (end_ == buffer_.size()) buffer_.resize(2 * end_);
    Read(buffer_[end_++]);
  } while (end_ <= first_ + ahead);
  return buffer_[first_ + ahead];
}

/// Whether the test of a condition holds for a stack. What lies `ahead` may be unread (kUnread): a test that
/// depends on it does not hold then.
template <class States>
bool T3Parser::Holds(const Condition& condition, const States& states, size_t ahead) {
  const bool read = ahead != kUnread;
  switch (condition.test) {
    case Test::NoQualifiedField:
      return read && (Peek(ahead + 1).symbol != kSym_identifier || Peek(ahead + 2).symbol != kSym_Assign);
    case Test::GuardOperation:
      return read && IsGuardOperation(Peek(ahead + 1).symbol);
    case Test::AddressList:
      return states.InAddressList();
    case Test::AlternativeHead: {
      // Below a tail lies the name that it goes on from.
      const size_t root = condition.rule == kRule_ref_tail_3 ? 1 : 0;
      return gParserAlternative[states.at(states.size() - 1 - RuleRow(condition.rule).length - root)];
    }
    case Test::NoObjIdValue:
      return read && gParserBehindDot[states.at(states.size() - 2)] &&
             !Trial(kRule_goal_4, ahead, kSym_kw_objid);
    case Test::NoNumberForm:
      return read && Peek(ahead + 1).symbol != kSym_RightParen;
  }
  return false;
}

/// Settles a state in which both a shift and a reduction are possible.
template <class States>
int T3Parser::Decide(const States& states, int symbol, size_t ahead, int shift) {
  const int rule = LostRule(states.back(), symbol);
  const Condition* condition = rule == 0 ? nullptr : Condition::For(rule, symbol);
  return condition != nullptr && Holds(*condition, states, ahead) ? -rule : shift;
}

/// Reduces until `symbol`, which lies `ahead`, can be shifted, and shifts it; false when that never comes.
bool T3Parser::Take(Overlay& states, int symbol, size_t ahead) {
  for (;;) {
    int action = TableAction(states.back(), symbol);
    if (action > 0 && gParserFirstLost[states.back()] >= 0) action = Decide(states, symbol, ahead, action);
    if (action == 0) return false;
    if (action > 0) {
      states.Push(action);
      return true;
    }
    states.Reduce(-action);
  }
}

/// Whether `symbol` could come next on the stack that `states` shows.
bool T3Parser::CouldContinue(const Overlay& states, int symbol, size_t ahead) {
  if (TableAction(states.back(), symbol) == 0) return false;
  Overlay changed(states);
  return Take(changed, symbol, ahead);
}

/// What to do on a stack before a token that `next` gives where it matters, which lies `ahead`.
template <class Next>
inline int T3Parser::Action(const Stack& stack, size_t ahead, const Next& next) {
  const int state = stack.back();
  if (const int actions = gParserStates[state].actions; actions < 0) return actions;
  const int symbol = next().symbol;
  const int action = TableAction(state, symbol);
  if (action <= 0 || gParserFirstLost[state] < 0) [[likely]]
    return action;
  return Decide(stack, symbol, ahead, action);
}

inline void T3Parser::PushState(Stack& stack, int state, int symbol, size_t ahead) {
  const bool opens =
      symbol == kSym_LeftParen && gParserRecipient[stack.back()] && Trial(kRule_goal_3, ahead, -1);
  stack.Push().state = state;
  if (opens) stack.OpenAddressList();
}

/// Whether the tokens from `ahead` on form the text of a goal; `first_symbol` is a token before them that
/// was read already, or -1.
bool T3Parser::Trial(int goal_rule, size_t ahead, int first_symbol) {
  // Within the trial of a list of recipients the first parenthesis is that list's.
  if (trial_depth_ > 0) return true;
  Stack& stack = trial_stack_;
  stack.Restart(kStart);
  ++trial_depth_;
  const int done = Goto(kStart, RuleRow(goal_rule));
  bool result = false;
  for (;;) {
    const int state = stack.back();
    int action;
    int symbol = -1;
    if (first_symbol >= 0) {
      symbol = first_symbol;
      action = TableAction(state, symbol);
    } else {
      action = Action(
          stack, ahead, [&]() -> auto& { return Peek(ahead); });
      if (action > 0) symbol = Peek(ahead).symbol;
    }
    if (action == 0 || stack.size() > kMaxParseDepth) break;
    stack.MakeRoom();
    if (action > 0) {
      PushState(stack, action, symbol, ahead);
      if (first_symbol >= 0)
        first_symbol = -1;
      else
        ++ahead;
      continue;
    }
    if (-action == goal_rule) {
      result = true;
      break;
    }
    const T3RuleRow& rule = RuleRow(-action);
    stack.Pop(static_cast<size_t>(rule.length));
    const int target = Goto(stack.back(), rule);
    stack.Push().state = target;
    if (stack.back() == done && stack.size() == 2) {
      result = true;
      break;
    }
  }
  --trial_depth_;
  return result;
}

/// Keeps module and scope for the macros: a name behind its keyword begins one.
void T3Parser::NoteScope(const Token& token) {
  if (token.token == T3Token::identifier) {
    switch (last_shifted_) {
      case T3Token::kw_module:
        skipped_braces_ = closed_braces_ = inserted_braces_ = 0;
        state_.macroModuleIdent = token.attribute.ident;
        state_.macroScopeIdent = -1;
        break;
      case T3Token::kw_function:
      case T3Token::kw_testcase:
      case T3Token::kw_altstep:
        state_.macroScopeIdent = token.attribute.ident;
        break;
      default:
        break;
    }
  } else if (token.token == T3Token::kw_control) {
    state_.macroScopeIdent = -2;
  }
  last_shifted_ = token.token;
}

inline void T3Parser::Shift(int state, const Token& token) {
  T3Value& value = *stack_.Top(0);
  value.position = token.attribute.Position;
  // The members of either union begin at the same byte; which one holds is told by the token.
  static_assert(sizeof value.string == sizeof value.ident && sizeof value.flag <= sizeof value.string);
  value.string = token.attribute.string;
  state_.last_token = value.position;
  NoteScope(token);
  // A trial may read ahead, and move the token.
  PushState(stack_, state, token.symbol, 0);
}

/// What lies from `depth` of the stack on, an inserted token with it, becomes one value there.
void T3Parser::JoinInserted(size_t depth) {
  while (!inserted_.empty() && inserted_.back() >= depth) inserted_.pop_back();
  inserted_.push_back(depth);
}

/// Runs the action of a rule, if any, behind a fault: what a repair touched is noted.
void T3Parser::ActOnRepaired(const T3RuleRow& row, T3Value* result) {
  const size_t depth = stack_.size() - row.length;
  state_.repaired = !inserted_.empty() && inserted_.back() >= depth;
  if (state_.repaired) JoinInserted(depth);
  if (row.action != nullptr) row.action(*result, result + row.length - 1, state_);
  if (state_.repaired || result->position == resumed_) gRepairedNodes.insert(result->node);
}

[[gnu::always_inline]] inline void T3Parser::Reduce(int rule) {
  const T3RuleRow& row = RuleRow(rule);
  if (row.IsPlain()) return stack_.Replace(Goto(stack_.BelowTop(), row));
  const size_t length = row.length;
  T3Value* result = stack_.Top(length);
  if (length == 0) {
    result->node = nullptr;
    result->position = Peek().attribute.Position;
  }
  if (errors_found_ > 0) [[unlikely]]
    ActOnRepaired(row, result);
  else if (row.action != nullptr)
    row.action(*result, result + length - 1, state_);
  stack_.Pop(length);
  const int target = Goto(stack_.back(), row);
  stack_.Push().state = target;
}

/// Makes room for one more state; where the stack is too deep for that, this is told, and the parse is given
/// up.
bool T3Parser::IsTooDeep() {
  if (stack_.size() <= kMaxParseDepth) {
    stack_.MakeRoom();
    return false;
  }
  ++gParseErrors;
  ++errors_found_;
  given_up_ = true;
  errors_->Message("nesting is too deep", kError, Peek().attribute.Position);
  return true;
}

long T3Parser::Parse() {
  Reset();
  // A file is a list of modules; the other goals are those of trials.
  Reduce(kRule_module_list_1);
  for (;;) {
    if (stack_.IsFull() && IsTooDeep()) [[unlikely]]
      break;
    const int action = Action(
        stack_, 0, [this]() -> auto& { return Peek(); });
    if (action < 0) {
      Reduce(-action);
    } else if (action > 0) {
      const Token& token = Peek();
      const bool ends = token.symbol == 0;
      Shift(action, token);
      DropToken();
      // The end of the input was shifted: its state accepts.
      if (ends) break;
    } else {
      Recover();
      if (given_up_ || IsTooDeep()) break;
    }
  }
  return errors_found_;
}

void T3Parser::ReportFault(const Token& token) {
  const tPosition& position = token.attribute.Position;
  errors_->ErrorMessage(kCodeSyntaxError, kError, position);
  errors_->ErrorMessageI(kCodeTokenFound, kError, position, kInfoText,
                         yyGetTokenName(static_cast<unsigned short>(token.token)));
  const Overlay states(stack_);
  std::string text;
  for (int symbol = 0; symbol < kSymbolCount; ++symbol) {
    // 1 and 2 are no tokens.
    if (symbol == 1 || symbol == 2 || !CouldContinue(states, symbol, kUnread)) continue;
    const std::string name = yyGetTokenName(static_cast<unsigned short>(TokenOf(symbol)));
    if (text.size() + 1 + name.size() > kExpectedTextLimit) break;
    if (!text.empty()) text += ' ';
    text += name;
  }
  errors_->ErrorMessageI(kCodeExpectedTokens, kError, position, kInfoText, text.c_str());
}

/// Whether a statement or a declaration could come next, which a semicolon ends.
bool T3Parser::InBlock(const Overlay& states) {
  return CouldContinue(states, kSym_kw_const, kUnread);
}

/// Whether the next token could continue at some state of the way that continuation tokens lead to the end. A
/// semicolon ends what was skipped before it, and not the block of statements or declarations around.
bool T3Parser::CouldRestart() {
  const int symbol = Peek().symbol;
  if (symbol == 0) return true;
  Overlay path(stack_);
  for (long step = 0; step < kMaxInsertions; ++step) {
    if (CouldContinue(path, symbol, 0)) return true;
    const int next = gParserContinuation[path.back()];
    if (symbol == kSym_Semicolon && next == kSym_RightBrace && InBlock(path)) return false;
    if (next < 0)
      path.Reduce(-next);
    else if (next == 0 || !Take(path, next, kUnread))
      break;
  }
  return false;
}

void T3Parser::InsertUntilAccepted() {
  for (long inserted = 0; !CouldContinue(Overlay(stack_), Peek().symbol, 0); ++inserted) {
    if (inserted == kMaxInsertions) {
      given_up_ = true;
      return;
    }
    stack_.MakeRoom();
    const int next = gParserContinuation[stack_.back()];
    if (next < 0) {
      Reduce(-next);
      continue;
    }
    const int action = TableAction(stack_.back(), next);
    if (action < 0) {
      Reduce(-action);
      continue;
    }
    if (action == 0 || next == 0) {
      given_up_ = true;
      return;
    }
    Token token{next, TokenOf(next), {}};
    scanner_->ErrorAttribute(token.token, &token.attribute);
    errors_->ErrorMessageI(kCodeTokenInserted, kRepair, Peek().attribute.Position, kInfoText,
                           yyGetTokenName(static_cast<unsigned short>(token.token)));
    if (next == kSym_LeftBrace) ++inserted_braces_;
    if (next == kSym_RightBrace && inserted_braces_ > 0)
      --inserted_braces_;
    else if (next == kSym_RightBrace)
      ++closed_braces_;
    // What begins with it was not written.
    token.attribute.Position = NoPosition;
    inserted_.push_back(stack_.size());
    Shift(action, token);
  }
}

/// Whether a closing brace without its counterpart goes with a fault that was told: it closes what was
/// skipped, or, behind a module, what an inserted one has closed before.
bool T3Parser::IsSurplusBrace() {
  const bool behind_module = CouldContinue(Overlay(stack_), 0, kUnread);
  int& count = skipped_braces_ > 0 ? skipped_braces_ : closed_braces_;
  if (count == 0 || (skipped_braces_ == 0 && !behind_module)) return false;
  --count;
  return true;
}

void T3Parser::Recover() {
  if (Peek().symbol == kSym_RightBrace && IsSurplusBrace()) return DropToken();
  ++gParseErrors;
  ++errors_found_;
  if (gParseErrors > gT3CommandLine.maximum_errors) {
    given_up_ = true;
    return;
  }
  // A brace that was written has closed what an inserted one opened, and is missing at the end.
  if (Peek().symbol != 0 || inserted_braces_ == 0) ReportFault(Peek());
  // A token that cannot restart is skipped wherever it stands; each kind is tried once.
  std::vector<bool> refused(static_cast<size_t>(kSymbolCount));
  bool skipped = false, ended = false;
  while (!ended && (refused[static_cast<size_t>(Peek().symbol)] || !CouldRestart())) {
    refused[static_cast<size_t>(Peek().symbol)] = true;
    ended = Peek().symbol == kSym_Semicolon && InBlock(Overlay(stack_));
    if (Peek().symbol == kSym_LeftBrace) ++skipped_braces_;
    if (Peek().symbol == kSym_RightBrace && skipped_braces_ > 0) --skipped_braces_;
    DropToken();
    skipped = true;
  }
  resumed_ = Peek().attribute.Position;
  if (skipped) {
    errors_->ErrorMessage(kCodeRestartPoint, kInformation, resumed_);
    // What was being read is not what was written.
    JoinInserted(stack_.size() - 1);
  }
  if (!ended) InsertUntilAccepted();
}
