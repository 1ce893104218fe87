#include "analysis/names/T3DeclMap.h"

#include <algorithm>

namespace {
bool Same(const T3DeclMap::Entry& a, const T3DeclMap::Entry& b) {
  return a.decl == b.decl && a.module == b.module;
}
bool Before(const T3DeclMap::Entry& a, const T3DeclMap::Entry& b) {
  return a.decl != b.decl ? a.decl->number < b.decl->number : a.module < b.module;
}
}  // namespace

const T3DeclMap::Entry* T3DeclMap::SlotOf(tIdent name) const {
  const auto wanted = static_cast<uint32_t>(name);
  if (IsSmall()) {
    for (const Entry& slot : slots_)
      if (slot.name == wanted) return &slot;
    return nullptr;
  }
  const size_t mask = slots_.size() - 1;
  for (size_t at = Place(name, mask); slots_[at].name != 0; at = (at + 1) & mask)
    if (slots_[at].name == wanted) return &slots_[at];
  return nullptr;
}

// Where a name that is not in the hash table goes.
T3DeclMap::Entry* T3DeclMap::FreeSlot(tIdent name) {
  const size_t mask = slots_.size() - 1;
  size_t at = Place(name, mask);
  while (slots_[at].name != 0) at = (at + 1) & mask;
  return &slots_[at];
}

void T3DeclMap::Grow() {
  const std::vector<Entry> old = std::move(slots_);
  slots_ = std::vector<Entry>(old.size() * 4);
  for (const Entry& slot : old)
    if (slot.name != 0) *FreeSlot(slot.name) = slot;
}

void T3DeclMap::InsertInto(Entry& slot, const Entry& entry) {
  if (slot.decl != nullptr) {
    if (Same(slot, entry)) return;
    several_.push_back({{slot}, false});
    slot.module = static_cast<uint32_t>(several_.size() - 1);
    slot.decl = nullptr;
  }
  Several& list = several_[slot.module];
  if (Same(list.entries.back(), entry)) return;
  list.entries.push_back(entry);
  list.sorted = false;
}

void T3DeclMap::Insert(tIdent name, tIdent module, T3Tree_Node* decl) {
  const Entry entry{static_cast<uint32_t>(name), static_cast<uint32_t>(module), decl};
  if (MayHave(name))
    if (const Entry* slot = SlotOf(name))
      return InsertInto(slots_[static_cast<size_t>(slot - slots_.data())], entry);
  filter_ |= uint64_t{1} << (Hash(name) >> 58);
  ++names_;
  if (IsSmall() && names_ <= kSmall) return slots_.push_back(entry);
  if (IsSmall() || names_ * 2 > slots_.size()) Grow();
  *FreeSlot(name) = entry;
}

void T3DeclMap::Inherit(const T3Members& members, tIdent module) {
  filter_ = ~uint64_t{0};
  inherited_ = std::make_unique<Inherited>(Inherited{members, module});
}

// Finds what has no slot yet or several declarations.
std::span<const T3DeclMap::Entry> T3DeclMap::FindMore(tIdent name, const Entry* slot) {
  if (slot == nullptr) {
    T3Tree_Node* decl = inherited_->members.Find(name);
    if (decl == nullptr) return {};
    Insert(name, inherited_->module, decl);
    slot = SlotOf(name);
  }
  if (slot->decl != nullptr) return {slot, 1};
  Several& list = several_[slot->module];
  if (!list.sorted) {
    std::sort(list.entries.begin(), list.entries.end(), Before);
    list.entries.erase(std::unique(list.entries.begin(), list.entries.end(), Same), list.entries.end());
    list.sorted = true;
  }
  return list.entries;
}
