// What may stand where a value or a template is wanted. Types, behaviours and modules have names, and calls
// without a result have the form of values, but they are none. Where something else than a value is wanted
// the rule of that place judges.
#include "analysis/flow/T3ValueClasses.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/walk/T3Surroundings.h"
#include "driver/diagnostics/T3Error.h"

namespace {
// Sizes are asked of types too.
bool IsTypeForSize(T3Tree_Node* node, T3Tree_Node* definition) {
  if (!T3Is<T3SizeOf>(definition->parent) && !T3Is<T3SizeOfType>(definition->parent)) return false;
  return NamesType(node);
}

// The places in expressions that have a rule of their own, or want no value.
bool IsJudgedInExpression(T3Tree_Node* node, T3Tree_Node* parent) {
  if (auto* execute = parent->try_as<T3Execute>()) return node == execute->testcase;
  if (auto* create = parent->try_as<T3Create>()) return node == create->component;
  if (auto* decoding = parent->try_as<T3DecValue>()) return node == decoding->decoded_value;
  if (parent->is<T3ValueRange>() || parent->is<T3LengthRange>()) return !MayBeTemplateHere();
  return parent->is<T3Activate>() || parent->is<T3Running>() || parent->is<T3Alive>();
}

bool IsJudgedInStatement(T3Tree_Node* node, T3Tree_Node* parent) {
  if (auto* alternative = parent->try_as<T3TestStepRefAlt>()) return node == alternative->test_step;
  if (auto* statement = parent->try_as<_T3PortStmt>()) return node == statement->port;
  if (auto* start = parent->try_as<T3StartStmt>())
    return node == start->object || !IsTimer(ExpressionBaseType(start->object));
  switch (parent->kind) {
    case T3Kind::T3InvocationStmt:
    case T3Kind::T3AssignStmt:
    case T3Kind::T3RetStmt:
    case T3Kind::T3IfStmt:
    case T3Kind::T3StopStmt:
    case T3Kind::T3KillStmt:
    case T3Kind::T3DoneStmt:
    case T3Kind::T3KilledStmt:
    case T3Kind::T3TimeoutStmt:
      return true;
    default:
      return parent->is<_T3LoopStmt>() || parent->is<_T3ConfStmt>();
  }
}

// Where the rule of the parent judges what stands there.
bool IsJudgedElsewhere(T3Tree_Node* node, T3Tree_Node* parent) {
  if (parent->is<_T3Expression>()) return IsJudgedInExpression(node, parent);
  if (parent->is<_T3StmtList>() || parent->is<_T3AltList>()) return IsJudgedInStatement(node, parent);
  if (parent->is<T3TemplateDef>()) return IsTypeForSize(node, parent);
  if (parent->is<T3FieldValue>()) return InnermostTemplate() == nullptr;
  if (parent->is<_T3Bound>()) return T3Is<_T3Type>(parent->parent);
  if (parent->is<T3ValueListItem>()) return !MayBeTemplateHere();
  return parent->is<_T3Type>() || parent->is<_T3InstanceValueDecl>() || parent->is<T3TemplateReference>() ||
         parent->is<T3PortRedirect>() || parent->is<_T3AttributeReference>();
}

// An enumeration's literal that others share, where the context has chosen none. Between two operands the
// left one has been told.
bool IsUndecided(T3Tree_Node* node, T3Tree_Node* parent) {
  return !parent->is<_T3Type>() && !parent->is<_T3BinaryExpression>() && !parent->is<T3Match>() &&
         T3Is<T3AmbiguousType>(Def(node)) && ExpressionBaseType(node) == gT3WildcardType;
}

// A base is judged with the whole, and the module before the name of a field is no value.
bool IsPartOfReference(T3Tree_Node* node, T3Tree_Node* parent) {
  if (auto* whole = parent->try_as<_T3Qualification>()) return node == whole->base;
  return parent->is<T3FieldName>();
}

void CheckReference(T3Tree_Node* node) {
  T3Tree_Node* parent = node->parent;
  if (parent == nullptr || IsPartOfReference(node, parent) || HasFailed(node)) return;
  if (IsUndecided(node, parent)) return ReportTypeError(node, size_t{2}, T3TemplateUse::Other);
  if (IsJudgedElsewhere(node, parent)) return;
  if (T3Is<T3Module>(Def(node))) return ReportTypeError(node, true);
  if (IsRvalue(node) || IsTemplateReference(node)) return;
  vexa_filtered_error(MayBeTemplateHere() ? ERR_invalid_in_template : ERR_rvalue, PositionOf(node));
}

// A part of a compound value is a value, or in a template what a template may have there.
void CheckFieldValue(T3Tree_Node* node) {
  T3Tree_Node* value = node->as<T3FieldValue>()->value;
  if (!IsGiven(value) || value->is<T3CompoundValue>() || HasFailed(value) || IsRvalueRelaxed(value)) return;
  const bool refers_to_none = value->is<_T3Reference>() && !IsTemplateReference(value);
  if (MayBeTemplateHere() && !refers_to_none) return;
  if (InnermostTemplate() != nullptr) return;  // told at the reference
  vexa_filtered_error(ERR_rvalue, PositionOf(node));
}

// `omit` stands for a field that is left out, or in a template for a part that is. In the place of a whole
// value, of an element, of an operand or a bound, it is none.
bool MayBeOmitted(T3Tree_Node* node, T3Tree_Node* parent) {
  if (auto* variable = parent->try_as<T3VarDecl>()) return variable->is_template_variable;
  if (auto* assignment = parent->try_as<T3AssignStmt>())
    return node == assignment->rhs && (!IsName(assignment->lhs) || IsTemplateReference(assignment->lhs));
  if (parent->is<T3RetStmt>()) return IsFunctionReturningTemplate(parent->place->vexa_owner);
  if (parent->is<T3FieldValue>()) return MayBeTemplateHere() || !IsElement(parent);
  if (parent->is<T3ValueListItem>() || parent->is<ExtraMatchingExpressions>()) return MayBeTemplateHere();
  return parent->is<T3TemplateDef>() || parent->is<_T3TypedFormal>() || parent->is<T3Equal>() ||
         parent->is<T3NotEqual>();
}

void CheckOmit(T3Tree_Node* node) {
  if (node->parent != nullptr && !HasFailed(node) && !MayBeOmitted(node, node->parent))
    vexa_filtered_error(ERR_rvalue, PositionOf(node));
}

// What follows looks for what is local by bare names.
void DropModule(T3Tree_Node* node) {
  if (T3Tree_Node* name = node->parent == nullptr ? nullptr : BareLocalName(node)) ReplaceChild(node, name);
}

// The name before a number in an object identifier is passed over.
void WalkNumber(T3Tree_Node* node) {
  T3Tree_Node* number = NumberInComponent(node->as<T3ObjIdItem>()->obj_id_item);
  if (number == nullptr) return;
  EvaluateSubtree(number, node);
  if (!HasFailed(number) && !IsRvalue(number)) vexa_filtered_error(ERR_rvalue, PositionOf(number));
}

constexpr T3Rule kRules[] = {
    {T3Kind::T3Identifier, CheckReference}, {T3Kind::_T3Qualification, CheckReference},
    {T3Kind::T3Qualifier, DropModule},      {T3Kind::T3FieldValue, CheckFieldValue},
    {T3Kind::T3ObjIdItem, WalkNumber},      {T3Kind::T3Omit, CheckOmit},
};
}  // namespace

std::span<const T3Rule> PlaceRules() {
  return kRules;
}
