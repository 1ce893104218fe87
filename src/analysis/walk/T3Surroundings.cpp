#include "analysis/walk/T3Surroundings.h"

#include <vector>

#include "analysis/flow/T3ValueClasses.h"

namespace {
// The innermost last.
std::vector<T3TemplateDef*>& g_around = *new std::vector<T3TemplateDef*>;
bool g_takes_template = false;

bool TakesTemplate(T3Tree_Node* expression, T3Tree_Node* parent) {
  if (auto* variable = parent->try_as<T3VarDecl>()) return variable->is_template_variable;
  if (auto* statement = parent->try_as<T3AssignStmt>())
    return expression == statement->rhs && IsTemplateReference(statement->lhs);
  if (parent->is<T3RetStmt>())
    return parent->place != nullptr && IsFunctionReturningTemplate(parent->place->vexa_owner);
  return parent->is<T3FormalTemplatePar>();
}
}  // namespace

void EnterTemplate(T3Tree_Node* definition) {
  g_around.push_back(definition->as<T3TemplateDef>());
}

void LeaveTemplate(T3Tree_Node*) {
  g_around.pop_back();
}

T3TemplateDef* InnermostTemplate() {
  return g_around.empty() ? nullptr : g_around.back();
}

void EnterOutermostExpression(T3Tree_Node* expression, T3Tree_Node* parent) {
  // What a length is bound by belongs to the constraint before it.
  if (parent->is<_T3Bound>() && T3Is<_T3Expression>(parent->parent)) return;
  g_takes_template = TakesTemplate(expression, parent);
}

bool MayBeTemplateHere() {
  return g_takes_template || !g_around.empty();
}
