// What the units of the inference share. Each form of expression has its unit: it is handed the candidates of
// its context, strikes out those that its own type excludes, infers its children, and finishes with what is
// left. No unit keeps state; the count of failures and the silence of trials belong to T3Inference.cpp.
#pragma once

#include <span>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"

namespace t3infer {
/// While one lives, failures are counted but not reported.
class Silence {
 public:
  Silence();
  ~Silence();
  Silence(const Silence&) = delete;
  Silence& operator=(const Silence&) = delete;
  /// True when a node has failed since the silence began.
  bool HasFailures() const;

 private:
  long failures_before_;
};

/// Counts a failure; true when its message is to be given.
bool CountFailure();

// ---- Dispatch ----

/// Infers an expression: the candidates are left as its form has narrowed them. A failure is reported unless
/// `report` is false.
T3Inference Infer(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report);
/// An expression, or a template definition where one may stand in its place.
T3Inference InferAny(T3Tree_Node* node, T3Candidates& candidates, T3TemplateUse use = T3TemplateUse::Other);
/// Infers a part; true when it has no type.
bool Fails(T3Tree_Node* node, T3Candidates candidates);

using InferForm = T3Inference (*)(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report);
using InferTemplateForm = T3Inference (*)(T3TemplateDef* definition, T3Candidates& candidates, bool strict,
                                          T3TemplateUse use);
/// What Infer calls, by kind of the node, and what it calls for template definitions and for the values of a
/// compound. The table is the caller's, and stays.
void SetForms(std::span<const InferForm> forms, InferTemplateForm definition,
              void (*field_values)(T3Tree_Node* values, T3Tree_Node* base));

// ---- Results ----

T3Candidates Anything();
void SetResult(T3Tree_Node* expression, T3Tree_Node* local);
T3Tree_Node* LocalOf(T3Tree_Node* node);
T3Tree_Node* BaseOf(T3Tree_Node* node);
T3Inference Report(T3Tree_Node* node, size_t valid, T3TemplateUse use = T3TemplateUse::Other);
/// A context whose own fault is known makes what stands in it silent.
bool IsSilent(const T3Candidates& candidates);
/// What is left decides; a failure is the node's own unless a child failed before.
T3Inference Finish(T3Tree_Node* node, const T3Candidates& candidates, bool child_failed, bool report);
/// The same after the one own type, or the several ones, excluded candidates.
T3Inference FinishOne(T3Tree_Node* node, T3Candidates& candidates, T3Tree_Node* own, bool child_failed,
                      bool strict, bool report);
T3Inference FinishTypes(T3Tree_Node* node, T3Candidates& candidates, std::span<T3Tree_Node* const> own,
                        bool child_failed, bool report);
T3Inference FinishSet(T3Tree_Node* node, T3Candidates& candidates, const T3OwnTypes& own, bool child_failed,
                      bool report);
/// The own type is that of a part; nothing is known when the part failed.
T3Inference FinishAsPart(T3Tree_Node* node, T3Candidates& candidates, T3Tree_Node* part, bool strict,
                         bool report);
/// What an operand may be: the candidates of the whole without their subtypes, which bind the result only.
T3Candidates OperandCandidates(const T3Candidates& candidates);
/// What the elements of an array, `record of` or `set of` may be; timers are set by their durations.
T3Candidates ElementCandidates(T3Tree_Node* type);
T3OwnTypes CharacterTypes();
T3OwnTypes AllCharacterTypes();

// ---- Forms ----

T3Inference InferBinary(_T3BinaryExpression* outermost, T3Candidates& candidates, bool strict, bool report);
T3Inference InferUnary(_T3UnaryExpression* node, T3Candidates& candidates, bool strict, bool report);
T3Inference InferShift(_T3ShiftOrRotateExpression* node, T3Candidates& candidates, bool strict, bool report);
/// An undecided left operand takes the type of the right one, where that is one of its own.
void DecideLeft(T3Tree_Node* left, T3Tree_Node* right);
/// True for a literal that several enumerations share, `type` among them.
bool SharesLiteral(T3Tree_Node* expression, T3Tree_Node* type);
T3Inference InferReference(_T3Reference* reference, T3Candidates& candidates, bool strict, bool report);
T3Inference InferCompound(T3CompoundValue* compound, T3Candidates& candidates, bool report);
void InferFieldValues(T3Tree_Node* values, T3Tree_Node* base);
T3Inference InferLengthRange(T3LengthRange* node, T3Candidates& candidates, bool report);
T3Inference InferExtra(ExtraMatchingExpressions* node, T3Candidates& candidates, bool strict, bool report);
T3Inference InferMatching(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report);
T3Inference InferLiteral(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report);
T3Inference InferPredefined(_T3PreDefinedFunction* node, T3Candidates& candidates, bool strict, bool report);
T3Inference InferTemplateFunction(_T3PreDefinedTemplateFunction* node, T3Candidates& candidates, bool strict,
                                  bool report);
T3Inference InferRegexp(T3Regexp* node, T3Candidates& candidates, bool strict, bool report);
T3Inference InferMatch(T3Match* node, T3Candidates& candidates, bool strict, bool report);
T3Inference InferValueOf(T3ValueOf* node, T3Candidates& candidates, bool strict);
T3Inference InferOperation(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report);
void InferRecipients(T3Tree_Node* node);
T3Inference InferDefinition(T3TemplateDef* definition, T3Candidates& candidates, bool strict,
                            T3TemplateUse use);
}  // namespace t3infer
