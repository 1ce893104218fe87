// Template definitions: with a type of their own, modified, or typed by their context.
#include "analysis/inference/T3InferenceParts.h"

namespace t3infer {
namespace {
void SetTypes(T3TemplateDef* definition, T3Tree_Node* local) {
  auto& attributes = definition->attr();
  attributes.pass1 = true;
  attributes.pass2 = true;
  const T3TypeViews views = TypeViewsOf(local);
  attributes.expression_local_type = local;
  attributes.expression_base_type = views.base;
}

// The template that a definition modifies must have the definition's type, where that has its own.
// Returns the type of the modified template, or T3NoType.
T3Tree_Node* InferModifies(T3TemplateDef* definition) {
  auto* modifies = definition->modifies->try_as<T3TemplateReference>();
  if (modifies == nullptr) return gT3NoType;
  T3Candidates candidates = Anything();
  if (!T3Is<T3NoType>(definition->parent))
    candidates = T3Candidates(LocalTypeDef(definition->parent), BaseTypeDef(definition->parent));
  const T3Inference result = Infer(modifies->reference, candidates, false, false);
  T3Tree_Node* local = LocalOf(modifies->reference);
  auto& attributes = modifies->attr();
  attributes.expression_local_type = local;
  attributes.expression_base_type = BaseTypeDef(local);
  attributes.modifies_decl = Def(modifies->reference);
  definition->attr().modifies_decl = attributes.modifies_decl;
  if (result == T3Inference::Unreported) Report(modifies, candidates.CountValid());
  return local;
}

T3Inference InferUntyped(T3TemplateDef* definition, T3Candidates& candidates, bool strict,
                         T3TemplateUse use) {
  const T3Inference result = Infer(definition->constraint, candidates, strict, false);
  SetTypes(definition, result == T3Inference::Good ? Check(candidates) : gT3ErrorType);
  definition->attr().report_type_error = result == T3Inference::Unreported;
  return result == T3Inference::Unreported ? Report(definition, candidates.CountValid(), use) : result;
}

T3Inference InferTyped(T3TemplateDef* definition, T3Tree_Node* own, T3Candidates& candidates, bool strict,
                       T3TemplateUse use) {
  const auto [local, base] = TypeViewsOf(own);
  T3Candidates inner(local, base);
  Infer(definition->constraint, inner, false, true);
  if (base->is<T3ErrorType>()) {
    SetTypes(definition, gT3ErrorType);
    return T3Inference::Reported;
  }
  // A declaration has no context; of a port that takes nothing the empty set is what it takes.
  if (candidates.size() == 0 && use != T3TemplateUse::Port) {
    SetTypes(definition, local);
    return T3Inference::Good;
  }
  Exclude(candidates, local, base, true, strict);
  T3Tree_Node* chosen = Check(candidates);
  SetTypes(definition, chosen);
  if (!chosen->is<T3ErrorType>()) return T3Inference::Good;
  if (IsSilent(candidates)) return T3Inference::Reported;
  definition->attr().report_type_error = true;
  return Report(definition, candidates.CountValid(), use);
}
}  // namespace

T3Inference InferDefinition(T3TemplateDef* definition, T3Candidates& candidates, bool strict,
                            T3TemplateUse use) {
  auto& attributes = definition->attr();
  attributes.is_strict = strict;
  attributes.is_actual_par = use == T3TemplateUse::ActualPar || use == T3TemplateUse::UnknownPar;
  attributes.is_port_template = use == T3TemplateUse::Port;
  T3Tree_Node* modified = InferModifies(definition);
  T3Tree_Node* own = T3Is<T3NoType>(definition->parent) ? modified : definition->parent;
  const T3TypeViews views = TypeViewsOf(definition->parent);
  attributes.local_type_def = views.local;
  attributes.base_type_def = views.base;
  attributes.type_pass = true;
  if (T3Is<T3NoType>(own)) return InferUntyped(definition, candidates, strict, use);
  return InferTyped(definition, own, candidates, strict, use);
}
}  // namespace t3infer
