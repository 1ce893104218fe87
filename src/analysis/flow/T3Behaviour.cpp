// Creation of components: each body is read once; the question is answered along the calls.
#include "analysis/flow/T3Behaviour.h"

#include <unordered_map>
#include <vector>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {
struct Body {
  bool creates = false;
  std::vector<T3Tree_Node*> calls;
};

// Bodies by the number of their declaration, of all modules: later modules ask for imported ones.
const Body& BodyOf(T3Tree_Node* decl) {
  static auto& bodies = *new std::unordered_map<uint32_t, Body>;
  const auto [found, made] = bodies.try_emplace(decl->number);
  if (!made) return found->second;
  Body body;
  ForEachInSubtree(decl, [&](T3Tree_Node* node) {
    if (node->is<T3Create>()) body.creates = true;
    if (auto* call = node->try_as<T3Parameterization>()) {
      T3Tree_Node* def = DefQuietly(call->base);
      if (T3Is<_T3FunctionBodyDecl>(def)) body.calls.push_back(def);
    }
    return true;
  });
  return found->second = std::move(body);
}

constexpr int kKnownBit = _T3DeclList_Attributes::may_create_ptc_bit;

bool IsKnown(T3Tree_Node* decl) {
  return decl->as<_T3DeclList>()->attr().IsEvaluated(kKnownBit);
}

bool Known(T3Tree_Node* decl) {
  return decl->as<_T3DeclList>()->cold().may_create_ptc;
}

void Keep(T3Tree_Node* decl, bool value) {
  decl->as<_T3DeclList>()->attr().SetEvaluated(kKnownBit);
  decl->as<_T3DeclList>()->cold().may_create_ptc = value;
}

void CheckSystem(T3Tree_Node* node) {
  auto* testcase = node->as<T3Testcase>();
  if (!testcase->system->is<T3NoType>() || testcase->place == nullptr || !MayCreatePtc(testcase)) return;
  vexa_warning(GetVerbosity(testcase->place->vexa_my_module),
               "testcase may create PTCs at runtime but it has no TSI defined", testcase->position);
}

constexpr T3Rule kBehaviourRules[] = {{T3Kind::T3Testcase, CheckSystem}};
}  // namespace

bool MayCreatePtc(T3Tree_Node* decl) {
  decl = BehindImport(decl);
  if (!T3Is<_T3FunctionBodyDecl>(decl)) return false;
  // who was reached, and through whose call
  std::unordered_map<T3Tree_Node*, T3Tree_Node*> reached{{decl, nullptr}};
  std::vector<T3Tree_Node*> open{decl};
  while (!open.empty()) {
    T3Tree_Node* at = open.back();
    open.pop_back();
    if (IsKnown(at) ? Known(at) : BodyOf(at).creates) {
      for (; at != nullptr; at = reached[at]) Keep(at, true);
      return true;
    }
    if (IsKnown(at)) continue;
    for (T3Tree_Node* called : BodyOf(at).calls)
      if (reached.try_emplace(called, at).second) open.push_back(called);
  }
  for (const auto& [at, caller] : reached) Keep(at, false);
  return false;
}

std::span<const T3Rule> BehaviourRules() {
  return kBehaviourRules;
}
