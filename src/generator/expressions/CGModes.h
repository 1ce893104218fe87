// How an expression that is being generated is meant, and what that depends on.
#pragma once

#include "frontend/T3Tree.h"

/// How long a new run-time value lives.
enum vexa_allocation_mode_t { vexa_temp_alloc, vexa_perm_alloc, vexa_strategy_alloc };

/// The argument of the run-time system's calls for it.
const char* AllocationMode(vexa_allocation_mode_t mode);

/// What a reference is wanted for: its value; the place that is written, so that what is missing on the way
/// is made; the same where it may not be written at all; whether something is there, so that what is missing
/// on the way is no fault.
enum class CGAccess { Read, Write, WriteLater, Probe };

/// How an expression is meant. A value that is handed on with the node, and changed for parts that mean
/// something else: an index is always a value that is read.
struct CGMode {
  // NOLINTNEXTLINE(google-explicit-constructor): a value that is read, which is the rule
  CGMode(vexa_allocation_mode_t lives) : allocation(lives) {}

  /// The same for a part, or an operand, of the statement.
  CGMode temporary() const;
  CGMode with(CGAccess wanted) const;
  bool writes() const { return access == CGAccess::Write || access == CGAccess::WriteLater; }

  vexa_allocation_mode_t allocation;
  /// References to templates mean the template, and not its value.
  bool is_template = false;
  CGAccess access = CGAccess::Read;
};
/// A temporary template.
CGMode CGTemplateMode();

namespace cg {
/// A declared template, or the import of one.
bool IsTemplateDecl(T3Tree_Node* decl);
/// True for a matching mechanism, a reference to a template, and a compound value with one of them in it.
bool HoldsTemplate(T3Tree_Node* node);
/// `infinity`, also with a minus.
bool IsInfinityExpression(T3Tree_Node* node);
}  // namespace cg
