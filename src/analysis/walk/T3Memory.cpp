// Drops derived data: what analysis needs only while it works on a module, and what generation hangs on the
// nodes.
#include "analysis/walk/T3Stages.h"
#include "analysis/walk/T3Subtree.h"
#include "support/ModuleCaches.h"
#include "frontend/T3Lists.h"

namespace {
bool HasCold(const T3Tree_Node* node) {
  return node->attributes != nullptr && node->attributes->cold != nullptr;
}

template <class Node>
bool EmptyLocation(T3Tree_Node* node) {
  if (!node->is<Node>()) return false;
  auto& record = node->as<Node>()->cold();
  record.c_loc = record.rts_loc = vexa_location_not_allocated;
  return true;
}

// Locations lie in the records of rarer attributes; a node without one has none.
void EmptyLocations(T3Tree_Node* node) {
  if (!HasCold(node)) return;
  EmptyLocation<_T3Expression>(node) || EmptyLocation<_T3Decl>(node) || EmptyLocation<_T3FormalPar>(node) ||
      EmptyLocation<T3TemplateDef>(node);
}

// Bit sets of declarations hang on declarations of the module and on component types.
void ZeroDeclBitSets(T3Tree_Node* decl) {
  if (auto* body = decl->try_as<_T3FunctionBodyDecl>(); body != nullptr && HasCold(body))
    body->cold().decl_bit_set = nullptr;
  if (auto* control = decl->try_as<T3ControlPart>(); control != nullptr && HasCold(control))
    control->cold().decl_bit_set = nullptr;
  auto* type_decl = decl->try_as<T3TypeDecl>();
  auto* component = type_decl != nullptr ? type_decl->type->try_as<T3ComponentType>() : nullptr;
  if (component != nullptr && HasCold(component)) component->cold().decl_bit_set = nullptr;
}

void ZeroIntermediateAttributes(T3Tree_Node* module) {
  for (auto* decl : DeclsInGroups(module->as<T3Module>()->definition_part)) ZeroDeclBitSets(decl);
}
}  // namespace

void CleanupAnalysisIntermediateData(T3Tree_Node* module) {
  ClearModuleCaches();
  ZeroIntermediateAttributes(module);
}

void CleanupCompilationIntermediateData(T3Tree_Node* module) {
  ClearModuleCaches();
  ForEachInSubtree(module, [](T3Tree_Node* node) {
    EmptyLocations(node);
    return true;
  });
}
