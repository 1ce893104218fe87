#include "generator/expressions/CGReads.h"

#include <algorithm>

#include "analysis/flow/T3AltStatus.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3Subtree.h"
#include "frontend/T3Lists.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"

namespace cg {
namespace {
constexpr int kComponentMember = 2;

bool IsMember(T3Tree_Node* def) {
  return def->is<_T3DeclList>() && def->as<_T3DeclList>()->attr().vexa_place == kComponentMember;
}

// What may be the same variable by another name.
bool IsReferenceFormal(T3Tree_Node* def) {
  auto* formal = def->try_as<_T3TypedFormal>();
  return formal != nullptr && formal->pass != t3_par_pass_t::In;
}

bool IsSame(T3Tree_Node* a, T3Tree_Node* b) {
  if (a == b) return true;
  if (IsMember(a) && IsMember(b)) return a->as<_T3Decl>()->name == b->as<_T3Decl>()->name;
  return (IsReferenceFormal(a) && (IsReferenceFormal(b) || IsMember(b))) ||
         (IsReferenceFormal(b) && IsMember(a));
}

_T3FunctionDecl* CalledBehaviour(T3Tree_Node* node) {
  auto* call = node->try_as<T3Parameterization>();
  T3Tree_Node* decl = call == nullptr ? nullptr : BehindImport(Def(call));
  return T3Is<_T3FunctionDecl>(decl) ? decl->as<_T3FunctionDecl>() : nullptr;
}

// A behaviour on the component of the caller uses its variables.
bool MayUseMembers(T3Tree_Node* node) {
  auto* behaviour = CalledBehaviour(node);
  return behaviour != nullptr && behaviour->runs_on->is<_T3Type>() && !behaviour->runs_on->is<T3NoType>();
}

bool IsShared(T3Tree_Node* variable) {
  return IsMember(variable) || IsReferenceFormal(variable);
}

// What evaluating an expression may change.
struct Effects {
  explicit Effects(T3Tree_Node* expression) {
    ForEachInSubtree(expression, [this](T3Tree_Node* node) {
      if (auto* behaviour = CalledBehaviour(node)) OfCall(node->as<T3Parameterization>(), behaviour);
      auto* decoding = node->try_as<T3DecValue>();
      if (decoding != nullptr) Write(decoding->value), Write(decoding->decoded_value);
      return true;
    });
  }
  bool Any() const { return on_component || !written.empty(); }
  bool MayWrite(T3Tree_Node* variable) const {
    return (on_component && IsShared(variable)) ||
           std::any_of(written.begin(), written.end(),
                       [&](T3Tree_Node* one) { return IsSame(one, variable); });
  }

  std::vector<T3Tree_Node*> written;
  // Anything of the component may be another: variables, timers, the verdict.
  bool on_component = false;

 private:
  void OfCall(T3Parameterization* call, _T3FunctionDecl* behaviour) {
    on_component = on_component || AltStatusOfDecl(behaviour) >= kHasSideEffects;
    for (const auto [formal, actual] : Pairs<_T3FormalPar, T3ActualPar>(behaviour->fpl, call->apl))
      if (IsReferenceFormal(formal)) Write(actual->expression);
  }
  void Write(T3Tree_Node* target) {
    if (auto* definition = target->try_as<T3TemplateDef>()) target = definition->constraint;
    T3Tree_Node* root = RootOfReference(target);
    if (root->is<T3Identifier>()) written.push_back(Def(root));
  }
};

// What is evaluated into a variable of C stays as it is.
bool IsInVariable(T3Tree_Node* node, const CFunction& function) {
  if (!node->is<_T3Expression>()) return false;
  return (HasCLocation(node) && function.isTmpVariable(CLocation(node))) ||
         (HasRTSLocation(node) && function.isTmpVariable(RTSLocation(node)));
}

bool AsksComponent(T3Tree_Node* node) {
  return node->is<T3Running>() || node->is<T3Alive>() || node->is<T3Read>() || node->is<T3GetVerdict>();
}

// The text of these has its effect where it stands, in whatever order C takes what stands beside it.
bool ActsByText(T3Tree_Node* node) {
  return node->is<T3Create>() || node->is<T3Execute>() || node->is<T3DecValue>() || node->is<T3Rnd>();
}

}  // namespace

T3Tree_Node* RootOfReference(T3Tree_Node* reference) {
  while (reference->is<_T3Qualification>()) reference = reference->as<_T3Qualification>()->base;
  return reference;
}

bool Reads(T3Tree_Node* expression, T3Tree_Node* target) {
  T3Tree_Node* root = RootOfReference(target);
  T3Tree_Node* variable = root->is<T3Identifier>() ? Def(root) : nullptr;
  if (variable == nullptr) return true;
  const bool is_shared = IsShared(variable);
  bool reads = false;
  gT3AST.TraverseT3TreeTD(expression, [&](T3Tree_Node* node) {
    if (reads) return;
    T3Tree_Node* def = node->is<T3Identifier>() ? Def(node) : nullptr;
    reads = (def != nullptr && IsSame(def, variable)) || (is_shared && MayUseMembers(node));
  });
  return reads;
}

bool HasEffects(T3Tree_Node* expression) {
  return Effects(expression).Any();
}

Operands::Operands(std::vector<T3Tree_Node*> operands) : operands_(std::move(operands)) {
  for (size_t i = 0; i < operands_.size(); ++i)
    if (HasEffects(operands_[i])) count_ = i + 1;
}

bool Operands::MayChange(size_t at, bool is_stored, const CFunction& function) const {
  bool changes = false;
  const auto look = [&](const auto& changes_node) {
    ForEachInSubtree(operands_[at], [&](T3Tree_Node* node) {
      if (changes || IsInVariable(node, function)) return false;
      changes = changes_node(node);
      return !changes;
    });
  };
  if (!is_stored && at + 1 < operands_.size() && !operands_[at + 1]->is<_T3LiteralExpression>())
    look(ActsByText);
  for (size_t later = at + 1; later < count_ && !changes; ++later) {
    const Effects effects(operands_[later]);
    look([&](T3Tree_Node* node) {
      T3Tree_Node* def = node->is<T3Identifier>() ? Def(node) : nullptr;
      return (effects.on_component && AsksComponent(node)) || (def != nullptr && effects.MayWrite(def));
    });
  }
  return changes;
}

std::string Operands::Location(size_t at, vexa_expression_mode_t form, CFunction& function) const {
  T3Tree_Node* operand = operands_[at];
  const bool is_c = form == vexa_c_mode;
  const std::string location = is_c ? CLocation(operand) : RTSLocation(operand);
  const char* type = is_c ? CVariableType(TypeOf(operand)) : LUMO_VALUE_T;
  if (type == nullptr || !MayChange(at, false, function)) return location;
  if (!is_c) {
    StoreRTSLocation(operand, Kept(location, function));
    return RTSLocation(operand);
  }
  StoreCLocation(operand, Temporary(type, function));
  function.assign(CLocation(operand), location);
  return CLocation(operand);
}

std::string Kept(const std::string& location, CFunction& function) {
  const std::string kept = Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(kept, LUMO_VALUE_COPY, {location, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  return kept;
}
}  // namespace cg
