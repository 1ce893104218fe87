#include "generator/expressions/CGReads.h"

#include <algorithm>

#include "analysis/flow/T3AltStatus.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3Subtree.h"
#include "frontend/T3Lists.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"
#include "support/ModuleCaches.h"
#include "support/NumberMap.h"

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

void AddWritten(T3Tree_Node* target, std::vector<T3Tree_Node*>& written) {
  if (auto* definition = target->try_as<T3TemplateDef>()) target = definition->constraint;
  T3Tree_Node* root = RootOfReference(target);
  if (root->is<T3Identifier>()) written.push_back(Def(root));
}

// The variables that one node may write, without those that are parts of it. Null stands for anything of the
// component: variables, timers, the verdict.
std::vector<T3Tree_Node*> WrittenBy(T3Tree_Node* node) {
  std::vector<T3Tree_Node*> written;
  if (auto* decoding = node->try_as<T3DecValue>()) {
    AddWritten(decoding->value, written);
    AddWritten(decoding->decoded_value, written);
  }
  auto* behaviour = CalledBehaviour(node);
  if (behaviour == nullptr) return written;
  if (AltStatusOfDecl(behaviour) >= kHasSideEffects) written.push_back(nullptr);
  for (const auto [formal, actual] :
       Pairs<_T3FormalPar, T3ActualPar>(behaviour->fpl, node->as<T3Parameterization>()->apl))
    if (IsReferenceFormal(formal)) AddWritten(actual->expression, written);
  return written;
}

// By the number of a node: whether evaluating it may change something, or is at least told of in a report.
enum class Effect : uint8_t { None, Told, Some };
NumberMap<Effect>& g_effects = *new NumberMap<Effect>;
NumberMap<bool>& g_told = *new NumberMap<bool>;  // by the number of a behaviour
const ModuleCache kCache{[] {
  g_effects.clear();
  g_told.clear();
}};

Effect& EffectOf(T3Tree_Node* node) {
  return g_effects[node->number];
}

// What a node has an effect of, all has that it is a part of, up to the root.
void HasEffect(Effect effect, T3Tree_Node* node, T3Tree_Node* root) {
  for (T3Tree_Node* at = node; effect != Effect::None; at = at->parent) {
    EffectOf(at) = std::max(effect, EffectOf(at));
    if (at == root || at->parent == nullptr) return;
  }
}

// Whether a behaviour logs, or does what else is seen from outside, by itself or in what it calls.
bool IsTold(_T3FunctionDecl* behaviour, int depth = 0) {
  constexpr int kMaxCallDepth = 8;
  if (behaviour == nullptr || depth > kMaxCallDepth) return false;
  auto* body = behaviour->try_as<_T3FunctionBodyDecl>();
  if (body == nullptr || AltStatusOfDecl(behaviour) >= kHasSideEffects) return true;
  const auto [known, is_new] = g_told.TryEmplace(behaviour->number);
  if (!is_new) return *known;
  bool told = false;
  ForEachInSubtree(body->body, [&told, depth](T3Tree_Node* node) {
    told = told || node->is<T3LogStmt>() || IsTold(CalledBehaviour(node), depth + 1);
    return !told;
  });
  return g_told[behaviour->number] = told;
}

Effect OwnEffect(T3Tree_Node* node) {
  if (!node->is<T3Parameterization>() && !node->is<T3DecValue>()) return Effect::None;
  if (!WrittenBy(node).empty()) return Effect::Some;
  return IsTold(CalledBehaviour(node)) ? Effect::Told : Effect::None;
}

// What has none, such as a name, has no effect.
bool HasParts(const T3Tree_Node* node) {
  return !ChildFieldsOf(node).children.empty();
}

// Of an expression with all its parts.
Effect WholeEffect(T3Tree_Node* expression) {
  if (!HasParts(expression)) return Effect::None;
  if (const Effect* known = g_effects.Find(expression->number)) return *known;
  ForEachInSubtree(expression, [expression](T3Tree_Node* node) {
    if (!HasParts(node)) return false;
    const auto [known, is_new] = g_effects.TryEmplace(node->number, Effect::None);
    HasEffect(is_new ? OwnEffect(node) : *known, node, expression);
    return is_new;
  });
  return EffectOf(expression);
}

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
  ForEachInSubtree(expression, [&](T3Tree_Node* node) {
    if (reads) return false;
    T3Tree_Node* def = node->is<T3Identifier>() ? Def(node) : nullptr;
    reads = (def != nullptr && IsSame(def, variable)) || (is_shared && MayUseMembers(node));
    return !reads;
  });
  return reads;
}

bool HasEffects(T3Tree_Node* expression) {
  return WholeEffect(expression) == Effect::Some;
}

Operands::Operands(std::vector<T3Tree_Node*> operands) : operands_(std::move(operands)) {
  // Nothing stands before the first one, which may be a long chain of operators.
  for (size_t i = 1; i < operands_.size(); ++i) {
    if (WholeEffect(operands_[i]) == Effect::None) continue;
    last_told_ = i;
    ForEachInSubtree(operands_[i], [this, i](T3Tree_Node* node) {
      for (T3Tree_Node* variable : WrittenBy(node)) written_[variable] = i;
      return EffectOf(node) == Effect::Some;
    });
  }
}

bool Operands::MayFaultLate(size_t at, std::string_view location) const {
  // What is no call, nor an operation on one, is a variable.
  return at < last_told_ && !operands_[at]->is<_T3LiteralExpression>() &&
         location.find('(') != std::string::npos;
}

bool Operands::IsWrittenBehind(size_t at, T3Tree_Node* node) const {
  const auto component = written_.find(nullptr);
  const bool on_component = component != written_.end() && component->second > at;
  if (on_component && AsksComponent(node)) return true;
  T3Tree_Node* variable = node->is<T3Identifier>() ? Def(node) : nullptr;
  if (variable == nullptr) return false;
  if (on_component && IsShared(variable)) return true;
  return std::any_of(written_.begin(), written_.end(), [&](const auto& one) {
    return one.first != nullptr && one.second > at && IsSame(one.first, variable);
  });
}

bool Operands::MayChange(size_t at, bool is_stored, const CFunction& function) const {
  const bool acts = !is_stored && at + 1 < operands_.size() && !operands_[at + 1]->is<_T3LiteralExpression>();
  if (!acts && written_.empty()) return false;
  bool changes = false;
  ForEachInSubtree(operands_[at], [&](T3Tree_Node* node) {
    if (changes || IsInVariable(node, function)) return false;
    changes = (acts && ActsByText(node)) || IsWrittenBehind(at, node);
    return !changes;
  });
  return changes;
}
}  // namespace cg
