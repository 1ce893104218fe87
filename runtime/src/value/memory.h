// Nodes and buffers; for the units that make, assign and end values.
#pragma once

#include "value/error.h"
#include "value/value.h"

namespace lumos {

lumo_value_struct* take_node();
void give_node(lumo_value_struct* node);

// Room for so many elements; what is there stays.
template <class Buffer>
void reserve(Buffer& buffer, size_t capacity) {
  if (buffer.capacity >= capacity) return;
  size_t grown = buffer.capacity + buffer.capacity / 2;
  if (grown < capacity) grown = capacity;
  buffer.data = static_cast<decltype(buffer.data)>(
      allocate(static_cast<void*>(buffer.data), grown * sizeof *buffer.data));
  buffer.capacity = grown;
}

// A call that had the value as an argument by reference is over.
void unpin(Value v);

// Ends the contents and makes the node ready for parts.
void change_form(Value v, Form form);
// Slots that a record has from the beginning, and timers.
void shape_fresh(Value v);

}  // namespace lumos
