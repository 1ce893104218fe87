// Scopes and the look-up of names: all declarations of a name in all enclosing scopes are gathered, and
// then classified into local and imported ones.
#include "analysis/T3Names.h"

#include <cstring>

#include "analysis/T3Imports.h"
#include "driver/T3Error.h"
#include "driver/T3Global.h"
#include "frontend/T3GlobalASTNodes.h"

/// A hashed view of a large map of declarations. Valid as long as the map has no new keys.
struct T3DeclIndex {
  size_t size;
  std::unordered_map<T3DeclKey, const T3NodeSet*, T3DeclKeyHash> sets;
};

namespace {
constexpr size_t kLargeMap = 16;

// The scopes that have a cache or an index.
std::vector<T3MapEnv*>& CachingScopes() {
  static std::vector<T3MapEnv*> scopes;
  return scopes;
}

void NoteScope(T3MapEnv* scope) {
  if (scope->attr().name_cache == nullptr && scope->attr().index == nullptr) CachingScopes().push_back(scope);
}

T3DeclIndex& IndexOf(T3MapEnv* scope) {
  const T3DeclMap& map = *scope->decls;
  if (scope->attr().index != nullptr && scope->attr().index->size == map.size()) return *scope->attr().index;
  NoteScope(scope);
  delete scope->attr().index;
  auto* index = new T3DeclIndex{map.size(), {}};
  index->sets.reserve(map.size());
  for (const auto& [key, set] : map) index->sets.emplace(key, &set);
  scope->attr().index = index;
  return *index;
}

const T3NodeSet* FindInScope(T3MapEnv* scope, const T3DeclKey& key) {
  if (scope->decls == nullptr || scope->decls->empty()) return nullptr;
  if (scope->decls->size() < kLargeMap) {
    const auto found = scope->decls->find(key);
    return found == scope->decls->end() ? nullptr : &found->second;
  }
  const T3DeclIndex& index = IndexOf(scope);
  const auto found = index.sets.find(key);
  return found == index.sets.end() ? nullptr : found->second;
}

template <class Call>
void ForScopes(T3Tree_Node* env, const Call& call) {
  while (T3Is<T3MapEnv>(env)) {
    auto* scope = env->as<T3MapEnv>();
    call(scope);
    env = scope->outer;
  }
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

// Almost every name has one declaration; the others are gathered in the order of their numbers.
Candidates Gather(T3Tree_Node* env, const T3DeclKey& key) {
  Candidates candidates;
  const T3NodeSet* only = nullptr;
  bool several = false;
  ForScopes(env, [&](T3MapEnv* scope) {
    const T3NodeSet* found = FindInScope(scope, key);
    if (found == nullptr) return;
    several = several || only != nullptr;
    only = found;
  });
  T3NodeSet all;
  if (several) {
    CollectDecls(env, key.first, key.second, all);
    only = &all;
  }
  if (only != nullptr)
    for (T3Tree_Node* node : *only) Classify(node, candidates);
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

void Insert(T3DeclMap& map, tIdent name, tIdent qualifier, T3Tree_Node* node) {
  map[{name, qualifier}].insert(node);
}

void AddEnumLiterals(T3Tree_Node* type, tIdent moduleId, bool local, T3DeclMap& map) {
  type->as<T3EnumType>()->attr().local_type = local;
  T3Tree_Node* value = type->as<T3EnumType>()->values;
  for (; value->is<T3EnumValue>(); value = value->as<T3EnumValue>()->next) {
    Insert(map, value->as<T3EnumValue>()->name, 0, type);
    Insert(map, value->as<T3EnumValue>()->name, moduleId, type);
  }
}

void RegisterImport(_T3ImportDecl* import, T3DeclMap& map) {
  const tIdent from = Ref2Id(import->from_module);
  const auto module = gT3ModuleMap.find(from);
  if (module != gT3ModuleMap.end()) Insert(map, from, 0, module->second);
  const tIdent object = Ref2Id(import->object);
  if (object == NoIdent || import->is<T3ImportAllDecl>()) return;
  T3Tree_Node* def = import->attr().def_aux;
  const bool is_enum = import->is<T3ImportTypeDecl>() && T3Is<T3TypeDecl>(def) &&
                       T3Is<T3EnumType>(def->as<T3TypeDecl>()->type);
  if (is_enum) AddEnumLiterals(def->as<T3TypeDecl>()->type, from, false, map);
  if (is_enum && IsAsnNullType(def)) return;
  Insert(map, object, 0, import);
  Insert(map, object, from, import);
}

void RegisterNull(T3TypeDecl* decl, tIdent moduleId, T3DeclMap& map) {
  decl->type->as<T3EnumType>()->attr().local_type = true;
  Insert(map, decl->name, 0, decl);
  Insert(map, decl->name, moduleId, decl);
}

bool HasCold(const T3Tree_Node* node) {
  return node->attributes != nullptr && node->attributes->cold != nullptr;
}

// Where the kinds have their positions; 0 for none.
std::vector<uint16_t> PositionOffsets() {
  std::vector<uint16_t> offsets(kT3KindCount, 0);
  for (size_t kind = 0; kind < offsets.size(); ++kind)
    for (const T3FieldInfo& field : T3Tree_KindInfo[kind].fields)
      if (std::strcmp(field.name, "position") == 0 && field.record == T3FieldRecord::Node)
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
  if (auto* module = decl->try_as<T3Module>()) return Insert(*map, module->name, 0, decl);
  if (decl->is<T3ControlPart>()) return Insert(*map, gIdents.MakeIdent("control"), 0, decl);
  if (auto* import = decl->try_as<_T3ImportDecl>()) return RegisterImport(import, *map);
  if (IsAsnNullType(decl)) return RegisterNull(decl->as<T3TypeDecl>(), moduleId, *map);
  if (auto* type = decl->try_as<T3TypeDecl>(); type != nullptr && T3Is<T3EnumType>(type->type))
    AddEnumLiterals(type->type, moduleId, true, *map);
  const tIdent name = decl->is<_T3FormalPar>() ? decl->as<_T3FormalPar>()->name : decl->as<_T3Decl>()->name;
  Insert(*map, name, 0, decl);
  Insert(*map, name, moduleId, decl);
}

T3DeclMap* DeclsOut(T3Tree_Node* decls) {
  static T3DeclMap& empty = *new T3DeclMap;
  if (!T3Is<_T3Decl>(decls) || decls->as<_T3Decl>()->cold().declsOut == nullptr) return &empty;
  return decls->as<_T3Decl>()->cold().declsOut;
}

void CollectDecls(T3Tree_Node* env, tIdent name, tIdent qualifier, T3NodeSet& set) {
  ForScopes(env, [&](T3MapEnv* scope) {
    if (const T3NodeSet* found = FindInScope(scope, {name, qualifier}))
      set.insert(found->begin(), found->end());
  });
}

T3Tree_Node* IdentifyQuietly(T3Tree_Node* env, tIdent name, tIdent qualifier) {
  T3Tree_Node* result = Choose(Gather(env, {name, qualifier}));
  return result != nullptr ? result : _sgT3NoDecl();
}

T3Tree_Node* NewIdentify1(T3Tree_Node* env, tIdent name, tIdent qualifier, const tPosition& position,
                          bool report) {
  if (!T3Is<T3MapEnv>(env)) {
    if (report) vexa_filtered_error(ERR_undefined, position, name);
    return _sgT3NoDecl();
  }
  auto* scope = env->as<T3MapEnv>();
  const T3DeclKey key{name, qualifier};
  if (scope->attr().name_cache == nullptr) {
    NoteScope(scope);
    scope->attr().name_cache = new T3NameCache;
  }
  const auto [entry, is_new] = scope->attr().name_cache->try_emplace(key, _sgT3NoDecl());
  if (!is_new) return entry->second;
  const Candidates candidates = Gather(env, key);
  T3Tree_Node* result = Choose(candidates);
  if (result == nullptr)
    ReportFailure(candidates, name, position, report);
  else
    entry->second = result;
  return entry->second;
}

T3Tree_Node* NewIdentifyId(T3Tree_Node* env, T3Tree_Node* identifier) {
  auto* id = identifier->as<T3Identifier>();
  if (HasCold(id) && T3Is<T3ASN_1>(id->cold().representation) && id->cold().catr_target != nullptr) {
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
  static const tIdent address = gIdents.MakeIdent("address");
  if (!T3Is<T3TypeDecl>(decl)) return false;
  const auto* type_decl = static_cast<const T3TypeDecl*>(decl);
  return type_decl->name == address && !T3Is<T3Address>(type_decl->type);
}

bool IsAsnNullType(const T3Tree_Node* decl) {
  static const tIdent null = gIdents.MakeIdent("NULL");
  if (!T3Is<T3TypeDecl>(decl)) return false;
  const auto* type_decl = static_cast<const T3TypeDecl*>(decl);
  if (type_decl->name != null || !T3Is<T3EnumType>(type_decl->type)) return false;
  auto* type = type_decl->type->as<T3EnumType>();
  if (!HasCold(type) || !T3Is<T3ASN_1>(type->cold().representation)) return false;
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

bool VisibleUnqualified(T3Tree_Node* module, T3Tree_Node* import_decl) {
  const T3DeclMap& map = *DeclsOut(module->as<T3Module>()->definition_part);
  const auto found = map.find({Ref2Id(import_decl->as<_T3ImportDecl>()->object), 0});
  return found != map.end() && found->second.size() == 1 && *found->second.begin() == import_decl;
}

void ClearNameCache() {
  for (T3MapEnv* scope : CachingScopes()) {
    delete scope->attr().name_cache;
    scope->attr().name_cache = nullptr;
    delete scope->attr().index;
    scope->attr().index = nullptr;
  }
  CachingScopes().clear();
  ClearListNames();
}
