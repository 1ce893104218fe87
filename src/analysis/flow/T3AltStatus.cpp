#include "analysis/flow/T3AltStatus.h"

#include <algorithm>
#include <array>

#include "analysis/types/T3References.h"
#include "analysis/walk/T3Subtree.h"
#include "analysis/types/T3Types.h"
#include "analysis/flow/T3ValueClasses.h"
#include "frontend/T3KindCover.h"
#include "frontend/T3Lists.h"
#include "support/NumberMap.h"
#include "support/ModuleCaches.h"

namespace {
constexpr int kNone = 0;
constexpr int kCycle = 1;

// A call of a call nests; what lies deeper than this is not known, and counts as having effects.
constexpr int kMaxDepth = 3000;
int g_depth = 0;

// What a statement or an expression does by itself; what stands in it is looked at as well.
using ChangingSnapshot = T3Kinds<T3DoneStmt, T3KilledStmt, T3TimeoutStmt, _T3PortStmt, T3StartStmt,
                                 T3StopStmt, T3KillStmt, T3AltStmt, T3InterleaveStmt, T3Execute>;
using HavingSideEffects =
    T3Kinds<T3Create, T3Running, T3Alive, T3Read, T3GetVerdict, T3Rnd, T3SetVerdictStmt, T3DeactivateStmt>;
using ByWhatIsNamed = T3Kinds<T3AssignStmt, T3Activate, T3Parameterization, T3Identifier, T3Qualifier>;
using ByPartsAlone =
    T3Kinds<T3DeclStmt, T3InvocationStmt, T3BlockStmt, T3IfStmt, _T3LoopStmt, _T3ConfStmt, T3SUTStmt,
            T3LogStmt, T3RetStmt, T3LabelStmt, T3GotoStmt, T3RepeatStmt, T3BreakStmt, T3ContinueStmt,
            T3NoExpression, _T3BinaryExpression, _T3UnaryExpression, _T3ShiftOrRotateExpression,
            _T3LiteralExpression, T3Self, T3MTC, T3System, T3AnyTimer, T3AllTimer, T3AnyPort, T3AllPort,
            T3AnyComponent, T3AllComponent, T3Regexp, _T3PortReference, _T3AddressReference, T3ObjIdQualifier,
            T3Subscription, T3CompoundValue, T3Match, T3ValueOf, T3LengthRange, _T3MatchingExpression,
            ExtraMatchingExpressions, _T3PreDefinedTemplateFunction, _T3PreDefinedLengthFunction, T3Int2Char,
            T3Char2Int, T3Int2UniChar, T3UniChar2Int, T3Bit2Int, T3Hex2Int, T3Oct2Int, T3Str2Int, T3Int2Str,
            T3Bit2Str, T3Hex2Str, T3Oct2Str, T3Str2Oct, T3Oct2Char, T3Char2Oct, T3Bit2Hex, T3Hex2Oct,
            T3Bit2Oct, T3Hex2Bit, T3Oct2Hex, T3Oct2Bit, T3Int2Float, T3Float2Int, T3Str2Float, T3Enum2Int,
            T3Replace, T3DecValue>;
static_assert(T3Covers<_T3Stmt, ChangingSnapshot, HavingSideEffects, ByWhatIsNamed, ByPartsAlone>());
static_assert(T3Covers<_T3Expression, ChangingSnapshot, HavingSideEffects, ByWhatIsNamed, ByPartsAlone>());

constexpr int8_t kAskWhatIsNamed = -1;

// What the nodes of each kind do by themselves.
constexpr std::array<int8_t, kT3KindCount> kOwnStatus = [] {
  std::array<int8_t, kT3KindCount> status{};
  for (size_t kind = 0; kind < kT3KindCount; ++kind)
    status[kind] = static_cast<int8_t>(ChangingSnapshot::Has(kind)    ? kChangesSnapshot
                                       : HavingSideEffects::Has(kind) ? kHasSideEffects
                                       : ByWhatIsNamed::Has(kind)     ? kAskWhatIsNamed
                                                                      : kNone);
  return status;
}();

int StatusOfName(T3Tree_Node* name) {
  T3Tree_Node* def = DefQuietly(name);
  if (def == nullptr || T3Is<T3NoDecl>(def) || T3Is<_T3Type>(def) || T3Is<T3FieldType>(def)) return kNone;
  if (T3Is<_T3FormalPar>(def) || T3Is<T3Module>(def) || T3Is<_T3InstanceValueDecl>(def)) return kNone;
  return T3Is<_T3Decl>(def) ? AltStatusOfDecl(def) : kChangesSnapshot;
}

// The name that an assignment writes to counts with its declaration.
int StatusOfTarget(T3Tree_Node* target) {
  while (target->is<T3Subscription>() || target->is<T3Qualifier>())
    target = target->as<_T3Qualification>()->base;
  T3Tree_Node* def = DefQuietly(target);
  return T3Is<T3VarDecl>(def) ? AltStatusOfDecl(def) : kNone;
}

// What a call gives back is written as by an assignment.
int StatusOfOutParameters(T3Parameterization* call) {
  int status = kNone;
  T3Tree_Node* formals = FormalParametersOf(DefQuietly(call->base));
  for (const auto [at, formal] : Pairs<T3ActualPar, _T3FormalPar>(call->apl, formals)) {
    auto* par = formal->try_as<_T3TypedFormal>();
    T3Tree_Node* actual = at->expression;
    if (auto* definition = actual->try_as<T3TemplateDef>()) actual = definition->constraint;
    if (par != nullptr && par->pass == t3_par_pass_t::Out) status = std::max(status, StatusOfTarget(actual));
  }
  return status;
}

// A default is not executed where it is activated; what is given to it is evaluated there.
int StatusOfActivation(T3Activate* activation) {
  int status = kHasSideEffects;
  auto* call = activation->teststep->try_as<T3Parameterization>();
  T3Tree_Node* at = call == nullptr ? activation->teststep : call->apl;
  for (auto* actual : Items<T3ActualPar>(at)) status = std::max(status, AltStatus(actual->expression));
  return status;
}

int StatusOfNode(T3Tree_Node* node) {
  const int own = kOwnStatus[static_cast<size_t>(node->kind)];
  if (own != kAskWhatIsNamed) return own;
  if (auto* activation = node->try_as<T3Activate>()) return StatusOfActivation(activation);
  if (auto* call = node->try_as<T3Parameterization>()) return StatusOfOutParameters(call);
  if (auto* assignment = node->try_as<T3AssignStmt>()) return StatusOfTarget(assignment->lhs);
  return StatusOfName(node);
}

int StatusOfBody(T3Tree_Node* decl) {
  if (auto* definition = decl->try_as<T3TemplateDecl>()) return AltStatus(definition->definition);
  if (auto* function = decl->try_as<T3Function>()) {
    int status = kNone;
    for (auto* at : Items<_T3Stmt>(function->body)) {
      if (status >= kChangesSnapshot) break;
      status = std::max(status, AltStatus(at));
    }
    return status;
  }
  if (decl->is<T3TestStep>() || decl->is<T3Testcase>()) return kChangesSnapshot;
  auto* variable = decl->try_as<T3VarDecl>();
  if (variable == nullptr) return kNone;
  const bool in_component = decl->place != nullptr && T3Is<T3ComponentType>(decl->place->vexa_owner);
  return in_component ? kHasSideEffects : AltStatus(variable->value);
}

int StatusOfDefinition(T3Tree_Node* value) {
  return T3Is<T3TemplateDef>(value) || T3Is<_T3Expression>(value) ? AltStatus(value) : kNone;
}

void Take(T3Cleanness& all, const T3Cleanness& one) {
  all.guards = all.guards && one.guards;
  all.templates = all.templates && one.templates;
}

bool IsCleanOperation(T3Tree_Node* operation) {
  if (auto* check = operation->try_as<T3CheckRedirect>())
    return AltStatus(check->port) == kNone && StatusOfDefinition(check->from) == kNone;
  auto* receive = operation->try_as<_T3ReceivingPortStmt>();
  if (receive == nullptr) return true;
  auto* reply = operation->try_as<T3GetReplyStmt>();
  return AltStatus(receive->port) == kNone && StatusOfDefinition(receive->template_value) == kNone &&
         StatusOfDefinition(receive->sender) == kNone &&
         (reply == nullptr || StatusOfDefinition(reply->return_template) == kNone);
}

// By the numbers of altsteps; one that is being looked through counts as clean.
NumberMap<T3Cleanness>& g_altsteps = *new NumberMap<T3Cleanness>;

T3Cleanness CleannessOfAltstep(T3Tree_Node* reference) {
  if (auto* call = reference->try_as<T3Parameterization>()) reference = call->base;
  T3Tree_Node* def = DefQuietly(reference);
  auto* altstep = T3Is<T3TestStep>(def) ? def->as<T3TestStep>() : nullptr;
  auto* body = altstep == nullptr ? nullptr : altstep->body->try_as<T3AltStmt>();
  if (body == nullptr) return {};
  if (g_depth >= kMaxDepth) return {false, false};
  const auto [known, made] = g_altsteps.TryEmplace(def->number);
  if (!made) return *known;
  ++g_depth;
  const T3Cleanness result = CleannessOf(body->alts);
  --g_depth;
  return g_altsteps[def->number] = result;
}
}  // namespace

int AltStatus(T3Tree_Node* root) {
  if (root == nullptr) return kNone;
  int status = kNone;
  ForEachInSubtree(root, [&status](T3Tree_Node* node) {
    if (status == kChangesSnapshot || node->is<T3LogStmt>()) return false;
    status = std::max(status, StatusOfNode(node));
    return status < kChangesSnapshot && !node->is<T3Activate>();
  });
  return status;
}

// The attribute holds the status and 1, so that 0 is not known; a declaration that is being looked through
// counts as a cycle.
int AltStatusOfDecl(T3Tree_Node* decl) {
  uint8_t& known = decl->as<_T3Decl>()->attr().alt_status;
  if (known != 0) return known - 1;
  if (g_depth >= kMaxDepth) return kHasSideEffects;
  known = kCycle + 1;
  ++g_depth;
  const int status = StatusOfBody(decl);
  --g_depth;
  known = static_cast<uint8_t>(status + 1);
  return status;
}

namespace {
const ModuleCache kCache{[] { g_altsteps.clear(); }};
}  // namespace

T3Cleanness CleannessOf(T3Tree_Node* alternatives) {
  T3Cleanness all;
  for (auto* at : Items<_T3Alt>(alternatives)) {
    all.guards = all.guards && AltStatus(at->guard) == kNone;
    if (auto* guarded = at->try_as<T3GuardedAlt>())
      all.templates = all.templates && IsCleanOperation(guarded->operation);
    else
      Take(all, CleannessOfAltstep(at->as<T3TestStepRefAlt>()->test_step));
  }
  return all;
}
