// Interleave: all orders in which its branches can be gone through, as alternatives in each other. What is
// enabled stands in an agenda; behind each alternative that is taken stands the loop for what is left.
#include <algorithm>
#include <memory>
#include <utility>

#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "generator/behaviour/CGAlternatives.h"
#include "generator/behaviour/CGAltParts.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGModuleText.h"
#include "generator/behaviour/CGStatement.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace {
using namespace cgalt;

// From how many enabled alternatives on the user is told what they come to; the next time from more.
constexpr size_t kInterleaveWarning = 5;
// Every how many branches of a run the user is told.
constexpr uint64_t kInterleaveBranches = 1000;
uint64_t g_expansions = 0;
// What the memory of a machine holds of them.
constexpr int kMostBranches = 200000;

// Statements that follow, and what follows behind them. Behind the branches of an interleave in another one
// nothing follows before all of them have come to their ends. `left` is the alternative or interleave of a
// branch that a `break` leaves to go on here.
struct Continuation {
  T3Tree_Node* statements;
  bool joins_branches;
  std::shared_ptr<Continuation> next;
  T3Tree_Node* left;
};
using ContinuationRef = std::shared_ptr<Continuation>;

ContinuationRef Behind(T3Tree_Node* statements, ContinuationRef next, T3Tree_Node* left = nullptr) {
  return std::make_shared<Continuation>(Continuation{statements, false, std::move(next), left});
}

// Alternatives of which one is taken: a branch of the interleave, an operation in a branch, or an `alt`
// there.
struct Entry {
  std::vector<_T3Alt*> alternatives;
  ContinuationRef then;
};
using Agenda = std::vector<Entry>;

void CollectAltsAsManySets(T3Tree_Node* alternatives, const ContinuationRef& then, Agenda& agenda) {
  for (auto* at : Items<_T3Alt>(alternatives)) agenda.push_back({{at}, then});
}

void CollectAltsAsSingleSet(T3Tree_Node* alternatives, const ContinuationRef& then, Agenda& agenda) {
  Entry entry{{}, then};
  for (auto* at : Items<_T3Alt>(alternatives)) entry.alternatives.push_back(at);
  agenda.push_back(entry);
}

Agenda SelectFromAgenda(const Agenda& agenda, size_t taken) {
  Agenda others = agenda;
  others.erase(others.begin() + static_cast<ptrdiff_t>(taken));
  return others;
}

bool Awaits(const Entry& entry, const ContinuationRef& join) {
  for (const Continuation* at = entry.then.get(); at != nullptr; at = at->next.get())
    if (at == join.get()) return true;
  return false;
}

bool IsAwaited(const ContinuationRef& join, const Agenda& agenda) {
  return std::any_of(agenda.begin(), agenda.end(), [&](const Entry& entry) { return Awaits(entry, join); });
}

std::string Faculty(size_t n) {
  double result = 1;
  for (size_t i = 2; i <= n; ++i) result *= static_cast<double>(i);
  std::string text = std::to_string(result);
  return text.substr(0, text.find('.'));
}

// A construct on the way from the outermost loop to where code is being written: a block, or the memory scope
// of a loop.
struct Open {
  T3BlockStmt* block;
  std::string scope;
};

// A statement that is being written, what follows it, what else is enabled, and the label of its scope's end.
// Nothing follows a statement that has `left`.
struct Here {
  T3Tree_Node* statement = nullptr;
  ContinuationRef at;
  Agenda agenda;
  std::string end_label;
  bool left = false;
};

class Interleave {
 public:
  Interleave(T3InterleaveStmt* statement, CFunction& function)
      : statement_(statement), function_(function), outer_(g_current) {
    g_current = this;
  }
  Interleave(const Interleave&) = delete;
  Interleave& operator=(const Interleave&) = delete;
  ~Interleave() { g_current = outer_; }

  void Generate();
  void LeaveNested(T3Tree_Node* from, T3Tree_Node* owner);
  T3InterleaveStmt* statement() const { return statement_; }
  const std::vector<Open>& open() const { return open_; }
  static Interleave* Current() { return g_current; }

 private:
  void GenInterleave(const Agenda& agenda);
  void Discard(_T3Alt* alt, const AltNames& names);
  void Take(_T3Alt* alt, const ContinuationRef& then, const Agenda& others);
  void Follow(const ContinuationRef& at, const Agenda& agenda);
  void FollowStatements(Here& here);
  bool Enable(T3Tree_Node* statement, const ContinuationRef& then, Agenda& agenda);
  void MarkAlt();
  void CheckStateExplosion(const Agenda& agenda);
  void CountExpansion();

  static Interleave* g_current;
  T3InterleaveStmt* statement_;
  CFunction& function_;
  Interleave* outer_;
  std::vector<Open> open_;
  Here* here_ = nullptr;
  size_t warning_max_ = kInterleaveWarning;
  int expansions_ = 0;
};
Interleave* Interleave::g_current = nullptr;

void Interleave::MarkAlt() {
  CGCommentPlace(function_, statement_->position, "T3AltStmt");
  CGSetSourceLine(function_, statement_->position);
}

void Interleave::CheckStateExplosion(const Agenda& agenda) {
  size_t enabled = 0;
  for (const Entry& entry : agenda) enabled += entry.alternatives.size();
  if (enabled <= warning_max_) return;
  warning_max_ = enabled;
  vexa_warning(GetVerbosity(CGCurrentModule()),
               "State explosion! Interleave statement with " + std::to_string(enabled) +
                   " enabled alternatives. This expands to " + Faculty(enabled) +
                   " interleavings. Consider using parallel test components.",
               statement_->position);
}

void Interleave::CountExpansion() {
  if (expansions_ == kMostBranches) cg::NotSupported(statement_);
  ++expansions_;
  if (++g_expansions % kInterleaveBranches == 0)
    vexa_warning(GetVerbosity(CGCurrentModule()),
                 "Interleave statement so far has created " + std::to_string(g_expansions) + " branches",
                 statement_->position);
}

void Interleave::Generate() {
  Agenda agenda;
  CollectAltsAsManySets(statement_->alts, nullptr, agenda);
  GenInterleave(agenda);
}

void Interleave::GenInterleave(const Agenda& agenda) {
  if (agenda.empty()) return;
  CheckStateExplosion(agenda);
  MarkAlt();
  const AltNames names = BeginAlt(function_);
  if (open_.empty()) statement_->cold().vexa_break_label = gT3AST.KeepText(names.break_label);
  open_.push_back({nullptr, names.scope});
  BeginRounds(names, function_);
  T3Tree_Node* alternatives = _sgT3NoAlt();
  for (size_t i = 0; i < agenda.size(); ++i)
    for (_T3Alt* alt : agenda[i].alternatives) {
      if (!alt->is<T3GuardedAlt>()) cg::NotSupported(alt);
      CountExpansion();
      T3Tree_Node* operation = alt->as<T3GuardedAlt>()->operation;
      alternatives = gT3AST.mT3GuardedAlt(alt->position, alternatives, alt->guard, alt->body, operation);
      GenBranch(alt, names, function_, [&] { Take(alt, agenda[i].then, SelectFromAgenda(agenda, i)); });
      if (operation->is<T3TriggerStmt>()) Discard(alt, names);
    }
  TryDefaults(names, function_);
  MarkAlt();
  Wait(alternatives, function_);
  EndRounds(names, function_);
  open_.pop_back();
}

// What a trigger does not want.
void Interleave::Discard(_T3Alt* alt, const AltNames& names) {
  T3AltStmt* owner = AltAround(_sgT3NoAlt(), statement_);
  StoreNames(owner, names);
  T3GuardedAlt* others = ExpandTrigger(alt, owner);
  GenBranch(others, names, function_, [&] { CGStatement(others->body, function_); });
}

// The body of an alternative, and in it all that can follow.
void Interleave::Take(_T3Alt* alt, const ContinuationRef& then, const Agenda& others) {
  auto* block = alt->body->try_as<T3BlockStmt>();
  if (block == nullptr) return Follow(Behind(alt->body, then), others);
  open_.push_back({block, ""});
  CGBlockAround(block, function_, [&] { Follow(Behind(block->body, then), others); });
  open_.pop_back();
}

// True for a statement that waits: it is one of the agenda from now on.
bool Interleave::Enable(T3Tree_Node* statement, const ContinuationRef& then, Agenda& agenda) {
  const ContinuationRef behind = Behind(statement->as<_T3Stmt>()->next, then, statement);
  if (IsBlockingOperation(statement)) {
    agenda.push_back({{GuardedAlt(statement)}, behind});
    return true;
  }
  auto* alt = statement->try_as<T3AltStmt>();
  // With an `else` it does not wait.
  if (alt != nullptr && !alt->else_branch->is<_T3Stmt>()) {
    alt->cold().vexa_break_label = "";
    CollectAltsAsSingleSet(alt->alts, behind, agenda);
    return true;
  }
  auto* interleave = statement->try_as<T3InterleaveStmt>();
  if (interleave == nullptr) return false;
  interleave->cold().vexa_break_label = "";
  const auto join = std::make_shared<Continuation>(Continuation{nullptr, true, behind, statement});
  CollectAltsAsManySets(interleave->alts, join, agenda);
  return true;
}

// What follows, up to the next statement that waits, and in it all that can follow that.
void Interleave::Follow(const ContinuationRef& at, const Agenda& agenda) {
  Here here;
  here.at = at;
  here.agenda = agenda;
  Here* outer = std::exchange(here_, &here);
  FollowStatements(here);
  here_ = outer;
  if (!here.end_label.empty()) function_.addLabel(here.end_label);
}

void Interleave::FollowStatements(Here& here) {
  for (; here.at != nullptr; here.at = here.at->next) {
    if (here.at->joins_branches) {
      if (IsAwaited(here.at, here.agenda)) break;
      continue;
    }
    for (T3Tree_Node* statement = here.at->statements; statement->is<_T3Stmt>();
         statement = statement->as<_T3Stmt>()->next) {
      here.statement = statement;
      if (Enable(statement, here.at->next, here.agenda)) return GenInterleave(here.agenda);
      // Nothing in an interleave jumps to a label, which would be written once for each order.
      if (statement->is<T3LabelStmt>())
        CallComponentControl(function_);
      else
        CGOneStatement(statement, function_);
      if (here.left) return;
    }
  }
  GenInterleave(here.agenda);
}

// A way out of an alternative or interleave that stands in a branch: what follows that is written here once
// more, without the branches that are left with it, and goes on behind all that the current scope does.
void Interleave::LeaveNested(T3Tree_Node* from, T3Tree_Node* owner) {
  Here* here = here_;
  ContinuationRef at = here == nullptr ? nullptr : here->at;
  while (at != nullptr && at->left != owner) at = at->next;
  if (at == nullptr) cg::NotSupported(owner);
  Agenda others;
  for (const Entry& entry : here->agenda)
    if (!at->joins_branches || !Awaits(entry, at)) others.push_back(entry);
  here->left = from == here->statement;
  if (here->left) return Follow(at, others);
  if (here->end_label.empty()) here->end_label = function_.getNewLabel();
  TidyUp(from, here->statement->place->vexa_enclosing_block, function_);
  Follow(at, others);
  function_.addGoto(here->end_label);
}
}  // namespace

void CGInterleave(T3InterleaveStmt* statement, CFunction& function) {
  Interleave(statement, function).Generate();
}

void CGLeaveNested(T3Tree_Node* from, T3Tree_Node* owner) {
  Interleave* interleave = Interleave::Current();
  if (interleave == nullptr) cg::NotSupported(owner);
  interleave->LeaveNested(from, owner);
}

void CGLeaveInterleave(T3Tree_Node* from, T3InterleaveStmt* statement, CFunction& function) {
  const Interleave* interleave = Interleave::Current();
  if (interleave == nullptr || interleave->statement() != statement) cg::NotSupported(statement);
  T3Tree_Node* branch = from->place->vexa_enclosing_block;
  while (branch->place->vexa_enclosing_block != statement) branch = branch->place->vexa_enclosing_block;
  TidyUp(from, branch, function);
  // The outermost loop ends behind its label.
  const std::vector<Open>& open = interleave->open();
  for (size_t i = open.size() - 1; i > 0; --i) {
    if (open[i].block != nullptr)
      LeaveBlock(open[i].block, function);
    else
      function.call(LUMO_MEMORY_TEMP_END, {"&(" + open[i].scope + ")", VEXA_CONTEXT});
  }
}
