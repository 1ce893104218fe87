// The literals of the module being generated: each value is made once and shared.
#pragma once

#include <string_view>

#include "frontend/T3Tree.h"

enum t3_literal_kind_t {
  literal_integer = 0,
  literal_boolean = 1,
  literal_verdict = 2,
  /// A literal that is made anew wherever it stands.
  literal_not_cachable = 3,
};

/// The kind of a literal expression.
t3_literal_kind_t LiteralKind(T3Tree_Node* literal);

/// At the start of each module.
void ResetLiteralTable();
/// The C expression of the value that was made for an equal literal of the same type, or for this one if its
/// kind is not cachable: a statement that is generated twice means one value. Empty for none.
std::string_view FindLiteral(T3Tree_Node* literal);
/// Enters or overwrites.
void AddLiteral(T3Tree_Node* literal, std::string_view text);
