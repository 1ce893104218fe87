#include "driver/modules/T3ModuleMap.h"

#include <vector>

#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Tree.h"

namespace {
// The module of a list node; null at the end marker.
T3Module* ModuleOrEnd(T3Tree_Node* node, int line, const char* walk) {
  if (T3Is<T3NoModule>(node)) return nullptr;
  if (!T3Is<T3Module>(node)) internal_error_ast("T3ModuleMap", line, walk, node);
  return node->as<T3Module>();
}

// The declaration of a list node; null at the end marker.
_T3Decl* DeclOrEnd(T3Tree_Node* node, int line, const char* walk) {
  if (T3Is<T3NoDecl>(node)) return nullptr;
  if (!T3Is<_T3Decl>(node)) internal_error_ast("T3ModuleMap", line, walk, node);
  return node->as<_T3Decl>();
}

// The plain module name that a declaration imports from; null for any other declaration.
T3ImportIdentifier* ImportedModule(_T3Decl* decl) {
  auto* import = decl->try_as<_T3ImportDecl>();
  if (import == nullptr || import->from_module == nullptr) return nullptr;
  return import->from_module->try_as<T3ImportIdentifier>();
}

// Calls for each module that a list of declarations imports from, those in groups too, in their order.
template <class Call>
void ForImportedModules(T3Tree_Node* list, const char* walk, const Call& call) {
  std::vector<T3Tree_Node*> behind;
  for (;;) {
    _T3Decl* decl = DeclOrEnd(list, __LINE__, walk);
    if (decl == nullptr) {
      if (behind.empty()) return;
      list = behind.back();
      behind.pop_back();
      continue;
    }
    if (const auto* from = ImportedModule(decl)) call(from);
    list = decl->next;
    if (const auto* group = decl->try_as<T3GroupDecl>()) {
      behind.push_back(list);
      list = group->body;
    }
  }
}

// A module that ASN.1 translation made on behalf of an import, without a source of its own.
bool HasNoSource(const T3Module* module) {
  return T3Is<T3ASN_1>(module->representation) && module->filename == NoIdent;
}
}  // namespace

void BuildModuleTable(T3Tree_Node* list, T3ModuleMap* modules, T3ImportPositions* positions) {
  while (T3Module* module = ModuleOrEnd(list, __LINE__, "T3Control::BuildModuleTable")) {
    BuildImportTable(module->definition_part, positions);
    if (!HasNoSource(module) && !modules->emplace(module->name, module).second)
      vexa_error(std::string("Multiply defined module name: \"") + gIdents.GetCStr(module->name) + '"',
                 NoPosition);
    list = module->next;
  }
}

void BuildImportTable(T3Tree_Node* decls, T3ImportPositions* positions) {
  ForImportedModules(decls, "T3Control::BuildImportTable", [positions](const T3ImportIdentifier* from) {
    positions->emplace(from->id, from->position);
  });
}

void GetModuleDeps(T3Tree_Node* node, std::set<tIdent>* deps) {
  T3Module* module = ModuleOrEnd(node, __LINE__, "T3Control::GetModuleDeps");
  if (module == nullptr) return;
  ForImportedModules(module->definition_part, "T3Control::GetModuleDeps",
                     [deps](const T3ImportIdentifier* from) { deps->insert(from->id); });
}

void SeparateModules(T3Tree_Node* list) {
  while (T3Module* module = ModuleOrEnd(list, __LINE__, "T3Control::SeparateModules")) {
    list = module->next;
    module->next = _sgT3NoModule(false);
  }
}
