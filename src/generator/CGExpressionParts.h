// What the units of the expression generator share.
#pragma once

#include <string>
#include <vector>

#include "generator/CGExpression.h"

namespace cg {
using Mode = vexa_allocation_mode_t;

/// The text of a call.
std::string Call(const std::string& function, const std::vector<std::string>& arguments);
/// The locations of an operand, which is evaluated.
std::string InC(T3Tree_Node* node, CFunction& function);
std::string InRTS(T3Tree_Node* node, Mode allocation, CFunction& function);
/// Reserves a run-time value for a node, and returns its location.
std::string AllocateRTSValue(T3Tree_Node* node, Mode allocation, CFunction& function);
/// Sets where the result of a node is, to the end of the statement.
void StoreCLocation(T3Tree_Node* node, const std::string& text);
void StoreRTSLocation(T3Tree_Node* node, const std::string& text);
/// A temporary of the statement.
std::string Temporary(const std::string& type, CFunction& function);
/// The node's type behind names and subtypes.
T3Tree_Node* TypeOf(T3Tree_Node* expression);
std::string CastToUnsignedLong(const std::string& text);
std::string CastToLongLong(const std::string& text);
/// Stands while statements are written that run only on a condition: what the module is initialized with must
/// not be made there.
class Conditional {
 public:
  Conditional();
  Conditional(const Conditional&) = delete;
  Conditional& operator=(const Conditional&) = delete;
  ~Conditional();
};
[[noreturn]] void NotSupported(T3Tree_Node* node);

/// True for a literal with characters beyond ASCII.
bool IsWideLiteral(T3Tree_Node* node);

// Each returns false for a node of another group.
bool Operator(T3Tree_Node* node, Mode allocation, CFunction& function);
bool Literal(T3Tree_Node* node, Mode allocation, CFunction& function);
bool Reference(T3Tree_Node* node, Mode allocation, CFunction& function);
bool PreDefinedFunction(T3Tree_Node* node, Mode allocation, CFunction& function);

void CompoundValue(T3CompoundValue* node, Mode allocation, CFunction& function);

/// The call that sets a run-time value of the node's type to its C location.
void SetFromC(T3Tree_Node* node, const std::string& target, CFunction& function);
}  // namespace cg
