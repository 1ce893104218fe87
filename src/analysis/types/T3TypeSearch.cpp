// Searches in the bodies of types: fields and parameters by name or number, and the types that ports and
// `all` stand for.
#include <unordered_map>
#include <unordered_set>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3AnyTypes.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "support/ModuleCaches.h"
#include "frontend/T3Lists.h"

namespace {
T3Tree_Node* NextOf(T3Tree_Node* element) {
  if (auto* field = element->try_as<T3FieldType>()) return field->next;
  if (auto* par = element->try_as<_T3FormalPar>()) return par->next;
  if (auto* decl = element->try_as<_T3Decl>()) return decl->next;
  return nullptr;
}

tIdent NameOf(T3Tree_Node* element) {
  if (auto* field = element->try_as<T3FieldType>()) return field->name;
  if (auto* par = element->try_as<_T3FormalPar>()) return par->name;
  return element->as<_T3Decl>()->name;
}

// The list of what a type is made of; a list is its own.
T3Tree_Node* Members(T3Tree_Node* scope) {
  if (auto* type = scope->try_as<_T3StructuredType>()) return type->body;
  if (auto* type = scope->try_as<T3SignatureType>()) return type->fpl;
  if (scope->is<T3AnyType>()) {
    T3Tree_Node* fields = AnyTypeFields(scope);
    return fields == nullptr ? _sgT3NoFieldType(true) : fields;
  }
  return scope;
}

// ---- The first member of a name ----

struct FoundMember {
  T3Tree_Node* member = nullptr;
  long position = -1;
};
using MemberIndex = std::unordered_map<tIdent, FoundMember>;
// The names of long lists, by the numbers of their heads.
std::unordered_map<uint32_t, MemberIndex>& g_indices = *new std::unordered_map<uint32_t, MemberIndex>;

const MemberIndex& IndexOf(T3Tree_Node* list) {
  const auto [index, made] = g_indices.try_emplace(list->number);
  long position = 0;
  if (made)
    for (T3Tree_Node* at = list; NextOf(at) != nullptr; at = NextOf(at))
      index->second.try_emplace(NameOf(at), FoundMember{at, position++});
  return index->second;
}

// A few members are looked through; an index pays for the names of a long list only.
FoundMember FirstNamed(T3Tree_Node* list, tIdent name) {
  constexpr long kFew = 16;
  T3Tree_Node* at = list;
  for (long position = 0; position < kFew; ++position, at = NextOf(at)) {
    if (NextOf(at) == nullptr) return {};
    if (NameOf(at) == name) return {at, position};
  }
  const MemberIndex& index = IndexOf(list);
  const auto found = index.find(name);
  return found == index.end() ? FoundMember() : found->second;
}

[[noreturn]] void AbsentMember(const char* function, T3Tree_Node* node) {
  internal_error_ast("T3Types", 0, function, node);
}
}  // namespace

namespace {
const ModuleCache kCache{[] { g_indices.clear(); }};
}  // namespace

T3Tree_Node* FindName1(T3Tree_Node* scope, tIdent name, tIdent moduleId) {
  if (scope == nullptr) return gT3ErrorType;
  T3Tree_Node* first = FirstNamed(Members(scope), name).member;
  if (first == nullptr) return gT3ErrorType;
  for (T3Tree_Node* at = first; NextOf(at) != nullptr; at = NextOf(at)) {
    if (NameOf(at) != name) continue;
    if (moduleId == NoIdent || at->place == nullptr || at->place->vexa_module_name == moduleId) return at;
  }
  return gT3ErrorType;
}

T3Tree_Node* FindName(T3Tree_Node* scope, tIdent name, T3Tree_Node* moduleRef) {
  tIdent module = NoIdent;
  if (T3Is<T3Identifier>(moduleRef)) module = moduleRef->as<T3Identifier>()->id;
  if (T3Is<T3Module>(moduleRef)) module = moduleRef->as<T3Module>()->name;
  return FindName1(scope, name, module);
}

long GetAlternativeIndex(T3Tree_Node* node, tIdent name, bool must_exist) {
  const FoundMember found = FirstNamed(Members(node), name);
  if (found.member != nullptr) return found.member->is<_T3FormalPar>() ? found.position + 1 : found.position;
  if (must_exist) AbsentMember("GetAlternativeIndex", node);
  return -1;
}

T3Tree_Node* FindIndex(T3Tree_Node* list, long n) {
  for (T3Tree_Node* at = Members(list); NextOf(at) != nullptr; at = NextOf(at))
    if (n-- == 0) return at;
  return gT3ErrorType;
}

bool PartOfAllTypes(T3Tree_Node* base) {
  return !base->is<T3Default>() && !base->is<T3ErrorType>() && !base->is<T3NoType>() && !IsObjectType(base);
}

namespace {
// Appends the type declarations of a list, groups entered.
void CollectTypes(T3Tree_Node* decls, T3NodeList& types) {
  for (auto* decl : DeclsInGroups(decls))
    if (decl->is<T3TypeDecl>() || decl->is<T3ImportTypeDecl>() || decl->is<T3ImportSignatureDecl>())
      types.push_back(decl);
}

// Gathers the views of types; one that is listed again counts once, and so does a built-in type that another module has by
// a name of its own, as modules of ASN.1 do.
class ListedTypes {
 public:
  explicit ListedTypes(_T3TypeItemList_Attributes& sets) : sets_(sets) {}
  void Append(T3Tree_Node* entity) {
    T3Tree_Node* absolute = AbsoluteTypeDef(entity);
    if (!listed_.insert(absolute).second || IsListedBuiltin(absolute)) return;
    sets_.absolute_types->push_back(absolute);
    sets_.local_types->push_back(LocalTypeDef(entity));
    sets_.base_types->push_back(BaseTypeDef(entity));
  }

 private:
  _T3TypeItemList_Attributes& sets_;
  bool IsListedBuiltin(T3Tree_Node* absolute) {
    if (!absolute->is<_T3BuiltinType>()) return false;
    if (std::any_of(builtins_.begin(), builtins_.end(), [&](auto* listed) { return IsSameBuiltinType(listed, absolute); }))
      return true;
    builtins_.push_back(absolute);
    return false;
  }

  std::unordered_set<const T3Tree_Node*> listed_;
  std::vector<T3Tree_Node*> builtins_;
};

// What a port's types, and a signature's exceptions, are as candidates, by the numbers of their lists.
std::unordered_map<uint32_t, T3SharedTypes>& g_shared = *new std::unordered_map<uint32_t, T3SharedTypes>;
const ModuleCache shared_types([] { g_shared.clear(); });

const T3SharedTypes& SharedTypesOf(T3Tree_Node* list, const T3TypeSet& locals, const T3TypeSet& bases) {
  const auto [types, is_new] = g_shared.try_emplace(list->number);
  for (size_t i = 0; is_new && i < locals.size(); ++i) types->second.Add(locals[i], bases[i]);
  return types->second;
}

// The sets of a list of types lie on its head.
T3PortTypes TypesListed(T3Tree_Node* list) {
  auto& sets = list->as<_T3TypeItemList>()->attr();
  if (sets.absolute_types == nullptr) {
    sets.absolute_types = new T3TypeSet;
    sets.local_types = new T3TypeSet;
    sets.base_types = new T3TypeSet;
    ListedTypes views(sets);
    for (auto* at : Items<T3TypeItem>(list)) {
      T3Tree_Node* type = at->type;
      if (!type->is<T3AllTypes>()) {
        views.Append(type);
        continue;
      }
      if (at->place == nullptr) continue;
      for (T3Tree_Node* decl : AllTypesOf(at->place->vexa_my_module))
        if (PartOfAllTypes(BaseTypeDef(decl))) views.Append(decl);
    }
  }
  return {*sets.absolute_types, *sets.local_types, *sets.base_types,
          SharedTypesOf(list, *sets.absolute_types, *sets.base_types)};
}
}  // namespace

const T3NodeList& AllTypesOf(T3Tree_Node* module) {
  static const T3NodeList kNone;
  auto* node = module == nullptr ? nullptr : module->try_as<T3Module>();
  if (node == nullptr) return kNone;
  if (node->attr().types == nullptr) {
    auto* types = new T3NodeList;
    T3Tree_Node* builtins = node->attr().vexa_builtins;
    if (builtins != nullptr) CollectTypes(builtins, *types);
    CollectTypes(node->definition_part, *types);
    node->attr().types = types;
  }
  return *node->attr().types;
}

T3PortTypes ExceptionsOf(T3SignatureType* signature) {
  return TypesListed(signature->exceptions);
}

T3PortTypes PortTypesIn(T3Tree_Node* port_type) {
  return TypesListed(port_type->as<T3PortType>()->in_list);
}

T3PortTypes PortTypesOut(T3Tree_Node* port_type) {
  return TypesListed(port_type->as<T3PortType>()->out_list);
}
