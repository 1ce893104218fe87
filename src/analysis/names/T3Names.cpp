// Scopes and the look-up of names: all declarations of a name in all enclosing scopes are gathered, and
// then classified into local and imported ones.
#include "analysis/names/T3Names.h"

#include <cstring>

#include "analysis/names/T3DeclMap.h"
#include "analysis/names/T3Imports.h"
#include "driver/diagnostics/T3Error.h"
#include "driver/modules/T3Global.h"
#include "frontend/T3GlobalASTNodes.h"
#include "support/ModuleCaches.h"

namespace {
// The scopes that have a cache.
std::vector<T3MapEnv*>& CachingScopes() {
  static std::vector<T3MapEnv*> scopes;
  return scopes;
}

// What the declarations of a name amount to.
struct Candidates {
  int locals = 0;
  int imports = 0;
  T3Tree_Node* decl = nullptr;
  T3Tree_Node* import = nullptr;
  T3NodeSet local_types;
  T3NodeSet imported_types;

  int LocalCount() const { return locals + (local_types.empty() ? 0 : 1); }
  int ImportCount() const { return imports + (imported_types.empty() ? 0 : 1); }
};

void Classify(T3Tree_Node* node, Candidates& candidates) {
  if (IsAddressRedefinition(node)) return;
  if (IsLocalDecl(node)) {
    ++candidates.locals;
    candidates.decl = node;
  } else if (node->is<_T3ImportDecl>()) {
    ++candidates.imports;
    candidates.import = node;
  } else if (node->is<_T3Type>()) {
    (node->as<_T3Type>()->attr().local_type ? candidates.local_types : candidates.imported_types)
        .insert(node);
  } else {
    std::fputs("UNKNOWN DECL!\n", stderr);
  }
}

// Calls for each entry of a name in all scopes, until `call` returns false.
template <class Call>
void ForEntries(T3Tree_Node* env, tIdent name, tIdent qualifier, const Call& call) {
  const uint64_t filter = T3DeclMap::FilterOf(name);
  for (; T3Is<T3MapEnv>(env); env = static_cast<T3MapEnv*>(env)->outer) {
    T3DeclMap* map = static_cast<T3MapEnv*>(env)->decls;
    if (map == nullptr || !map->MayHave(filter)) continue;
    for (const T3DeclMap::Entry& entry : map->Find(name))
      if (entry.Answers(qualifier) && !call(entry.decl)) return;
  }
}

// The meaning of a name that has one declaration in all scopes, as almost all have; null for any other.
T3Tree_Node* OnlyMeaning(T3Tree_Node* env, tIdent name, tIdent qualifier) {
  T3Tree_Node* only = nullptr;
  bool several = false;
  ForEntries(env, name, qualifier, [&](T3Tree_Node* decl) {
    several = only != nullptr && only != decl;
    only = decl;
    return !several;
  });
  if (only == nullptr || several || IsAddressRedefinition(only)) return nullptr;
  return IsLocalDecl(only) || only->is<_T3ImportDecl>() || only->is<_T3Type>() ? only : nullptr;
}

// All declarations of a name, in the order of their numbers.
Candidates Gather(T3Tree_Node* env, tIdent name, tIdent qualifier) {
  T3NodeSet all;
  CollectDecls(env, name, qualifier, all);
  Candidates candidates;
  for (T3Tree_Node* node : all) Classify(node, candidates);
  return candidates;
}

T3Tree_Node* WrapAmbiguousType(const T3NodeSet& types) {
  if (types.size() == 1) return *types.begin();
  T3Tree_Node* list = _sgT3NoTypeItem(false);
  for (auto type = types.rbegin(); type != types.rend(); ++type)
    list = gT3AST.mT3TypeItem(NoPosition, list, *type);
  return gT3AST.mT3AmbiguousType(NoPosition, list);
}

// The result of a look-up; null where there is none.
T3Tree_Node* Choose(const Candidates& candidates) {
  if (candidates.LocalCount() == 1)
    return candidates.decl != nullptr ? candidates.decl : WrapAmbiguousType(candidates.local_types);
  if (candidates.LocalCount() == 0 && candidates.ImportCount() == 1)
    return candidates.import != nullptr ? candidates.import : WrapAmbiguousType(candidates.imported_types);
  return nullptr;
}

void ReportFailure(const Candidates& candidates, tIdent name, const tPosition& position, bool report) {
  if (candidates.LocalCount() > 1)
    vexa_filtered_error(ERR_conflicting_local_defs, position, name);
  else if (candidates.ImportCount() > 1)
    vexa_filtered_error(ERR_conflicting_imported_defs, position, name);
  else if (report)
    vexa_filtered_error(ERR_undefined, position, name);
}

void AddEnumLiterals(T3Tree_Node* type, tIdent moduleId, bool local, T3DeclMap& map) {
  type->as<T3EnumType>()->attr().local_type = local;
  T3Tree_Node* value = type->as<T3EnumType>()->values;
  for (auto* at : Items<T3EnumValue>(value)) {
    map.Insert(at->name, moduleId, type);
  }
}

void RegisterImport(_T3ImportDecl* import, T3DeclMap& map) {
  const tIdent from = ImportedModule(import);
  const auto module = gT3ModuleMap.find(from);
  if (module != gT3ModuleMap.end()) map.Insert(from, 0, module->second);
  const tIdent object = DeclaredName(import);
  if (object == NoIdent || import->is<T3ImportAllDecl>()) return;
  T3Tree_Node* def = import->attr().def_aux;
  const bool is_enum = import->is<T3ImportTypeDecl>() && T3Is<T3TypeDecl>(def) &&
                       T3Is<T3EnumType>(def->as<T3TypeDecl>()->type);
  if (is_enum) AddEnumLiterals(def->as<T3TypeDecl>()->type, from, false, map);
  if (is_enum && IsAsnNullType(def)) return;
  map.Insert(object, from, import);
}

void RegisterNull(T3TypeDecl* decl, tIdent moduleId, T3DeclMap& map) {
  decl->type->as<T3EnumType>()->attr().local_type = true;
  map.Insert(decl->name, moduleId, decl);
}

// Where the kinds have their positions; 0 for none.
std::vector<uint16_t> PositionOffsets() {
  std::vector<uint16_t> offsets(kT3KindCount, 0);
  for (size_t kind = 0; kind < offsets.size(); ++kind)
    for (const T3FieldInfo& field : T3Tree_KindInfo[kind].fields)
      if (field.shape == T3FieldShape::Position && std::strcmp(field.name, "position") == 0 &&
          field.record == T3FieldRecord::Node)
        offsets[kind] = field.offset;
  return offsets;
}
}  // namespace

T3Tree_Node* MakeMapEnv(T3Tree_Node* outer, T3DeclMap* map) {
  return gT3AST.mT3MapEnv(outer, map);
}

T3Tree_Node* MakeEnv(T3Tree_Node* outer, T3Tree_Node* head) {
  return gT3AST.mT3Env(outer, head);
}

void RegisterDecl(T3Tree_Node* decl, tIdent moduleId, T3DeclMap*& map) {
  if (map == nullptr) map = new T3DeclMap;
  static const tIdent control = gIdents.MakeIdent("control");
  if (auto* module = decl->try_as<T3Module>()) return map->Insert(module->name, 0, decl);
  if (decl->is<T3ControlPart>()) return map->Insert(control, 0, decl);
  if (auto* import = decl->try_as<_T3ImportDecl>()) return RegisterImport(import, *map);
  if (IsAsnNullType(decl)) return RegisterNull(decl->as<T3TypeDecl>(), moduleId, *map);
  if (auto* type = decl->try_as<T3TypeDecl>(); type != nullptr && T3Is<T3EnumType>(type->type))
    AddEnumLiterals(type->type, moduleId, true, *map);
  map->Insert(DeclaredName(decl), moduleId, decl);
}

T3DeclMap* DeclsOut(T3Tree_Node* decls) {
  static T3DeclMap& empty = *new T3DeclMap;
  if (!T3Is<_T3Decl>(decls) || decls->as<_T3Decl>()->cold().declsOut == nullptr) return &empty;
  return decls->as<_T3Decl>()->cold().declsOut;
}

void CollectDecls(T3Tree_Node* env, tIdent name, tIdent qualifier, T3NodeSet& set) {
  ForEntries(env, name, qualifier, [&](T3Tree_Node* decl) {
    set.insert(decl);
    return true;
  });
}

T3Tree_Node* IdentifyQuietly(T3Tree_Node* env, tIdent name, tIdent qualifier) {
  if (T3Tree_Node* only = OnlyMeaning(env, name, qualifier)) return only;
  T3Tree_Node* result = Choose(Gather(env, name, qualifier));
  return result != nullptr ? result : _sgT3NoDecl();
}

// What is found or reported is kept only for the names that have not just one declaration.
T3Tree_Node* NewIdentify1(T3Tree_Node* env, tIdent name, tIdent qualifier, const tPosition& position,
                          bool report) {
  if (!T3Is<T3MapEnv>(env)) {
    if (report) vexa_filtered_error(ERR_undefined, position, name);
    return _sgT3NoDecl();
  }
  if (T3Tree_Node* only = OnlyMeaning(env, name, qualifier)) return only;
  auto* scope = env->as<T3MapEnv>();
  if (scope->attr().name_cache == nullptr) {
    CachingScopes().push_back(scope);
    scope->attr().name_cache = new T3NameCache;
  }
  const auto [entry, is_new] = scope->attr().name_cache->try_emplace({name, qualifier}, _sgT3NoDecl());
  if (!is_new) return entry->second;
  const Candidates candidates = Gather(env, name, qualifier);
  T3Tree_Node* result = Choose(candidates);
  if (result == nullptr)
    ReportFailure(candidates, name, position, report);
  else
    entry->second = result;
  return entry->second;
}

T3Tree_Node* NewIdentifyId(T3Tree_Node* env, T3Tree_Node* identifier) {
  auto* id = identifier->as<T3Identifier>();
  if (id->HasCold() && T3Is<T3ASN_1>(id->cold().representation) && id->cold().catr_target != nullptr) {
    T3Tree_Node* target = id->cold().catr_target;
    return target->is<T3TypeReference>() ? ResolveExplicifiedType(env, target) : target;
  }
  return NewIdentify1(env, id->id, 0, id->position, true);
}

T3Tree_Node* NewIdentifyDecl(T3Tree_Node* env, T3Tree_Node* decl) {
  return NewIdentify1(env, decl->as<_T3Decl>()->name, 0, decl->as<_T3Decl>()->position, false);
}

T3Tree_Node* NewIdentifyFormalPar(T3Tree_Node* env, T3Tree_Node* par) {
  return NewIdentify1(env, par->as<_T3FormalPar>()->name, 0, par->as<_T3FormalPar>()->position, false);
}

T3Tree_Node* IdentifyQualified(T3Tree_Node* env, T3Tree_Node* qualifier) {
  if (!T3Is<T3MapEnv>(env)) return _sgT3NoDecl();
  auto* node = qualifier->as<T3Qualifier>();
  if (!node->base->is<T3Identifier>())
    internal_error_ast("T3Names", __LINE__, "IdentifyQualified", qualifier);
  const tIdent module = node->base->as<T3Identifier>()->id;
  const bool own = node->place != nullptr && module == node->place->vexa_module_name;
  return NewIdentify1(env, node->id, own ? 0 : module, node->position, false);
}

bool IsDeclared(const T3Tree_Node* node) {
  return T3Is<_T3Decl>(node) || T3Is<_T3FormalPar>(node) || T3Is<T3Module>(node) || T3Is<T3EnumType>(node);
}

bool IsLocalDecl(const T3Tree_Node* node) {
  return T3Is<T3Module>(node) || T3Is<T3GroupDecl>(node) || T3Is<T3TypeDecl>(node) ||
         T3Is<T3TemplateDecl>(node) || T3Is<_T3InstanceDecl>(node) || T3Is<_T3FunctionDecl>(node) ||
         T3Is<_T3FormalPar>(node);
}

bool IsAddressRedefinition(const T3Tree_Node* decl) {
  if (!T3Is<T3TypeDecl>(decl)) return false;
  static const tIdent address = gIdents.MakeIdent("address");
  const auto* type_decl = static_cast<const T3TypeDecl*>(decl);
  return type_decl->name == address && !T3Is<T3Address>(type_decl->type);
}

bool IsAsnNullType(const T3Tree_Node* decl) {
  if (!T3Is<T3TypeDecl>(decl)) return false;
  static const tIdent null = gIdents.MakeIdent("NULL");
  const auto* type_decl = static_cast<const T3TypeDecl*>(decl);
  if (type_decl->name != null || !T3Is<T3EnumType>(type_decl->type)) return false;
  auto* type = type_decl->type->as<T3EnumType>();
  if (!type->HasCold() || !T3Is<T3ASN_1>(type->cold().representation)) return false;
  auto* value = type->values->try_as<T3EnumValue>();
  return value != nullptr && value->name == null && !value->next->is<T3EnumValue>();
}

tPosition PositionOf(const T3Tree_Node* node) {
  static const std::vector<uint16_t> offsets = PositionOffsets();
  if (node == nullptr) return NoPosition;
  const uint16_t offset = offsets[static_cast<size_t>(node->kind)];
  if (offset == 0) return NoPosition;
  tPosition position;
  std::memcpy(&position, reinterpret_cast<const char*>(node) + offset, sizeof position);
  return position;
}

T3Tree_Node* ExtractTypeFromDecl(T3Tree_Node* decl) {
  while (T3Is<T3ImportTypeDecl>(decl)) decl = decl->as<T3ImportTypeDecl>()->attr().def_aux;
  return T3Is<T3TypeDecl>(decl) ? decl->as<T3TypeDecl>()->type : gT3ErrorType;
}

T3Tree_Node* GetTypeIdentifierNode(T3Tree_Node* decl) {
  T3Tree_Node* type = decl->as<_T3InstanceDecl>()->type;
  while (type->is<T3ArrayType>()) type = type->as<T3ArrayType>()->type;
  return type->is<T3TypeReference>() ? type->as<T3TypeReference>()->reference : _sgT3NoExpression();
}

T3Tree_Node* ResolveExplicifiedType(T3Tree_Node* env, T3Tree_Node* type_reference) {
  T3Tree_Node* reference = type_reference->as<T3TypeReference>()->reference;
  if (reference->is<T3Identifier>()) {
    reference->as<T3Identifier>()->cold().representation = _sgT3TTCN_3();
    return ExtractTypeFromDecl(NewIdentifyId(env, reference));
  }
  if (!reference->is<T3Qualifier>())
    internal_error_ast("T3Names", __LINE__, "ResolveExplicifiedType", type_reference);
  reference->as<T3Qualifier>()->cold().representation = _sgT3TTCN_3();
  return ExtractTypeFromDecl(IdentifyQualified(env, reference));
}

bool DefUsePositionsConsistent(T3Tree_Node* def, T3Tree_Node* use) {
  if (!T3Is<_T3Decl>(def) || def->place == nullptr || use->place == nullptr) return true;
  T3Tree_Node* owner = def->place->vexa_owner;
  if (T3Is<T3Module>(owner) || T3Is<T3Module>(use->place->vexa_owner)) return true;
  if (owner != use->place->vexa_owner) return true;
  const tPosition declared = PositionOf(def);
  const tPosition used = PositionOf(use);
  if (declared == NoPosition || used == NoPosition || declared.File != used.File) return true;
  return Compare(declared, used) <= 0;
}

tIdent Ref2Id(T3Tree_Node* reference) {
  if (reference->is<T3ImportIdentifier>()) return reference->as<T3ImportIdentifier>()->id;
  auto* qualified = reference->try_as<T3ImportQualified>();
  return qualified != nullptr && qualified->base->is<T3ImportTerminator>() ? qualified->id : NoIdent;
}

tIdent DeclaredName(T3Tree_Node* decl) {
  if (auto* import = decl->try_as<_T3ImportDecl>()) return Ref2Id(import->object);
  if (auto* formal = decl->try_as<_T3FormalPar>()) return formal->name;
  return decl->as<_T3Decl>()->name;
}

tIdent ImportedModule(const _T3ImportDecl* import) {
  return Ref2Id(import->from_module);
}

bool VisibleUnqualified(T3Tree_Node* module, T3Tree_Node* import_decl) {
  T3DeclMap& map = *DeclsOut(module->as<T3Module>()->definition_part);
  const auto found = map.Find(DeclaredName(import_decl));
  return !found.empty() && found.front().decl == import_decl && found.back().decl == import_decl;
}

void ClearNameCache() {
  for (T3MapEnv* scope : CachingScopes()) {
    delete scope->attr().name_cache;
    scope->attr().name_cache = nullptr;
  }
  CachingScopes().clear();
}

namespace {
const ModuleCache kNamesCache{ClearNameCache};
}  // namespace
