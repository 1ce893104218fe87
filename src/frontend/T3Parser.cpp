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
constexpr size_t kFirstValues = 64;

// Internal symbols: the end of the input is 0, 1 and 2 are Bison's own, tokens follow in their order.
int SymbolOf(T3Token token) {
  const int number = static_cast<int>(token);
  return number == 0 ? 0 : number + 2;
}
T3Token TokenOf(int symbol) {
  return static_cast<T3Token>(symbol == 0 ? 0 : symbol - 2);
}

template <typename T, size_t N>
inline const T& At(const std::array<T, N>& rows, int place) {
  return rows[static_cast<size_t>(place)];
}

/// What the tables say: above 0 a state to shift to, below 0 minus a rule to reduce, 0 a fault.
inline int TableAction(int state, int symbol) {
  const T3StateRow row = At(gParserStates, state);
  const int index = row.actions + symbol;
  if (row.actions == kNoActions || index < 0 || index > kTableLast || At(gParserCheck, index) != symbol)
    return -row.default_rule;
  const int action = At(gParserTable, index);
  return action == kTableFault ? 0 : action;
}

inline int Goto(int state, const T3RuleRow& rule) {
  const int index = rule.gotos + state;
  const bool named = index >= 0 && index <= kTableLast && At(gParserCheck, index) == state;
  return named ? At(gParserTable, index) : rule.default_goto;
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
    const T3RuleRow& row = At(gParserRules, rule);
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
    : scanner_(scanner), errors_(errors), stack_(kStart), buffer_(kFirstTokens) {
  Reset();
}

void T3Parser::Reset() {
  stack_ = Stack(kStart);
  values_.assign(value_room_ = kFirstValues, T3Value{});
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
      return gParserAlternative[states.at(states.size() - 1 - At(gParserRules, condition.rule).length -
                                          root)];
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

inline int T3Parser::Action(const Stack& stack, size_t ahead) {
  const int state = stack.back();
  const T3StateRow row = At(gParserStates, state);
  if (row.actions == kNoActions) return -row.default_rule;
  const int symbol = Peek(ahead).symbol;
  const int action = TableAction(state, symbol);
  if (action <= 0 || gParserFirstLost[state] < 0) [[likely]]
    return action;
  return Decide(stack, symbol, ahead, action);
}

/// The place of the value that belongs to depth `at` of the stack.
inline T3Value& T3Parser::ValueAt(size_t at) {
  if (at >= value_room_) [[unlikely]]
    values_.resize(value_room_ = 2 * at);
  return values_[at];
}

inline void T3Parser::PushState(Stack& stack, int state, int symbol, size_t ahead) {
  const bool opens =
      symbol == kSym_LeftParen && gParserRecipient[stack.back()] && Trial(kRule_goal_3, ahead, -1);
  stack.Push(state);
  if (opens) stack.OpenAddressList();
}

/// Whether the tokens from `ahead` on form the text of a goal; `first_symbol` is a token before them that
/// was read already, or -1.
bool T3Parser::Trial(int goal_rule, size_t ahead, int first_symbol) {
  Stack stack(kStart);
  // Within the trial of a list of recipients the first parenthesis is that list's.
  if (trial_depth_ > 0) return true;
  ++trial_depth_;
  const int done = Goto(kStart, At(gParserRules, goal_rule));
  bool result = false;
  for (;;) {
    const int state = stack.back();
    int action;
    int symbol = -1;
    if (first_symbol >= 0) {
      symbol = first_symbol;
      action = TableAction(state, symbol);
    } else {
      action = Action(stack, ahead);
      if (action > 0) symbol = Peek(ahead).symbol;
    }
    if (action == 0 || stack.size() > kMaxParseDepth) break;
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
    const T3RuleRow& rule = At(gParserRules, -action);
    stack.Pop(static_cast<size_t>(rule.length));
    stack.Push(Goto(stack.back(), rule));
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
  T3Value& value = ValueAt(stack_.size());
  value.position = token.attribute.Position;
  // The members of either union begin at the same byte; which one holds is told by the token.
  static_assert(sizeof value.string == sizeof value.ident && sizeof value.flag <= sizeof value.string);
  value.string = token.attribute.string;
  state_.last_token = value.position;
  NoteScope(token);
  PushState(stack_, state, token.symbol, 0);
}

/// What lies from `depth` of the stack on, an inserted token with it, becomes one value there.
void T3Parser::JoinInserted(size_t depth) {
  while (!inserted_.empty() && inserted_.back() >= depth) inserted_.pop_back();
  inserted_.push_back(depth);
}

[[gnu::always_inline]] inline void T3Parser::Reduce(int rule) {
  const T3RuleRow& row = At(gParserRules, rule);
  if (row.plain) return stack_.Replace(Goto(stack_.BelowTop(), row));
  const auto length = static_cast<size_t>(row.length);
  const size_t depth = stack_.size();
  T3Value& place = ValueAt(depth - length);
  T3Value result = length > 0 ? place : T3Value{{}, Peek(0).attribute.Position};
  const bool repaired = !inserted_.empty() && inserted_.back() >= depth - length;
  if (repaired) [[unlikely]]
    JoinInserted(depth - length);
  state_.repaired = repaired;
  T3Actions(rule, result, &place + length - 1, state_);
  if (repaired || (result.position == resumed_ && errors_found_ > 0)) [[unlikely]]
    gRepairedNodes.insert(result.node);
  place = result;
  stack_.Pop(length);
  stack_.Push(Goto(stack_.back(), row));
}

void T3Parser::RefuseDepth() {
  ++gParseErrors;
  ++errors_found_;
  given_up_ = true;
  errors_->Message("nesting is too deep", kError, Peek(0).attribute.Position);
}

long T3Parser::Parse() {
  Reset();
  // A file is a list of modules; the other goals are those of trials.
  Reduce(kRule_module_list_1);
  while (!given_up_) {
    if (stack_.size() > kMaxParseDepth) [[unlikely]] {
      RefuseDepth();
      break;
    }
    const int action = Action(stack_, 0);
    if (action > 0) {
      // A trial may read ahead, and move the tokens.
      const Token token = Peek(0);
      Shift(action, token);
      DropToken();
      // The end of the input was shifted: its state accepts.
      if (token.symbol == 0) break;
    } else if (action < 0) {
      Reduce(-action);
    } else {
      Recover();
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
  const int symbol = Peek(0).symbol;
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
  for (long inserted = 0; !CouldContinue(Overlay(stack_), Peek(0).symbol, 0); ++inserted) {
    if (inserted == kMaxInsertions) {
      given_up_ = true;
      return;
    }
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
    errors_->ErrorMessageI(kCodeTokenInserted, kRepair, Peek(0).attribute.Position, kInfoText,
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
  if (Peek(0).symbol == kSym_RightBrace && IsSurplusBrace()) return DropToken();
  ++gParseErrors;
  ++errors_found_;
  if (gParseErrors > gT3CommandLine.maximum_errors) {
    given_up_ = true;
    return;
  }
  // A brace that was written has closed what an inserted one opened, and is missing at the end.
  if (Peek(0).symbol != 0 || inserted_braces_ == 0) ReportFault(Peek(0));
  // A token that cannot restart is skipped wherever it stands; each kind is tried once.
  std::vector<bool> refused(static_cast<size_t>(kSymbolCount));
  bool skipped = false, ended = false;
  while (!ended && (refused[static_cast<size_t>(Peek(0).symbol)] || !CouldRestart())) {
    refused[static_cast<size_t>(Peek(0).symbol)] = true;
    ended = Peek(0).symbol == kSym_Semicolon && InBlock(Overlay(stack_));
    if (Peek(0).symbol == kSym_LeftBrace) ++skipped_braces_;
    if (Peek(0).symbol == kSym_RightBrace && skipped_braces_ > 0) --skipped_braces_;
    DropToken();
    skipped = true;
  }
  resumed_ = Peek(0).attribute.Position;
  if (skipped) {
    errors_->ErrorMessage(kCodeRestartPoint, kInformation, resumed_);
    // What was being read is not what was written.
    JoinInserted(stack_.size() - 1);
  }
  if (!ended) InsertUntilAccepted();
}
