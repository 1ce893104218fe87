// What expressions read and change: a target is filled in place where the right side does not read it, and
// an operand is kept as it was where what is evaluated behind it changes what it reads.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"
#include "generator/expressions/CGExpression.h"

namespace cg {
/// The name at the bottom of a reference to a part.
T3Tree_Node* RootOfReference(T3Tree_Node* reference);
/// True where the value of the expression may depend on the variable that `target` is, or is a part of: it
/// names it, what may be the same variable by another name, or calls what may use it.
bool Reads(T3Tree_Node* expression, T3Tree_Node* target);
/// True where evaluating the expression may change a variable, or anything else that expressions ask for.
bool HasEffects(T3Tree_Node* expression);

/// The operands of one construct in the order of their evaluation. A location says where a value will be
/// found; an operand behind it may change what is there.
class Operands {
 public:
  explicit Operands(std::vector<T3Tree_Node*> operands);
  const std::vector<T3Tree_Node*>& All() const { return operands_; }
  /// True where evaluating what stands behind operand `at` may change what its location reads. `is_stored`:
  /// the location is put somewhere before that, so that only what it leads to can change.
  bool MayChange(size_t at, bool is_stored, const CFunction& function) const;
  /// True where a fault that evaluating this location of operand `at` ends with would come behind what an
  /// operand behind it does, and a report tells.
  bool MayFaultLate(size_t at, std::string_view location) const;

 private:
  bool IsWrittenBehind(size_t at, T3Tree_Node* node) const;

  std::vector<T3Tree_Node*> operands_;
  // The variables that operands behind the first write, null for anything of the component, each with the
  // last that does.
  std::map<T3Tree_Node*, size_t> written_;
  size_t last_told_ = 0;
};
}  // namespace cg
