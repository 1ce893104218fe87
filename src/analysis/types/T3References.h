// References: what a name, qualification, subscription or call means, and the type that it has by itself,
// before a context chooses. Resolved once, from the innermost base outwards, without recursion.
#pragma once

#include <array>

#include "frontend/T3Tree.h"

/// Resolves a reference with all its bases: `def` and the three views of its own type. Names that mean
/// nothing are reported here, once.
void ResolveReference(T3Tree_Node* reference);
/// The declaration that an identifier or a qualified name means, imports followed, found without reports and
/// without trace: the walk may not have come by, and reports are due there. T3NoDecl where there is none.
T3Tree_Node* DefQuietly(T3Tree_Node* name);
/// The bases of a reference, the innermost first, and the reference itself as the last.
class T3ReferenceChain {
 public:
  explicit T3ReferenceChain(T3Tree_Node* reference);
  T3Tree_Node* const* begin() const { return IsShort() ? short_.data() : long_.data(); }
  T3Tree_Node* const* end() const { return begin() + count_; }

 private:
  static constexpr size_t kShort = 8;
  bool IsShort() const { return count_ <= kShort; }
  size_t count_ = 0;
  std::array<T3Tree_Node*, kShort> short_;
  T3NodeList long_;
};
