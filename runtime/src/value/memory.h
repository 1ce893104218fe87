// Nodes and buffers; for the units that make, assign and end values.
#pragma once

#include "value/error.h"
#include "value/value.h"

namespace lumos {

lumo_value_struct* take_node();
void give_node(lumo_value_struct* node);

// Memory of buffers. Small ones come from, and go back to, lists of their sizes, so that a run that goes in
// circles asks the system for nothing; `bytes` becomes what there is.
void* grow_buffer(void* data, size_t old_bytes, size_t& bytes);
void give_buffer(void* data, size_t bytes);

// Room for so many elements; what is there stays.
template <class Buffer>
void reserve(Buffer& buffer, size_t capacity) {
  if (buffer.capacity >= capacity) return;
  size_t grown = buffer.capacity + buffer.capacity / 2;
  if (grown < capacity) grown = capacity;
  constexpr size_t size = sizeof *buffer.data;
  size_t bytes = grown * size;
  buffer.data = static_cast<decltype(buffer.data)>(grow_buffer(buffer.data, buffer.capacity * size, bytes));
  buffer.capacity = bytes / size;
}

template <class Buffer>
void release(const Buffer& buffer) {
  if (buffer.data) give_buffer(buffer.data, buffer.capacity * sizeof *buffer.data);
}

// A call that had the value as an argument by reference is over.
void unpin(Value v);

// Ends the contents and makes the node ready for parts.
void change_form(Value v, Form form);
// Slots that a record has from the beginning, and timers.
void shape_fresh(Value v);

}  // namespace lumos
