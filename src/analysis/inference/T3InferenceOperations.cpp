// Operations on test cases, components, ports, timers and defaults, and the recipients of messages.
#include "analysis/inference/T3InferenceParts.h"

namespace t3infer {
namespace {
T3Inference InferCreate(T3Create* node, T3Candidates& candidates, bool strict, bool report) {
  Fails(node->component, Anything());
  Fails(node->name, T3Candidates(CharacterTypes(), CharacterTypes()));
  T3Tree_Node* local = LocalOf(node->component);
  if (local->is<T3ErrorType>()) {
    SetResult(node, gT3ErrorType);
    return T3Inference::Reported;
  }
  Exclude(candidates, local, BaseOf(node->component), true, strict);
  return Finish(node, candidates, false, report);
}
}  // namespace

// Operations on timers, components, ports and test cases.
T3Inference InferOperation(T3Tree_Node* node, T3Candidates& candidates, bool strict, bool report) {
  switch (node->kind) {
    case T3Kind::T3Execute:
      Fails(node->as<T3Execute>()->testcase, Anything());
      Fails(node->as<T3Execute>()->timeout, {gT3FloatType});
      return FinishOne(node, candidates, gT3VerdictType, false, strict, report);
    case T3Kind::T3GetVerdict:
      return FinishOne(node, candidates, gT3VerdictType, false, strict, report);
    case T3Kind::T3Self:
    case T3Kind::T3MTC:
    case T3Kind::T3System:
    case T3Kind::T3AnyComponent:
    case T3Kind::T3AllComponent:
      return FinishOne(node, candidates, gT3AnyComponentType, false, strict, report);
    case T3Kind::T3AnyTimer:
    case T3Kind::T3AllTimer:
      return FinishOne(node, candidates, gT3TimerType, false, strict, report);
    case T3Kind::T3AnyPort:
    case T3Kind::T3AllPort:
      return FinishOne(node, candidates, gT3AnyPortType, false, strict, report);
    case T3Kind::T3Create:
      return InferCreate(node->as<T3Create>(), candidates, strict, report);
    case T3Kind::T3Running:
      Fails(node->as<T3Running>()->object, Anything());
      return FinishOne(node, candidates, gT3BooleanType, false, strict, report);
    case T3Kind::T3Alive:
      Fails(node->as<T3Alive>()->object, Anything());
      return FinishOne(node, candidates, gT3BooleanType, false, strict, report);
    case T3Kind::T3Read:
      return FinishOne(node, candidates, gT3FloatType, Fails(node->as<T3Read>()->timer, {gT3TimerType}),
                       strict, report);
    case T3Kind::T3Activate:
      Fails(node->as<T3Activate>()->teststep, Anything());
      return FinishOne(node, candidates, gT3DefaultType, false, strict, report);
    case T3Kind::T3Regexp:
      return InferRegexp(node->as<T3Regexp>(), candidates, strict, report);
    default:  // references to ports of a configuration, and recipients
      SetResult(node, gT3NoType);
      return T3Inference::Good;
  }
}

void InferRecipients(T3Tree_Node* node) {
  const T3Candidates address = T3Candidates::Types({gT3AddressType, gT3AnyComponentType});
  if (auto* single = node->try_as<T3RecipientSingle>()) Fails(single->recipient, address);
  if (auto* multi = node->try_as<T3RecipientMulti>())
    for (auto* at : Items<T3AddressListItem>(multi->recipients)) Fails(at->recipient, address);
  if (auto* element = node->try_as<T3PortArrayElement>())
    for (T3PortArrayElement* at = element; at != nullptr; at = at->base->try_as<T3PortArrayElement>())
      Fails(at->index, {gT3IntegerType});
}
}  // namespace t3infer
