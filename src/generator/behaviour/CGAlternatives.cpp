#include "generator/behaviour/CGAlternatives.h"

#include <algorithm>

#include "generator/expressions/CGModes.h"

#include "analysis/flow/T3AltStatus.h"
#include "analysis/types/T3Types.h"
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3Lists.h"
#include "generator/behaviour/CGAltParts.h"
#include "generator/expressions/CGCalls.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGReads.h"
#include "generator/text/CGModuleText.h"
#include "generator/behaviour/CGStatement.h"
#include "generator/templates/CGTemplate.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CGTypeTables.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace {
using namespace cgalt;

std::string AddressOf(std::string_view name) {
  return joined({"&(", name, ")"});
}

// ---- Operands ----

bool IsPresent(T3Tree_Node* node) {
  return T3Is<T3TemplateDef>(node) || (T3Is<_T3Expression>(node) && !node->is<T3NoExpression>());
}

// A template, or that there is none.
std::string TemplateOr(T3Tree_Node* node, const char* none, vexa_template_mode_t mode, CFunction& function) {
  return IsPresent(node) ? CGInlinedTemplate(node, mode, function) : std::string(none);
}

// A `from` or `to` clause.
std::string AddressOr(T3Tree_Node* node, const char* none, CFunction& function) {
  return IsPresent(node) ? CGTemplateExpression(node, vexa_template_plain, function) : std::string(none);
}

std::string Target(T3Tree_Node* target, CFunction& function) {
  if (!IsPresent(target) || target->is<T3NotUsedSymbol>()) return LUMO_VALUE_NO_RETURN_C;
  return std::string(cg::PlaceToWrite(target, true, function));
}

std::string SenderTarget(T3Tree_Node* redirect, CFunction& function) {
  auto* targets = redirect->try_as<T3PortRedirect>();
  return targets == nullptr ? std::string(LUMO_VALUE_NO_RETURN_C)
                            : Target(targets->redirect_sender, function);
}

std::string ValueTarget(T3Tree_Node* redirect, CFunction& function) {
  auto* targets = redirect->try_as<T3PortRedirect>();
  return targets == nullptr ? std::string(LUMO_VALUE_NO_RETURN_C) : Target(targets->redirect_value, function);
}

T3SignatureType* SignatureOf(T3Tree_Node* definition) {
  if (!T3Is<T3TemplateDef>(definition)) return nullptr;
  T3Tree_Node* type = cg::TypeOf(definition->as<T3TemplateDef>()->constraint);
  if (!definition->as<T3TemplateDef>()->parent->is<T3NoType>())
    type = RootType(definition->as<T3TemplateDef>()->parent);
  return type->try_as<T3SignatureType>();
}

// The number of parameters for a name that none of them has.
size_t PositionOfParameter(T3SignatureType* signature, tIdent name) {
  const long found = GetAlternativeIndex(signature, name, false);
  return found < 0 ? GetParNumber(signature->fpl) : static_cast<size_t>(found) - 1;
}

// The array of targets for the parameters of a call or reply, with their number before it.
void GenerateRedirectParams(T3Tree_Node* redirect, T3SignatureType* signature,
                            std::vector<std::string>& arguments, CFunction& function) {
  auto* targets = redirect->try_as<T3PortRedirect>();
  const bool none = targets == nullptr || !targets->redirect_params->is<T3FieldValue>();
  if (none || signature == nullptr) {
    arguments.insert(arguments.end(), {"0", C_NULL});
    return;
  }
  const unsigned count = GetParNumber(signature->fpl);
  const std::string array = function.declareArray(LUMO_VALUE_T, count);
  const auto slot = [&array](size_t i) { return array + "[" + std::to_string(i) + "]"; };
  std::vector<bool> is_named(count);
  for (const auto [position, at] : Numbered<T3FieldValue>(targets->redirect_params)) {
    auto* name = at->field->try_as<T3FieldName>();
    const size_t index = name == nullptr ? position : PositionOfParameter(signature, name->name);
    if (index >= count) continue;
    is_named[index] = true;
    function.assign(slot(index), Target(at->value, function));
  }
  for (unsigned i = 0; i < count; ++i)
    if (!is_named[i]) function.assign(slot(i), LUMO_VALUE_NO_RETURN_C);
  arguments.insert(arguments.end(), {std::to_string(count), array});
}

// ---- Operations that are tried ----

struct Attempt {
  const char* word = "";
  std::vector<std::string> arguments;
};

// Whether calls may wait there too: a `check` that names nothing takes them, a `check(receive)` does not.
bool MayHoldCalls(T3Tree_Node* port) {
  auto* type = RootType(cg::TypeOf(port))->try_as<T3PortType>();
  return port->is<T3PortAll>() || type == nullptr || type->port_kind == t3_port_kind_t::Mixed;
}

Attempt TryReceiving(_T3ReceivingPortStmt* statement, bool is_check, CFunction& function) {
  Attempt attempt;
  const auto add = [&](std::string_view text) { attempt.arguments.emplace_back(text); };
  const char* check = is_check ? C_TRUE : C_FALSE;
  add(cg::InRTS(statement->port, vexa_temp_alloc, function));
  if (statement->is<T3CatchTimeoutStmt>()) {
    attempt.word = LUMO_PORT_TRY_CATCH_TIMEOUT;
    add(VEXA_CONTEXT);
    return attempt;
  }
  const auto add_template = [&](vexa_template_mode_t mode) {
    add(TemplateOr(statement->template_value, LUMO_NO_VALUE_C, mode, function));
  };
  const auto add_sender = [&] { add(AddressOr(statement->sender, LUMO_NO_VALUE_C, function)); };
  if (statement->is<T3GetCallStmt>()) {
    attempt.word = LUMO_PORT_TRY_GETCALL;
    add_template(vexa_template_call);
    add_sender();
    add(check);
    GenerateRedirectParams(statement->redirect, SignatureOf(statement->template_value), attempt.arguments,
                           function);
  } else if (auto* reply = statement->try_as<T3GetReplyStmt>()) {
    attempt.word = LUMO_PORT_TRY_GETREPLY;
    add_template(vexa_template_reply);
    add(TemplateOr(reply->return_template, LUMO_NO_VALUE_C, vexa_template_plain, function));
    add_sender();
    add(check);
    add(ValueTarget(statement->redirect, function));
    GenerateRedirectParams(statement->redirect, SignatureOf(statement->template_value), attempt.arguments,
                           function);
  } else {
    attempt.word = LUMO_PORT_TRY_RECEIVE;
    if (auto* caught = statement->try_as<T3CatchStmt>()) {
      attempt.word = LUMO_PORT_TRY_CATCH;
      add(VEXATypeRef(caught->signature));
    }
    const bool any = is_check && statement->is<T3ReceiveStmt>() && MayHoldCalls(statement->port);
    add(TemplateOr(statement->template_value, any ? LUMO_ANYONE_VALUE_C : LUMO_NO_VALUE_C,
                   vexa_template_plain, function));
    add_sender();
    add(check);
    add(ValueTarget(statement->redirect, function));
  }
  add(SenderTarget(statement->redirect, function));
  add(VEXA_CONTEXT);
  return attempt;
}

Attempt Try(T3Tree_Node* operation, CFunction& function) {
  const auto with = [&](const char* word, T3Tree_Node* operand) {
    return Attempt{word, {std::string(cg::InRTS(operand, vexa_temp_alloc, function)), VEXA_CONTEXT}};
  };
  if (auto* done = operation->try_as<T3DoneStmt>()) return with(LUMO_COMPONENT_TRY_DONE, done->component);
  if (auto* killed = operation->try_as<T3KilledStmt>())
    return with(LUMO_COMPONENT_TRY_KILLED, killed->component);
  if (auto* timeout = operation->try_as<T3TimeoutStmt>())
    return with(LUMO_TIMER_TRY_TIMED_OUT, timeout->timer);
  if (auto* receiving = operation->try_as<_T3ReceivingPortStmt>())
    return TryReceiving(receiving, false, function);
  if (auto* check = operation->try_as<T3CheckReceive>())
    return TryReceiving(check->receive_statement->as<_T3ReceivingPortStmt>(), true, function);
  if (auto* check = operation->try_as<T3CheckRedirect>())
    return {LUMO_PORT_TRY_RECEIVE,
            {std::string(cg::InRTS(check->port, vexa_temp_alloc, function)), LUMO_NO_VALUE_C,
             AddressOr(check->from, LUMO_NO_VALUE_C, function), C_TRUE, LUMO_VALUE_NO_RETURN_C,
             SenderTarget(check->redirect, function), VEXA_CONTEXT}};
  internal_error_ast("CGStatement", __LINE__, "CGStatement::GenGuardOp", operation);
}

template <class Node>
void StoreNamesAt(Node* node, const AltNames& names) {
  node->cold().repeat_var = gT3AST.KeepText(names.repeat_var);
  node->cold().repeat_label = gT3AST.KeepText(names.repeat_label);
  node->cold().vexa_break_label = gT3AST.KeepText(names.break_label);
  node->cold().temp_memory_scope = gT3AST.KeepText(names.scope);
}

T3Place* PlaceLike(T3Tree_Node* node) {
  return new (gT3AST.AllocAttributes(sizeof(T3Place))) T3Place(*node->place);
}

// A block that is in no source, so that no line is told at its end.
T3BlockStmt* MadeBlock(const tPosition& position, T3Tree_Node* body) {
  return gT3AST.mT3BlockStmt(position, _sgT3NoStmt(), body);
}

// An altstep's branch without a block has an empty one.
bool HasEmptyBody(T3Tree_Node* body) {
  auto* block = body->try_as<T3BlockStmt>();
  return block == nullptr ? !body->is<_T3Stmt>() : !block->body->is<_T3Stmt>();
}
}  // namespace

namespace cgalt {
// "if (" attempt ")" with the scope open.
void GenGuardOp(T3Tree_Node* operation, CFunction& function) {
  const CGStatementScope scope(function);
  const Attempt attempt = Try(operation, function);
  function.beginIf(attempt.word, attempt.arguments);
}

T3GuardedAlt* GuardedAlt(T3Tree_Node* operation) {
  auto* alt = gT3AST.mT3GuardedAlt(operation->as<_T3Stmt>()->position, _sgT3NoAlt(), _sgT3NoExpression(),
                                   _sgT3NoStmt(), operation);
  alt->place = operation->place;
  return alt;
}

void StoreNames(T3Tree_Node* statement, const AltNames& names) {
  if (auto* alt = statement->try_as<T3AltStmt>())
    StoreNamesAt(alt, names);
  else
    StoreNamesAt(statement->as<T3CallStmt>(), names);
}

T3AltStmt* AltAround(T3Tree_Node* branches, T3Tree_Node* like) {
  auto* alt = gT3AST.mT3AltStmt(like->as<_T3Stmt>()->position, _sgT3NoStmt(), branches, _sgT3NoStmt());
  alt->place = like->place;
  return alt;
}

// A trigger takes what it does not want from the queue, and waits on.
T3GuardedAlt* ExpandTrigger(_T3Alt* alt, T3Tree_Node* owner) {
  auto* guarded = alt->try_as<T3GuardedAlt>();
  auto* trigger = guarded == nullptr ? nullptr : guarded->operation->try_as<T3TriggerStmt>();
  if (trigger == nullptr) return nullptr;
  auto* receive = gT3AST.mT3ReceiveStmt(trigger->position, _sgT3NoStmt(), trigger->port, _sgT3NoTemplateDef(),
                                        _sgT3NoExpression(), _sgT3NoPortRedirect());
  auto* repeat = gT3AST.mT3RepeatStmt(alt->position, _sgT3NoStmt());
  auto* block = MadeBlock(alt->position, repeat);
  auto* branch = gT3AST.mT3GuardedAlt(alt->position, _sgT3NoAlt(), alt->guard, block, receive);
  receive->place = trigger->place;
  T3Place* place = PlaceLike(trigger);
  place->vexa_enclosing_block = place->vexa_break_continue_owner = place->enclosing_alt = owner;
  branch->place = block->place = place;
  T3Place* inner = PlaceLike(block);
  inner->vexa_enclosing_block = block;
  repeat->place = inner;
  return branch;
}

AltNames BeginAlt(CFunction& function) {
  AltNames names;
  names.repeat_var = function.getTmpVariable(C_BOOL);
  names.repeat_label = function.getNewLabel();
  names.scope = function.getTmpVariable(LUMO_MEMORY_SCOPE_T);
  function.call(LUMO_MEMORY_TEMP_BEGIN, {AddressOf(names.scope), VEXA_CONTEXT});
  names.break_label = function.getNewLabel();
  return names;
}

void BeginRounds(const AltNames& names, CFunction& function) {
  function.call(LUMO_LOG_ALT_ENTERED_EVENT, {VEXA_CONTEXT});
  function.beginDoWhile();
  function.assign(names.repeat_var, C_FALSE);
  function.beginWhile(C_TRUE);
  function.call(LUMO_MEMORY_TEMP_CLEAR, {AddressOf(names.scope), VEXA_CONTEXT});
  function.call(LUMO_COMPONENT_SNAPSHOT, {VEXA_CONTEXT});
}

void TryDefaults(const AltNames& names, CFunction& function) {
  function.call(LUMO_LOG_ALT_DEFAULTS_EVENT, {VEXA_CONTEXT});
  const std::string result = function.getTmpVariable(LUMO_ACTIVATION_LIST_RESULT_T);
  function.callAndAssign(result, LUMO_ACTIVATION_LIST_INVOKE, {VEXA_CONTEXT});
  function.beginIf(result + " == " + LUMO_ACTIVATION_LIST_SUCCESSFUL_PROCEED_C);
  function.addBreak();
  function.endIf();
  function.beginElseIf(result + " == " + LUMO_ACTIVATION_LIST_SUCCESSFUL_REPEAT_C);
  function.assign(names.repeat_var, C_TRUE);
  function.addBreak();
  function.endIf();
  function.releaseTmpVariable(result);
}

// `alternatives` may have changing guards: what they come to can be another without an event.
void Wait(T3Tree_Node* alternatives, CFunction& function) {
  const T3Cleanness clean = CleannessOf(alternatives);
  function.call(LUMO_LOG_ALT_WAIT_EVENT, {VEXA_CONTEXT});
  function.call(LUMO_COMPONENT_WAIT, {clean.guards && clean.templates ? C_FALSE : C_TRUE, VEXA_CONTEXT});
}

void EndRounds(const AltNames& names, CFunction& function) {
  function.endWhile();
  function.addLabel(names.repeat_label);
  function.addText(";");
  function.endDoWhile(names.repeat_var);
  function.addLabel(names.break_label);
  function.call(LUMO_LOG_ALT_LEFT_EVENT, {VEXA_CONTEXT});
  function.call(LUMO_MEMORY_TEMP_END, {AddressOf(names.scope), VEXA_CONTEXT});
  function.releaseTmpVariable(names.repeat_var);
  function.releaseTmpVariable(names.scope);
}
}  // namespace cgalt

namespace {
using namespace cgalt;

// ---- Branches ----

const AltNames NamesOf(T3Tree_Node* statement) {
  if (auto* alt = statement->try_as<T3AltStmt>()) {
    const auto& kept = alt->cold();
    return {kept.repeat_var, kept.repeat_label, kept.vexa_break_label, kept.temp_memory_scope};
  }
  const auto& kept = statement->as<T3CallStmt>()->cold();
  return {kept.repeat_var, kept.repeat_label, kept.vexa_break_label, kept.temp_memory_scope};
}

T3Tree_Node* BehindImportOf(T3Tree_Node* decl) {
  return decl->is<_T3ImportDecl>() ? decl->as<_T3ImportDecl>()->attr().def_aux : decl;
}

// The call of an altstep; returns the variable that has its result.
std::string CallAltstep(T3Tree_Node* reference, CFunction& function) {
  auto* call = reference->try_as<T3Parameterization>();
  if (call == nullptr) cg::NotSupported(reference);
  T3Tree_Node* decl = Def(call);
  T3Tree_Node* origin = BehindImportOf(decl);
  if (!T3Is<T3TestStep>(origin)) cg::NotSupported(reference);
  std::string result = function.getTmpVariable(LUMO_TEST_STEP_RESULT_T);
  T3Tree_Node* formals = origin->as<T3TestStep>()->fpl;
  const CGStatementScope scope(function);
  const std::string array = CGActualParameterList(call->apl, formals, false, function);
  CGInstantiateOutOmittedParameters(call->apl, formals, array, function);
  function.callAndAssign(result, LUMO_CALL_ALTSTEP,
                         {GetTeststepObject(decl), AddressOf(VEXAFuncTypeStructName(decl)),
                          std::to_string(GetParNumber(formals)), array, VEXA_CONTEXT});
  return result;
}

void AltstepBranch(T3Tree_Node* reference, T3Tree_Node* body, const AltNames& names, CFunction& function) {
  const std::string result = CallAltstep(reference, function);
  function.beginIf(result + " == " + LUMO_TEST_STEP_SUCCESSFUL_PROCEED_C);
  if (!HasEmptyBody(body)) CGStatement(body, function);
  function.addBreak();
  function.endIf();
  function.beginElseIf(result + " == " + LUMO_TEST_STEP_SUCCESSFUL_REPEAT_C);
  function.assign(names.repeat_var, C_TRUE);
  function.addGoto(names.repeat_label);
  function.endIf();
  function.releaseTmpVariable(result);
}

}  // namespace

namespace cgalt {
namespace {
void Branch(_T3Alt* alt, const AltNames& names, CFunction& function, const std::function<void()>& body) {
  if (auto* altstep = alt->try_as<T3TestStepRefAlt>())
    return AltstepBranch(altstep->test_step, alt->body, names, function);
  GenGuardOp(alt->as<T3GuardedAlt>()->operation, function);
  body();
  function.addBreak();
  function.endIf();
}
}  // namespace

void GenBranch(_T3Alt* alt, const AltNames& names, CFunction& function, const std::function<void()>& body) {
  CGCommentPlace(function, alt->position, T3KindName(alt));
  CGSetSourceLine(function, alt->position);
  if (alt->guard->is<T3NoExpression>()) return Branch(alt, names, function, body);
  std::string guard;
  {
    const CGStatementScope scope(function);
    guard = cg::InC(alt->guard, function);
  }
  function.beginIf(guard);
  Branch(alt, names, function, body);
  function.endIf();
  function.beginElse();
  function.call(LUMO_LOG_ALT_REJECTED_EVENT, {VEXA_CONTEXT});
  function.endIf();
}
}  // namespace cgalt

void CGAltList(T3Tree_Node* alternatives, T3Tree_Node* statement, CFunction& function) {
  const AltNames names = NamesOf(statement);
  for (auto* at : Items<_T3Alt>(alternatives)) {
    auto* alt = at;
    GenBranch(alt, names, function, [&] { CGStatement(alt->body, function); });
    if (T3GuardedAlt* others = ExpandTrigger(alt, statement))
      GenBranch(others, names, function, [&] { CGStatement(others->body, function); });
  }
}

void CGAlt(T3AltStmt* statement, CFunction& function) {
  const AltNames names = BeginAlt(function);
  StoreNames(statement, names);
  BeginRounds(names, function);
  CGAltList(statement->alts, statement, function);
  if (statement->else_branch->is<_T3Stmt>()) {
    function.beginIf(LUMO_COMPONENT_TRY_ELSE, {VEXA_CONTEXT});
    function.call(LUMO_LOG_ALT_ELSE_EVENT, {VEXA_CONTEXT});
    CGStatement(statement->else_branch, function);
    function.addBreak();
    function.endIf();
    GenSourceLocationEnd(statement, function);
  } else {
    TryDefaults(names, function);
  }
  GenSourceLocation(statement, function);
  Wait(statement->alts, function);
  EndRounds(names, function);
}

bool IsBlockingOperation(T3Tree_Node* statement) {
  return statement->is<T3DoneStmt>() || statement->is<T3KilledStmt>() || statement->is<T3TimeoutStmt>() ||
         statement->is<_T3ReceivingPortStmt>() || statement->is<_T3CheckStmt>();
}

// An operation or an altstep that stands alone is an alternative with one branch, whose defaults are asked as
// well.
namespace {
T3AltStmt* Wrap(_T3Alt* branch, T3Tree_Node* block, T3Tree_Node* like) {
  auto* alt = gT3AST.mT3AltStmt(branch->position, _sgT3NoStmt(), branch, _sgT3NoStmt());
  alt->place = like->place;
  T3Place* place = PlaceLike(like);
  place->vexa_enclosing_block = place->vexa_break_continue_owner = place->enclosing_alt = alt;
  branch->place = block->place = place;
  return alt;
}
}  // namespace

void CGBlockingOperation(T3Tree_Node* statement, CFunction& function) {
  const tPosition& position = statement->as<_T3Stmt>()->position;
  auto* block = MadeBlock(position, _sgT3NoStmt());
  auto* branch = gT3AST.mT3GuardedAlt(position, _sgT3NoAlt(), _sgT3NoExpression(), block, statement);
  CGStatement(Wrap(branch, block, statement), function);
}

void CGAltstepCall(T3Parameterization* call, CFunction& function) {
  auto* block = MadeBlock(call->position, _sgT3NoStmt());
  auto* branch = gT3AST.mT3TestStepRefAlt(call->position, _sgT3NoAlt(), _sgT3NoExpression(), block, call);
  CGStatement(Wrap(branch, block, call), function);
}

void CGRepeat(T3RepeatStmt* statement, CFunction& function) {
  T3Tree_Node* owner = statement->place->enclosing_alt;
  if (!owner->is<T3AltStmt>() && !owner->is<T3CallStmt>()) cg::NotSupported(statement);
  const AltNames names = NamesOf(owner);
  function.call(LUMO_LOG_ALT_REPEAT_EVENT, {VEXA_CONTEXT});
  TidyUp(statement, owner, function);
  function.assign(names.repeat_var, C_TRUE);
  function.addGoto(names.repeat_label);
}

std::string BreakLabelOfAlt(T3Tree_Node* owner) {
  if (auto* interleave = owner->try_as<T3InterleaveStmt>()) return interleave->cold().vexa_break_label;
  return owner->is<T3AltStmt>() || owner->is<T3CallStmt>() ? NamesOf(owner).break_label : std::string();
}

// ---- Sending ----

namespace {
// A list of its own type, which is generated with it: one field for each recipient.
std::string Recipients(T3RecipientMulti* several, CFunction& function) {
  std::vector<T3Tree_Node*> ends;
  for (auto* at : Items<T3AddressListItem>(several->recipients)) ends.push_back(at->recipient);
  const std::string name = gT3Context.file().uniqueName("vexa_multicast_recipients");
  const std::string info_struct = name + "_type_info";
  GenPlainTypeStruct(name, info_struct, true);
  const std::string quoted = Quote(name);
  CGTypeInfo info;
  info.name = quoted;
  info.module = Quote(CGCurrentModule()->name);
  info.kind = LUMO_TYPE_KIND_RECORD;
  info.number_of_fields = std::to_string(ends.size());
  info.field_info = name + "_field_info";
  auto array = gT3Context.file().beginArray(LUMO_FIELD_INFO_T, info.field_info, true);
  const auto expression = [](T3Tree_Node* end) {
    return end->is<T3TemplateDef>() ? end->as<T3TemplateDef>()->constraint : end;
  };
  for (size_t i = 0; i < ends.size(); ++i)
    WriteFieldInfo(*array, Quote("_" + std::to_string(i)), LUMO_FIELD_NO_PROPERTY_C,
                   VEXAStaticTypeRef(ExpressionLocalType(expression(ends[i]))));
  array->end();
  WriteTypeInfoStruct(info_struct, info);
  std::string list = cg::Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(list, LUMO_TYPE_INSTANTIATE_VALUE,
                         {"&(" + name + ")", LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  for (size_t i = 0; i < ends.size(); ++i)
    function.call(
        LUMO_VALUE_ASSIGN_VECTOR_ELEMENT,
        {list, std::to_string(i), cg::InRTS(expression(ends[i]), vexa_temp_alloc, function), VEXA_CONTEXT});
  return list;
}

std::string Recipient(T3Tree_Node* recipient, CFunction& function) {
  if (recipient->is<T3RecipientAll>()) return LUMO_VALUE_ALL_C;
  if (auto* single = recipient->try_as<T3RecipientSingle>())
    return AddressOr(single->recipient, LUMO_NO_VALUE_C, function);
  if (auto* several = recipient->try_as<T3RecipientMulti>()) return Recipients(several, function);
  return AddressOr(recipient, LUMO_NO_VALUE_C, function);
}
}  // namespace

namespace {
// What is sent has the type that the statement gives it: a value is copied into one of that.
std::string SentValue(T3Tree_Node* node, CFunction& function) {
  const std::string location = CGTemplateExpression(node, vexa_template_plain, function);
  auto* definition = node->try_as<T3TemplateDef>();
  T3Tree_Node* value = definition != nullptr ? definition->constraint : node;
  const bool is_modified = definition != nullptr && !definition->modifies->is<T3NoTemplateReference>();
  if (is_modified || cg::HoldsTemplate(value)) return location;
  T3Tree_Node* type = definition != nullptr && !definition->parent->is<T3NoType>()
                          ? definition->parent
                          : ExpressionLocalType(value);
  std::string sent = cg::Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(sent, LUMO_TYPE_INSTANTIATE_VALUE,
                         {VEXATypeRef(type), LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  function.call(LUMO_VALUE_ASSIGN, {sent, location, VEXA_CONTEXT});
  return sent;
}
}  // namespace

namespace {
// Whether the type of an exception does not tell the call that it answers.
bool TakesSeveralCalls(T3Tree_Node* port) {
  const T3PortTypes types = PortTypesIn(cg::TypeOf(port));
  const auto is_signature = [](T3Tree_Node* type) { return type->is<T3SignatureType>(); };
  return std::count_if(types.base.begin(), types.base.end(), is_signature) > 1;
}

// What goes to a recipient, as it is before that one is looked for.
std::string BeforeRecipient(std::string_view value, T3Tree_Node* given, T3Tree_Node* recipient,
                            CFunction& function) {
  const bool changes = cg::Operands({given, recipient}).MayChange(0, false, function);
  return changes ? cg::Kept(value, function) : std::string(value);
}
}  // namespace

void CGSend(T3SendStmt* statement, CFunction& function) {
  const CGStatementScope scope(function);
  const std::string_view port = cg::InRTS(statement->port, vexa_temp_alloc, function);
  const std::string value = BeforeRecipient(SentValue(statement->template_value, function),
                                            statement->template_value, statement->recipient, function);
  function.call(LUMO_PORT_SEND, {port, value, Recipient(statement->recipient, function), VEXA_CONTEXT});
}

void CGCall(T3CallStmt* statement, CFunction& function) {
  {
    const CGStatementScope scope(function);
    const std::string_view port = cg::InRTS(statement->port, vexa_temp_alloc, function);
    const std::string call = CGInlinedTemplate(statement->template_value, vexa_template_call, function);
    std::string timeout = LUMO_DURATION_FOREVER_C;
    if (statement->timeout->is<T3NoWait>())
      timeout = LUMO_DURATION_NOWAIT_C;
    else if (!statement->timeout->is<T3NoExpression>())
      timeout = cg::InC(statement->timeout, function);
    function.call(LUMO_PORT_CALL,
                  {port, call, timeout, Recipient(statement->recipient, function), VEXA_CONTEXT});
  }
  if (!statement->body->is<_T3Alt>()) return;
  const AltNames names = BeginAlt(function);
  StoreNames(statement, names);
  BeginRounds(names, function);
  CGAltList(statement->body, statement, function);
  GenSourceLocationEnd(statement, function);
  GenSourceLocation(statement, function);
  Wait(statement->body, function);
  EndRounds(names, function);
}

void CGReply(T3ReplyStmt* statement, CFunction& function) {
  const CGStatementScope scope(function);
  const std::string_view port = cg::InRTS(statement->port, vexa_temp_alloc, function);
  const std::string reply = CGInlinedTemplate(statement->template_value, vexa_template_reply, function);
  const std::string_view result = IsPresent(statement->return_expr)
                                      ? cg::InRTS(statement->return_expr, vexa_temp_alloc, function)
                                      : LUMO_NO_VALUE_C;
  function.call(LUMO_PORT_REPLY,
                {port, reply, result, Recipient(statement->recipient, function), VEXA_CONTEXT});
}

void CGRaise(T3RaiseStmt* statement, CFunction& function) {
  const CGStatementScope scope(function);
  const std::string_view port = cg::InRTS(statement->port, vexa_temp_alloc, function);
  const std::string value =
      BeforeRecipient(CGTemplateExpression(statement->template_value, vexa_template_plain, function),
                      statement->template_value, statement->recipient, function);
  auto* definition = statement->template_value->try_as<T3TemplateDef>();
  T3Tree_Node* exception = definition != nullptr ? definition->constraint : statement->template_value;
  if (TakesSeveralCalls(statement->port))
    function.call(LUMO_PORT_ANSWERS, {VEXATypeRef(statement->signature), VEXA_CONTEXT});
  function.call(LUMO_PORT_RAISE, {port, VEXATypeRef(ExpressionLocalType(exception)), value,
                                  Recipient(statement->recipient, function), VEXA_CONTEXT});
}
