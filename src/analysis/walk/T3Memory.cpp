// Drops derived data that analysis needs only while it works on a module.
#include "analysis/walk/T3Stages.h"
#include "support/ModuleCaches.h"
#include "frontend/T3Lists.h"

namespace {
// Bit sets of declarations hang on declarations of the module and on component types.
void ZeroDeclBitSets(T3Tree_Node* decl) {
  if (auto* body = decl->try_as<_T3FunctionBodyDecl>(); body != nullptr && body->HasCold())
    body->cold().decl_bit_set = nullptr;
  if (auto* control = decl->try_as<T3ControlPart>(); control != nullptr && control->HasCold())
    control->cold().decl_bit_set = nullptr;
  auto* type_decl = decl->try_as<T3TypeDecl>();
  auto* component = type_decl != nullptr ? type_decl->type->try_as<T3ComponentType>() : nullptr;
  if (component != nullptr && component->HasCold()) component->cold().decl_bit_set = nullptr;
}

void ZeroIntermediateAttributes(T3Tree_Node* module) {
  for (auto* decl : DeclsInGroups(module->as<T3Module>()->definition_part)) ZeroDeclBitSets(decl);
}
}  // namespace

void CleanupAnalysisIntermediateData(T3Tree_Node* module) {
  ClearModuleCaches();
  ZeroIntermediateAttributes(module);
}
