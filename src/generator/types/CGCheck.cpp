#include "generator/types/CGCheck.h"

#include "generator/templates/CGConstraint.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/templates/CGTemplate.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

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
  CheckParentType(decl, subtype->parent, function);
  const std::string result = function.declare(C_BOOL, "", C_TRUE);
  const std::string name = gIdents.GetCStr(decl->as<_T3Decl>()->name);
  const CGTest test{vexa_template_plain, VEXA_VALUE, result, break_return, false, name};
  GenConstraint(subtype->constraint, RootType(subtype->parent), test, function);
  function._return(result);
}

// Writes a function of a subtype.
template <class Body>
void SubTypeFunction(const char* result, const std::string& name, const std::vector<std::string>& parameters,
                     const Body& body) {
  const CGStatementScope scope;
  auto function = gT3Context.file().beginFunction(result, name, parameters, "", false);
  body(*function);
  function->end();
}
}  // namespace

void CGCheck(T3Tree_Node* decl) {
  auto* subtype = decl->as<T3TypeDecl>()->type->as<T3SubType>();
  static const auto& parameters =
      *new std::vector<std::string>{FormalPar(LUMO_TYPE_T, VEXA_TYPE), FormalPar(LUMO_VALUE_T, VEXA_VALUE),
                                    FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT)};
  SubTypeFunction(C_BOOL, VEXACheckName(decl), parameters,
                  [&](CFunction& function) { CheckBody(decl, subtype, function); });
}

void CGConstraintOf(T3Tree_Node* decl) {
  auto* subtype = decl->as<T3TypeDecl>()->type->as<T3SubType>();
  static const auto& parameters = *new std::vector<std::string>{
      FormalPar(LUMO_TYPE_T, VEXA_TYPE), FormalPar(LUMO_VALUE_T, std::string(VEXA_ARGV) + "[]"),
      FormalPar(LUMO_ALLOC_STRATEGY_T, VEXA_ALLOC_STRATEGY), FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT)};
  SubTypeFunction(LUMO_VALUE_T, VEXAConstraintOfName(decl), parameters,
                  [&](CFunction& function) { GenConstraintOf(subtype->constraint, decl, function); });
}
