#include "generator/text/CLocations.h"

#include <deque>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "FileAPI/CWords.h"
#include "driver/diagnostics/T3Error.h"
#include "generator/text/CGKeptTexts.h"
#include "support/ModuleCaches.h"

namespace {
// ---- Declarations: to the end of the module ----

using Nodes = std::vector<T3Tree_Node*>;
// Those that have got a location, some of them more than once.
Nodes& g_declared = *new Nodes;
const ModuleCache declared([] { g_declared.clear(); }, ModuleCache::Holds::ForRun);

bool IsDeclaration(const T3Tree_Node* node) {
  return T3Is<_T3Decl>(node) || T3Is<_T3FormalPar>(node);
}

const char*& DeclaredPlaceOf(T3Tree_Node* node) {
  return node->is<_T3Decl>() ? node->as<_T3Decl>()->cold().rts_loc : node->as<_T3FormalPar>()->cold().rts_loc;
}

// Without memory where it has none.
std::string_view DeclaredLocationOf(T3Tree_Node* node) {
  const char* location = node->HasCold() ? DeclaredPlaceOf(node) : vexa_location_not_allocated;
  return location == vexa_location_not_allocated ? std::string_view() : std::string_view(location);
}

// ---- Expressions: to the end of a scope ----

// The texts of a function's locations. What is cleared is used again by the next one.
class Texts {
 public:
  std::string_view Keep(std::string_view text) {
    if (text.size() > kBlock) return long_.emplace_back(text);
    if (used_ == 0 || text.size() > room_) NextBlock();
    char* kept = blocks_[used_ - 1].get() + kBlock - room_;
    CopyWord(kept, text);
    room_ -= text.size();
    return {kept, text.size()};
  }
  void clear() {
    used_ = room_ = 0;
    if (!long_.empty()) long_.clear();
  }

 private:
  static constexpr size_t kBlock = 1 << 14;

  void NextBlock() {
    if (used_ == blocks_.size()) blocks_.emplace_back(new char[kBlock]);
    ++used_;
    room_ = kBlock;
  }

  std::vector<std::unique_ptr<char[]>> blocks_;
  size_t used_ = 0;
  size_t room_ = 0;
  std::deque<std::string> long_;
};

// The locations that nodes have in the open scopes, few at a time. A node is found by its number; the last
// one to come is the first to go, so that a slot is free again with its entry.
class ScopeLocations {
 public:
  struct Entry {
    T3Tree_Node* node = nullptr;
    // Without memory where none is assigned.
    std::string_view c_loc = {};
    std::string_view rts_loc = {};
    /// What stood in the slot: the node's entry in a scope around, or 0.
    uint32_t outer = 0;
  };

  /// The node's locations, or null.
  Entry* Find(const T3Tree_Node* node) {
    const uint32_t at = SlotOf(node);
    return at == 0 ? nullptr : &entries_[at - 1];
  }
  /// Those in the innermost scope.
  Entry& Own(T3Tree_Node* node) {
    if (count_ == entries_.size()) Grow();
    uint32_t& slot = SlotOf(node);
    if (slot > begin_) return entries_[slot - 1];
    Entry& entry = entries_[count_++];
    entry.node = node;
    entry.c_loc = slot == 0 ? std::string_view() : entries_[slot - 1].c_loc;
    entry.rts_loc = slot == 0 ? std::string_view() : entries_[slot - 1].rts_loc;
    entry.outer = std::exchange(slot, count_);
    return entry;
  }
  std::string_view Keep(std::string_view text) { return texts_.Keep(text); }

  /// Returns what EndScope is to be given.
  uint32_t BeginScope() {
    if (count_ == 0) texts_.clear();
    return std::exchange(begin_, count_);
  }
  /// What was assigned in the scope is assigned nowhere any more.
  void EndScope(uint32_t outer_begin) {
    while (count_ > begin_) Drop();
    begin_ = outer_begin;
  }
  void clear() {
    begin_ = 0;
    EndScope(0);
    texts_.clear();
  }

 private:
  static constexpr size_t kFirst = 128;

  /// The place of the node's last entry, and one; 0 where it has none.
  uint32_t& SlotOf(const T3Tree_Node* node) {
    const size_t mask = slots_.size() - 1;
    size_t at = (node->number * 0x9e3779b97f4a7c15u) >> 32 & mask;
    while (slots_[at] != 0 && entries_[slots_[at] - 1].node != node) at = (at + 1) & mask;
    return slots_[at];
  }
  void Drop() {
    const uint32_t outer = entries_[count_ - 1].outer;
    SlotOf(entries_[count_ - 1].node) = outer;
    --count_;
    if (outer != 0) entries_[outer - 1].c_loc = entries_[outer - 1].rts_loc = {};
  }
  void Grow() {
    entries_.resize(2 * entries_.size());
    slots_.assign(2 * entries_.size(), 0);
    for (uint32_t i = 0; i < count_; ++i) SlotOf(entries_[i].node) = i + 1;
  }

  std::vector<Entry> entries_ = std::vector<Entry>(kFirst);
  uint32_t count_ = 0;
  // Twice as many as there may be entries.
  std::vector<uint32_t> slots_ = std::vector<uint32_t>(2 * kFirst);
  uint32_t begin_ = 0;
  Texts texts_;
};
ScopeLocations& g_scopes = *new ScopeLocations;
const ModuleCache in_scopes([] { g_scopes.clear(); }, ModuleCache::Holds::ForRun);

bool IsInScopes(const T3Tree_Node* node) {
  return T3Is<_T3Expression>(node) || T3Is<T3TemplateDef>(node);
}

using Entry = ScopeLocations::Entry;

// One of the two locations of a node, without memory where none is assigned.
template <std::string_view Entry::*kLocation>
std::string_view Assigned(T3Tree_Node* node, const char* function) {
  if (IsInScopes(node)) {
    const Entry* entry = g_scopes.Find(node);
    return entry == nullptr ? std::string_view() : entry->*kLocation;
  }
  if (!IsDeclaration(node)) internal_error_ast("LUMOS", __LINE__, function, node);
  return kLocation == &Entry::rts_loc ? DeclaredLocationOf(node) : std::string_view();
}

std::string_view OrNone(std::string_view location) {
  return location.data() == nullptr ? std::string_view(vexa_location_not_allocated) : location;
}

Entry& OwnEntry(T3Tree_Node* node, const char* function) {
  if (!IsInScopes(node)) internal_error_ast("LUMOS", __LINE__, function, node);
  return g_scopes.Own(node);
}
}  // namespace

std::string_view CLocation(T3Tree_Node* node) {
  return OrNone(Assigned<&Entry::c_loc>(node, __func__));
}

std::string_view RTSLocation(T3Tree_Node* node) {
  return OrNone(Assigned<&Entry::rts_loc>(node, __func__));
}

void SetCLocation(T3Tree_Node* node, std::string_view location) {
  OwnEntry(node, __func__).c_loc = g_scopes.Keep(location);
}

void SetRTSLocation(T3Tree_Node* node, std::string_view location) {
  OwnEntry(node, __func__).rts_loc = g_scopes.Keep(location);
}

void DeclareRTSLocation(T3Tree_Node* node, std::string_view location) {
  if (!IsDeclaration(node)) internal_error_ast("LUMOS", __LINE__, __func__, node);
  g_declared.push_back(node);
  DeclaredPlaceOf(node) = CGKeep(location).data();
}

bool HasCLocation(T3Tree_Node* node) {
  return Assigned<&Entry::c_loc>(node, __func__).data() != nullptr;
}

bool HasRTSLocation(T3Tree_Node* node) {
  return Assigned<&Entry::rts_loc>(node, __func__).data() != nullptr;
}

void ResetLocation(T3Tree_Node* node) {
  if (IsDeclaration(node)) {
    if (node->HasCold()) DeclaredPlaceOf(node) = vexa_location_not_allocated;
  } else if (Entry* entry = g_scopes.Find(node)) {
    entry->c_loc = entry->rts_loc = {};
  }
}

CLocationScope::CLocationScope() : outer_begin_(g_scopes.BeginScope()) {}

CLocationScope::~CLocationScope() {
  g_scopes.EndScope(outer_begin_);
}

void ResetAllLocations() {
  for (T3Tree_Node* node : g_declared) ResetLocation(node);
  g_declared.clear();
  g_scopes.clear();
}
