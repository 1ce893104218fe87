// The candidate types that a context gives to an expression: parallel local and base views, each valid or
// struck out. Few candidates are the rule, so that the first ones lie in the object itself.
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <vector>

#include "frontend/T3Tree.h"

/// The few own types of a form of expression, in place.
class T3OwnTypes {
 public:
  T3OwnTypes(std::initializer_list<T3Tree_Node*> types) : count_(types.size()) {
    std::copy(types.begin(), types.end(), types_.begin());
  }
  operator std::span<T3Tree_Node* const>() const {  // NOLINT(google-explicit-constructor)
    return {types_.data(), count_};
  }

 private:
  static constexpr size_t kMost = 7;
  std::array<T3Tree_Node*, kMost> types_;
  size_t count_;
};

class T3Candidates {
 public:
  T3Candidates() = default;
  T3Candidates(T3Tree_Node* local, T3Tree_Node* base) { Add(local, base); }
  T3Candidates(std::span<T3Tree_Node* const> locals, std::span<T3Tree_Node* const> bases) {
    for (size_t i = 0; i < locals.size(); ++i) Add(locals[i], bases[i]);
  }
  /// One type in both views.
  T3Candidates(T3Tree_Node* type) { Add(type, type); }  // NOLINT(google-explicit-constructor)
  /// Several types, each in both views.
  static T3Candidates Types(std::initializer_list<T3Tree_Node*> types) {
    T3Candidates result;
    for (T3Tree_Node* type : types) result.Add(type, type);
    return result;
  }

  void Add(T3Tree_Node* local, T3Tree_Node* base) {
    if (count_ < kInline)
      first_[count_] = {local, base, true};
    else
      rest_.push_back({local, base, true});
    ++count_;
  }
  size_t size() const { return count_; }
  T3Tree_Node* local(size_t i) const { return at(i).local; }
  T3Tree_Node* base(size_t i) const { return at(i).base; }
  bool valid(size_t i) const { return at(i).valid; }
  void Set(size_t i, T3Tree_Node* local, T3Tree_Node* base) {
    at(i).local = local;
    at(i).base = base;
  }
  /// Strikes a candidate out; both its views become `error`.
  void Strike(size_t i, T3Tree_Node* error) { at(i) = {error, error, false}; }
  size_t CountValid() const {
    size_t count = 0;
    for (size_t i = 0; i < count_; ++i) count += valid(i) ? 1 : 0;
    return count;
  }

 private:
  struct Entry {
    T3Tree_Node* local = nullptr;
    T3Tree_Node* base = nullptr;
    bool valid = false;
  };
  static constexpr size_t kInline = 2;
  const Entry& at(size_t i) const { return i < kInline ? first_[i] : rest_[i - kInline]; }
  Entry& at(size_t i) { return i < kInline ? first_[i] : rest_[i - kInline]; }

  std::array<Entry, kInline> first_;
  size_t count_ = 0;
  std::vector<Entry> rest_;
};
