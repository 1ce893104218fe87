// Inference of expressions. A context hands candidates down; each form strikes out those that its own type
// excludes, infers its children, and takes what is left. Recursion follows nesting only. The inference of an
// expression may run again: a compound value tries each of several candidates without reporting before it
// settles on one.
#include <span>
#include <unordered_set>

#include "analysis/inference/T3InferenceParts.h"
#include "driver/diagnostics/T3Error.h"

namespace t3infer {
namespace {
int g_quiet = 0;
long g_failures = 0;

// How the forms are inferred, by kind, and the two that stand beside expressions.
std::span<const InferForm> g_forms;
InferTemplateForm g_definition = nullptr;
void (*g_field_values)(T3Tree_Node* values, T3Tree_Node* base) = nullptr;
}  // namespace

Silence::Silence() : failures_before_(g_failures) {
  ++g_quiet;
}
Silence::~Silence() {
  --g_quiet;
}
bool Silence::HasFailures() const {
  return g_failures != failures_before_;
}

bool CountFailure() {
  ++g_failures;
  return g_quiet == 0;
}

bool Fails(T3Tree_Node* node, T3Candidates candidates) {
  return InferAny(node, candidates) != T3Inference::Good;
}

T3Candidates Anything() {
  return {gT3WildcardType};
}

void SetResult(T3Tree_Node* expression, T3Tree_Node* local) {
  auto& attributes = expression->as<_T3Expression>()->attr();
  attributes.pass1 = true;
  attributes.pass2 = true;
  attributes.expression_local_type = local;
  attributes.expression_base_type = BaseTypeDef(local);
}

T3Inference Report(T3Tree_Node* node, size_t valid, T3TemplateUse use) {
  if (CountFailure()) ReportTypeError(node, valid, use);
  return T3Inference::Reported;
}

// A context whose own fault is known makes what stands in it silent.
bool IsSilent(const T3Candidates& candidates) {
  for (size_t i = 0; i < candidates.size(); ++i)
    if (candidates.valid(i) && candidates.base(i)->is<T3ErrorType>()) return true;
  return false;
}

// What is left decides; a failure is the node's own unless a child failed before.
T3Inference Finish(T3Tree_Node* node, const T3Candidates& candidates, bool child_failed, bool report) {
  T3Tree_Node* local = Check(candidates);
  SetResult(node, local);
  auto& attributes = node->as<_T3Expression>()->attr();
  attributes.report_type_error = false;
  if (!local->is<T3ErrorType>()) return T3Inference::Good;
  const bool silent = child_failed || IsSilent(candidates);
  attributes.report_type_error = report && !silent;
  if (silent) return T3Inference::Reported;
  return report ? Report(node, candidates.CountValid()) : T3Inference::Unreported;
}

T3Inference FinishOne(T3Tree_Node* node, T3Candidates& candidates, T3Tree_Node* own, bool child_failed,
                      bool strict, bool report) {
  Exclude(candidates, own, own, true, strict);
  return Finish(node, candidates, child_failed && Check(candidates)->is<T3ErrorType>(), report);
}

T3Inference FinishTypes(T3Tree_Node* node, T3Candidates& candidates, std::span<T3Tree_Node* const> own,
                        bool child_failed, bool report) {
  ExcludeTypeSet(candidates, own, own);
  return Finish(node, candidates, child_failed && Check(candidates)->is<T3ErrorType>(), report);
}

T3Inference FinishSet(T3Tree_Node* node, T3Candidates& candidates, const T3OwnTypes& own, bool child_failed,
                      bool report) {
  return FinishTypes(node, candidates, own, child_failed, report);
}

// The own type is that of a part; nothing is known when the part failed.
T3Inference FinishAsPart(T3Tree_Node* node, T3Candidates& candidates, T3Tree_Node* part, bool strict,
                         bool report) {
  if (part->is<T3ErrorType>()) {
    SetResult(node, gT3ErrorType);
    return T3Inference::Reported;
  }
  return FinishOne(node, candidates, part, false, strict, report);
}

T3Tree_Node* LocalOf(T3Tree_Node* node) {
  if (auto* definition = node->try_as<T3TemplateDef>()) return definition->attr().expression_local_type;
  return node->as<_T3Expression>()->attr().expression_local_type;
}

T3Tree_Node* BaseOf(T3Tree_Node* node) {
  if (auto* definition = node->try_as<T3TemplateDef>()) return definition->attr().expression_base_type;
  return node->as<_T3Expression>()->attr().expression_base_type;
}

// What an operand may be: the candidates of the whole without their subtypes, which bind the result only.
T3Candidates OperandCandidates(const T3Candidates& candidates) {
  T3Candidates result;
  std::unordered_set<T3Tree_Node*> known;
  for (size_t i = 0; i < candidates.size(); ++i) {
    if (!candidates.valid(i)) continue;
    T3Tree_Node* base = GetAddressBaseType(candidates.base(i));
    if (candidates.size() == 1 || known.insert(base).second) result.Add(base, base);
  }
  return result;
}

void SetForms(std::span<const InferForm> forms, InferTemplateForm definition,
              void (*field_values)(T3Tree_Node* values, T3Tree_Node* base)) {
  g_forms = forms;
  g_definition = definition;
  g_field_values = field_values;
}

T3Inference Infer(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  node->as<_T3Expression>()->attr().is_strict = strict;
  return g_forms[static_cast<size_t>(node->kind)](node, candidates, strict, report);
}

T3Inference InferAny(T3Tree_Node* node, T3Candidates& candidates, T3TemplateUse use) {
  if (auto* definition = node->try_as<T3TemplateDef>())
    return g_definition(definition, candidates, false, use);
  if (auto* statement = node->try_as<T3InvocationStmt>())
    return InferAny(statement->invocation, candidates, use);
  if (node->is<_T3Expression>()) return Infer(node, candidates, false, true);
  return T3Inference::Good;
}
}  // namespace t3infer

namespace {
using namespace t3infer;

// The results of a node that no context has reached: a reference stands for itself, anything else is
// inferred as if any type would do, without messages.
void EnsureInferred(T3Tree_Node* node) {
  T3Candidates candidates = Anything();
  const Silence silence;
  InferAny(node, candidates);
}

template <class Attributes, class Result>
T3Tree_Node* ResultOf(T3Tree_Node* node, Attributes attributes, Result result) {
  if (result(attributes()) == nullptr) EnsureInferred(node);
  T3Tree_Node* type = result(attributes());
  return type == nullptr ? gT3ErrorType : type;
}

template <class Result>
T3Tree_Node* TypeOf(T3Tree_Node* node, Result result) {
  if (node->is<_T3Expression>())
    return ResultOf(
        node, [&]() -> auto& { return static_cast<_T3Expression*>(node)->attr(); }, result);
  if (auto* definition = node->try_as<T3TemplateDef>())
    return ResultOf(
        node, [&]() -> auto& { return definition->attr(); }, result);
  if (auto* reference = node->try_as<T3TemplateReference>())
    return ResultOf(
        reference->reference, [&]() -> auto& { return reference->reference->as<_T3Expression>()->attr(); },
        result);
  return gT3NoType;
}
}  // namespace

T3Tree_Node* ExpressionLocalType(T3Tree_Node* expression) {
  return TypeOf(expression, [](auto& attributes) { return attributes.expression_local_type; });
}
T3Tree_Node* ExpressionAbsoluteType(T3Tree_Node* expression) {
  return TypeOf(expression, [](auto& attributes) { return attributes.expression_absolute_type; });
}
T3Tree_Node* ExpressionBaseType(T3Tree_Node* expression) {
  return TypeOf(expression, [](auto& attributes) { return attributes.expression_base_type; });
}

T3Inference InferExpression(T3Tree_Node* expression, T3Candidates candidates, bool strict, bool report) {
  if (!expression->is<_T3Expression>()) return InferAny(expression, candidates);
  return Infer(expression, candidates, strict, report);
}

void InferRedirectedParams(T3Tree_Node* values, T3Tree_Node* signature) {
  if (T3Is<T3SignatureType>(signature)) return g_field_values(values, signature);
  for (auto* item : Items<T3FieldValue>(values)) Fails(item->value, Anything());
}

T3Inference InferTemplate(T3Tree_Node* definition, T3Candidates candidates, bool strict, T3TemplateUse use) {
  if (auto* node = definition->try_as<T3TemplateDef>()) return g_definition(node, candidates, strict, use);
  return InferExpression(definition, candidates, strict);
}
