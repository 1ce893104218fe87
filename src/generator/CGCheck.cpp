#include "generator/CGCheck.h"

#include "generator/CGConstraint.h"
#include "generator/CGExpressionParts.h"
#include "generator/CGTypeAccess.h"
#include "generator/CLocations.h"
#include "generator/T3CodeDefs.h"
#include "generator/T3Context.h"

namespace {
// A value of the subtype is one of its parent first. A parent without a name is known by the subtype only.
void CheckParentType(T3Tree_Node* decl, T3Tree_Node* parent, CFunction& function) {
  const bool is_named =
      (parent->is<T3TypeReference>() || parent->is<T3SubType>()) && TypeDeclaration(parent) != decl;
  const std::string check = is_named
                                ? cg::Call(LUMO_TYPE_CHECK, {VEXATypeRef(parent), VEXA_VALUE, VEXA_CONTEXT})
                                : cg::Call(LUMO_TYPE_CHECK_BUILTIN, {VEXA_TYPE, VEXA_VALUE, VEXA_CONTEXT});
  function.beginIf("!(" + check + ")");
  function._return(C_FALSE);
  function.endIf();
}

void CheckBody(T3Tree_Node* decl, T3SubType* subtype, CFunction& function) {
  const cg::ValueMode mode;
  CheckParentType(decl, subtype->parent, function);
  const std::string result = function.declare(C_BOOL, "", C_TRUE);
  const CGTest test{vexa_template_plain, VEXA_VALUE, result, break_return, true, ""};
  GenConstraint(subtype->constraint, RootType(subtype->parent), test, function);
  function._return(result);
}
}  // namespace

bool CGCheck(T3Tree_Node* decl) {
  auto* subtype = decl->as<T3TypeDecl>()->type->as<T3SubType>();
  try {
    const CGStatementScope scope;
    auto function = gT3Context.file().beginFunction(
        C_BOOL, VEXACheckName(decl),
        {FormalPar(LUMO_TYPE_T, VEXA_TYPE), FormalPar(LUMO_VALUE_T, VEXA_VALUE),
         FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT)},
        "", false);
    CheckBody(decl, subtype, *function);
    function->end();
    return true;
  } catch (const cg::not_supported&) {
    return false;
  }
}

bool CGConstraintOf(T3Tree_Node*) {
  return false;
}

void ResetSubTypeConstraintLocations(T3Tree_Node* decl) {
  gT3AST.TraverseT3TreeTD(decl->as<T3TypeDecl>()->type->as<T3SubType>()->constraint, [](T3Tree_Node* node) {
    if (node->is<_T3Expression>()) ResetLocation(node);
  });
}
