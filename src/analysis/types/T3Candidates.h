// The candidate types that a context gives to an expression: parallel local and base views, each valid or
// struck out. Few candidates are the rule, so that the first ones lie in the object itself.
#pragma once

#include <algorithm>
#include <array>
#include <initializer_list>
#include <span>
#include <unordered_map>
#include <utility>
#include <vector>

#include "frontend/T3Tree.h"
#include "support/NumberMap.h"

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

/// Candidates that a context gives to many expressions, such as the types of a port, with what finds the few
/// that the own type of an expression leaves.
class T3SharedTypes {
 public:
  void Add(T3Tree_Node* local, T3Tree_Node* base);
  size_t size() const { return types_.size(); }
  T3Tree_Node* local(size_t i) const { return types_[i].first; }
  T3Tree_Node* base(size_t i) const { return types_[i].second; }
  /// The places, in their order, of all that may stay where types are compared strictly: of `own` itself, an
  /// absolute type, and of those which more types than they are fit.
  std::vector<size_t> PlacesFor(T3Tree_Node* own) const;
  /// The places, in their order, of all but the records, sets and unions without a field of the name that the fewest of
  /// them have; the last of these types stays, since what is tried last leaves its traces where none fits.
  std::vector<size_t> PlacesWithFields(std::span<const tIdent> names) const;

 private:
  // Of the first so many types.
  struct Fields {
    size_t seen = 0;
    std::unordered_map<tIdent, std::vector<size_t>> places;
    std::vector<size_t> of_others;
    size_t last = 0;  // of the records, sets and unions
  };
  mutable Fields fields_;
  std::vector<std::pair<T3Tree_Node*, T3Tree_Node*>> types_;
  NumberMap<size_t> places_;
  std::vector<size_t> fit_by_others_;
};

class T3Candidates {
 public:
  T3Candidates() = default;
  /// They are used where they lie, as long as none is struck out or changed.
  explicit T3Candidates(const T3SharedTypes& shared) : count_(shared.size()), shared_(&shared) {}
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
    if (shared_ != nullptr) CopyShared();
    Append(local, base);
  }
  size_t size() const { return count_; }
  T3Tree_Node* local(size_t i) const { return shared_ != nullptr ? shared_->local(i) : at(i).local; }
  T3Tree_Node* base(size_t i) const { return shared_ != nullptr ? shared_->base(i) : at(i).base; }
  bool valid(size_t i) const { return shared_ != nullptr || at(i).valid; }
  void Set(size_t i, T3Tree_Node* local, T3Tree_Node* base) {
    if (shared_ != nullptr) CopyShared();
    at(i).local = local;
    at(i).base = base;
  }
  /// Strikes a candidate out; both its views become `error`.
  void Strike(size_t i, T3Tree_Node* error) {
    if (shared_ != nullptr) CopyShared();
    at(i) = {error, error, false};
  }
  size_t CountValid() const {
    size_t count = 0;
    for (size_t i = 0; i < count_; ++i) count += valid(i) ? 1 : 0;
    return count;
  }
  /// Leaves out of shared ones those which cannot stay beside `own`, an absolute type, where types are
  /// compared strictly.
  void KeepWhatMayFit(T3Tree_Node* own) {
    const T3SharedTypes* shared = std::exchange(shared_, nullptr);
    if (shared == nullptr) return;
    count_ = 0;
    for (const size_t place : shared->PlacesFor(own)) Append(shared->local(place), shared->base(place));
  }
  /// Leaves out of shared ones records, sets and unions without a field of one of the names, which a value with these
  /// fields cannot be of: at least two of them. False where they are all left.
  bool KeepWithFields(std::span<const tIdent> names) {
    if (shared_ == nullptr || names.empty()) return false;
    const std::vector<size_t> places = shared_->PlacesWithFields(names);
    if (places.size() + 2 > shared_->size()) return false;
    const T3SharedTypes* shared = std::exchange(shared_, nullptr);
    count_ = 0;
    for (const size_t place : places) Append(shared->local(place), shared->base(place));
    return true;
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
  void Append(T3Tree_Node* local, T3Tree_Node* base) {
    if (count_ < kInline)
      first_[count_] = {local, base, true};
    else
      rest_.push_back({local, base, true});
    ++count_;
  }
  void CopyShared() {
    const T3SharedTypes* shared = std::exchange(shared_, nullptr);
    count_ = 0;
    for (size_t i = 0; i < shared->size(); ++i) Append(shared->local(i), shared->base(i));
  }

  std::array<Entry, kInline> first_;
  size_t count_ = 0;
  std::vector<Entry> rest_;
  const T3SharedTypes* shared_ = nullptr;
};
