// The distribution of `with` attributes over the declarations for which they hold.
#include "frontend/T3Attributes.h"

#include <unordered_set>
#include <vector>

#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

tStringRef vexa_encoder_BER, vexa_encoder_BER_INDEFINITE_LENGTH_variation, vexa_encoder_PER_BASIC_ALIGNED,
    vexa_encoder_PER_BASIC_UNALIGNED;

namespace {
constexpr t3_with_attribute_t kKinds[] = {t3_with_attribute_t::Encode, t3_with_attribute_t::Display,
                                          t3_with_attribute_t::Variant, t3_with_attribute_t::Extension};
constexpr size_t kKindCount = std::size(kKinds);

template <class Item>
void AddNames(T3Tree_Node* list, std::unordered_set<tIdent>& names) {
  for (auto* at : Items<Item>(list)) names.insert(at->name);
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

// What the first statement of a kind says of the whole.
T3AttributeValue FirstUnqualified(T3Tree_Node* with_list, t3_with_attribute_t kind) {
  for (auto* with : Items<T3With>(with_list)) {
    if (with->attribute == kind && with->attrib_qualifier->is<T3NoRefItem>())
      return {{{with->attrib_spec, with->override}}};
  }
  return {};
}

// Walks the declarations of a module. What groups hold is entered in front of their bodies and taken back
// behind them, so that a group costs what stands in it.
class Distribution {
 public:
  explicit Distribution(T3Module* module);
  void PPAttr1(T3Tree_Node* decls);

 private:
  struct Level {
    T3AttributeValue global[kKindCount];
    T3HiddenAttributes hidden[kKindCount];
    /// Where the walk goes on behind the group.
    T3Tree_Node* behind = nullptr;
  };

  bool Gathers(size_t kind, T3Tree_Node* with_list, tIdent name) const;
  void PPGroupDeclAttr(Level& level, size_t kind, T3GroupDecl* group);
  T3Tree_Node* EnterGroup(T3GroupDecl* group);
  T3Tree_Node* LeaveGroup();
  T3Tree_Node* PPTypeDeclAttr(T3TypeDecl* decl, size_t kind) const;
  T3Tree_Node* PPImportDeclAttr(_T3ImportDecl* decl, size_t kind) const;
  void ReplaceWithSpec(_T3Decl* decl) const;

  std::vector<Level> levels_;
  /// What the levels around say of declarations by their names.
  T3AttributeMap named_[kKindCount];
};

Distribution::Distribution(T3Module* module) {
  levels_.emplace_back();
  for (size_t i = 0; i < kKindCount; ++i) {
    const bool gather = Gathers(i, module->with_spec, NoIdent);
    levels_.back().global[i] = CollectAttributes(module->with_spec, kKinds[i], &named_[i], gather);
  }
}

/// Whether the attributes of a kind that a declaration gives are gathered.
bool Distribution::Gathers(size_t kind, T3Tree_Node* with_list, tIdent name) const {
  if (kKinds[kind] != t3_with_attribute_t::Variant || !with_list->is<T3With>()) return false;
  constexpr size_t encode = 0;
  static_assert(kKinds[encode] == t3_with_attribute_t::Encode);
  const auto named = named_[encode].find(name);
  if (named != named_[encode].end()) return GathersVariants(named->second);
  return GathersVariants(
      JoinGlobalAttributes(levels_.back().global[encode], FirstUnqualified(with_list, kKinds[encode])));
}

void Distribution::PPGroupDeclAttr(Level& level, size_t kind, T3GroupDecl* group) {
  T3AttributeMap own;
  const bool gather = Gathers(kind, group->with_spec, NoIdent);
  const T3AttributeValue value = CollectAttributes(group->with_spec, kKinds[kind], &own, gather);
  level.global[kind] = JoinGlobalAttributes(levels_.back().global[kind], value);
  level.hidden[kind] = JoinAttributeMaps(&named_[kind], own);
}

T3Tree_Node* Distribution::EnterGroup(T3GroupDecl* group) {
  Level level;
  for (size_t i = 0; i < kKindCount; ++i) PPGroupDeclAttr(level, i, group);
  level.behind = group->next;
  levels_.push_back(std::move(level));
  return group->body;
}

T3Tree_Node* Distribution::LeaveGroup() {
  const Level level = std::move(levels_.back());
  levels_.pop_back();
  for (size_t i = 0; i < kKindCount; ++i) RestoreAttributeMap(&named_[i], level.hidden[i]);
  return level.behind;
}

T3Tree_Node* Distribution::PPTypeDeclAttr(T3TypeDecl* decl, size_t kind) const {
  T3AttributeMap own;
  const bool gather = Gathers(kind, decl->with_spec, decl->name);
  const T3AttributeValue value = CollectAttributes(decl->with_spec, kKinds[kind], &own, gather);
  const auto named = named_[kind].find(decl->name);
  const T3AttributeValue effective =
      named != named_[kind].end() ? named->second : JoinGlobalAttributes(levels_.back().global[kind], value);
  if (!LocalAttributeMapOK(decl->type, own, decl->position)) return _sgT3NoWith();
  return CreateWithSpec(effective, kKinds[kind], own, decl->position);
}

T3Tree_Node* Distribution::PPImportDeclAttr(_T3ImportDecl* decl, size_t kind) const {
  T3AttributeMap own;
  const bool gather = Gathers(kind, decl->with_spec, NoIdent);
  const T3AttributeValue value = CollectAttributes(decl->with_spec, kKinds[kind], &own, gather);
  return CreateWithSpec(JoinGlobalAttributes(levels_.back().global[kind], value), kKinds[kind], own,
                        decl->position);
}

void Distribution::ReplaceWithSpec(_T3Decl* decl) const {
  T3Tree_Node* list = _sgT3NoWith();
  for (size_t i = 0; i < kKindCount; ++i) {
    T3Tree_Node* part = decl->is<T3TypeDecl>() ? PPTypeDeclAttr(decl->as<T3TypeDecl>(), i)
                                               : PPImportDeclAttr(decl->as<_T3ImportDecl>(), i);
    list = AppendWithSpec(list, part);
  }
  decl->with_spec = list;
}

void Distribution::PPAttr1(T3Tree_Node* decls) {
  T3Tree_Node* decl = decls;
  while (!T3Is<T3NoDecl>(decl) || levels_.size() > 1) {
    if (T3Is<T3NoDecl>(decl)) {
      decl = LeaveGroup();
    } else if (T3Is<T3GroupDecl>(decl)) {
      decl = EnterGroup(decl->as<T3GroupDecl>());
    } else {
      if (!T3Is<_T3Decl>(decl)) yyAbort("PPAttr1");
      if (decl->is<T3TypeDecl>() || decl->is<_T3ImportDecl>()) ReplaceWithSpec(decl->as<_T3Decl>());
      decl = decl->as<_T3Decl>()->next;
    }
  }
}

void CollectQualified(T3With* with, T3AttributeMap* map, bool gather) {
  T3Tree_Node* item = with->attrib_qualifier;
  for (auto* at : Items<T3RefItem>(item)) {
    auto* name = at->reference->try_as<T3AttrRefIdentifier>();
    if (name == nullptr) continue;
    T3AttributeValue& value = (*map)[name->id];
    if (value.IsEmpty() || gather)
      value.texts.push_back({with->attrib_spec, with->override});
    else
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

bool GathersVariants(const T3AttributeValue& encode) {
  if (encode.IsEmpty()) return false;
  const std::string_view text = StringM::StGetString(encode.texts.front().text);
  return text == "\"RAW\"" || text == "\"TEXT\"" || text == "\"JSON\"";
}

T3AttributeValue CollectAttributes(T3Tree_Node* with_list, t3_with_attribute_t kind, T3AttributeMap* map,
                                   bool gather) {
  T3AttributeValue value;
  for (auto* with : Items<T3With>(with_list)) {
    if (with->attribute != kind) continue;
    if (!with->attrib_qualifier->is<T3NoRefItem>()) {
      CollectQualified(with, map, gather);
    } else if (value.IsEmpty() || gather) {
      value.texts.push_back({with->attrib_spec, with->override});
    } else {
      vexa_filtered_error(ERR_conflicting_unqual_attr, with->position);
    }
  }
  return value;
}

T3Tree_Node* CreateWithSpec(const T3AttributeValue& value, t3_with_attribute_t kind,
                            const T3AttributeMap& map, const tPosition& position) {
  T3Tree_Node* list = _sgT3NoWith();
  const auto put_in_front = [&](const T3AttributeValue& said, const auto& qualifier) {
    for (auto text = said.texts.rbegin(); text != said.texts.rend(); ++text)
      list = gT3AST.mT3With(position, list, kind, text->override, qualifier(), text->text);
  };
  for (const auto& [name, entry] : map) {
    put_in_front(entry, [&, field = name] {
      T3Tree_Node* reference = gT3AST.mT3AttrRefIdentifier(position, field);
      return gT3AST.mT3RefItem(position, _sgT3NoRefItem(), reference);
    });
  }
  put_in_front(value, [] { return _sgT3NoRefItem(); });
  return list;
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
  return !inner.IsEmpty() && !outer.Overrides() ? inner : outer;
}

T3HiddenAttributes JoinAttributeMaps(T3AttributeMap* map, const T3AttributeMap& inner) {
  T3HiddenAttributes hidden;
  for (const auto& [name, value] : inner) {
    const auto [entry, added] = map->try_emplace(name, value);
    if (!added && entry->second.Overrides()) continue;
    hidden.emplace_back(name, added ? T3AttributeValue() : entry->second);
    entry->second = value;
  }
  return hidden;
}

void RestoreAttributeMap(T3AttributeMap* map, const T3HiddenAttributes& hidden) {
  for (const auto& [name, value] : hidden) {
    if (value.IsEmpty())
      map->erase(name);
    else
      (*map)[name] = value;
  }
}

void PreprocessAttributes(T3Tree_Node* module) {
  if (!T3Is<T3Module>(module)) yyAbort("PreprocessAttributes");
  auto* node = module->as<T3Module>();
  Distribution(node).PPAttr1(node->definition_part);
}
