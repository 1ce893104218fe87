// The declarations of one scope by their names. Most names have one declaration, and most scopes few names:
// a small map is a plain array, a large one a hash table, and only names with several declarations have a
// list. A filter of one word tells in most cases at once that a name is not here.
#pragma once

#include <memory>
#include <span>
#include <vector>

#include "analysis/names/T3Members.h"
#include "frontend/T3Tree.h"

class T3DeclMap {
 public:
  /// A declaration of a name. Each is reached by the plain name, and by the name qualified with `module`
  /// where that is not 0.
  struct Entry {
    uint32_t name;
    uint32_t module;
    T3Tree_Node* decl;

    /// True for qualifier 0, the plain name, and for the module's own.
    bool Answers(tIdent qualifier) const {
      return qualifier == 0 || module == static_cast<uint32_t>(qualifier);
    }
  };

  /// Enters a declaration; the same entry again changes nothing.
  void Insert(tIdent name, tIdent module, T3Tree_Node* decl);
  /// What a component inherits is found as well, as if it were declared here in `module`.
  void Inherit(const T3Members& members, tIdent module);
  /// The declarations of a name in the order of their numbers, valid up to the next Insert or Find.
  std::span<const Entry> Find(tIdent name) {
    const Entry* slot = SlotOf(name);
    if (slot != nullptr && slot->decl != nullptr) return {slot, 1};
    return slot == nullptr && inherited_ == nullptr ? std::span<const Entry>() : FindMore(name, slot);
  }
  /// False when the name is surely not here.
  bool MayHave(tIdent name) const { return (filter_ >> (Hash(name) >> 58) & 1) != 0; }
  bool empty() const { return names_ == 0 && inherited_ == nullptr; }

 private:
  static constexpr size_t kSmall = 8;
  static uint64_t Hash(tIdent name) { return static_cast<uint64_t>(name) * 0x9e3779b97f4a7c15u; }
  bool IsSmall() const { return slots_.size() <= kSmall; }
  // Names that were made one behind the other are often asked for together: four of them share a line of the
  // cache.
  static size_t Place(tIdent name, size_t mask) {
    return ((Hash(name >> 2) >> 32 << 2) + static_cast<size_t>(name & 3)) & mask;
  }
  // The slot of a name, or null.
  const Entry* SlotOf(tIdent name) const;
  Entry* FreeSlot(tIdent name);
  std::span<const Entry> FindMore(tIdent name, const Entry* slot);
  void Grow();
  void InsertInto(Entry& slot, const Entry& entry);

  // Sorted when it is asked for.
  struct Several {
    std::vector<Entry> entries;
    bool sorted = false;
  };
  // A slot without declaration and with a name has the index of its list in `module`. In a hash table a slot
  // without name is free.
  std::vector<Entry> slots_;
  std::vector<Several> several_;
  uint64_t filter_ = 0;
  size_t names_ = 0;
  // What was asked for of it is entered.
  struct Inherited {
    T3Members members;
    tIdent module;
  };
  std::unique_ptr<Inherited> inherited_;
};
