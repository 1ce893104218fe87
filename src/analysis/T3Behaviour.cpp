// Creation of components: each body is read once; the question is answered along the calls.
#include "analysis/T3Behaviour.h"

#include <unordered_map>
#include <vector>

#include "analysis/T3Names.h"
#include "analysis/T3Subtree.h"
#include "analysis/T3Types.h"
#include "driver/T3CommandLine.h"
#include "driver/T3Error.h"

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
    if (node->is<T3Identifier>() || node->is<T3Qualifier>()) {
      T3Tree_Node* def = node->as<_T3Reference>()->attr().def;
      def = def == nullptr ? nullptr : BehindImport(def);
      if (T3Is<_T3FunctionBodyDecl>(def)) body.calls.push_back(def);
    }
    return true;
  });
  return found->second = std::move(body);
}

void CheckSystem(T3Tree_Node* node) {
  auto* testcase = node->as<T3Testcase>();
  if (!testcase->system->is<T3NoType>() || testcase->place == nullptr || !MayCreatePtc(testcase)) return;
  vexa_warning(GetVerbosity(testcase->place->vexa_my_module),
               "testcase may create PTCs at runtime but it has no TSI defined", testcase->position);
}

constexpr T3Rule kRules[] = {{T3Kind::T3Testcase, CheckSystem}};
}  // namespace

bool MayCreatePtc(T3Tree_Node* decl) {
  decl = BehindImport(decl);
  if (!T3Is<_T3FunctionBodyDecl>(decl)) return false;
  constexpr int kBit = _T3DeclList_Attributes::may_create_ptc_bit;
  const auto known = [](T3Tree_Node* at) { return at->as<_T3DeclList>()->attr().IsEvaluated(kBit); };
  const auto keep = [](T3Tree_Node* at, bool value) {
    at->as<_T3DeclList>()->attr().SetEvaluated(kBit);
    at->as<_T3DeclList>()->cold().may_create_ptc = value;
  };
  if (known(decl)) return decl->as<_T3DeclList>()->cold().may_create_ptc;
  bool creates = false;
  T3NodeSet reached{decl};
  std::vector<T3Tree_Node*> open{decl};
  while (!open.empty() && !creates) {
    T3Tree_Node* at = open.back();
    open.pop_back();
    creates = known(at) ? at->as<_T3DeclList>()->cold().may_create_ptc : BodyOf(at).creates;
    if (creates || known(at)) continue;
    for (T3Tree_Node* called : BodyOf(at).calls)
      if (reached.insert(called).second) open.push_back(called);
  }
  if (creates)
    keep(decl, true);
  else
    for (T3Tree_Node* at : reached) keep(at, false);
  return creates;
}

std::span<const T3Rule> BehaviourRules() {
  return kRules;
}
