// The distribution of `with` attributes over the declarations for which they hold.
#include "frontend/T3Attributes.h"

#include <memory>
#include <unordered_set>
#include <vector>

#include "driver/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

tStringRef vexa_encoder_BER, vexa_encoder_BER_INDEFINITE_LENGTH_variation, vexa_encoder_PER_BASIC_ALIGNED,
    vexa_encoder_PER_BASIC_UNALIGNED;

namespace {
constexpr t3_with_attribute_t kKinds[] = {t3_with_attribute_t::Encode, t3_with_attribute_t::Display,
                                          t3_with_attribute_t::Variant, t3_with_attribute_t::Extension};
constexpr size_t kKindCount = std::size(kKinds);

// What holds at a level of the tree for one kind of attribute. Levels that add nothing share the map.
struct Scope {
  T3AttributeValue global;
  std::shared_ptr<const T3AttributeMap> map;
};
struct Level {
  Scope scopes[kKindCount];
};

Scope GroupScope(const Scope& outer, T3Tree_Node* with_list, t3_with_attribute_t kind) {
  T3AttributeMap own;
  const T3AttributeValue value = CollectAttributes(with_list, kind, &own);
  Scope scope{JoinGlobalAttributes(outer.global, value), outer.map};
  if (own.empty()) return scope;
  auto joined = std::make_shared<T3AttributeMap>();
  JoinAttributeMaps(*outer.map, own, joined.get());
  scope.map = joined;
  return scope;
}

std::shared_ptr<const Level> PPGroupDeclAttr(const Level& outer, T3GroupDecl* group) {
  auto level = std::make_shared<Level>();
  for (size_t i = 0; i < kKindCount; ++i)
    level->scopes[i] = GroupScope(outer.scopes[i], group->with_spec, kKinds[i]);
  return level;
}

template <class Item>
void AddNames(T3Tree_Node* list, std::unordered_set<tIdent>& names) {
  for (; list->is<Item>(); list = list->as<Item>()->next) names.insert(list->as<Item>()->name);
}

// What an attribute may name in a type: fields, literals, parameters. They are known by the type as written:
// a subtype has those of the type in which it is written.
std::unordered_set<tIdent> FieldsOfTypeBody(T3Tree_Node* type) {
  while (type->is<T3SubType>()) type = type->as<T3SubType>()->parent;
  std::unordered_set<tIdent> names;
  if (auto* structured = type->try_as<_T3StructuredType>())
    AddNames<T3FieldType>(structured->body, names);
  else if (auto* enumeration = type->try_as<T3EnumType>())
    AddNames<T3EnumValue>(enumeration->values, names);
  else if (auto* signature = type->try_as<T3SignatureType>())
    AddNames<_T3FormalPar>(signature->fpl, names);
  return names;
}

bool LocalAttributeMapOK(T3Tree_Node* type, const T3AttributeMap& map, const tPosition& position) {
  if (map.empty()) return true;
  const std::unordered_set<tIdent> fields = FieldsOfTypeBody(type);
  for (const auto& [name, value] : map) {
    if (fields.count(name) != 0) continue;
    vexa_filtered_error(ERR_unknown_field_for_attr, position, name);
    return false;
  }
  return true;
}

T3Tree_Node* PPTypeDeclAttr(T3TypeDecl* decl, t3_with_attribute_t kind, const Scope& outer) {
  T3AttributeMap own;
  const T3AttributeValue value = CollectAttributes(decl->with_spec, kind, &own);
  const auto named = outer.map->find(decl->name);
  const T3AttributeValue effective =
      named != outer.map->end() ? named->second : JoinGlobalAttributes(outer.global, value);
  if (!LocalAttributeMapOK(decl->type, own, decl->position)) return _sgT3NoWith(false);
  return CreateWithSpec(effective, kind, own, decl->position);
}

T3Tree_Node* PPImportDeclAttr(_T3ImportDecl* decl, t3_with_attribute_t kind, const Scope& outer) {
  T3AttributeMap own;
  const T3AttributeValue value = CollectAttributes(decl->with_spec, kind, &own);
  return CreateWithSpec(JoinGlobalAttributes(outer.global, value), kind, own, decl->position);
}

void ReplaceWithSpec(_T3Decl* decl, const Level& level) {
  T3Tree_Node* list = _sgT3NoWith(false);
  for (size_t i = 0; i < kKindCount; ++i) {
    T3Tree_Node* part = decl->is<T3TypeDecl>()
                            ? PPTypeDeclAttr(decl->as<T3TypeDecl>(), kKinds[i], level.scopes[i])
                            : PPImportDeclAttr(decl->as<_T3ImportDecl>(), kKinds[i], level.scopes[i]);
    list = AppendWithSpec(list, part);
  }
  decl->with_spec = list;
}

// Groups are entered with their own level; the walk goes on behind them with the level around.
void PPAttr1(T3Tree_Node* decls, std::shared_ptr<const Level> outermost) {
  struct Place {
    T3Tree_Node* decl;
    std::shared_ptr<const Level> level;
  };
  std::vector<Place> rest;
  rest.push_back({decls, std::move(outermost)});
  while (!rest.empty()) {
    const Place place = rest.back();
    rest.pop_back();
    if (T3Is<T3NoDecl>(place.decl)) continue;
    if (!T3Is<_T3Decl>(place.decl)) yyAbort("PPAttr1");
    rest.push_back({place.decl->as<_T3Decl>()->next, place.level});
    if (auto* group = place.decl->try_as<T3GroupDecl>())
      rest.push_back({group->body, PPGroupDeclAttr(*place.level, group)});
    else if (place.decl->is<T3TypeDecl>() || place.decl->is<_T3ImportDecl>())
      ReplaceWithSpec(place.decl->as<_T3Decl>(), *place.level);
  }
}

void CollectQualified(T3With* with, T3AttributeMap* map) {
  T3Tree_Node* item = with->attrib_qualifier;
  for (; item->is<T3RefItem>(); item = item->as<T3RefItem>()->next) {
    auto* name = item->as<T3RefItem>()->reference->try_as<T3AttrRefIdentifier>();
    if (name == nullptr) continue;
    if (!map->try_emplace(name->id, T3AttributeValue{with->attrib_spec, with->override}).second)
      vexa_filtered_error(ERR_conflicting_attr, name->position, name->id);
  }
}
}  // namespace

void BeginT3Attributes() {
  vexa_encoder_BER = gStringM.PutString("\"BER:1997\"");
  vexa_encoder_BER_INDEFINITE_LENGTH_variation = gStringM.PutString("\"length form 3\"");
  vexa_encoder_PER_BASIC_ALIGNED = gStringM.PutString("\"PER-BASIC-ALIGNED:1997\"");
  vexa_encoder_PER_BASIC_UNALIGNED = gStringM.PutString("\"PER-BASIC-UNALIGNED:1997\"");
}

T3AttributeValue CollectAttributes(T3Tree_Node* with_list, t3_with_attribute_t kind, T3AttributeMap* map) {
  T3AttributeValue value;
  bool found = false;
  for (; with_list->is<T3With>(); with_list = with_list->as<T3With>()->next) {
    auto* with = with_list->as<T3With>();
    if (with->attribute != kind) continue;
    if (!with->attrib_qualifier->is<T3NoRefItem>()) {
      CollectQualified(with, map);
    } else if (found) {
      vexa_filtered_error(ERR_conflicting_unqual_attr, with->position);
    } else {
      value = {with->attrib_spec, with->override};
      found = true;
    }
  }
  return value;
}

T3AttributeValue ExtractUnqualifiedAttribute(T3Tree_Node* with_list, t3_with_attribute_t kind) {
  for (; with_list->is<T3With>(); with_list = with_list->as<T3With>()->next) {
    auto* with = with_list->as<T3With>();
    if (with->attribute == kind && with->attrib_qualifier->is<T3NoRefItem>())
      return {with->attrib_spec, with->override};
  }
  return {};
}

T3Tree_Node* CreateWithSpec(const T3AttributeValue& value, t3_with_attribute_t kind,
                            const T3AttributeMap& map, const tPosition& position) {
  T3Tree_Node* list = _sgT3NoWith(false);
  for (const auto& [name, entry] : map) {
    T3Tree_Node* reference = gT3AST.mT3AttrRefIdentifier(position, name);
    T3Tree_Node* item = gT3AST.mT3RefItem(position, _sgT3NoRefItem(), reference);
    list = gT3AST.mT3With(position, list, kind, entry.override, item, entry.text);
  }
  if (value.IsEmpty()) return list;
  return gT3AST.mT3With(position, list, kind, value.override, _sgT3NoRefItem(), value.text);
}

T3Tree_Node* AppendWithSpec(T3Tree_Node* a, T3Tree_Node* b) {
  if (!b->is<T3With>()) return a;
  if (!a->is<T3With>()) return b;
  auto* last = a->as<T3With>();
  while (last->next->is<T3With>()) last = last->next->as<T3With>();
  last->next = b;
  return a;
}

T3AttributeValue JoinGlobalAttributes(const T3AttributeValue& outer, const T3AttributeValue& inner) {
  return !inner.IsEmpty() && !outer.override ? inner : outer;
}

void JoinAttributeMaps(const T3AttributeMap& outer, const T3AttributeMap& inner, T3AttributeMap* result) {
  *result = outer;
  for (const auto& [name, value] : inner) {
    const auto found = outer.find(name);
    if (found == outer.end() || !found->second.override) (*result)[name] = value;
  }
}

void PreprocessAttributes(T3Tree_Node* module) {
  if (!T3Is<T3Module>(module)) yyAbort("PreprocessAttributes");
  auto* node = module->as<T3Module>();
  auto level = std::make_shared<Level>();
  for (size_t i = 0; i < kKindCount; ++i) {
    auto map = std::make_shared<T3AttributeMap>();
    level->scopes[i].global = CollectAttributes(node->with_spec, kKinds[i], map.get());
    level->scopes[i].map = map;
  }
  PPAttr1(node->definition_part, level);
}
