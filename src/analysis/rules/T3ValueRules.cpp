// Where a value is required and not a template, where a constant, and where a field must have a value.
#include <vector>

#include "analysis/walk/T3RuleParts.h"
#include "analysis/types/T3Constants.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "driver/diagnostics/T3Error.h"

namespace {
// A part that is no value has had its message, unless it stands in a permutation.
bool HasRefusedPart(T3Tree_Node* value) {
  bool refused = false;
  ForEachInSubtree(value, [&refused](T3Tree_Node* node) {
    auto* part = node->try_as<T3FieldValue>();
    refused = refused || (part != nullptr && part->permutation_kind == t3_permutation_kind_t::No &&
                          !part->value->is<T3CompoundValue>() && !IsRvalueRelaxed(part->value));
    return !refused;
  });
  return refused;
}

// What stands behind := or `return` must be a value; the message is about `node`. A part of a compound value
// that is none has had its message.
void RequireValue(T3Tree_Node* node, T3Tree_Node* value) {
  if (!IsGiven(value) || HasFailed(value) || IsRvalue(value)) return;
  if (value->is<T3CompoundValue>() && HasRefusedPart(value)) return;
  vexa_filtered_error(ERR_rvalue, PositionOf(node));
}

// A variable that holds a template takes templates as well.
void RequireTemplate(T3Tree_Node* node, T3Tree_Node* value) {
  T3Tree_Node* constraint = ConstraintOf(value);
  if (!T3Is<_T3Reference>(constraint) || HasFailed(constraint) || IsTemplateReference(constraint)) return;
  RequireValue(node, constraint);
}

void CheckVariable(T3Tree_Node* node) {
  auto* decl = node->as<T3VarDecl>();
  decl->is_template_variable ? RequireTemplate(decl, decl->value) : RequireValue(decl, decl->value);
}

// A part that has failed has had its message, and may be why the whole is no constant.
bool HasFailedPart(T3Tree_Node* value) {
  bool failed = false;
  ForEachInSubtree(value, [&failed](T3Tree_Node* node) {
    failed = failed || (node->is<_T3Expression>() && node->attributes != nullptr && HasFailed(node));
    return !failed;
  });
  return failed;
}

bool Varies(T3Tree_Node* value) {
  std::vector<T3Tree_Node*> open{value};
  while (!open.empty()) {
    T3Tree_Node* at = open.back();
    open.pop_back();
    auto* compound = at->try_as<T3CompoundValue>();
    if (compound == nullptr && !HasFailed(at) && !IsConstant(at)) return true;
    for (auto* part : Items<T3FieldValue>(compound == nullptr ? nullptr : compound->value)) {
      if (part->permutation_kind != t3_permutation_kind_t::No) return true;
      open.push_back(part->value);
    }
  }
  return false;
}

void CheckConstant(T3Tree_Node* node) {
  T3Tree_Node* value = node->as<_T3InstanceValueDecl>()->value;
  if (!IsGiven(value) || HasFailedPart(value) || HasRefusedPart(value)) return;
  if (Varies(value))
    vexa_filtered_error(ERR_const, PositionOf(node));
  else
    RequireValue(node, value);
}

// The values of a subtype, and the bounds of its lengths, are known before the suite runs. A range is a fault
// of its own.
bool VariesInType(T3Tree_Node* value) {
  return IsGiven(value) && !NamesType(value) && !HasFailed(value) && !IsConstant(value) &&
         !HasFailedPart(value);
}

void CheckSubType(T3Tree_Node* node) {
  auto* subtype = node->as<T3SubType>();
  auto* list = subtype->constraint->try_as<T3ValueList>();
  bool varies = list == nullptr && VariesInType(subtype->constraint);
  T3Tree_Node* at = list == nullptr ? nullptr : list->values;
  for (auto* item : Items<T3ValueListItem>(at)) {
    T3Tree_Node* value = item->value;
    auto* range = value->try_as<T3ValueRange>();
    if (range == nullptr)
      varies = varies || VariesInType(value);
    else if (NamesType(range->lb) || NamesType(range->ub) || VariesInType(range->lb) ||
             VariesInType(range->ub))
      vexa_filtered_error(ERR_const, range->position);
  }
  if (varies) vexa_filtered_error(ERR_const, subtype->position);
}

// Lengths are known before the suite runs, in templates too. The bounds of an array are told at the array.
void CheckLengthBound(T3Tree_Node* node, T3Tree_Node* bound) {
  if (!T3Is<T3ArrayType>(node->parent) && VariesInType(bound))
    vexa_filtered_error(ERR_const, PositionOf(bound));
}

void CheckSingleBound(T3Tree_Node* node) {
  CheckLengthBound(node, node->as<T3SingleBound>()->ub);
}
void CheckRangeBound(T3Tree_Node* node) {
  CheckLengthBound(node, node->as<T3RangeBound>()->lb);
  CheckLengthBound(node, node->as<T3RangeBound>()->ub);
}

void CheckAssignment(T3Tree_Node* node) {
  auto* statement = node->as<T3AssignStmt>();
  if (HasFailed(statement->lhs)) return;
  IsTemplateReference(statement->lhs) ? RequireTemplate(node, statement->rhs)
                                      : RequireValue(node, statement->rhs);
}

void CheckReturnValue(T3Tree_Node* node) {
  T3Tree_Node* owner = node->place == nullptr ? nullptr : node->place->vexa_owner;
  T3Tree_Node* value = node->as<T3RetStmt>()->value;
  const bool has_result = T3Is<T3Function>(owner) && HasResult(owner);
  if (!IsGiven(value) && has_result) return vexa_filtered_error(ERR_rvalue, PositionOf(node));
  IsFunctionReturningTemplate(owner) ? RequireTemplate(node, value) : RequireValue(node, value);
}

void CheckCondition(T3Tree_Node* statement, T3Tree_Node* condition) {
  if (IsGiven(condition) && !HasFailed(condition) && !IsRvalue(condition))
    vexa_filtered_error(ERR_rvalue_ext, PositionOf(statement));
}

void CheckBranch(T3Tree_Node* node) {
  CheckCondition(node, node->as<T3IfStmt>()->condition);
}

void CheckLoopCondition(T3Tree_Node* node) {
  CheckCondition(node, node->as<_T3LoopStmt>()->condition);
}

// ---- Templates ----

// A type or a function is no template that could be modified.
void CheckModified(T3Tree_Node* node) {
  T3Tree_Node* reference = node->as<T3TemplateReference>()->reference;
  if (HasFailed(reference) || IsRvalue(reference) || IsTemplateReference(reference)) return;
  vexa_filtered_error(ERR_invalid_in_template, PositionOf(reference));
}

// ---- Fields that must have a value ----

const char* AbsentValue(T3Tree_Node* value) {
  if (value->is<T3Omit>()) return "omit";
  if (value->is<T3AnyOrOmit>()) return "*";
  return value->is<T3IfPresentMatch>() || value->is<T3IfPresentIfLengthMatch>() ? "ifpresent" : nullptr;
}

// Each alternative of anytype is one of a union.
bool IsMandatory(T3FieldValue* item, T3Tree_Node* type) {
  T3Tree_Node* member = item->attr().def;
  return T3Is<T3FieldType>(member) ? !IsFieldOptional(member) : type->is<T3AnyType>();
}

void CheckMandatoryFields(T3Tree_Node* node) {
  T3Tree_Node* at = node->as<T3CompoundValue>()->value;
  for (auto* item : Items<T3FieldValue>(at)) {
    const char* absent = AbsentValue(item->value);
    if (absent != nullptr && IsMandatory(item, ExpressionBaseType(node)))
      vexa_filtered_error(ERR_illegal_mandatory, PositionOf(item), absent);
  }
}

// ---- Functions that must return ----

bool ReturnsAtEnd(T3Tree_Node* list);

// Each alternative, and there must be an else branch.
bool EachAlternativeReturns(T3AltStmt* alt) {
  if (!T3Is<_T3Stmt>(alt->else_branch) || !ReturnsAtEnd(alt->else_branch)) return false;
  for (auto* at : Items<_T3Alt>(alt->alts))
    if (!ReturnsAtEnd(at->body)) return false;
  return true;
}

bool Returns(T3Tree_Node* statement) {
  switch (statement->kind) {
    case T3Kind::T3RetStmt:
      return true;
    case T3Kind::T3BlockStmt:
      return ReturnsAtEnd(statement->as<T3BlockStmt>()->body);
    case T3Kind::T3DoWhileStmt:
      return ReturnsAtEnd(statement->as<T3DoWhileStmt>()->body);
    case T3Kind::T3AltStmt:
      return EachAlternativeReturns(statement->as<T3AltStmt>());
    case T3Kind::T3StopStmt: {
      T3Tree_Node* object = statement->as<T3StopStmt>()->object;
      return !IsGiven(object) || object->is<T3Self>();
    }
    default:
      return false;
  }
}

// A chain of `else if` is followed in a loop.
bool BranchesReturn(T3Tree_Node* statement) {
  for (;;) {
    auto* branch = statement->as<T3IfStmt>();
    if (!ReturnsAtEnd(branch->then_stmt)) return false;
    T3Tree_Node* other = branch->else_stmt;
    if (!T3Is<T3IfStmt>(other) || T3Is<_T3Stmt>(other->as<T3IfStmt>()->next)) return ReturnsAtEnd(other);
    statement = other;
  }
}

bool ReturnsAtEnd(T3Tree_Node* list) {
  for (auto* statement : Items<_T3Stmt>(list))
    if (statement->is<T3IfStmt>() ? BranchesReturn(statement) : Returns(statement)) return true;
  return false;
}

void CheckFunctionReturns(T3Tree_Node* node) {
  auto* function = node->as<T3Function>();
  if (!T3Is<T3NoType>(function->return_type) && !ReturnsAtEnd(function->body))
    vexa_filtered_error(ERR_function_wo_return, PositionOf(function));
}

constexpr T3Rule kRules[] = {
    {T3Kind::T3VarDecl, CheckVariable},
    {T3Kind::T3ConstDecl, CheckConstant},
    {T3Kind::T3ModuleParDecl, CheckConstant},
    {T3Kind::T3SubType, CheckSubType},
    {T3Kind::T3SingleBound, CheckSingleBound},
    {T3Kind::T3RangeBound, CheckRangeBound},
    {T3Kind::T3AssignStmt, CheckAssignment},
    {T3Kind::T3RetStmt, CheckReturnValue},
    {T3Kind::T3IfStmt, CheckBranch},
    {T3Kind::_T3LoopStmt, CheckLoopCondition},
    {T3Kind::T3TemplateReference, CheckModified},
    {T3Kind::T3CompoundValue, CheckMandatoryFields},
    {T3Kind::T3Function, CheckFunctionReturns},
};
}  // namespace

std::span<const T3Rule> ValueRules() {
  return kRules;
}
