// Which fields of a kind the walks follow: its child fields in their order, with `next` set apart, since a
// list is walked as a whole and not as a nesting.
#pragma once

#include <cstring>
#include <vector>

#include "frontend/T3Tree.h"

/// The child fields of one kind.
struct T3ChildFields {
  struct Child {
    const T3FieldInfo* info;
    /// The field's place among all fields of the kind; becomes the child slot.
    uint16_t slot;
  };
  /// All but `next`.
  std::vector<Child> children;
  /// The link of a list element; its info is null for kinds that are none.
  Child next{nullptr, 0};
};

/// The child fields of a kind, made once for all kinds.
const T3ChildFields& ChildFieldsOf(const T3Tree_Node* node);
