// Which fields of a kind the walks follow: its child fields in their order, with `next` set apart, since a
// list is walked as a whole and not as a nesting.
#pragma once

#include <cstring>

#include "frontend/T3Tree.h"

/// The child fields of one kind.
struct T3ChildFields {
  struct Child {
    const T3FieldInfo* info;
    /// The field's place among all fields of the kind; becomes the child slot.
    uint16_t slot;
    /// Where the field lies in the node.
    uint16_t offset;
    /// The kinds that the child may be of.
    uint16_t first;
    uint16_t last;
  };
  /// All but `next`.
  std::span<const Child> children;
  /// The link of a list element; its info is null for kinds that are none.
  Child next;
};

extern const T3ChildFields T3Tree_ChildFields[kT3KindCount];

/// The child fields of a node's kind.
inline const T3ChildFields& ChildFieldsOf(const T3Tree_Node* node) {
  return T3Tree_ChildFields[static_cast<size_t>(node->kind)];
}

/// The slot of a child field in a node that has one.
inline T3Tree_Node*& T3ChildField(T3Tree_Node* node, const T3ChildFields::Child& child) {
  return *reinterpret_cast<T3Tree_Node**>(reinterpret_cast<char*>(node) + child.offset);
}
