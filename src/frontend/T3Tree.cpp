#include "frontend/T3Tree.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "driver/T3Exception.h"

const char* const vexa_location_not_allocated = "__NO_LOCATION_ALLOCATED__";

// A reference, bound to an object that is never destroyed: globals of other units hold nodes.
T3Tree& gT3AST = *new T3Tree;

namespace {
constexpr size_t kBlockSize = 20480;
constexpr size_t kAttributeBlockSize = 1 << 18;

size_t Round(size_t size) { return (size + 7) / 8 * 8; }
}  // namespace

void T3Tree_Node::MakeAttributes() {
  const T3KindInfo& info = T3Tree_KindInfo[static_cast<int>(kind)];
  void* memory = gT3AST.AllocAttributes(info.attribute_size);
  info.build_attributes(memory);
  attributes = static_cast<T3Attributes*>(memory);
}

void T3Tree_Node::MakeCold() {
  const T3KindInfo& info = T3Tree_KindInfo[static_cast<int>(kind)];
  void* memory = gT3AST.AllocAttributes(info.cold_size);
  info.build_cold(memory);
  AttributeRecord().cold = static_cast<T3Cold*>(memory);
}

void T3Tree_Node::BadCast(unsigned short wanted) const {
  throw internal_exception("T3Tree", 0, "as",
                           std::string("node of kind ") + T3Tree_NodeName[static_cast<int>(kind)] + " used as " +
                               T3Tree_NodeName[wanted]);
}

// A block is filled from its top downwards; behind its nodes lies the link to the block before.
void* T3Tree::T3Tree_Alloc(size_t size) {
  size = Round(size);
  const size_t room = size > kBlockSize ? size : kBlockSize;
  auto* block = static_cast<char*>(::operator new(room + sizeof(char*)));
  std::memcpy(block + room, &block_, sizeof(char*));
  memory_ += room + sizeof(char*);
  block_ = block;
  low_ = block;
  free_ = block + room - size;
  return free_;
}

void* T3Tree::AllocAttributes(size_t size) {
  size = Round(size);
  if (static_cast<size_t>(attribute_end_ - attribute_free_) < size) {
    const size_t room = size > kAttributeBlockSize ? size : kAttributeBlockSize;
    attribute_free_ = static_cast<char*>(::operator new(room));
    attribute_end_ = attribute_free_ + room;
    memory_ += room;
  }
  void* result = attribute_free_;
  attribute_free_ += size;
  return result;
}

const char* T3Tree::KeepText(const std::string& text) {
  auto* memory = static_cast<char*>(AllocAttributes(text.size() + 1));
  std::memcpy(memory, text.c_str(), text.size() + 1);
  return memory;
}
