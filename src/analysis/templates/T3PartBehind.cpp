#include "analysis/templates/T3PartBehind.h"

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/types/T3References.h"
#include "analysis/walk/T3RuleParts.h"
#include "analysis/types/T3Parts.h"
#include "analysis/types/T3Types.h"

namespace {
// References lead to references; what lies deeper is its own.
constexpr int kMaxDepthOfParts = 1000;
constexpr int kMaxSteps = 10000;

bool IsExpression(T3Tree_Node* node) {
  return T3Is<_T3Expression>(node) && !node->is<T3NoExpression>();
}

bool StandsForItself(T3Tree_Node* value) {
  return value->is<_T3MatchingExpression>() || value->is<ExtraMatchingExpressions>() || value->is<T3Omit>();
}

class PartSearch {
 public:
  explicit PartSearch(T3ConstraintGetter constraint_of) : constraint_of_(constraint_of) {}

  T3Tree_Node* Behind(T3Tree_Node* expression) {
    if (depth_ >= kMaxDepthOfParts) return expression;
    ++depth_;
    for (T3Tree_Node* next = expression; next != nullptr && steps_ < kMaxSteps; ++steps_) {
      expression = next;
      next = expression->is<_T3Reference>() ? Next(expression) : nullptr;
    }
    --depth_;
    return expression;
  }

 private:
  // What a reference leads to; null where it cannot be followed.
  T3Tree_Node* Next(T3Tree_Node* reference) {
    T3Tree_Node* found = nullptr;
    for (T3Tree_Node* at : T3ReferenceChain(reference)) {
      T3Tree_Node* entity = EntityBehind(at);
      found = entity != nullptr ? entity : found == nullptr ? nullptr : PartOf(Behind(found), at);
    }
    return found == reference ? nullptr : found;
  }

  // What a name or a call stands for by itself; null for others, and for what cannot be followed.
  T3Tree_Node* EntityBehind(T3Tree_Node* reference) {
    auto* call = reference->try_as<T3Parameterization>();
    T3TemplateDecl* decl = TemplateNamed(call == nullptr ? reference : call->base);
    if (decl != nullptr) return ConstraintWithActuals(decl, call);
    if (!reference->is<T3Identifier>()) return ConstantBehind(reference);
    const auto actual = actuals_.find(DefQuietly(reference));
    return actual == actuals_.end() ? ConstantBehind(reference) : actual->second;
  }

  // A constant, or a constant of another module.
  static T3Tree_Node* ConstantBehind(T3Tree_Node* reference) {
    if (!T3Is<T3ConstDecl>(DefQuietly(reference))) return nullptr;
    T3Tree_Node* value = ConstantValueOf(reference);
    return IsExpression(value) ? value : nullptr;
  }

  // Notes what is given for the parameters, or their defaults.
  T3Tree_Node* ConstraintWithActuals(T3TemplateDecl* decl, T3Parameterization* call) {
    for (const auto& [par, actual] : ActualsOf(decl, call)) actuals_[par] = actual;
    T3Tree_Node* constraint = constraint_of_(decl, call);
    return IsExpression(constraint) ? constraint : nullptr;
  }

  static T3Tree_Node* PartOf(T3Tree_Node* whole, T3Tree_Node* reference) {
    if (StandsForItself(whole)) return whole;
    auto* compound = whole->try_as<T3CompoundValue>();
    return compound == nullptr ? nullptr : SelectedPart(compound, reference);
  }

  T3ConstraintGetter constraint_of_;
  // What stands for the parameters of the templates on the way.
  std::unordered_map<T3Tree_Node*, T3Tree_Node*> actuals_;
  int depth_ = 0;
  int steps_ = 0;
};
}  // namespace

T3Tree_Node* WrittenConstraint(T3TemplateDecl* decl, T3Parameterization*) {
  return ConstraintOf(decl->definition);
}

std::unordered_map<T3Tree_Node*, T3Tree_Node*> ActualsOf(T3TemplateDecl* decl, T3Parameterization* call) {
  std::unordered_map<T3Tree_Node*, T3Tree_Node*> actuals;
  T3Tree_Node* at = call == nullptr ? nullptr : call->apl;
  for (auto* par : Items<_T3FormalPar>(decl->fpl)) {
    auto* given = T3Is<T3ActualPar>(at) ? at->as<T3ActualPar>() : nullptr;
    if (given != nullptr) at = given->next;
    const bool has_value = given != nullptr && !given->expression->is<T3NotUsedSymbol>();
    T3Tree_Node* value = has_value                   ? given->expression
                         : par->is<_T3TypedFormal>() ? par->as<_T3TypedFormal>()->default_value
                                                     : nullptr;
    if (value != nullptr) value = ConstraintOf(value);
    if (IsExpression(value)) actuals[par] = value;
  }
  return actuals;
}

T3Tree_Node* PartBehind(T3Tree_Node* expression, T3ConstraintGetter constraint_of) {
  return expression->is<_T3Reference>() ? PartSearch(constraint_of).Behind(expression) : expression;
}
