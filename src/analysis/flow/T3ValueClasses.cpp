#include "analysis/flow/T3ValueClasses.h"

#include <vector>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3References.h"
#include "analysis/types/T3Types.h"

namespace {
// The name at the root of fields and elements.
T3Tree_Node* RootOf(T3Tree_Node* expression) {
  while (!IsName(expression) && (expression->is<T3Subscription>() || expression->is<T3Qualifier>()))
    expression = expression->as<_T3Qualification>()->base;
  return expression;
}

enum class Class { Value, Template, HoldsTemplate, Other };

Class ClassOfDecl(T3Tree_Node* def) {
  if (T3Is<T3TemplateDecl>(def)) return Class::Template;
  if (T3Is<T3FormalTemplatePar>(def)) return Class::HoldsTemplate;
  if (T3Is<T3VarDecl>(def))
    return def->as<T3VarDecl>()->is_template_variable ? Class::HoldsTemplate : Class::Value;
  // The type NULL of ASN.1 is known by its only value.
  if (T3Is<T3TypeDecl>(def)) return IsAsnNullType(def) ? Class::Value : Class::Other;
  return T3Is<_T3FunctionDecl>(def) ? Class::Other : Class::Value;
}

// A call is a value where something is called that has a result.
Class ClassOfCall(T3Tree_Node* def) {
  if (T3Is<T3NoDecl>(def) || T3Is<T3ErrorType>(def)) return Class::Value;
  if (T3Is<T3TemplateDecl>(def)) return Class::Template;
  if (IsFunctionReturningTemplate(def)) return Class::HoldsTemplate;
  return HasResult(def) ? Class::Value : Class::Other;
}

// The class of one expression; compound values are looked through by the caller.
Class ClassOf(T3Tree_Node* expression) {
  if (expression->is<_T3MatchingExpression>() || expression->is<ExtraMatchingExpressions>())
    return Class::Template;
  expression = RootOf(expression);
  if (auto* call = expression->try_as<T3Parameterization>()) return ClassOfCall(BehindImport(Def(call)));
  return IsName(expression) ? ClassOfDecl(BehindImport(Def(expression))) : Class::Value;
}

template <class Test>
bool EachPart(T3Tree_Node* expression, Test passes) {
  if (!expression->is<T3CompoundValue>()) return passes(ClassOf(expression));
  std::vector<T3Tree_Node*> open{expression};
  while (!open.empty()) {
    T3Tree_Node* at = open.back();
    open.pop_back();
    if (auto* compound = at->try_as<T3CompoundValue>()) {
      for (auto* value : Items<T3FieldValue>(compound->value)) {
        const bool permuted = value->permutation_kind != t3_permutation_kind_t::No;
        if (permuted && !passes(Class::Template)) return false;
        open.push_back(value->value);
      }
    } else if (!passes(ClassOf(at))) {
      return false;
    }
  }
  return true;
}
}  // namespace

bool IsLvalue(T3Tree_Node* expression) {
  expression = RootOf(expression);
  if (!IsName(expression)) return false;
  T3Tree_Node* def = BehindImport(Def(expression));
  return T3Is<_T3FormalPar>(def) || T3Is<T3VarDecl>(def);
}

bool IsRvalue(T3Tree_Node* expression) {
  return EachPart(expression, [](Class found) { return found == Class::Value; });
}

bool IsRvalueRelaxed(T3Tree_Node* expression) {
  return EachPart(expression,
                  [](Class found) { return found == Class::Value || found == Class::HoldsTemplate; });
}

bool IsTemplateReference(T3Tree_Node* expression) {
  if (!expression->is<_T3Reference>()) return false;
  const Class found = ClassOf(expression);
  return found == Class::Template || found == Class::HoldsTemplate;
}

bool HasBeenRefused(T3Tree_Node* operand) {
  if (!T3Is<_T3Expression>(operand) || ExpressionBaseType(operand)->is<T3ErrorType>()) return true;
  return operand->is<_T3Reference>() && !IsRvalue(operand) && !IsTemplateReference(operand);
}

bool HasResult(T3Tree_Node* decl) {
  if (auto* function = T3Is<T3Function>(decl) ? decl->as<T3Function>() : nullptr)
    return !T3Is<T3NoType>(function->return_type);
  return T3Is<T3ExtFunction>(decl) && !T3Is<T3NoType>(decl->as<T3ExtFunction>()->return_type);
}

bool IsFunctionReturningTemplate(T3Tree_Node* decl) {
  return T3Is<T3Function>(decl) && decl->as<T3Function>()->returns_template;
}
