#include "generator/expressions/CGModes.h"

#include "analysis/types/T3Types.h"
#include "generator/expressions/CGExpressionParts.h"

CGMode CGMode::temporary() const {
  CGMode mode = *this;
  mode.allocation = vexa_temp_alloc;
  return mode;
}

CGMode CGMode::with(CGAccess wanted) const {
  CGMode mode = *this;
  mode.access = wanted;
  return mode;
}

CGMode CGTemplateMode() {
  CGMode mode = vexa_temp_alloc;
  mode.is_template = true;
  return mode;
}

namespace cg {
namespace {
bool HoldsInList(T3Tree_Node* list) {
  for (auto* at : Items<T3FieldValue>(list))
    if (at->permutation_kind != t3_permutation_kind_t::No || HoldsTemplate(at->value)) return true;
  return false;
}
}  // namespace

bool IsTemplateDecl(T3Tree_Node* decl) {
  return T3Is<T3TemplateDecl>(decl) || T3Is<T3ImportTemplateDecl>(decl);
}

bool IsInfinityExpression(T3Tree_Node* node) {
  if (auto* negative = node->try_as<T3UnaryMinus>()) node = negative->arg;
  return node->is<T3Infinity>();
}

bool HoldsTemplate(T3Tree_Node* node) {
  if (auto* definition = node->try_as<T3TemplateDef>()) {
    if (definition->modifies->is<T3TemplateReference>()) return true;
    node = definition->constraint;
  }
  if (node->is<_T3MatchingExpression>() || node->is<ExtraMatchingExpressions>() || node->is<T3LengthRange>())
    return true;
  if (auto* compound = node->try_as<T3CompoundValue>()) return HoldsInList(compound->value);
  if (auto* call = node->try_as<T3Parameterization>()) {
    T3Tree_Node* callee = BehindImport(Def(call));
    if (T3Is<T3Function>(callee)) return callee->as<T3Function>()->returns_template;
    node = call->base;
  }
  if (auto* element = node->try_as<T3Subscription>()) return HoldsTemplate(element->base);
  if (auto* field = node->try_as<T3Qualifier>(); field != nullptr && IsField(field))
    return HoldsTemplate(WholeOf(field));
  if (!node->is<T3Identifier>() && !node->is<T3Qualifier>()) return false;
  T3Tree_Node* def = Def(node);
  return IsTemplateDecl(def) || T3Is<T3FormalTemplatePar>(def) ||
         (T3Is<T3VarDecl>(def) && def->as<T3VarDecl>()->is_template_variable);
}
}  // namespace cg
