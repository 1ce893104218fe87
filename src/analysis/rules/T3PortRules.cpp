// The rules of port operations, their redirections, and the configuration of ports.
#include <string>
#include <unordered_set>

#include "analysis/walk/T3RuleParts.h"
#include "analysis/flow/T3AltStatus.h"
#include "analysis/names/T3Members.h"
#include "analysis/walk/T3Eval.h"
#include "analysis/names/T3Names.h"
#include "analysis/types/T3Bounds.h"
#include "analysis/types/T3Constants.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "driver/diagnostics/T3Error.h"

namespace {
bool IsAnyPort(T3Tree_Node* port) {
  return port->is<T3AnyPort>() || port->is<T3AllPort>() || port->is<T3PortAll>();
}

// ---- All port operations ----

// A reference whose name, or the type of what it means, has failed has had its message.
bool HasMessage(T3Tree_Node* port) {
  if (!port->is<T3Identifier>() && !port->is<_T3Qualification>()) return false;
  auto* reference = port->as<_T3Reference>();
  T3Tree_Node* def = Def(reference);
  if (T3Is<T3NoDecl>(def) || T3Is<T3ErrorType>(def)) return true;
  // An index into what has no elements is left to the rule of the statement.
  if (auto* element = port->try_as<T3Subscription>()) reference = element->base->try_as<_T3Reference>();
  return reference != nullptr && T3Is<T3ErrorType>(reference->attr().base_type_def);
}

void CheckPort(T3Tree_Node* node) {
  RefuseInControlPart(node, "port operation");
  T3Tree_Node* port = node->as<_T3PortStmt>()->port;
  // The port of what is checked is that of the check.
  if (!T3Is<_T3Expression>(port) || IsAnyPort(port) || T3Is<T3CheckReceive>(node->parent)) return;
  T3Tree_Node* type = ExpressionBaseType(port);
  if ((type == gT3AnyPortType || type->is<T3PortType>()) && IsRvalue(port)) return;
  if (HasMessage(port)) return;
  if (auto* identifier = port->try_as<T3Identifier>())
    vexa_filtered_error(ERR_invalid_port_with_name, PositionOf(node), identifier->id);
  else
    vexa_filtered_error(ERR_invalid_port, PositionOf(node));
}

bool HasPortType(_T3PortStmt* statement) {
  if (NamesType(statement->port)) return false;
  return IsAnyPort(statement->port) || ExpressionBaseType(statement->port) == gT3AnyPortType ||
         ExpressionBaseType(statement->port)->is<T3PortType>();
}

void RequireMessages(T3Tree_Node* node, const char* operation) {
  auto* statement = node->as<_T3PortStmt>();
  if (HasPortType(statement) && !statement->attr().is_message_based)
    vexa_filtered_error(ERR_port_kind, PositionOf(node), operation, "procedure");
}

void RequireProcedures(T3Tree_Node* node, const char* operation) {
  auto* statement = node->as<_T3PortStmt>();
  if (HasPortType(statement) && !statement->attr().is_procedure_based)
    vexa_filtered_error(ERR_port_kind, PositionOf(node), operation, "message");
}

// The type of an operation's template, or gT3ErrorType where it has none or failed.
T3Tree_Node* TemplateType(T3Tree_Node* node) {
  T3Tree_Node* value = node->as<_T3TemplatePortStmt>()->template_value;
  return value->is<T3TemplateDef>() ? ExpressionBaseType(value) : gT3ErrorType;
}

void RefuseSignature(T3Tree_Node* node) {
  if (T3Is<T3SignatureType>(TemplateType(node)))
    vexa_filtered_error(ERR_signature_on_msg_port, PositionOf(node));
}

void RequireSignature(T3Tree_Node* node) {
  T3Tree_Node* type = TemplateType(node);
  if (!type->is<T3ErrorType>() && !type->is<T3NoType>() && !IsWildcardType(type) &&
      !type->is<T3SignatureType>())
    vexa_filtered_error(ERR_message_on_proc_port, PositionOf(node));
}

T3SignatureType* SignatureOf(T3Tree_Node* node) {
  return TemplateType(node)->try_as<T3SignatureType>();
}

// What a receiving operation evaluates must leave the snapshot as it is.
void RefuseInAlternative(T3Tree_Node* node, T3Tree_Node* part, const char* what) {
  const bool given = T3Is<T3TemplateDef>(part) || T3Is<_T3Expression>(part);
  if (given && !HasBeenRefused(ConstraintOf(part)) && AltStatus(part) == kChangesSnapshot)
    vexa_filtered_error(ERR_alt_illegal_something, PositionOf(node), what);
}

void CheckReceiving(T3Tree_Node* node) {
  auto* statement = node->as<_T3ReceivingPortStmt>();
  CheckReceivedTemplate(node);
  RefuseInAlternative(node, statement->template_value, "template");
  RefuseInAlternative(node, statement->port, "port");
  RefuseInAlternative(node, statement->sender, "sender");
  if (auto* reply = node->try_as<T3GetReplyStmt>())
    RefuseInAlternative(node, reply->return_template, "return template");
}

void CheckChecking(T3Tree_Node* node) {
  RefuseInAlternative(node, node->as<T3CheckRedirect>()->port, "port");
  RefuseInAlternative(node, node->as<T3CheckRedirect>()->from, "sender");
}

// ---- Messages ----

// Nothing can be left out of nothing.
void RefuseOmitted(T3Tree_Node* node) {
  T3Tree_Node* value = ConstraintOf(node->as<_T3TemplatePortStmt>()->template_value);
  if (value->is<T3Omit>() && !HasFailed(value))
    vexa_filtered_error(ERR_not_allowed_for, PositionOf(value), "'omit'", "template value");
}

void CheckSend(T3Tree_Node* node) {
  RefuseSignature(node);
  RefuseOmitted(node);
  RequireMessages(node, "send");
}

void CheckReceive(T3Tree_Node* node) {
  RefuseSignature(node);
  RequireMessages(node, "receive");
  auto* receive = node->as<T3ReceiveStmt>();
  auto* value = receive->template_value->try_as<T3TemplateDef>();
  const bool any = receive->port->is<T3AnyPort>() || ExpressionBaseType(receive->port) == gT3AnyPortType;
  if (any && value != nullptr && T3Is<T3NoType>(value->parent) &&
      (value->constraint->is<T3AnyValue>() || value->constraint->is<T3AnyOrOmit>()))
    vexa_filtered_error(ERR_wildcard_in_anyport, PositionOf(node));
}

void CheckTrigger(T3Tree_Node* node) {
  RefuseSignature(node);
  RequireMessages(node, "trigger");
}

// ---- Procedures ----

void CheckCall(T3Tree_Node* node) {
  RequireProcedures(node, "call");
  RequireSignature(node);
  auto* call = node->as<T3CallStmt>();
  T3SignatureType* signature = SignatureOf(node);
  if (signature == nullptr) return;
  const bool body = T3Is<_T3Alt>(call->body);
  const bool nowait = T3Is<T3NoWait>(call->timeout);
  const auto report = [node](const _vexa_error_message_t& row) {
    vexa_filtered_error(row, PositionOf(node));
  };
  if (signature->not_blocking) {
    if (body) report(ERR_call_noblock_with_body);
    if (IsGiven(call->timeout)) report(ERR_call_noblock_with_timeout);
  } else if (!nowait && !body) {
    report(ERR_call_blocking_wo_body);
  }
  if (nowait && body) report(ERR_call_nowait_with_body);
}

void RefuseReturnValue(T3Tree_Node* node, bool given) {
  T3SignatureType* signature = SignatureOf(node);
  if (given && signature != nullptr && T3Is<T3NoType>(signature->return_type))
    vexa_filtered_error(ERR_no_return, PositionOf(node), "signature");
}

void CheckReply(T3Tree_Node* node) {
  RequireProcedures(node, "reply");
  RequireSignature(node);
  T3Tree_Node* value = ConstraintOf(node->as<T3ReplyStmt>()->return_expr);
  const bool given = IsGiven(value);
  if (given && !HasBeenRefused(value) && !IsRvalue(value))
    vexa_filtered_error(ERR_template_ambiguous, PositionOf(node));
  RefuseReturnValue(node, given);
  T3SignatureType* signature = SignatureOf(node);
  if (!given && signature != nullptr && !T3Is<T3NoType>(signature->return_type))
    WarnAt(node, "missing return value in 'reply' operation for a procedure that has return type");
}

void CheckGetCall(T3Tree_Node* node) {
  RequireProcedures(node, "getcall");
  RequireSignature(node);
}

T3Tree_Node* PortDeclOf(T3Tree_Node* port) {
  while (port->is<T3Subscription>()) port = port->as<T3Subscription>()->base;
  return port->is<_T3Reference>() ? BehindImport(Def(port)) : nullptr;
}

// In the body of a call only what the call is about comes back.
void CheckAgainstCall(T3Tree_Node* node, T3Tree_Node* signature) {
  const T3Place* place = node->place;
  if (place == nullptr || !place->in_call_stmt) return;
  T3Tree_Node* port = PortDeclOf(node->as<_T3PortStmt>()->port);
  const bool other_port = place->call_port_decl != nullptr && T3Is<T3PortDecl>(port) &&
                          BehindImport(place->call_port_decl) != port;
  const bool other_signature = place->call_signature_type != nullptr && T3Is<T3SignatureType>(signature) &&
                               T3Is<T3SignatureType>(BaseTypeDef(place->call_signature_type)) &&
                               BaseTypeDef(place->call_signature_type) != signature;
  if (other_port || other_signature) vexa_filtered_error(ERR_call_mismatch, PositionOf(node));
}

void CheckGetReply(T3Tree_Node* node) {
  RequireProcedures(node, "getreply");
  RequireSignature(node);
  RefuseReturnValue(node, node->as<T3GetReplyStmt>()->return_template->is<T3TemplateDef>());
  CheckAgainstCall(node, TemplateType(node));
}

// What is raised or caught belongs to a signature, one that the port lists.
void RequireListedSignature(_T3PortStmt* statement, T3Tree_Node* reference, bool out) {
  T3Tree_Node* signature = BaseTypeDef(reference);
  T3Tree_Node* port = ExpressionBaseType(statement->port);
  if (T3Is<T3NoType>(reference) || signature->is<T3ErrorType>()) return;
  if (!statement->attr().is_procedure_based) return;
  if (!signature->is<T3SignatureType>())
    return vexa_filtered_error(ERR_message_on_proc_port, PositionOf(statement));
  if (!port->is<T3PortType>() || port == gT3AnyPortType) return;
  const T3TypeSet& listed = (out ? PortTypesOut(port) : PortTypesIn(port)).base;
  if (std::find(listed.begin(), listed.end(), signature) == listed.end())
    vexa_filtered_error(ERR_type_template_check_port, PositionOf(reference));
}

void CheckRaise(T3Tree_Node* node) {
  RefuseOmitted(node);
  RequireProcedures(node, "raise");
  RequireListedSignature(node->as<_T3PortStmt>(), node->as<T3RaiseStmt>()->signature, false);
}

void CheckCatch(T3Tree_Node* node) {
  RequireProcedures(node, "catch");
  auto* caught = node->as<T3CatchStmt>();
  if (T3Is<T3NoType>(caught->signature) && caught->template_value->is<T3TemplateDef>())
    vexa_filtered_error(ERR_template_exception_wo_signature, PositionOf(node));
  RequireListedSignature(caught, caught->signature, true);
  CheckAgainstCall(node, BaseTypeDef(caught->signature));
}

void CheckCatchTimeout(T3Tree_Node* node) {
  RequireProcedures(node, "catch(timeout)");
  const T3Place* place = node->place;
  if (place == nullptr) return;
  if (!place->in_call_stmt) return vexa_filtered_error(ERR_catch_timeout_wo_call, PositionOf(node));
  CheckAgainstCall(node, nullptr);
  auto* call = place->enclosing_alt->try_as<T3CallStmt>();
  if (call != nullptr && (!IsGiven(call->timeout) || call->timeout->is<T3NoWait>()))
    vexa_filtered_error(ERR_call_catch_wo_timeout, PositionOf(node));
}

// ---- Redirections ----

const char* PassName(t3_par_pass_t pass) {
  if (pass == t3_par_pass_t::In) return "in";
  return pass == t3_par_pass_t::Out ? "out" : "inout";
}

bool CheckPassMode(t3_par_pass_t pass, bool getcall) {
  return pass != (getcall ? t3_par_pass_t::Out : t3_par_pass_t::In);
}

void CheckParameterRedirection(T3Tree_Node* at, T3Tree_Node* par, bool getcall) {
  auto* typed = T3Is<_T3TypedFormal>(par) ? par->as<_T3TypedFormal>() : nullptr;
  if (typed != nullptr && !CheckPassMode(typed->pass, getcall))
    vexa_filtered_error(ERR_param_redirect, PositionOf(at), PassName(typed->pass),
                        getcall ? "getcall" : "getreply");
}

// What comes in goes to something that can be assigned to.
void RequireTarget(T3Tree_Node* target) {
  if (IsGiven(target) && !HasFailed(target) && !IsLvalue(target))
    vexa_filtered_error(ERR_lvalue, PositionOf(target));
}

void CheckParameterRedirections(T3PortRedirect* redirect, T3SignatureType* signature) {
  const bool getcall = redirect->attr().is_in_getcall;
  if (!getcall && !redirect->attr().is_in_getreply) return;
  bool list = true;
  T3Tree_Node* par = signature->fpl;
  const Items<T3FieldValue> elements(redirect->redirect_params);
  for (auto* element : elements) {
    if (!element->value->is<T3NotUsedSymbol>()) RequireTarget(element->value);
    if (auto* name = element->field->try_as<T3FieldName>()) {
      list = false;
      CheckParameterRedirection(element, FindName(signature, name->name, nullptr), getcall);
      continue;
    }
    if (!element->value->is<T3NotUsedSymbol>()) CheckParameterRedirection(element, par, getcall);
    if (T3Is<_T3FormalPar>(par)) par = par->as<_T3FormalPar>()->next;
  }
  const size_t given = elements.size();
  const size_t wanted = Items<_T3FormalPar>(signature->fpl).size();
  if (given > 0 && list && given != wanted)
    vexa_filtered_error(ERR_param_count_in_redir, PositionOf(redirect));
}

// An operation without a template takes what comes, whatever its parameters are.
bool IsWithoutTemplate(T3Tree_Node* statement) {
  auto* operation = T3Is<_T3TemplatePortStmt>(statement) ? statement->as<_T3TemplatePortStmt>() : nullptr;
  return operation == nullptr || !operation->template_value->is<T3TemplateDef>();
}

// What comes without a template has no type by which its value could be taken, but for the reply to a call; and
// a call has no value.
void RefuseUntypedValue(T3PortRedirect* redirect) {
  T3Tree_Node* statement = redirect->parent;
  const bool untyped = !statement->is<T3GetReplyStmt>() && IsWithoutTemplate(statement);
  if (IsGiven(redirect->redirect_value) && (untyped || statement->is<T3GetCallStmt>()))
    vexa_filtered_error(ERR_not_allowed_here, PositionOf(redirect->redirect_value), "value");
}

void CheckRedirect(T3Tree_Node* node) {
  auto* redirect = node->as<T3PortRedirect>();
  RefuseUntypedValue(redirect);
  RequireTarget(redirect->redirect_value);
  RequireTarget(redirect->redirect_sender);
  if (redirect->redirect_params != nullptr && MixesNotations(redirect->redirect_params))
    return vexa_filtered_error(ERR_mixed_notation, redirect->position);
  T3Tree_Node* signature = redirect->attr().params_types;
  if (!T3Is<T3FieldValue>(redirect->redirect_params)) return;
  if (T3Is<T3SignatureType>(signature))
    CheckParameterRedirections(redirect, signature->as<T3SignatureType>());
  else if (IsWithoutTemplate(redirect->parent))
    vexa_filtered_error(ERR_param_count_in_redir, PositionOf(redirect));
}

// ---- Configuration ----

// One side of a configuration operation.
struct Side {
  T3Tree_Node* component;
  T3Tree_Node* port;
  /// The type of the component, null where that is not known or has failed.
  T3Tree_Node* owner = nullptr;
  T3PortDecl* decl = nullptr;
  T3PortType* type = nullptr;
  int dimension = 0;
};

tIdent PortName(T3Tree_Node* port) {
  while (auto* element = port->try_as<T3PortArrayElement>()) port = element->base;
  auto* identifier = port->try_as<T3PortIdentifier>();
  return identifier == nullptr ? NoIdent : identifier->name;
}

int SubscriptionLevel(T3Tree_Node* port) {
  int level = 0;
  for (; port->is<T3PortArrayElement>(); port = port->as<T3PortArrayElement>()->base) ++level;
  return level;
}

T3Tree_Node* FindPortInComponentDecl(T3Tree_Node* component, tIdent name) {
  T3Tree_Node* member = MembersOf(component->as<T3ComponentType>()).Find(name);
  return T3Is<T3PortDecl>(member) ? member : nullptr;
}

// The component that `self`, `mtc` and `system` stand for in a test case, and `self` in other behaviour; null
// where that is not known.
T3Tree_Node* GenericComponent(T3Tree_Node* component) {
  T3Tree_Node* behaviour = component->place == nullptr ? nullptr : component->place->vexa_owner;
  auto* testcase = T3Is<T3Testcase>(behaviour) ? behaviour->as<T3Testcase>() : nullptr;
  if (testcase == nullptr) {
    T3Tree_Node* own = component->is<T3Self>() && behaviour != nullptr ? ComponentOf(behaviour) : nullptr;
    return T3Is<T3ComponentType>(own) ? own : nullptr;
  }
  const bool has_system = component->is<T3System>() && !T3Is<T3NoType>(testcase->system);
  T3Tree_Node* type = has_system ? BaseTypeDef(testcase->system) : ComponentOf(testcase);
  const bool is_generic = component->is<T3Self>() || component->is<T3MTC>() || component->is<T3System>();
  return is_generic && T3Is<T3ComponentType>(type) ? type : nullptr;
}

bool NamesPort(const Side& side) {
  return IsGiven(side.port) && !side.port->is<T3PortAll>();
}

void FindPort(Side& side) {
  if (!IsGiven(side.component) || HasFailed(side.component)) return;
  side.owner = ExpressionBaseType(side.component);
  T3Tree_Node* known = side.owner == gT3AnyComponentType ? GenericComponent(side.component) : nullptr;
  if (known != nullptr) side.owner = known;
  if (!T3Is<T3ComponentType>(side.owner) || side.owner == gT3AnyComponentType || !NamesPort(side)) return;
  T3Tree_Node* decl = FindPortInComponentDecl(side.owner, PortName(side.port));
  // A function may run on a component that has more than it knows.
  if (decl == nullptr && known != nullptr && !T3Is<T3Testcase>(side.component->place->vexa_owner))
    side.owner = gT3AnyComponentType;
  if (decl == nullptr) return;
  side.decl = decl->as<T3PortDecl>();
  T3Tree_Node* type = BaseTypeDef(decl);
  for (; type->is<T3ArrayType>(); type = BaseTypeDef(ElementType(type))) ++side.dimension;
  side.type = type->try_as<T3PortType>();
}

// The checks of configurations, in their order. Each returns true when it has told a fault.
bool CheckSubscription(T3Tree_Node* node, const Side& side) {
  const int level = SubscriptionLevel(side.port);
  // What is not known here may be an array, but of one dimension.
  if (side.decl == nullptr ? level <= 1 : level == side.dimension) return false;
  vexa_filtered_error(ERR_wrong_portarr_subscription, PositionOf(node));
  return true;
}

// An element that the array does not have.
bool CheckElement(T3Tree_Node* node, const Side& side) {
  T3Tree_Node* type = side.decl == nullptr ? nullptr : BaseTypeDef(side.decl);
  auto* element = side.port->try_as<T3PortArrayElement>();
  const auto bounds = T3Is<T3ArrayType>(type) && element != nullptr ? KnownBounds(type) : std::nullopt;
  const auto index = bounds ? ConstIntValue(element->index) : std::nullopt;
  if (!index || (bounds->low <= *index && *index <= bounds->high)) return false;
  vexa_filtered_error(ERR_arr_out_of_bounds, PositionOf(node));
  return true;
}

bool CheckComponent(T3Tree_Node* node, const Side& side) {
  if (side.owner == nullptr || side.owner == gT3AnyComponentType) return false;
  if (!IsRvalue(side.component) ||
      (!side.owner->is<T3ComponentType>() && !(node->is<T3ConnectStmt>() && side.owner->is<T3ArrayType>()))) {
    vexa_filtered_error(ERR_invalid_comp_ref, PositionOf(node));
    return true;
  }
  if (!side.owner->is<T3ComponentType>() || !NamesPort(side) || side.decl != nullptr) return false;
  T3Tree_Node* owner = side.owner->parent;
  const tIdent shown = T3Is<T3TypeDecl>(owner) ? owner->as<T3TypeDecl>()->name : PortName(side.port);
  vexa_filtered_error(ERR_undefined_port, PositionOf(node), shown);
  return true;
}

bool CheckSystemPort(T3Tree_Node* node, const Side& side) {
  if (!node->is<T3ConnectStmt>() && !node->is<T3DisconnectStmt>()) return false;
  if (!T3Is<T3System>(side.component)) return false;
  vexa_filtered_error(ERR_connect_system_port, PositionOf(node));
  return true;
}

bool CheckArray(T3Tree_Node* node, const Side& side) {
  if (!node->is<T3ConnectStmt>() || !T3Is<T3ArrayType>(side.owner)) return false;
  vexa_filtered_error(ERR_illegal_operation_for_arr, PositionOf(node), "connect");
  return true;
}

// A mapping has the system on one of its sides.
bool CheckMapping(T3Tree_Node* node, const Side& first, const Side& second) {
  if (!node->is<T3MapStmt>() && !(node->is<T3UnmapStmt>() && NamesPort(second))) return false;
  if (first.owner == nullptr || second.owner == nullptr || IsInControlPart(node)) return false;
  if (first.component->is<T3System>() != second.component->is<T3System>()) return false;
  vexa_filtered_error(ERR_invalid_comp_ref, PositionOf(node));
  return true;
}

// Each type of `needed` must be among those that a port offers.
void CheckPortCompatibility(T3Tree_Node* node, const T3PortTypes& needed, const T3PortTypes& offered,
                            const char* name) {
  std::unordered_set<const T3Tree_Node*> taken(offered.base.begin(), offered.base.end());
  taken.insert(offered.absolute.begin(), offered.absolute.end());
  for (size_t i = 0; i < needed.base.size(); ++i)
    if (!needed.base[i]->is<T3ErrorType>() && taken.count(needed.absolute[i]) == 0 &&
        taken.count(needed.base[i]) == 0)
      vexa_filtered_error(ERR_type_ports_incompatible, PositionOf(node), name,
                          Type2String(needed.absolute[i]).c_str());
}

// What one side sends the other takes; a port of the system passes on what its port sends, and what it gets.
void CheckPorts(T3Tree_Node* node, const Side& first, const Side& second) {
  if (first.type == nullptr || second.type == nullptr) return;
  const auto check = CheckPortCompatibility;
  if (node->is<T3ConnectStmt>()) {
    check(node, PortTypesOut(first.type), PortTypesIn(second.type), "second port");
    check(node, PortTypesOut(second.type), PortTypesIn(first.type), "first port");
  } else if (node->is<T3MapStmt>() && T3Is<T3System>(second.component)) {
    check(node, PortTypesOut(first.type), PortTypesOut(second.type), "second port");
    check(node, PortTypesIn(second.type), PortTypesIn(first.type), "first port");
  } else if (node->is<T3MapStmt>() && T3Is<T3System>(first.component)) {
    check(node, PortTypesIn(first.type), PortTypesIn(second.type), "second port");
    check(node, PortTypesOut(second.type), PortTypesOut(first.type), "first port");
  }
}

void CheckConfiguration(T3Tree_Node* node) {
  RefuseInControlPart(node, "configuration operation");
  auto* statement = node->as<_T3ConfStmt>();
  Side first{statement->component_1, statement->port_1};
  Side second{statement->component_2, statement->port_2};
  FindPort(first);
  FindPort(second);
  for (const auto check : {CheckSubscription, CheckComponent, CheckSystemPort, CheckArray, CheckElement})
    if (check(node, first) || check(node, second)) return;
  if (CheckMapping(node, first, second)) return;
  CheckPorts(node, first, second);
}

constexpr T3Rule kRules[] = {
    {T3Kind::_T3PortStmt, CheckPort},
    {T3Kind::_T3ReceivingPortStmt, CheckReceiving},
    {T3Kind::T3CheckRedirect, CheckChecking},
    {T3Kind::T3SendStmt, CheckSend},
    {T3Kind::T3ReceiveStmt, CheckReceive},
    {T3Kind::T3TriggerStmt, CheckTrigger},
    {T3Kind::T3CallStmt, CheckCall},
    {T3Kind::T3ReplyStmt, CheckReply},
    {T3Kind::T3RaiseStmt, CheckRaise},
    {T3Kind::T3GetCallStmt, CheckGetCall},
    {T3Kind::T3GetReplyStmt, CheckGetReply},
    {T3Kind::T3CatchStmt, CheckCatch},
    {T3Kind::T3CatchTimeoutStmt, CheckCatchTimeout},
    {T3Kind::T3PortRedirect, CheckRedirect},
    {T3Kind::_T3ConfStmt, CheckConfiguration},
};
}  // namespace

std::span<const T3Rule> PortRules() {
  return kRules;
}
