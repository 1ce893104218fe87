// Variables that are read before anything has been assigned to them on any way that leads there. Each body is
// walked in the order of its statements when the evaluation enters it; what a branch assigns counts behind
// it, what a loop's body assigns does not. What is read too early is told when the evaluation comes by.
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Members.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/types/T3References.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3KindCover.h"
#include "frontend/T3Lists.h"
#include "support/Idents.h"

namespace {
// The names that are read too early, by their numbers.
std::unordered_set<uint32_t>& g_early = *new std::unordered_set<uint32_t>;

class BodyWalk {
 public:
  void Enter(T3Tree_Node* decl);
  void List(T3Tree_Node* list);
  void Parameters(T3Tree_Node* fpl);
  void Declaration(T3Tree_Node* decl);
  void Declarations(T3Tree_Node* decls);

 private:
  using Bits = std::vector<size_t>;

  void Statement(T3Tree_Node* statement);
  void Branches(T3IfStmt* statement);
  void Loop(_T3LoopStmt* statement);
  void Alternatives(T3Tree_Node* alts, T3Tree_Node* else_branch);
  void Variable(T3VarDecl* decl);
  void Reads(T3Tree_Node* root);
  void Call(T3Parameterization* call);
  void Redirect(T3PortRedirect* redirect);
  void Decoding(T3DecValue* decoding);
  void Read(T3Tree_Node* name);
  void Write(T3Tree_Node* target);

  void Set(size_t variable);
  /// Walks what `walk` walks, and takes back what was assigned there; returns it.
  template <class Walk>
  Bits Apart(const Walk& walk);
  void SetAll(const Bits& variables);

  /// True for a field or an element, which is behind a reference to the whole.
  bool IsPart(T3Tree_Node* target) const {
    return target->is<T3Subscription>() || (target->is<T3Qualifier>() && VariableOf(target) == nullptr);
  }
  /// The variable that a name stands for, if it is one that is looked after.
  const size_t* VariableOf(T3Tree_Node* name) const;

  // The variables that are looked after, by the numbers of their declarations; and their names. Those that
  // have a value from the start are not among them.
  std::unordered_map<uint32_t, size_t> variables_;
  std::unordered_set<tIdent> names_;
  std::vector<bool> assigned_;
  // What was assigned, in order.
  Bits trail_;
};

void BodyWalk::Enter(T3Tree_Node* decl) {
  names_.insert(T3Is<_T3Decl>(decl) ? decl->as<_T3Decl>()->name : decl->as<_T3FormalPar>()->name);
  if (variables_.try_emplace(decl->number, assigned_.size()).second) assigned_.push_back(false);
}

void BodyWalk::Set(size_t variable) {
  if (assigned_[variable]) return;
  assigned_[variable] = true;
  trail_.push_back(variable);
}

void BodyWalk::SetAll(const Bits& variables) {
  for (const size_t variable : variables) Set(variable);
}

template <class Walk>
BodyWalk::Bits BodyWalk::Apart(const Walk& walk) {
  const size_t mark = trail_.size();
  walk();
  Bits made(trail_.begin() + static_cast<Bits::difference_type>(mark), trail_.end());
  for (const size_t variable : made) assigned_[variable] = false;
  trail_.resize(mark);
  return made;
}

// All parameters but those that only give back have a value.
void BodyWalk::Parameters(T3Tree_Node* fpl) {
  for (auto* at : Items<_T3FormalPar>(fpl)) {
    auto* par = at->try_as<_T3TypedFormal>();
    if (par != nullptr && par->pass == t3_par_pass_t::Out) Enter(par);
  }
}

void BodyWalk::Declaration(T3Tree_Node* decl) {
  if (auto* variable = decl->try_as<T3VarDecl>())
    Variable(variable);
  else if (auto* value = decl->try_as<T3TemplateDecl>())
    Reads(value->definition);
  else if (auto* constant = decl->try_as<T3ConstDecl>())
    Reads(constant->value);
}

void BodyWalk::Declarations(T3Tree_Node* decls) {
  for (auto* at : Items<_T3Decl>(decls)) Declaration(at);
}

// ---- Expressions ----

// The last part of a name, alone or behind that of its module.
tIdent NameOf(T3Tree_Node* name) {
  if (auto* identifier = name->try_as<T3Identifier>()) return identifier->id;
  auto* qualifier = name->try_as<T3Qualifier>();
  return qualifier != nullptr && qualifier->base->is<T3Identifier>() ? qualifier->id : NoIdent;
}

// Few names have to be looked up: those that a variable without a value has.
const size_t* BodyWalk::VariableOf(T3Tree_Node* name) const {
  if (names_.count(NameOf(name)) == 0) return nullptr;
  T3Tree_Node* def = DefQuietly(name);
  const auto found = def == nullptr ? variables_.end() : variables_.find(def->number);
  return found == variables_.end() ? nullptr : &found->second;
}

void BodyWalk::Read(T3Tree_Node* name) {
  const size_t* variable = VariableOf(name);
  if (variable != nullptr && !assigned_[*variable]) g_early.insert(name->number);
}

// The parameter at a position, null behind the last one.
T3Tree_Node* Formal(T3Tree_Node* formals, size_t position) {
  for (const auto [index, formal] : Numbered<_T3FormalPar>(formals))
    if (index == position) return formal;
  return nullptr;
}

bool IsOutParameter(T3Parameterization* call, size_t index) {
  T3Tree_Node* formal = Formal(FormalParametersOf(DefQuietly(call->base)), index);
  return T3Is<_T3TypedFormal>(formal) && formal->as<_T3TypedFormal>()->pass == t3_par_pass_t::Out;
}

// The indices on the way to what is assigned are read.
void BodyWalk::Write(T3Tree_Node* target) {
  while (IsPart(target)) {
    if (auto* subscription = target->try_as<T3Subscription>()) Reads(subscription->index);
    target = target->as<_T3Qualification>()->base;
  }
  if (NameOf(target) == NoIdent) return Reads(target);
  if (const size_t* variable = VariableOf(target)) Set(*variable);
}

// The kind of a parameter matters for variables that have no value yet.
void BodyWalk::Call(T3Parameterization* call) {
  Reads(call->base);
  for (const auto [index, at] : Numbered<T3ActualPar>(call->apl)) {
    T3Tree_Node* actual = at->expression;
    if (auto* definition = actual->try_as<T3TemplateDef>()) actual = definition->constraint;
    T3Tree_Node* root = actual;
    while (IsPart(root)) root = root->as<_T3Qualification>()->base;
    if (VariableOf(root) != nullptr && IsOutParameter(call, index))
      Write(actual);
    else
      Reads(at->expression);
  }
}

// What is decoded into gets its value there.
void BodyWalk::Decoding(T3DecValue* decoding) {
  Reads(decoding->value);
  Write(decoding->decoded_value);
}

void BodyWalk::Redirect(T3PortRedirect* redirect) {
  for (T3Tree_Node* target : {redirect->redirect_value, redirect->redirect_sender})
    if (IsGiven(target)) Write(target);
  for (auto* at : Items<T3FieldValue>(redirect->redirect_params))
    if (IsGiven(at->value)) Write(at->value);
}

// What asks whether there is a value does not need one.
bool AsksForValue(T3Tree_Node* node) {
  return node->is<T3IsPresent>() || node->is<T3IsChosen>() || node->is<T3IsValue>();
}

// Where each variable has had a value from the start there is nothing to find.
void BodyWalk::Reads(T3Tree_Node* root) {
  if (root == nullptr || variables_.empty()) return;
  ForEachInSubtree(root, [this](T3Tree_Node* node) {
    Read(node);
    if (auto* redirect = node->try_as<T3PortRedirect>()) Redirect(redirect);
    if (auto* call = node->try_as<T3Parameterization>()) Call(call);
    if (auto* decoding = node->try_as<T3DecValue>()) Decoding(decoding);
    return !node->is<T3PortRedirect>() && !node->is<T3Parameterization>() && !node->is<T3DecValue>() &&
           !AsksForValue(node) && !node->is<_T3Type>();
  });
}

// ---- Statements ----

bool HasFirstValue(T3VarDecl* decl) {
  return IsGiven(decl->value) || T3Is<T3TemplateDef>(decl->value);
}

void BodyWalk::Variable(T3VarDecl* decl) {
  const bool is_known = names_.count(decl->name) > 0;
  Enter(decl);
  // A loop that comes by again finds it as it was declared.
  assigned_[variables_[decl->number]] = false;
  if (!HasFirstValue(decl)) return;
  Reads(decl->value);
  variables_.erase(decl->number);
  if (!is_known) names_.erase(decl->name);
}

// A chain of `else if` is followed in a loop.
void BodyWalk::Branches(T3IfStmt* statement) {
  Bits assigned;
  const auto take = [&assigned](const Bits& made) {
    assigned.insert(assigned.end(), made.begin(), made.end());
  };
  for (T3IfStmt* at = statement; at != nullptr;) {
    Reads(at->condition);
    take(Apart([&] { List(at->then_stmt); }));
    T3Tree_Node* other = at->else_stmt;
    const bool chain = T3Is<T3IfStmt>(other) && !T3Is<_T3Stmt>(other->as<T3IfStmt>()->next);
    if (!chain) take(Apart([&] { List(other); }));
    at = chain ? other->as<T3IfStmt>() : nullptr;
  }
  SetAll(assigned);
}

void BodyWalk::Loop(_T3LoopStmt* statement) {
  if (statement->is<T3DoWhileStmt>()) {
    List(statement->body);
    return Reads(statement->condition);
  }
  auto* counted = statement->try_as<T3ForStmt>();
  if (counted != nullptr) List(counted->init);
  Reads(statement->condition);
  Apart([&] {
    List(statement->body);
    if (counted != nullptr) List(counted->step);
  });
}

void BodyWalk::Alternatives(T3Tree_Node* alts, T3Tree_Node* else_branch) {
  Bits assigned;
  const auto take = [&assigned](const Bits& made) {
    assigned.insert(assigned.end(), made.begin(), made.end());
  };
  for (auto* at : Items<_T3Alt>(alts))
    take(Apart([&] {
      auto* alt = at;
      Reads(alt->guard);
      if (auto* guarded = alt->try_as<T3GuardedAlt>())
        List(guarded->operation);
      else
        Reads(alt->as<T3TestStepRefAlt>()->test_step);
      List(alt->body);
    }));
  take(Apart([&] { List(else_branch); }));
  SetAll(assigned);
}

using InOrder = T3Kinds<T3DeclStmt, T3BlockStmt, T3IfStmt, _T3LoopStmt, T3AltStmt, T3InterleaveStmt,
                        T3CallStmt, T3AssignStmt>;
// They read what stands in them, and write nothing that is followed here.
using Reading =
    T3Kinds<T3InvocationStmt, _T3ConfStmt, T3DoneStmt, T3KilledStmt, T3TimeoutStmt, T3SendStmt,
            _T3SendingPortClientStmt, _T3ReceivingPortStmt, _T3CheckStmt, T3ClearStmt, T3HaltStmt,
            T3StartStmt, T3StopStmt, T3KillStmt, T3SetVerdictStmt, T3DeactivateStmt, T3SUTStmt, T3LogStmt,
            T3RetStmt, T3LabelStmt, T3GotoStmt, T3RepeatStmt, T3BreakStmt, T3ContinueStmt>;
static_assert(T3Covers<_T3Stmt, InOrder, Reading>());

void BodyWalk::Statement(T3Tree_Node* statement) {
  switch (statement->kind) {
    case T3Kind::T3DeclStmt:
      return Declarations(statement->as<T3DeclStmt>()->decl);
    case T3Kind::T3BlockStmt:
      return List(statement->as<T3BlockStmt>()->body);
    case T3Kind::T3IfStmt:
      return Branches(statement->as<T3IfStmt>());
    case T3Kind::T3WhileStmt:
    case T3Kind::T3DoWhileStmt:
    case T3Kind::T3ForStmt:
      return Loop(statement->as<_T3LoopStmt>());
    case T3Kind::T3AltStmt:
      return Alternatives(statement->as<T3AltStmt>()->alts, statement->as<T3AltStmt>()->else_branch);
    case T3Kind::T3InterleaveStmt:
      return Alternatives(statement->as<T3InterleaveStmt>()->alts, nullptr);
    case T3Kind::T3CallStmt: {
      auto* call = statement->as<T3CallStmt>();
      for (T3Tree_Node* part : {call->port, call->template_value, call->recipient, call->timeout})
        Reads(part);
      return Alternatives(call->body, nullptr);
    }
    case T3Kind::T3AssignStmt:
      Reads(statement->as<T3AssignStmt>()->rhs);
      return Write(statement->as<T3AssignStmt>()->lhs);
    default:
      return Reads(statement);
  }
}

void BodyWalk::List(T3Tree_Node* list) {
  for (auto* statement : Items<_T3Stmt>(list)) Statement(statement);
}

// ---- Bodies ----

// True for the name of an inherited variable that gets no value where it is declared.
bool IsOpenInherited(const T3Members& members, T3Tree_Node* name, T3ComponentType* component) {
  T3Tree_Node* def = NameOf(name) == NoIdent ? nullptr : members.Find(NameOf(name));
  return T3Is<T3VarDecl>(def) && def->place->vexa_owner != component && !HasFirstValue(def->as<T3VarDecl>());
}

// What is inherited matters only where such a variable is read: then all is walked that is done to it.
bool ReadsOpenInherited(T3ComponentType* component) {
  const T3Members& members = MembersOf(component);
  bool reads = false;
  for (auto* decl : Items<_T3Decl>(component->decls))
    if (auto* value = decl->try_as<_T3InstanceValueDecl>(); value != nullptr && value->value != nullptr)
      ForEachInSubtree(value->value, [&](T3Tree_Node* node) {
        reads = reads || IsOpenInherited(members, node, component);
        return !reads;
      });
  return reads;
}

void Members(BodyWalk& walk, T3ComponentType* component) {
  if (!ReadsOpenInherited(component)) return walk.Declarations(component->decls);
  for (T3Tree_Node* member : MembersOf(component).All()) walk.Declaration(member);
}

int LevelAt(T3Tree_Node* node) {
  return node->place == nullptr ? 0 : GetInitializeCheck(node->place->vexa_my_module);
}

// Timers need no value.
void TellEarlyRead(T3Tree_Node* node) {
  if (g_early.empty() || g_early.erase(node->number) == 0) return;
  T3Tree_Node* def = Def(node);
  if (!T3Is<T3VarDecl>(def) && !T3Is<_T3FormalPar>(def)) return;
  if (IsTimer(def) || IsTimerArray(def)) return;
  const tIdent name = NameOf(node);
  if (LevelAt(node) == 2) return vexa_filtered_error(ERR_uninitialized, PositionOf(node), name);
  WarnAt(node, "access to uninitialized value '" + std::string(gIdents.GetString(name)) + "'");
}

constexpr T3Rule kInitializationRules[] = {
    {T3Kind::T3Identifier, TellEarlyRead},
    {T3Kind::T3Qualifier, TellEarlyRead},
};
}  // namespace

void EnterBody(T3Tree_Node* node) {
  g_early.clear();
  if (LevelAt(node) == 0) return;
  BodyWalk walk;
  if (auto* component = node->try_as<T3ComponentType>()) return Members(walk, component);
  if (auto* control = node->try_as<T3ControlPart>()) return walk.List(control->body);
  auto* decl = node->as<_T3FunctionBodyDecl>();
  walk.Parameters(decl->fpl);
  if (auto* altstep = node->try_as<T3TestStep>()) walk.Declarations(altstep->decls);
  walk.List(decl->body);
}

std::span<const T3Rule> InitializationRules() {
  return kInitializationRules;
}
