#include "analysis/templates/T3TemplateMerge.h"

#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/types/T3Bounds.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/templates/T3PartBehind.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Parts.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "driver/options/T3CommandLine.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"

namespace {
// Constraints refer to templates, whose constraints refer to others; what lies deeper is left as a reference.
constexpr int kMaxDepthOfMerges = 500;
int g_depth = 0;

// ---- New nodes ----
// They are made behind inference, and get here what it would have given them.

template <class Node>
Node* Placed(Node* node, const T3Tree_Node* model) {
  node->place = model->place;
  return node;
}

template <class Expression>
Expression* Typed(Expression* expression, const T3TypeViews& views, const T3Tree_Node* model) {
  auto& attributes = expression->attr();
  attributes.pass1 = true;
  attributes.pass2 = true;
  attributes.expression_local_type = views.local;
  attributes.expression_base_type = views.base;
  return Placed(expression, model);
}

// One value of a compound: how it is named, and what it is for.
struct Item {
  T3Tree_Node* spec;
  T3Tree_Node* value;
  T3Tree_Node* member;
  t3_permutation_kind_t permutation = t3_permutation_kind_t::No;
};

// A compound in the place of `model`, of whose type it is.
T3CompoundValue* MakeCompound(T3CompoundValue* model, T3Tree_Node* type, const std::vector<Item>& items) {
  T3Tree_Node* list = _sgT3NoFieldValue();
  for (size_t i = items.size(); i-- > 0;) {
    const Item& item = items[i];
    auto* value = gT3AST.mT3FieldValue(PositionOf(item.value), list, item.spec, item.value, item.permutation);
    auto& attributes = Placed(value, model)->attr();
    attributes.index = static_cast<int>(i);
    attributes.def = item.member;
    attributes.vexa_owner_type = type;
    list = value;
  }
  const T3TypeViews views{ExpressionLocalType(model), ExpressionBaseType(model)};
  auto* result = Typed(gT3AST.mT3CompoundValue(model->position, list), views, model);
  auto& attributes = result->attr();
  attributes.length = static_cast<int>(items.size());
  attributes.vexa_list_notation = !items.empty() && items.front().spec->is<T3NoFieldSpec>();
  attributes.vexa_assign_notation = !items.empty() && items.front().spec->is<T3FieldName>();
  return result;
}

// What is written in the place of a part, over a template that is called or is known at run time only: a
// definition that modifies it.
T3TemplateDef* MakeModification(T3Tree_Node* reference, T3Tree_Node* constraint, T3Tree_Node* written) {
  const T3TypeViews views{ExpressionLocalType(written), ExpressionBaseType(written)};
  const tPosition position = PositionOf(written);
  auto* modified = Typed(gT3AST.mT3TemplateReference(position, reference), views, written);
  auto* definition =
      Typed(gT3AST.mT3TemplateDef(position, gT3NoType, constraint, modified, t3_template_restriction_t::None),
            views, written);
  definition->cold().merged_constraint = constraint;
  return definition;
}

T3TemplateDef* MakeModificationAtRunTime(T3Tree_Node* reference, T3Tree_Node* changes) {
  T3TemplateDef* definition = MakeModification(reference, changes, changes);
  definition->cold().requires_explicification = true;
  return definition;
}

T3Tree_Node* NameOf(T3Tree_Node* member, T3CompoundValue* model) {
  const tIdent name =
      T3Is<T3FieldType>(member) ? member->as<T3FieldType>()->name : member->as<_T3FormalPar>()->name;
  return Placed(gT3AST.mT3FieldName(model->position, name, _sgT3NoExpression()), model);
}

T3Tree_Node* IndexOf(int64_t index, T3CompoundValue* model) {
  auto* number = gT3AST.mT3IntLiteral(model->position, gStringM.PutString(std::to_string(index)));
  Typed(number, {gT3IntegerType, gT3IntegerType}, model);
  return Placed(gT3AST.mT3FieldIndex(model->position, number), model);
}

T3Tree_Node* LeafFor(T3Kind kind, T3Tree_Node* member, T3Tree_Node* model) {
  const T3TypeViews views = TypeViewsOf(member);
  switch (kind) {
    case T3Kind::T3AnyOrOmit:
      return Typed(gT3AST.mT3AnyOrOmit(PositionOf(model)), views, model);
    case T3Kind::T3Omit:
      return Typed(gT3AST.mT3Omit(PositionOf(model)), views, model);
    default:
      return Typed(gT3AST.mT3AnyValue(PositionOf(model)), views, model);
  }
}

// ---- What a constraint stands for ----

bool IsAny(T3Tree_Node* constraint) {
  return constraint->is<T3AnyValue>() || constraint->is<T3AnyOrOmit>();
}

// The constraint of another template, unless it depends on what is given for its parameters.
T3Tree_Node* ConstraintToMerge(T3TemplateDecl* decl, T3Parameterization*) {
  const bool is_known = !T3Is<_T3FormalPar>(decl->fpl) && decl->definition->is<T3TemplateDef>();
  return is_known && g_depth < kMaxDepthOfMerges ? MergedConstraint(decl->definition) : nullptr;
}

// The same with parameters, which may stand for anything.
T3Tree_Node* ConstraintOfAny(T3TemplateDecl* decl, T3Parameterization*) {
  const bool is_known = decl->definition->is<T3TemplateDef>() && g_depth < kMaxDepthOfMerges;
  return is_known ? MergedConstraint(decl->definition) : nullptr;
}

// The template that is named or called; null for anything else.
T3TemplateDecl* TemplateOf(T3Tree_Node* reference) {
  auto* call = reference->try_as<T3Parameterization>();
  T3TemplateDecl* decl = TemplateNamed(call == nullptr ? reference : call->base);
  return decl != nullptr && decl->definition->is<T3TemplateDef>() ? decl : nullptr;
}

bool IsList(T3CompoundValue* compound) {
  return compound->value->is<T3FieldValue>() &&
         compound->value->as<T3FieldValue>()->field->is<T3NoFieldSpec>();
}

// ---- Compounds ----

T3Tree_Node* MergeMembers(T3CompoundValue* base, T3CompoundValue* derived, T3Tree_Node* type) {
  const std::vector<T3Tree_Node*> members = MembersOf(type);
  auto old_values = ValuesByPlace(PartsOf(base, type), members.size());
  auto new_values = ValuesByPlace(PartsOf(derived, type), members.size());
  old_values.resize(members.size());
  new_values.resize(members.size());
  const bool chooses = type->is<T3UnionType>();
  std::vector<Item> items;
  for (size_t i = 0; i < members.size(); ++i) {
    T3FieldValue* kept = old_values[i];
    T3FieldValue* changed = new_values[i];
    if (changed == nullptr && (kept == nullptr || chooses)) continue;
    T3FieldValue* from = changed != nullptr ? changed : kept;
    const bool is_named = from->field->is<T3FieldName>() && from->attr().def == members[i];
    T3Tree_Node* value =
        changed == nullptr || kept == nullptr ? from->value : MergeConstraints(kept->value, changed->value);
    items.push_back({is_named ? from->field : NameOf(members[i], derived), value, members[i]});
  }
  return MakeCompound(derived, type, items);
}

bool IsPermuted(T3CompoundValue* compound) {
  for (auto* at : Items<T3FieldValue>(compound->value)) {
    auto* element = at;
    if (element->permutation_kind != t3_permutation_kind_t::No) return true;
  }
  return false;
}

// The elements by their index; nothing where an index is no constant.
std::optional<std::map<int64_t, T3FieldValue*>> ConstructMergeMap(T3CompoundValue* compound,
                                                                  T3Tree_Node* type) {
  const std::vector<T3Part> parts = PartsOf(compound, type);
  if (!AllPlacesAreKnown(parts)) return std::nullopt;
  std::map<int64_t, T3FieldValue*> elements;
  for (const T3Part& part : parts) elements[*part.place] = part.item;
  return elements;
}

// An element of the derived list takes the place of the base's, unless it is `-`. Indices are written out
// where one of the two has them.
T3Tree_Node* MergeElements(T3CompoundValue* base, T3CompoundValue* derived, T3Tree_Node* type) {
  if (IsPermuted(base) || IsPermuted(derived)) {
    vexa_filtered_error(ERR_type_template_modifies_permutated, PositionOf(derived));
    return derived;
  }
  const auto bounds = type->is<T3ArrayType>() ? KnownBounds(type) : std::nullopt;
  const int64_t first = bounds ? bounds->low : 0;
  auto elements = ConstructMergeMap(base, type);
  const auto changed = ConstructMergeMap(derived, type);
  if (!elements || !changed) {
    vexa_filtered_error(ERR_type_template_modifies_nonconst, PositionOf(derived));
    return derived;
  }
  for (const auto& [index, element] : *changed)
    if (!element->value->is<T3NotUsedSymbol>() || elements->count(index) == 0) (*elements)[index] = element;
  const bool listed = (IsList(base) || !base->value->is<T3FieldValue>()) &&
                      (IsList(derived) || !derived->value->is<T3FieldValue>());
  std::vector<Item> items;
  for (const auto& [index, element] : *elements) {
    T3Tree_Node* spec = listed ? element->field : IndexOf(first + index, derived);
    items.push_back({spec, element->value, ElementType(type)});
  }
  return MakeCompound(derived, type, items);
}

// A member of `anytype` is known by its name; another one takes its place.
T3Tree_Node* MergeAnyType(T3CompoundValue* base, T3CompoundValue* derived, T3Tree_Node* type) {
  auto* kept = base->value->try_as<T3FieldValue>();
  auto* changed = derived->value->try_as<T3FieldValue>();
  if (kept == nullptr || kept->attr().def != changed->attr().def) return derived;
  return MakeCompound(derived, type,
                      {{changed->field, MergeConstraints(kept->value, changed->value), changed->attr().def}});
}

T3Tree_Node* MergeCompoundValues(T3CompoundValue* base, T3CompoundValue* derived, T3Tree_Node* type) {
  if (type->is<_T3StructuredType>() || type->is<T3SignatureType>()) return MergeMembers(base, derived, type);
  if (type->is<_T3HomogeneousType>()) return MergeElements(base, derived, type);
  return type->is<T3AnyType>() ? MergeAnyType(base, derived, type) : derived;
}

// ---- Wildcards ----

// What stands for a field of a record whose base is a wildcard or absent.
T3Kind FieldOf(T3Tree_Node* base, bool optional) {
  if (base->is<T3AnyValue>() || !optional) return T3Kind::T3AnyValue;
  return base->is<T3Omit>() && !gT3CommandLine.strict ? T3Kind::T3Omit : T3Kind::T3AnyOrOmit;
}

// The compound that a wildcard or `omit` is short for; null where it is none.
T3CompoundValue* Expansion(T3Tree_Node* base, T3CompoundValue* derived, T3Tree_Node* type) {
  std::vector<Item> items;
  if (type->is<_T3HomogeneousType>() && IsAny(base)) {
    T3Tree_Node* element = ElementType(type);
    T3Tree_Node* spec = Placed(gT3AST.mT3NoFieldSpec(derived->position), derived);
    items.push_back({spec, LeafFor(T3Kind::T3AnyValue, element, derived), element});
  } else if ((type->is<T3RecordType>() || type->is<T3SetType>()) && (IsAny(base) || base->is<T3Omit>())) {
    for (T3Tree_Node* member : MembersOf(type)) {
      const T3Kind leaf = FieldOf(base, member->as<T3FieldType>()->optional);
      items.push_back({NameOf(member, derived), LeafFor(leaf, member, derived), member});
    }
  } else {
    return nullptr;
  }
  return MakeCompound(derived, type, items);
}

// Each `-` of what has just been written becomes the wildcard; those that stand for a default stay.
T3Tree_Node* SubstituteAllNotUsedNodes(T3Tree_Node* constraint, T3Kind wildcard) {
  std::vector<T3Tree_Node*> unused;
  ForEachInSubtree(constraint, [&unused](T3Tree_Node* node) {
    if (node->is<T3NotUsedSymbol>() && T3Is<T3FieldValue>(node->parent)) unused.push_back(node);
    return !node->is<T3Parameterization>() && !node->is<_T3Type>();
  });
  for (T3Tree_Node* node : unused) {
    T3Tree_Node* member = node->parent->as<T3FieldValue>()->attr().def;
    if (T3Is<T3ErrorType>(member) || member == nullptr) continue;
    ReplaceChild(node, LeafFor(wildcard, member, node));
  }
  return constraint;
}

// What is only known when the suite runs is modified there.
T3Tree_Node* MergeUnknown(T3Tree_Node* base, T3CompoundValue* derived, T3Tree_Node* type) {
  if (!base->is<_T3Reference>()) return derived;
  if (type->is<T3UnionType>()) WarnAt(derived, ERR_type_template_modifies_nonconst_union.text);
  if (type->is<_T3HomogeneousType>())
    WarnAt(derived, ERR_type_template_modifies_nonconst_homogeneous_type.text);
  return MakeModificationAtRunTime(base, derived);
}

// A part that is a template with arguments: its constraint is merged apart, since its parameters mean these
// arguments.
T3Tree_Node* MergeCall(T3Tree_Node* reference, T3TemplateDecl* decl, T3CompoundValue* derived) {
  return MakeModification(reference, MergeConstraints(MergedConstraint(decl->definition), derived), derived);
}

// What has been modified already is modified once more.
T3Tree_Node* MergeModified(T3TemplateDef* modified, T3CompoundValue* derived) {
  T3Tree_Node* reference = modified->modifies->as<T3TemplateReference>()->reference;
  T3Tree_Node* merged = MergeConstraints(modified->constraint, derived);
  if (IsModifiedAtRunTime(modified)) return MakeModificationAtRunTime(reference, merged);
  return MakeModification(reference, merged, derived);
}

T3Tree_Node* MergeKnown(T3Tree_Node* base, T3CompoundValue* derived, T3Tree_Node* type) {
  if (IsAny(base) && type->is<_T3HomogeneousType>()) SubstituteAllNotUsedNodes(derived, T3Kind::T3AnyValue);
  if (T3CompoundValue* expanded = Expansion(base, derived, type))
    return MergeCompoundValues(expanded, derived, type);
  if (IsAny(base)) return SubstituteAllNotUsedNodes(derived, base->kind);
  if (auto* kept = base->try_as<T3CompoundValue>()) return MergeCompoundValues(kept, derived, type);
  if (auto* modified = base->try_as<T3TemplateDef>()) return MergeModified(modified, derived);
  T3TemplateDecl* called =
      base->is<_T3Reference>() && g_depth < kMaxDepthOfMerges ? TemplateOf(base) : nullptr;
  return called != nullptr ? MergeCall(base, called, derived) : MergeUnknown(base, derived, type);
}

// What matches several values takes the place of a wildcard as a whole.
T3Tree_Node* MergeMatching(T3Tree_Node* base, T3Tree_Node* derived) {
  if (!derived->is<_T3MatchingExpression>() && !derived->is<ExtraMatchingExpressions>()) return derived;
  base = PartBehind(base, ConstraintToMerge);
  return IsAny(base) ? SubstituteAllNotUsedNodes(derived, base->kind) : derived;
}

// ---- Chains ----

T3TemplateDef* DefinitionModifiedBy(T3TemplateDef* definition) {
  T3TemplateDecl* decl = ModifiedTemplate(definition);
  return decl == nullptr ? nullptr : decl->definition->as<T3TemplateDef>();
}

T3Tree_Node* KnownMerge(T3TemplateDef* definition) {
  return definition->HasCold() ? definition->cold().merged_constraint : nullptr;
}

// What a definition modifies that is no template, such as a constant or a part of one of them; null where it
// is not known. A variable cannot be modified.
T3Tree_Node* OtherBaseOf(T3TemplateDef* definition) {
  auto* modifies = definition->modifies->try_as<T3TemplateReference>();
  if (modifies == nullptr || HasFailed(modifies->reference) ||
      ExpressionBaseType(definition)->is<T3ErrorType>())
    return nullptr;
  T3Tree_Node* base = PartBehind(modifies->reference, ConstraintToMerge);
  if (!base->is<_T3Reference>() || PartBehind(base, ConstraintOfAny) != base) return base;
  if (definition->constraint->is<T3CompoundValue>())
    vexa_filtered_error(ERR_invalid_in_template, PositionOf(modifies->reference));
  return nullptr;
}

// One link of a chain: the constraint that was written, over that of what it modifies.
void MergeLink(T3TemplateDef* definition, T3Tree_Node* base) {
  if (base != nullptr) definition->constraint = MergeConstraints(base, definition->constraint);
  definition->cold().merged_constraint = definition->constraint;
}
}  // namespace

T3TemplateDecl* ModifiedTemplate(T3TemplateDef* definition) {
  auto* modifies = definition->modifies->try_as<T3TemplateReference>();
  if (modifies == nullptr || ExpressionBaseType(definition)->is<T3ErrorType>()) return nullptr;
  return TemplateOf(modifies->reference);
}

T3Tree_Node* ActualsForModified(T3TemplateDef* definition) {
  auto* modifies = definition->modifies->try_as<T3TemplateReference>();
  auto* call = modifies == nullptr ? nullptr : modifies->reference->try_as<T3Parameterization>();
  return call == nullptr ? nullptr : call->apl;
}

bool IsModifiedAtRunTime(T3TemplateDef* definition) {
  return definition->HasCold() && definition->cold().requires_explicification;
}

// A union of which no alternative is written stays what it was.
bool ChoosesNothing(T3CompoundValue* derived, T3Tree_Node* type) {
  return (type->is<T3UnionType>() || type->is<T3AnyType>()) && !derived->value->is<T3FieldValue>();
}

T3Tree_Node* MergeConstraints(T3Tree_Node* base, T3Tree_Node* derived) {
  if (derived->is<T3NotUsedSymbol>()) return base;
  auto* changed = derived->try_as<T3CompoundValue>();
  if (changed == nullptr) return MergeMatching(base, derived);
  T3Tree_Node* type = GetAddressBaseType(ExpressionBaseType(changed));
  if (type->is<T3ErrorType>()) return derived;
  if (ChoosesNothing(changed, type)) return base;
  T3Tree_Node* merged = MergeKnown(PartBehind(base, ConstraintToMerge), changed, type);
  if (merged != derived && merged->is<T3CompoundValue>()) ReplaceSubtyped(derived, merged);
  return merged;
}

bool AwaitsMerge(T3Tree_Node* node) {
  auto* definition = node->try_as<T3TemplateDef>();
  return definition != nullptr && definition->modifies->is<T3TemplateReference>() &&
         KnownMerge(definition) == nullptr;
}

// A chain is followed to its end, or to what has been merged, and merged on the way back.
T3Tree_Node* MergedConstraint(T3Tree_Node* node) {
  auto* definition = node->try_as<T3TemplateDef>();
  if (definition == nullptr) return _sgT3NoExpression();
  std::vector<T3TemplateDef*> chain;
  T3TemplateDef* end = definition;
  for (; end != nullptr && KnownMerge(end) == nullptr; end = DefinitionModifiedBy(end)) {
    // What is met while it is being merged refers to itself, which was reported.
    end->cold().merged_constraint = end->constraint;
    chain.push_back(end);
  }
  ++g_depth;
  T3Tree_Node* base = end != nullptr ? KnownMerge(end) : OtherBaseOf(chain.back());
  for (size_t i = chain.size(); i-- > 0;) {
    MergeLink(chain[i], base);
    base = KnownMerge(chain[i]);
  }
  --g_depth;
  return KnownMerge(definition);
}
