#include "generator/CGCheck.h"

#include "generator/CLocations.h"

bool CGCheck(T3Tree_Node*) {
  return false;
}

bool CGConstraintOf(T3Tree_Node*) {
  return false;
}

void ResetSubTypeConstraintLocations(T3Tree_Node* decl) {
  gT3AST.TraverseT3TreeTD(decl->as<T3TypeDecl>()->type->as<T3SubType>()->constraint, [](T3Tree_Node* node) {
    if (node->is<_T3Expression>()) ResetLocation(node);
  });
}
