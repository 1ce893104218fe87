// Nodes and buffers; for the units that make, assign and end values.
#pragma once

#include <bit>
#include <new>

#include "value/error.h"
#include "value/value.h"

namespace lumos {

// Free nodes are chained through their parent pointers.
extern lumo_value_struct* free_nodes;
void add_nodes();
inline lumo_value_struct* take_node() {
  if (!free_nodes) add_nodes();
  lumo_value_struct* node = free_nodes;
  free_nodes = node->parent;
  return new (node) lumo_value_struct;
}
inline void give_node(lumo_value_struct* node) {
  node->form = Form::special;
  node->special = Special::illegal;
  node->life = Life::fixed;
  node->parent = free_nodes;
  free_nodes = node;
}

// Memory of buffers. Small ones, of 16, 32, ... bytes, come from, and go back to, lists of their sizes, so
// that a run that goes in circles asks the system for nothing. A sanitizer is to see each by itself.
struct FreeBuffer {
  FreeBuffer* next;
};
extern FreeBuffer* free_buffers_of[8];
constexpr size_t least_buffer = 16;
#if defined(__SANITIZE_ADDRESS__)
constexpr size_t most_pooled = 0;
#else
constexpr size_t most_pooled = 512;
#endif
// `bytes` becomes what there is.
void* grow_buffer(void* data, size_t old_bytes, size_t& bytes);
void free_buffer(void* data);
inline void give_buffer(void* data, size_t bytes) {
  if (bytes > most_pooled) return free_buffer(data);
  FreeBuffer*& list = free_buffers_of[std::bit_width(bytes / least_buffer) - 1];
  list = new (data) FreeBuffer{list};
}
inline void* new_buffer(size_t& bytes) {
  if (bytes - 1 >= most_pooled) return grow_buffer(nullptr, 0, bytes);
  const int size = std::bit_width((bytes - 1) / least_buffer);
  FreeBuffer*& list = free_buffers_of[size];
  if (!list) return grow_buffer(nullptr, 0, bytes);
  bytes = least_buffer << size;
  FreeBuffer* buffer = list;
  list = buffer->next;
  return buffer;
}

// Room for so many elements; what is there stays.
template <class Buffer>
void reserve(Buffer& buffer, size_t capacity) {
  if (buffer.capacity >= capacity) return;
  size_t grown = buffer.capacity + buffer.capacity / 2;
  if (grown < capacity) grown = capacity;
  constexpr size_t size = sizeof *buffer.data;
  size_t bytes = grown * size;
  void* data = buffer.data ? grow_buffer(buffer.data, buffer.capacity * size, bytes) : new_buffer(bytes);
  buffer.data = static_cast<decltype(buffer.data)>(data);
  buffer.capacity = bytes / size;
}

template <class Buffer>
void release(const Buffer& buffer) {
  if (buffer.data) give_buffer(buffer.data, buffer.capacity * sizeof *buffer.data);
}

// A call that had the value as an argument by reference is over.
void unpin(Value v);

// Numbers and their like own nothing.
inline bool may_own(Form form) {
  return form >= Form::string;
}
// Ends the contents and makes the node ready for parts.
void change_form(Value v, Form form);
// Slots that a record has from the beginning, and timers.
void shape_fresh(Value v);

}  // namespace lumos
