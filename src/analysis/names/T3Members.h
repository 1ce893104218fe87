// The members of a component type, inherited ones first. Each is the declaration that stands in the type
// which declares it: nothing is copied. Components that extend one another in a chain share one line of
// declarations, of which each sees the beginning, so that a chain costs what is written in it; where a second
// component extends the same one, a line begins that has the first part of the other in front.
#pragma once

#include "frontend/T3Tree.h"

class T3Members {
 public:
  struct Line;
  /// The first member of a name, or null.
  T3Tree_Node* Find(tIdent name) const;
  /// All members in their order.
  T3NodeList All() const;
  bool empty() const { return line_ == nullptr; }
  /// True when all members of `base` are the first ones here.
  bool BeginWith(const T3Members& base) const;
  void Append(T3Tree_Node* decl);

 private:
  Line* line_ = nullptr;
  // How much of the line belongs here.
  uint32_t end_ = 0;
};

/// What a component type has; once ExtendComponents (T3Stages.h) has been there, with what it inherits.
const T3Members& MembersOf(const T3ComponentType* component);
/// Sets what it has.
void SetMembers(const T3ComponentType* component, const T3Members& members);
