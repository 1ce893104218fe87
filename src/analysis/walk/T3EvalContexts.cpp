// The candidates that each place of a statement, declaration or type gives to the expression in it.
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3Surroundings.h"
#include "frontend/T3KindCover.h"

namespace {
T3Candidates OfType(T3Tree_Node* entity) {
  const T3TypeViews views = TypeViewsOf(entity);
  return T3Candidates(views.local, views.base);
}

T3Candidates Anything() {
  return {gT3WildcardType};
}

T3Candidates Addresses() {
  return T3Candidates::Types({gT3AddressType, gT3AnyComponentType});
}

// A timer is set by its duration.
T3Candidates OfInitializer(T3Tree_Node* entity) {
  const T3TypeViews views = TypeViewsOf(entity);
  return views.base->is<T3TimerType>() ? T3Candidates(gT3FloatType) : T3Candidates(views.local, views.base);
}

// ---- Declarations and types ----

T3Candidates InDeclaration(T3Tree_Node* parent) {
  if (parent->is<_T3InstanceValueDecl>() || parent->is<_T3TypedFormal>() || parent->is<T3FieldType>())
    return OfInitializer(parent);
  if (parent->is<T3EnumValue>() || parent->is<_T3Bound>()) return {gT3IntegerType};
  if (auto* subtype = parent->try_as<T3SubType>()) {
    T3Tree_Node* base = BaseTypeDef(subtype);
    return base->is<T3ErrorType>() ? T3Candidates(base) : T3Candidates::Types({base, gT3NoType});
  }
  return Anything();
}

// ---- Statements ----

// A type of ports is no port.
T3Tree_Node* PortTypeOf(_T3PortStmt* statement) {
  return NamesType(statement->port) ? gT3ErrorType : ExpressionBaseType(statement->port);
}

// The types that a port statement moves: a client sends what the port's other side takes in, and gets
// replies and exceptions for it.
T3Candidates OfPort(_T3PortStmt* statement) {
  T3Tree_Node* type = PortTypeOf(statement);
  if (type == gT3AnyPortType) return Anything();
  if (!type->is<T3PortType>()) return {gT3ErrorType};
  const bool out = statement->is<_T3SendingPortServerStmt>() || statement->is<_T3ReceivingPortClientStmt>();
  const T3PortTypes types = out ? PortTypesOut(type) : PortTypesIn(type);
  return T3Candidates(types.shared);
}

T3Candidates OfExceptions(T3Tree_Node* signature) {
  T3Tree_Node* type = BaseTypeDef(signature);
  if (type->is<T3ErrorType>()) return {gT3ErrorType};
  if (!type->is<T3SignatureType>()) return Anything();
  return T3Candidates(ExceptionsOf(type->as<T3SignatureType>()).shared);
}

// The signature that a procedure statement is about, or gT3ErrorType.
T3Tree_Node* SignatureOf(T3Tree_Node* statement) {
  if (auto* raise = statement->try_as<T3RaiseStmt>()) return BaseTypeDef(raise->signature);
  if (auto* caught = statement->try_as<T3CatchStmt>()) return BaseTypeDef(caught->signature);
  if (!statement->is<_T3TemplatePortStmt>()) return gT3ErrorType;
  T3Tree_Node* value = statement->as<_T3TemplatePortStmt>()->template_value;
  if (!value->is<T3TemplateDef>()) return gT3ErrorType;
  T3Tree_Node* type = ExpressionBaseType(value);
  return type->is<T3SignatureType>() ? type : gT3ErrorType;
}

T3Candidates OfReturnValue(T3Tree_Node* statement) {
  T3Tree_Node* signature = SignatureOf(statement);
  if (!signature->is<T3SignatureType>()) return {gT3ErrorType};
  T3Tree_Node* type = signature->as<T3SignatureType>()->return_type;
  // A value that the signature does not have is told by a rule of its own.
  return T3Is<T3NoType>(type) ? T3Candidates(gT3ErrorType) : OfType(type);
}

void NotePort(_T3PortStmt* statement) {
  T3Tree_Node* type = PortTypeOf(statement);
  auto& attributes = statement->attr();
  const bool any = type == gT3AnyPortType || statement->port->is<T3PortAll>();
  const auto kind = type->is<T3PortType>() ? type->as<T3PortType>()->port_kind : t3_port_kind_t::Mixed;
  const bool known = any || type->is<T3PortType>();
  attributes.is_procedure_based = known && (any || kind != t3_port_kind_t::Message);
  attributes.is_message_based = known && (any || kind != t3_port_kind_t::Procedure);
}

void InferPort(_T3PortStmt* statement) {
  // The statement's rule tells what is no port.
  InferExpression(statement->port, {gT3AnyPortType}, false, false);
  NotePort(statement);
}

bool InferInPortStatement(T3Tree_Node* node, _T3PortStmt* statement) {
  if (node == statement->port) {
    InferPort(statement);
    return true;
  }
  auto* sending = statement->is<_T3TemplatePortStmt>() ? statement->as<_T3TemplatePortStmt>() : nullptr;
  if (sending != nullptr && node == sending->template_value) {
    T3Candidates candidates = OfPort(statement);
    if (auto* raise = statement->try_as<T3RaiseStmt>()) candidates = OfExceptions(raise->signature);
    if (auto* caught = statement->try_as<T3CatchStmt>()) candidates = OfExceptions(caught->signature);
    InferTemplate(node, candidates, true, T3TemplateUse::Port);
    return true;
  }
  return false;
}

// A sender that may be any one has no type of its own; it counts as a component.
bool IsAnySender(T3Tree_Node* node) {
  auto* definition = node->try_as<T3TemplateDef>();
  return definition != nullptr && T3Is<T3NoType>(definition->parent) &&
         (definition->constraint->is<T3AnyValue>() || definition->constraint->is<T3AnyOrOmit>());
}

T3Candidates InPortStatement(T3Tree_Node* node, _T3PortStmt* statement) {
  if (auto* call = statement->try_as<T3CallStmt>())
    if (node == call->timeout) return {gT3FloatType};
  if (auto* reply = statement->try_as<T3ReplyStmt>())
    if (node == reply->return_expr) return OfReturnValue(statement);
  if (auto* reply = statement->try_as<T3GetReplyStmt>())
    if (node == reply->return_template) return OfReturnValue(statement);
  if (IsAnySender(node)) return {gT3AnyComponentType};
  return node->is<_T3AddressReference>() ? Anything() : Addresses();
}

T3Candidates InRedirect(T3Tree_Node* node, T3PortRedirect* redirect) {
  if (node == redirect->redirect_sender) return Addresses();
  const auto& attributes = redirect->attr();
  if (attributes.value_type1 == nullptr || attributes.value_type1->is<T3ErrorType>()) return Anything();
  return T3Candidates(attributes.value_type1, attributes.value_type2);
}

T3Candidates OfReturn(T3Tree_Node* statement) {
  T3Tree_Node* owner = statement->place == nullptr ? nullptr : statement->place->vexa_owner;
  if (!T3Is<T3Function>(owner)) return Anything();
  return OfType(owner);
}

T3Candidates OfStartArgument(T3StartStmt* statement) {
  return IsTimer(ExpressionBaseType(statement->object)) ? T3Candidates(gT3FloatType) : Anything();
}

// What may be assigned: an element of a character string is a string as well as a single character.
T3Candidates OfTarget(T3Tree_Node* target) {
  if (NamesNoValue(target)) return {gT3ErrorType};
  T3Candidates result(ExpressionLocalType(target), ExpressionBaseType(target));
  auto* element = target->try_as<T3Subscription>();
  T3Tree_Node* list = element == nullptr ? gT3NoType : ExpressionBaseType(element->base);
  if (list->is<T3CharStringType>()) result.Add(gT3CharacterType, gT3CharacterType);
  if (list->is<T3UniversalCharStringType>()) result.Add(gT3UniversalCharacterType, gT3UniversalCharacterType);
  return result;
}

using WantingAType =
    T3Kinds<T3AssignStmt, T3IfStmt, _T3LoopStmt, T3RetStmt, T3SetVerdictStmt, T3StartStmt, _T3PortStmt>;
// They take operands of several types, which their rules check, or none.
using WantingNone =
    T3Kinds<T3DeclStmt, T3InvocationStmt, T3BlockStmt, _T3ConfStmt, T3DoneStmt, T3KilledStmt, T3TimeoutStmt,
            T3StopStmt, T3KillStmt, T3DeactivateStmt, T3SUTStmt, T3AltStmt, T3InterleaveStmt, T3LogStmt,
            T3LabelStmt, T3GotoStmt, T3RepeatStmt, T3BreakStmt, T3ContinueStmt>;
static_assert(T3Covers<_T3Stmt, WantingAType, WantingNone>());

T3Candidates InStatement(T3Tree_Node* node, T3Tree_Node* parent) {
  switch (parent->kind) {
    case T3Kind::T3AssignStmt: {
      T3Tree_Node* left = parent->as<T3AssignStmt>()->lhs;
      return node == left ? Anything() : OfTarget(left);
    }
    case T3Kind::T3IfStmt:
    case T3Kind::T3WhileStmt:
    case T3Kind::T3DoWhileStmt:
    case T3Kind::T3ForStmt:
    case T3Kind::T3GuardedAlt:
      return {gT3BooleanType};
    case T3Kind::T3TestStepRefAlt:
      return node == parent->as<T3TestStepRefAlt>()->guard ? T3Candidates(gT3BooleanType) : Anything();
    case T3Kind::T3RetStmt:
      return OfReturn(parent);
    case T3Kind::T3SetVerdictStmt:
      return {gT3VerdictType};
    case T3Kind::T3StartStmt:
      return node == parent->as<T3StartStmt>()->argument ? OfStartArgument(parent->as<T3StartStmt>())
                                                         : Anything();
    case T3Kind::T3PortRedirect:
      return InRedirect(node, parent->as<T3PortRedirect>());
    default:
      return Anything();
  }
}

bool IsPart(T3Tree_Node* parent) {
  return parent->is<_T3Expression>() || parent->is<T3TemplateDef>() || parent->is<T3TemplateReference>() ||
         parent->is<T3FieldValue>() || parent->is<_T3FieldSpec>() || parent->is<T3ActualPar>() ||
         parent->is<T3ValueListItem>() || parent->is<T3AddressListItem>() || parent->is<T3ObjIdItem>();
}

void InferOutermost(T3Tree_Node* node, T3Tree_Node* parent) {
  if (node->is<T3TemplateDef>() && parent->is<T3TemplateDecl>()) {
    InferTemplate(node, T3Candidates(), false, T3TemplateUse::Other);
  } else if (parent->is<_T3PortStmt>()) {
    auto* statement = parent->as<_T3PortStmt>();
    if (!InferInPortStatement(node, statement))
      InferExpression(node, InPortStatement(node, statement), false);
  } else if (parent->is<_T3StmtList>() || parent->is<_T3AltList>() || parent->is<_T3PortRedirect>()) {
    InferExpression(node, InStatement(node, parent), false);
  } else {
    InferExpression(node, InDeclaration(parent), false);
  }
}

// What a redirection takes from its statement: the value's type and the signature.
void EnterRedirect(T3PortRedirect* redirect, T3Tree_Node* statement) {
  auto& attributes = redirect->attr();
  attributes.is_in_getcall = statement->is<T3GetCallStmt>();
  attributes.is_in_getreply = statement->is<T3GetReplyStmt>();
  T3Tree_Node* signature = SignatureOf(statement);
  attributes.params_types = signature;
  T3Tree_Node* value = nullptr;
  if (statement->is<T3GetReplyStmt>() && signature->is<T3SignatureType>())
    value = signature->as<T3SignatureType>()->return_type;
  else if (statement->is<_T3TemplatePortStmt>() &&
           statement->as<_T3TemplatePortStmt>()->template_value->is<T3TemplateDef>())
    value = ExpressionLocalType(statement->as<_T3TemplatePortStmt>()->template_value);
  if (value == nullptr || value->is<T3NoType>()) return;
  attributes.value_type1 = LocalTypeDef(value);
  attributes.value_type2 = BaseTypeDef(value);
}

void EnterFieldValue(T3Tree_Node* node, T3Tree_Node* parent) {
  auto* redirect = parent->try_as<T3PortRedirect>();
  // The list is entered once for each element; the first infers all.
  if (redirect != nullptr && node == redirect->redirect_params)
    InferRedirectedParams(node, redirect->attr().params_types);
}

// A part of a larger expression is inferred with the whole.
void EnterExpression(T3Tree_Node* node, T3Tree_Node* parent) {
  if (IsPart(parent)) return;
  EnterOutermostExpression(node, parent);
  InferOutermost(node, parent);
}

void EnterDefinition(T3Tree_Node* node, T3Tree_Node* parent) {
  EnterTemplate(node);
  EnterExpression(node, parent);
}

struct RuleOfKind {
  T3Kind kind;
  T3EnterRule enter;
};
constexpr RuleOfKind kEnterRules[] = {
    {T3Kind::T3PortRedirect,
     [](T3Tree_Node* node, T3Tree_Node* parent) { EnterRedirect(node->as<T3PortRedirect>(), parent); }},
    {T3Kind::T3FieldValue, EnterFieldValue},
    {T3Kind::_T3Expression, EnterExpression},
    {T3Kind::T3TemplateDef, EnterDefinition},
    {T3Kind::T3SubType, [](T3Tree_Node*, T3Tree_Node*) { EnterType(); }},
    {T3Kind::T3TypeReference, [](T3Tree_Node*, T3Tree_Node*) { EnterType(); }},
    {T3Kind::_T3FunctionBodyDecl, [](T3Tree_Node* node, T3Tree_Node*) { EnterBody(node); }},
    {T3Kind::T3ControlPart, [](T3Tree_Node* node, T3Tree_Node*) { EnterBody(node); }},
    {T3Kind::T3ComponentType, [](T3Tree_Node* node, T3Tree_Node*) { EnterBody(node); }},
};
}  // namespace

bool PicksChildren(T3Kind parent) {
  return parent == T3Kind::T3Module || parent == T3Kind::T3ObjIdItem;
}

bool IsWalked(T3Tree_Node* node, T3Tree_Node* parent) {
  if (auto* module = parent->try_as<T3Module>()) return node == module->definition_part;
  // The number of a component is walked by itself.
  return !parent->is<T3ObjIdItem>() || NumberInComponent(node) == nullptr;
}

T3EnterRule EnterRuleOf(T3Kind kind) {
  for (const RuleOfKind& rule : kEnterRules)
    if (rule.kind <= kind &&
        static_cast<unsigned short>(kind) <= T3Tree_TypeRange[static_cast<size_t>(rule.kind)])
      return rule.enter;
  return nullptr;
}
