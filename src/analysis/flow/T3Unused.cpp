#include "analysis/flow/T3Unused.h"

#include <unordered_map>
#include <unordered_set>

#include "analysis/names/T3Imports.h"
#include "analysis/types/T3Types.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3KindCover.h"
#include "support/ModuleCaches.h"

namespace {
// What each declaration uses: the same edges as from a declaration to its users, turned round, so that what
// is needed is found by one walk from what always gets code.
struct Uses {
  std::unordered_map<T3Tree_Node*, T3NodeList> used_by_user;
  /// The users in the order in which they came, so that nothing depends on addresses.
  T3NodeList users;
  /// The user that came last, who mostly comes again.
  T3Tree_Node* last_user = nullptr;
  T3NodeList* used_by_last = nullptr;
  /// Declarations that something needs that always gets code.
  std::unordered_set<T3Tree_Node*> needed;
  bool needed_is_known = false;
  std::unordered_set<T3Tree_Node*> reported;
  /// Users that have all types among what they use, since they name anytype.
  std::unordered_set<T3Tree_Node*> with_anytype;
};

// Never destroyed: there is much of it at the end of the process.
Uses& g_uses = *new Uses;
const ModuleCache kUses{[] { g_uses = {}; }, ModuleCache::Holds::ForRun};

void FindNeeded() {
  T3NodeList work;
  for (T3Tree_Node* user : g_uses.users)
    if (!user->is<_T3Decl>() || ExcludeFromOptimization(user)) work.push_back(user);
  while (!work.empty()) {
    T3Tree_Node* user = work.back();
    work.pop_back();
    const auto found = g_uses.used_by_user.find(user);
    if (found == g_uses.used_by_user.end()) continue;
    for (T3Tree_Node* used : found->second)
      if (g_uses.needed.insert(used).second) work.push_back(used);
  }
  g_uses.needed_is_known = true;
}

bool IsNeeded(T3Tree_Node* decl) {
  if (!g_uses.needed_is_known) FindNeeded();
  return g_uses.needed.count(decl) != 0;
}

// A local declaration gets code with the one that owns it.
bool RequiresGenerationWorker(T3Tree_Node* decl) {
  while (decl->is<_T3Decl>() && !ExcludeFromOptimization(decl)) {
    T3Tree_Node* owner = decl->place != nullptr ? decl->place->vexa_owner : nullptr;
    if (owner == nullptr || owner->is<T3Module>()) return IsNeeded(decl);
    decl = owner;
  }
  return true;
}

const char* SkippedKind(T3Tree_Node* decl) {
  return decl->is<T3TestStep>() ? "altstep" : DeclKind(decl);
}

void GenerateMessage(T3Tree_Node* decl) {
  const std::string text = std::string("skipping generating code for ") + SkippedKind(decl) + " '" +
                           gIdents.GetCStr(decl->as<_T3Decl>()->name) + "'";
  vexa_progress(GetVerbosity(decl->place->vexa_my_module), text);
}

T3NodeList& DepDecls(T3Tree_Node* owner) {
  T3NodeList*& list = owner->as<_T3Decl>()->attr().dep_decls;
  if (list == nullptr) list = new T3NodeList;
  return *list;
}

// Most repetitions stand side by side; the others do no harm.
void Append(T3NodeList& list, T3Tree_Node* decl) {
  if (list.empty() || list.back() != decl) list.push_back(decl);
}

bool IsAnytype(T3Tree_Node* def) {
  auto* decl = def->try_as<T3TypeDecl>();
  return decl != nullptr && T3Is<T3AnyType>(decl->type);
}

// The fields of anytype depend on what the module sees: all of that comes along, once for an owner. The module stands
// for it, since it is much, and open types of ASN.1 are many.
void RecordAnytype(T3Tree_Node* reference, T3Tree_Node* owner) {
  T3Tree_Node* module = reference->place->vexa_my_module;
  if (g_uses.with_anytype.insert(owner).second && !AllTypesOf(module).empty()) DepDecls(owner).push_back(module);
}

// Who names the built-in `address` uses what it stands for in the module.
T3Tree_Node* DefinitionOfAddress(T3Tree_Node* def) {
  auto* decl = T3Is<T3TypeDecl>(def) ? def->as<T3TypeDecl>() : nullptr;
  if (decl == nullptr || !IsRedefinedAddress(decl->type)) return def;
  return decl->type->as<T3Address>()->attr().address_type_definition_inh;
}

void RecordUse(T3Tree_Node* reference) {
  T3Tree_Node* def = DefinitionOfAddress(reference->as<_T3Reference>()->attr().def);
  T3Tree_Node* owner = reference->place != nullptr ? reference->place->top_scope_owner : nullptr;
  if (!T3Is<_T3Decl>(def) || owner == nullptr || def == owner) return;
  if (IsAnytype(def)) RecordAnytype(reference, owner);
  if (def->as<_T3Decl>()->attr().vexa_place != kAtModuleLevel) return;
  AddAntiDependency(def, owner);
  T3Tree_Node* declared = IsImportDecl(def) ? def->as<_T3ImportDecl>()->attr().def_aux : def;
  if (declared != nullptr) Append(DepDecls(owner), declared);
}

void RecordImport(T3Tree_Node* import) {
  T3Tree_Node* def = import->as<_T3ImportDecl>()->attr().def_aux;
  if (!import->is<T3ImportAllDecl>() && def != nullptr) AddAntiDependency(def, import);
}

constexpr T3Rule kUsageRules[] = {
    {T3Kind::T3Identifier, RecordUse},
    {T3Kind::T3Qualifier, RecordUse},
    {T3Kind::_T3ImportDecl, RecordImport},
};
}  // namespace

void AddAntiDependency(T3Tree_Node* used, T3Tree_Node* user) {
  if (gT3CommandLine.optimize == 0) return;
  if (user != g_uses.last_user) {
    const auto [entry, is_new] = g_uses.used_by_user.try_emplace(user);
    if (is_new) g_uses.users.push_back(user);
    g_uses.last_user = user;
    g_uses.used_by_last = &entry->second;
  }
  Append(*g_uses.used_by_last, used);
  g_uses.needed_is_known = false;
}

namespace {
// Generated whether they are used or not.
using Always = T3Kinds<T3ImportAllDecl, T3ImportGroupDecl, T3ImportTypeDecl, T3ImportModuleParDecl,
                       T3ImportTestcaseDecl, T3GroupDecl, T3ModuleParDecl, T3Testcase, T3ControlPart>;
using WhenUsed = T3Kinds<T3ImportTemplateDecl, T3ImportConstDecl, T3ImportTeststepDecl, T3ImportFunctionDecl,
                         T3ImportSignatureDecl, T3TemplateDecl, T3VarDecl, T3ConstDecl, T3ExtConstDecl,
                         T3PortDecl, T3TestStep, T3Function, T3ExtFunction>;
static_assert(T3Covers<_T3Decl, Always, WhenUsed, T3Kinds<T3TypeDecl>>());
}  // namespace

bool ExcludeFromOptimization(T3Tree_Node* decl) {
  if (gT3CommandLine.optimize == 0) return true;
  if (auto* type_decl = decl->try_as<T3TypeDecl>()) return !type_decl->type->is<T3SignatureType>();
  return Always::Has(decl);
}

bool RequiresGeneration(T3Tree_Node* decl) {
  if (decl == nullptr) return false;
  if (!decl->is<_T3Decl>() || gT3CommandLine.optimize == 0 || RequiresGenerationWorker(decl)) return true;
  if (!IsImportDecl(decl) && g_uses.reported.insert(decl).second) GenerateMessage(decl);
  return false;
}

std::span<const T3Rule> UsageRules() {
  return kUsageRules;
}
