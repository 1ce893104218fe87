// Expressions: the C statements that evaluate a tree, and where its result is. A result has two forms, an
// expression of C (numbers, truth values, texts) and a run-time value; each kind of node is natural in one,
// and is converted where the other is wanted.
#pragma once

#include <string>

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"
#include "generator/expressions/CGModes.h"
#include "generator/text/CLocations.h"

/// The form that is wanted of a result: `CLocation` or `RTSLocation` of the node.
enum vexa_expression_mode_t { vexa_c_mode, vexa_rts_mode };

/// Evaluates an expression; a node that already has the location that is wanted is not evaluated again.
/// Throws internal_exception for what no value can be made of.
void CGExpression(T3Tree_Node* node, vexa_expression_mode_t form, CGMode mode, CFunction& function);

/// Assigns an expression to the run-time value that `target` means. `log_modification`: the tools are told.
/// `mode`: that of a template where the target is one.
void CGAssign(std::string_view target, T3Tree_Node* rhs, bool log_modification, CFunction& function,
              CGMode mode = vexa_temp_alloc);

/// The form in which the value of an expression is natural.
vexa_expression_mode_t NaturalMode(T3Tree_Node* node);

/// Frees the temporaries and locations that a statement's expression has taken, when nothing reads them any
/// more. Scopes nest.
class CGStatementScope {
 public:
  explicit CGStatementScope(CFunction& function);
  /// Around a whole behaviour, whose variables nobody needs back.
  CGStatementScope();
  CGStatementScope(const CGStatementScope&) = delete;
  CGStatementScope& operator=(const CGStatementScope&) = delete;
  ~CGStatementScope();

 private:
  CFunction* function_ = nullptr;
  size_t outer_temporaries_;
  CLocationScope locations_;
};
