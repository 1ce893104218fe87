// The checks of names at single nodes: duplicates in scopes and in bodies of types, labels and jumps, groups.
#include <algorithm>
#include <array>
#include <unordered_set>

#include "analysis/names/T3DeclMap.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Imports.h"
#include "analysis/names/T3Names.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "support/ModuleCaches.h"
#include "frontend/T3Lists.h"

namespace {
// The first element of each name in a list.
using FirstOfName = std::unordered_map<tIdent, T3Tree_Node*>;

FirstOfName LabelsOf(T3Tree_Node* stmt) {
  FirstOfName labels;
  for (auto* statement : Items<_T3Stmt>(stmt))
    if (statement->is<T3LabelStmt>()) labels.emplace(statement->as<T3LabelStmt>()->label, statement);
  return labels;
}

FirstOfName GroupsOf(T3Tree_Node* decl) {
  FirstOfName groups;
  for (auto* at : Items<_T3Decl>(decl))
    if (at->is<T3GroupDecl>()) groups.emplace(at->as<T3GroupDecl>()->name, at);
  return groups;
}

std::unordered_map<T3Env*, FirstOfName>& KnownLists() {
  static std::unordered_map<T3Env*, FirstOfName> lists;
  return lists;
}

// The labels or groups of the list of a T3Env, gathered at the first question.
const FirstOfName& NamesIn(T3Env* env) {
  const auto [entry, is_new] = KnownLists().try_emplace(env);
  if (is_new) entry->second = T3Is<_T3DeclList>(env->decls) ? GroupsOf(env->decls) : LabelsOf(env->decls);
  return entry->second;
}

T3Tree_Node* FirstIn(T3Env* env, tIdent name) {
  const FirstOfName& names = NamesIn(env);
  const auto found = names.find(name);
  return found == names.end() ? nullptr : found->second;
}

// The first name that occurs twice in a list of elements of kind Element.
template <class Element>
tIdent FirstDuplicate(T3Tree_Node* list) {
  // Most lists are short: their few names are compared with one another.
  std::array<tIdent, 16> first;
  size_t count = 0;
  T3Tree_Node* at = list;
  for (; T3Is<Element>(at) && count < first.size(); at = at->as<Element>()->next) {
    const tIdent name = at->as<Element>()->name;
    if (std::find(first.begin(), first.begin() + count, name) != first.begin() + count) return name;
    first[count++] = name;
  }
  if (!T3Is<Element>(at)) return NoIdent;
  std::unordered_set<tIdent> seen;
  for (auto* item : Items<Element>(list))
    if (!seen.insert(item->name).second) return item->name;
  return NoIdent;
}

void CheckDecl(T3Tree_Node* decl) {
  static const tIdent address = gIdents.MakeIdent("address");
  if (decl->is<_T3ImportDecl>() || decl->is<T3ControlPart>() || decl->is<T3GroupDecl>()) return;
  const tIdent name = decl->as<_T3Decl>()->name;
  if (name == NoIdent || (decl->is<T3TypeDecl>() && name == address)) return;
  NewIdentifyDecl(decl->place->env, decl);
}

// The names of a signature's parameters are checked as fields.
void CheckFormalPar(T3Tree_Node* par) {
  if (T3Is<T3SignatureType>(par->place->vexa_owner)) return;
  NewIdentifyFormalPar(par->place->env, par);
}

void CheckGroup(T3Tree_Node* node) {
  auto* group = node->as<T3GroupDecl>();
  auto* level = group->place->groupEnv->as<T3Env>();
  if (FirstIn(level, group->name) != group || !NewGroupUnique(level->outer, group->name))
    vexa_filtered_error(ERR_conflicting_local_defs, group->position, group->name);
}

// A label is compared with those before it in its list and with all of the lists around.
void CheckLabel(T3Tree_Node* node) {
  auto* stmt = node->as<T3LabelStmt>();
  auto* list = stmt->place->labelEnv->try_as<T3Env>();
  if (list == nullptr) return;
  T3Tree_Node* first = FirstIn(list, stmt->label);
  const bool before = first != nullptr && first != stmt;
  if (before || FindLabel(list->outer, stmt->label)->is<T3LabelStmt>())
    vexa_filtered_error(ERR_name_duplicate_label, stmt->position, stmt->label);
}

void CheckGoto(T3Tree_Node* node) {
  auto* stmt = node->as<T3GotoStmt>();
  T3Tree_Node* target = FindLabel(stmt->place->labelEnv, stmt->label);
  stmt->attr().goto_target = target;
  if (target->is<T3NoStmt>()) vexa_filtered_error(ERR_invalid_goto, stmt->position, stmt->label);
}

void CheckEnumType(T3Tree_Node* type) {
  const tIdent twice = DuplicatesInEnumType(type);
  if (twice != NoIdent) vexa_filtered_error(ERR_name_duplicate_enum, PositionOf(type), twice);
}

void ReportField(T3Tree_Node* type, tIdent twice) {
  if (twice != NoIdent) vexa_filtered_error(ERR_name_duplicate_field, PositionOf(type), twice);
}

void CheckStructuredType(T3Tree_Node* type) {
  ReportField(type, DuplicatesInStructuredTypeBody(type));
}

void CheckSignatureType(T3Tree_Node* type) {
  ReportField(type, FindDuplicateParameterName(type->as<T3SignatureType>()->fpl));
}

bool IsImportedAddress(T3Tree_Node* decl) {
  static const tIdent address = gIdents.MakeIdent("address");
  auto* import = decl->try_as<T3ImportTypeDecl>();
  return import != nullptr && DeclaredName(import) == address &&
         IsAddressRedefinition(import->attr().def_aux);
}
}  // namespace

tIdent DuplicatesInStructuredTypeBody(T3Tree_Node* type) {
  return FirstDuplicate<T3FieldType>(type->as<_T3StructuredType>()->body);
}

tIdent DuplicatesInEnumType(T3Tree_Node* type) {
  return FirstDuplicate<T3EnumValue>(type->as<T3EnumType>()->values);
}

tIdent FindDuplicateParameterName(T3Tree_Node* fpl) {
  return FirstDuplicate<_T3FormalPar>(fpl);
}

T3Tree_Node* FindLabelFromHere(T3Tree_Node* env, T3Tree_Node* stmt, tIdent label) {
  for (auto* statement : Items<_T3Stmt>(stmt))
    if (statement->is<T3LabelStmt>() && statement->as<T3LabelStmt>()->label == label) return statement;
  return T3Is<T3Env>(env) ? FindLabel(env->as<T3Env>()->outer, label) : _sgT3NoStmt();
}

T3Tree_Node* FindLabel(T3Tree_Node* labelEnv, tIdent label) {
  for (; T3Is<T3Env>(labelEnv); labelEnv = labelEnv->as<T3Env>()->outer)
    if (T3Tree_Node* found = FirstIn(labelEnv->as<T3Env>(), label)) return found;
  return _sgT3NoStmt();
}

bool NewGroupUnique(T3Tree_Node* list, tIdent name) {
  if (T3Is<_T3DeclList>(list)) return GroupsOf(list).count(name) == 0;
  for (; T3Is<T3Env>(list); list = list->as<T3Env>()->outer)
    if (FirstIn(list->as<T3Env>(), name) != nullptr) return false;
  return true;
}

namespace {
const ModuleCache kNameChecksCache{[] { KnownLists().clear(); }};
}  // namespace

namespace {
// What is due at a node, after its children: duplicate declarations, fields and literals, labels and jumps,
// groups.
constexpr T3Rule kRules[] = {
    {T3Kind::_T3Decl, CheckDecl},
    {T3Kind::T3GroupDecl, CheckGroup},
    {T3Kind::_T3FormalPar, CheckFormalPar},
    {T3Kind::T3EnumType, CheckEnumType},
    {T3Kind::_T3StructuredType, CheckStructuredType},
    {T3Kind::T3SignatureType, CheckSignatureType},
    {T3Kind::T3LabelStmt, CheckLabel},
    {T3Kind::T3GotoStmt, CheckGoto},
};
}  // namespace

std::span<const T3Rule> NameRules() {
  return kRules;
}

void CheckAddressConflicts(T3Tree_Node* root) {
  auto* module = root->as<T3Builtin>()->module->as<T3Module>();
  const T3NodeList definitions = AddressDefinitions(module);
  if (definitions.size() < 2) return;
  for (auto decl = definitions.rbegin(); decl != definitions.rend(); ++decl)
    vexa_filtered_error(ERR_type_address_multiple, PositionOf(*decl), module->name);
}

T3NodeList AddressDefinitions(T3Tree_Node* module) {
  static const tIdent address = gIdents.MakeIdent("address");
  T3NodeList definitions;
  if (DeclsOut(module->as<T3Module>()->definition_part)->Find(address).empty()) return definitions;
  for (auto* decl : DeclsInGroups(module->as<T3Module>()->definition_part))
    if (IsAddressRedefinition(decl) || IsImportedAddress(decl)) definitions.push_back(decl);
  return definitions;
}
