// The check for `omit` that is carried by templates to where a value must stand: into mandatory fields, into
// unions, through parameters and by assignments. What is written as `omit` at such a place is refused in any
// case, where its type is found; this check, which has to be asked for, follows references.
#include <unordered_set>

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/templates/T3PartBehind.h"
#include "analysis/walk/T3Stages.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "frontend/T3Lists.h"
#include "support/ModuleCaches.h"
#include "driver/diagnostics/T3Error.h"

namespace {
bool OmitExpression(T3Tree_Node* expression) {
  return PartBehind(expression)->is<T3Omit>();
}

T3Tree_Node* TypeOf(T3Tree_Node* expression) {
  return GetAddressBaseType(ExpressionBaseType(expression));
}

bool IsRecordOrUnion(T3Tree_Node* type) {
  return T3Is<T3RecordType>(type) || T3Is<T3UnionType>(type);
}

// ---- Parameters ----

bool MustHaveValue(T3Tree_Node* member) {
  return T3Is<T3FieldType>(member) && !member->as<T3FieldType>()->optional;
}

void MarkParameter(T3Tree_Node* par, tIdent name) {
  for (auto* formal : Items<_T3FormalPar>(par))
    if (formal->name == name) formal->attr().omit_not_allow_par = true;
}

// Marks the parameters that feed a field which cannot be left out.
void OmitTemplCheckPars(T3TemplateDecl* decl) {
  auto* compound = ConstraintOf(decl->definition)->try_as<T3CompoundValue>();
  if (compound == nullptr || !IsRecordOrUnion(TypeOf(compound))) return;
  for (auto* at : Items<T3FieldValue>(compound->value)) {
    auto* value = at;
    if (MustHaveValue(value->attr().def) && value->value->is<T3Identifier>())
      MarkParameter(decl->fpl, value->value->as<T3Identifier>()->id);
  }
}

// Parameters of templates of other modules are marked when they are first asked for.
void MarkOnce(T3TemplateDecl* decl) {
  static auto& marked = *new std::unordered_set<uint32_t>;
  if (marked.insert(decl->number).second) OmitTemplCheckPars(decl);
}

void CompareParameters(T3Tree_Node* formals, T3Tree_Node* actuals) {
  for (const auto [par, at] : Pairs<T3FormalTemplatePar, T3ActualPar>(formals, actuals)) {
    T3Tree_Node* value = ConstraintOf(at->expression);
    if (par->attr().omit_not_allow_par && T3Is<_T3Expression>(value) && OmitExpression(value))
      vexa_filtered_error(ERR_omit_param_illegal, PositionOf(at));
  }
}

void CheckParametrTemplate(T3Tree_Node* node) {
  auto* call = node->try_as<T3Parameterization>();
  T3TemplateDecl* decl = call == nullptr ? nullptr : TemplateNamed(call->base);
  if (decl == nullptr) return;
  MarkOnce(decl);
  CompareParameters(decl->fpl, call->apl);
}

// ---- Fields ----

void CheckUnderlayingExpr(T3Tree_Node* expression);

void CheckFieldValue(T3CompoundValue* compound) {
  const auto& message =
      T3Is<T3UnionType>(TypeOf(compound)) ? ERR_omit_to_union_field : ERR_omit_to_mandatory_field;
  const bool counts = IsRecordOrUnion(TypeOf(compound));
  for (auto* at : Items<T3FieldValue>(compound->value)) {
    auto* value = at;
    CheckUnderlayingExpr(value->value);
    const bool is_reference = value->value->is<_T3Reference>() && !value->value->is<T3Parameterization>();
    if (counts && is_reference && MustHaveValue(value->attr().def) && OmitExpression(value->value))
      vexa_filtered_error(message, PositionOf(value->value));
  }
}

// Values in values, members of lists, and what is given for parameters.
void CheckUnderlayingExpr(T3Tree_Node* expression) {
  if (auto* compound = expression->try_as<T3CompoundValue>()) return CheckFieldValue(compound);
  if (auto* list = expression->try_as<T3ValueList>()) {
    for (auto* at : Items<T3ValueListItem>(list->values)) CheckUnderlayingExpr(at->value);
    return;
  }
  CheckParametrTemplate(expression);
}

void CheckVariable(T3VarDecl* variable) {
  T3Tree_Node* value = variable->value == nullptr ? nullptr : ConstraintOf(variable->value);
  auto* compound = T3Is<_T3Expression>(value) ? value->try_as<T3CompoundValue>() : nullptr;
  if (compound != nullptr && T3Is<T3RecordType>(TypeOf(compound))) CheckFieldValue(compound);
}

// False for a field that must have a value.
bool CheckFieldOmitable(T3Qualifier* field) {
  return !MustHaveValue(Def(field));
}

void OmitAssignCheck(T3AssignStmt* statement) {
  auto* field = statement->lhs->try_as<T3Qualifier>();
  T3Tree_Node* value = ConstraintOf(statement->rhs);
  if (field != nullptr && T3Is<_T3Expression>(value) && !CheckFieldOmitable(field) && OmitExpression(value))
    vexa_filtered_error(ERR_omit_assign_illegal, PositionOf(statement));
}

void OmitCheck1(T3Tree_Node* node) {
  if (auto* decl = node->try_as<T3TemplateDecl>()) {
    T3Tree_Node* constraint = ConstraintOf(decl->definition);
    if (T3Is<_T3Expression>(constraint)) CheckUnderlayingExpr(constraint);
  } else if (auto* variable = node->try_as<T3VarDecl>()) {
    CheckVariable(variable);
  } else if (auto* assignment = node->try_as<T3AssignStmt>()) {
    OmitAssignCheck(assignment);
  }
}
}  // namespace

void OmitCheck(T3Tree_Node* root) {
  T3Tree_Node* decl = root->as<T3Builtin>()->module->as<T3Module>()->definition_part;
  for (auto* at : Items<_T3Decl>(decl))
    ForEachInSubtree(at, [](T3Tree_Node* node) {
      OmitCheck1(node);
      return !T3Is<_T3Type>(node);
    });
  ClearTreeCaches();
}
