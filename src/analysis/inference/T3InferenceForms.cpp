// Which unit infers which kind of expression.
#include "analysis/inference/T3InferenceForms.h"

#include <array>

#include "analysis/inference/T3InferenceParts.h"

namespace {
using namespace t3infer;

// A unit's function for the nodes of a class, as it stands in the table.
template <class Node, auto kInfer>
T3Inference As(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  return kInfer(node->as<Node>(), candidates, strict, report);
}

T3Inference InferRecipientsAndPorts(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  InferRecipients(node);
  return InferOperation(node, candidates, strict, report);
}

T3Inference InferNothing(T3Tree_Node* node, T3Candidates&, bool, bool) {
  SetResult(node, gT3NoType);
  return T3Inference::Good;
}

T3Inference InferCompoundForm(T3Tree_Node* node, T3Candidates& candidates, bool, bool report) {
  return InferCompound(node->as<T3CompoundValue>(), candidates, report);
}

T3Inference InferLengthForm(T3Tree_Node* node, T3Candidates& candidates, bool, bool report) {
  return InferLengthRange(node->as<T3LengthRange>(), candidates, report);
}

T3Inference InferValueOfForm(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool) {
  return InferValueOf(node->as<T3ValueOf>(), candidates, strict);
}

// Which kinds have a form stands beside them: with sanitizers, no pointer is compared before the program
// runs.
struct Forms {
  std::array<InferForm, kT3KindCount> infer{};
  std::array<bool, kT3KindCount> known{};
};

template <class Node>
constexpr void Set(Forms& forms, InferForm form) {
  for (size_t kind = Node::kFirst; kind <= Node::kLast; ++kind) {
    forms.infer[kind] = form;
    forms.known[kind] = true;
  }
}

// A class before the classes and kinds in it.
constexpr Forms MakeForms() {
  Forms forms{};
  Set<_T3Reference>(forms, InferOperation);
  Set<T3Identifier>(forms, As<_T3Reference, InferReference>);
  Set<_T3Qualification>(forms, As<_T3Reference, InferReference>);
  Set<_T3PreDefinedFunction>(forms, As<_T3PreDefinedFunction, InferPredefined>);
  Set<_T3PreDefinedTemplateFunction>(forms, As<_T3PreDefinedTemplateFunction, InferTemplateFunction>);
  Set<_T3AddressReference>(forms, InferRecipientsAndPorts);
  Set<_T3PortReference>(forms, InferRecipientsAndPorts);
  Set<_T3LiteralExpression>(forms, InferLiteral);
  Set<_T3BinaryExpression>(forms, As<_T3BinaryExpression, InferBinary>);
  Set<_T3UnaryExpression>(forms, As<_T3UnaryExpression, InferUnary>);
  Set<_T3ShiftOrRotateExpression>(forms, As<_T3ShiftOrRotateExpression, InferShift>);
  Set<_T3MatchingExpression>(forms, InferMatching);
  Set<ExtraMatchingExpressions>(forms, As<ExtraMatchingExpressions, InferExtra>);
  Set<T3NoExpression>(forms, InferNothing);
  Set<T3CompoundValue>(forms, InferCompoundForm);
  Set<T3Match>(forms, As<T3Match, InferMatch>);
  Set<T3ValueOf>(forms, InferValueOfForm);
  Set<T3LengthRange>(forms, InferLengthForm);
  return forms;
}

constexpr Forms kForms = MakeForms();

// Classes that no node is of are numbers too: only a form for each kind of node is asked for.
constexpr size_t MissingForm() {
  for (size_t kind = _T3Expression::kFirst; kind <= _T3Expression::kLast; ++kind)
    if (!kForms.known[kind] && !kT3IsClass[kind]) return kind;
  return 0;
}
static_assert(MissingForm() == 0, "a kind of expression that no unit infers");
}  // namespace

void InstallInferenceForms() {
  SetForms(kForms.infer, InferDefinition, InferFieldValues);
}
