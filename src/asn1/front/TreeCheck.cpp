#include "asn1/front/TreeCheck.h"

#include <algorithm>
#include <cstddef>

namespace asn1 {
namespace {
// Sources are nested less deeply by far, as the tool that reads them holds.
constexpr int kDeepest = 2000;
constexpr int kMostTagClass = 5;

bool Within(int32_t number, size_t count) {
  return number >= 0 && static_cast<size_t>(number) <= count;
}

// The records of one kind with their edges: `next` stays at one level, the others lead inward.
class Forest {
 public:
  explicit Forest(size_t count) : next_(count), inner_(count), entered_(count) {}

  void Next(size_t from, int32_t to) { Edge(next_[from], to); }
  void Inner(size_t from, int32_t to) {
    int32_t& slot = inner_[from].first == 0 ? inner_[from].first : inner_[from].second;
    Edge(slot, to);
  }

  // Whether each record is reached by one way at most, no way leads back, and none is too deep.
  bool IsSound() const {
    if (shared_) return false;
    size_t reached = 0;
    std::vector<std::pair<int32_t, int>> waiting;
    for (size_t i = 0; i < entered_.size(); ++i)
      if (!entered_[i]) waiting.emplace_back(static_cast<int32_t>(i) + 1, 0);
    while (!waiting.empty()) {
      const auto [number, depth] = waiting.back();
      waiting.pop_back();
      if (depth > kDeepest) return false;
      ++reached;
      const auto at = static_cast<size_t>(number) - 1;
      if (next_[at] != 0) waiting.emplace_back(next_[at], depth);
      if (inner_[at].first != 0) waiting.emplace_back(inner_[at].first, depth + 1);
      if (inner_[at].second != 0) waiting.emplace_back(inner_[at].second, depth + 1);
    }
    // What nothing without an entry leads to stands in a circle.
    return reached == entered_.size();
  }

 private:
  void Edge(int32_t& slot, int32_t to) {
    if (to == 0) return;
    slot = to;
    auto entered = entered_.begin() + (to - 1);
    shared_ = shared_ || *entered;
    *entered = true;
  }

  std::vector<int32_t> next_;
  std::vector<std::pair<int32_t, int32_t>> inner_;
  std::vector<bool> entered_;
  bool shared_ = false;
};

class Check {
 public:
  Check(const ModRec& module, int modules) : module_(module), modules_(modules) {}

  bool All() const {
    return std::all_of(module_.types.begin(), module_.types.end(),
                       [this](const TNode& node) { return Type(node); }) &&
           std::all_of(module_.values.begin(), module_.values.end(),
                       [this](const VNode& node) { return Value(node); }) &&
           std::all_of(module_.constraints.begin(), module_.constraints.end(),
                       [this](const SubRec& node) { return Constraint(node); }) &&
           std::all_of(module_.tags.begin(), module_.tags.end(),
                       [this](const TagRec& node) { return Tag(node); }) &&
           std::all_of(module_.steps.begin(), module_.steps.end(),
                       [this](const SNode& node) { return Step(node); }) &&
           std::all_of(module_.options_read.begin(), module_.options_read.end(),
                       [this](const TedRec& node) { return Text(node.text); }) &&
           Nesting() && Components();
  }

 private:
  bool Text(int32_t number) const { return Within(number, module_.strings8.size()); }
  bool IsType(int32_t number) const { return Within(number, module_.types.size()); }
  bool IsValue(int32_t number) const { return Within(number, module_.values.size()); }
  bool IsConstraint(int32_t number) const { return Within(number, module_.constraints.size()); }
  bool IsModule(int32_t number) const { return number >= 0 && number <= modules_; }

  bool Type(const TNode& node) const {
    const bool is_list = node.main_type == TYP_SEQOF || node.main_type == TYP_SETOF;
    return node.main_type <= TYP_NONE && Text(node.name) && Text(node.ref_name) &&
           IsType(node.first_component) && IsType(node.next) && IsType(node.parent) &&
           IsType(node.definition) && IsType(node.class_chain) &&
           Within(node.first_tag, module_.tags.size()) && IsConstraint(node.constraint) &&
           IsValue(node.first_named) && IsValue(node.default_value) && IsModule(node.ref_module) &&
           node.extension_index >= 0 && !(is_list && node.first_component == 0) &&
           (node.ref_module > 1 || IsType(node.ref_type));
  }

  bool Value(const VNode& node) const {
    return node.main_type <= kNoValue && Text(node.name) && Text(node.text8) &&
           Within(node.text16, module_.strings16.size()) && Within(node.text32, module_.strings32.size()) &&
           IsModule(node.ref_module) && (node.ref_module > 1 || IsValue(node.ref_value)) &&
           IsValue(node.next) && IsValue(node.first_component) && IsType(node.type) &&
           IsType(node.actual_type) && IsType(node.field_type);
  }

  bool Constraint(const SubRec& node) const {
    return Text(node.text) && IsConstraint(node.next) && IsConstraint(node.first) &&
           IsConstraint(node.second) && IsType(node.component_type) &&
           Within(node.path, module_.steps.size()) && IsValue(node.value) && IsValue(node.value2) &&
           !(node.kind == kSingleValue && node.value == 0);
  }

  bool Tag(const TagRec& node) const {
    return node.tag_class >= 0 && node.tag_class <= kMostTagClass && node.number >= 0 &&
           Within(node.next, module_.tags.size());
  }

  bool Step(const SNode& node) const { return Text(node.text) && Within(node.next, module_.steps.size()); }

  bool Nesting() const {
    Forest types(module_.types.size()), values(module_.values.size()),
        constraints(module_.constraints.size()), tags(module_.tags.size()), steps(module_.steps.size());
    for (size_t i = 0; i < module_.types.size(); ++i) {
      types.Next(i, module_.types[i].next);
      types.Inner(i, module_.types[i].first_component);
    }
    for (size_t i = 0; i < module_.values.size(); ++i) {
      values.Next(i, module_.values[i].next);
      values.Inner(i, module_.values[i].first_component);
    }
    for (size_t i = 0; i < module_.constraints.size(); ++i) {
      const SubRec& node = module_.constraints[i];
      constraints.Next(i, node.next);
      constraints.Inner(i, node.first);
      constraints.Inner(i, node.second);
    }
    for (size_t i = 0; i < module_.tags.size(); ++i) tags.Next(i, module_.tags[i].next);
    for (size_t i = 0; i < module_.steps.size(); ++i) steps.Next(i, module_.steps[i].next);
    return types.IsSound() && values.IsSound() && constraints.IsSound() && tags.IsSound() && steps.IsSound();
  }

  // Each component knows the type around it and its place there; what stands nowhere has nothing around it.
  bool Components() const {
    std::vector<int32_t> around(module_.types.size() + 1);
    for (size_t i = 0; i < module_.types.size(); ++i) {
      int32_t place = 0;
      for (int32_t at = module_.types[i].first_component; at != 0;
           at = module_.types[static_cast<size_t>(at) - 1].next) {
        const TNode& component = module_.types[static_cast<size_t>(at) - 1];
        around[static_cast<size_t>(at)] = static_cast<int32_t>(i) + 1;
        if (component.main_type == TYP_EXTENSION_MARKER) continue;
        if (component.component_nbr != place++) return false;
      }
    }
    for (size_t i = 0; i < module_.types.size(); ++i)
      if (module_.types[i].parent != around[i + 1]) return false;
    return true;
  }

  const ModRec& module_;
  int modules_;
};
}  // namespace

bool IsSoundTree(const ModRec& module, int modules) {
  return Check(module, modules).All();
}
}  // namespace asn1
