#include "analysis/T3ValueClasses.h"

#include "analysis/T3Types.h"

bool IsLvalue(T3Tree_Node* expression) {
  while (expression->is<T3Subscription>() || expression->is<T3Qualifier>()) {
    T3Tree_Node* base = expression->as<_T3Qualification>()->base;
    // A module behind an `anytype` is no name by itself.
    if (expression->is<T3Qualifier>() && base->is<T3Identifier>() && T3Is<T3Module>(Def(base))) break;
    expression = base;
  }
  if (!expression->is<T3Identifier>() && !expression->is<T3Qualifier>()) return false;
  T3Tree_Node* def = BehindImport(Def(expression));
  return T3Is<_T3FormalPar>(def) || T3Is<T3VarDecl>(def);
}
