#include "analysis/flow/T3ValueClasses.h"

#include <vector>

#include "analysis/names/T3Names.h"
#include "analysis/types/T3Types.h"

namespace {
// The name at the root of fields and elements. A module behind an `anytype` is no name by itself.
T3Tree_Node* RootOf(T3Tree_Node* expression) {
  while (expression->is<T3Subscription>() || expression->is<T3Qualifier>()) {
    T3Tree_Node* base = expression->as<_T3Qualification>()->base;
    if (expression->is<T3Qualifier>() && base->is<T3Identifier>() && T3Is<T3Module>(Def(base))) break;
    expression = base;
  }
  return expression;
}

bool IsName(T3Tree_Node* expression) {
  return expression->is<T3Identifier>() || expression->is<T3Qualifier>();
}

enum class Class { Value, Template, HoldsTemplate, Other };

Class ClassOfDecl(T3Tree_Node* def) {
  if (T3Is<T3TemplateDecl>(def)) return Class::Template;
  if (T3Is<T3FormalTemplatePar>(def)) return Class::HoldsTemplate;
  if (T3Is<T3VarDecl>(def))
    return def->as<T3VarDecl>()->is_template_variable ? Class::HoldsTemplate : Class::Value;
  return T3Is<_T3FunctionDecl>(def) || T3Is<T3TypeDecl>(def) ? Class::Other : Class::Value;
}

Class ClassOfCall(T3Tree_Node* def) {
  if (T3Is<T3TemplateDecl>(def)) return Class::Template;
  return IsFunctionReturningTemplate(def) ? Class::HoldsTemplate : Class::Value;
}

// The class of one expression; compound values are looked through by the caller.
Class ClassOf(T3Tree_Node* expression) {
  if (expression->is<_T3MatchingExpression>()) return Class::Template;
  expression = RootOf(expression);
  if (auto* call = expression->try_as<T3Parameterization>()) return ClassOfCall(BehindImport(Def(call)));
  return IsName(expression) ? ClassOfDecl(BehindImport(Def(expression))) : Class::Value;
}

template <class Test>
bool EachPart(T3Tree_Node* expression, Test passes) {
  std::vector<T3Tree_Node*> open{expression};
  while (!open.empty()) {
    T3Tree_Node* at = open.back();
    open.pop_back();
    if (auto* compound = at->try_as<T3CompoundValue>()) {
      for (T3Tree_Node* value = compound->value; value->is<T3FieldValue>();
           value = value->as<T3FieldValue>()->next) {
        const bool permuted = value->as<T3FieldValue>()->permutation_kind != t3_permutation_kind_t::No;
        if (permuted && !passes(Class::Template)) return false;
        open.push_back(value->as<T3FieldValue>()->value);
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

bool IsFunctionReturningTemplate(T3Tree_Node* decl) {
  return T3Is<T3Function>(decl) && decl->as<T3Function>()->returns_template;
}
