#include "analysis/names/T3Members.h"

#include <algorithm>
#include <deque>
#include <unordered_map>
#include <vector>

#include "frontend/T3Lists.h"
#include "support/ModuleCaches.h"

struct T3Members::Line {
  T3Members base;
  std::vector<T3Tree_Node*> decls;
  // The first place of each name.
  std::unordered_map<tIdent, uint32_t> places;
};

namespace {
// By the numbers of the types. Components of other modules are asked for to the end of the run.
std::unordered_map<uint32_t, T3Members>& g_members = *new std::unordered_map<uint32_t, T3Members>;
std::deque<T3Members::Line>& g_lines = *new std::deque<T3Members::Line>;
const ModuleCache kMembersCache{[] {
                                  g_members.clear();
                                  g_lines.clear();
                                },
                                ModuleCache::Holds::ForRun};
}  // namespace

T3Tree_Node* T3Members::Find(tIdent name) const {
  for (T3Members at = *this; at.line_ != nullptr; at = at.line_->base) {
    const auto found = at.line_->places.find(name);
    if (found != at.line_->places.end() && found->second < at.end_) return at.line_->decls[found->second];
  }
  return nullptr;
}

T3NodeList T3Members::All() const {
  T3NodeList all;
  for (T3Members at = *this; at.line_ != nullptr; at = at.line_->base)
    for (uint32_t place = at.end_; place > 0; --place) all.push_back(at.line_->decls[place - 1]);
  std::reverse(all.begin(), all.end());
  return all;
}

bool T3Members::BeginWith(const T3Members& base) const {
  for (T3Members at = *this; at.line_ != nullptr; at = at.line_->base)
    if (at.line_ == base.line_) return base.end_ <= at.end_;
  return base.empty();
}

// The first to go on from the end of a line has it; any other begins its own.
void T3Members::Append(T3Tree_Node* decl) {
  if (line_ == nullptr || end_ != line_->decls.size()) {
    line_ = &g_lines.emplace_back(Line{*this, {}, {}});
    end_ = 0;
  }
  line_->places.try_emplace(decl->as<_T3Decl>()->name, end_++);
  line_->decls.push_back(decl);
}

const T3Members& MembersOf(const T3ComponentType* component) {
  const auto [entry, made] = g_members.try_emplace(component->number);
  if (made)
    for (auto* decl : Items<_T3Decl>(component->decls)) entry->second.Append(decl);
  return entry->second;
}

void SetMembers(const T3ComponentType* component, const T3Members& members) {
  g_members[component->number] = members;
}
