// Constant values and constness.
#pragma once

#include <optional>
#include <string>

#include "frontend/T3Tree.h"

// Accessors compute at the first read; empty where the expression has no such constant value.
std::optional<int64_t> ConstIntValue(T3Tree_Node* expression_or_decl);
std::optional<double> ConstFloatValue(T3Tree_Node* expression_or_decl);
/// The text of a character literal without the quotes around it; of a quadruple its UTF-8. Malformed text has
/// none.
std::optional<std::string> ConstCharValue(T3Tree_Node* expression_or_decl);
/// The UTF-8 form of a character's code.
std::string Utf8Of(uint64_t code);
/// The literal that an expression or declaration holds as its constant characters, or null.
T3Tree_Node* ConstCharLiteral(T3Tree_Node* expression_or_decl);
bool IsConstant(T3Tree_Node* expression);
bool IsLiteral(T3Tree_Node* expression);
