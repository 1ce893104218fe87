// Lists of the tree that are walked with a number, two at once, or with what stands in groups; a single one
// is walked by `Items`.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "frontend/T3Tree.h"

/// The items of a list with their positions, from 0: `for (auto [index, item] :
/// Numbered<T3FieldValue>(list))`.
template <class Item>
class Numbered {
 public:
  class Iterator {
   public:
    explicit Iterator(T3Tree_Node* list) : at_(Items<Item>(list).begin()) {}
    std::pair<size_t, Item*> operator*() const { return {index_, *at_}; }
    Iterator& operator++() {
      ++at_;
      ++index_;
      return *this;
    }
    bool operator!=(typename Items<Item>::End end) const { return at_ != end; }

   private:
    typename Items<Item>::Iterator at_;
    size_t index_ = 0;
  };

  explicit Numbered(T3Tree_Node* list) : list_(list) {}
  Iterator begin() const { return Iterator(list_); }
  typename Items<Item>::End end() const { return {}; }

 private:
  T3Tree_Node* list_;
};

/// What stands at the same positions of two lists, as far as both go:
/// `for (auto [formal, actual] : Pairs<_T3FormalPar, T3ActualPar>(formals, actuals))`.
template <class First, class Second>
class Pairs {
 public:
  using End = typename Items<First>::End;
  class Iterator {
   public:
    Iterator(T3Tree_Node* first, T3Tree_Node* second)
        : first_(Items<First>(first).begin()), second_(Items<Second>(second).begin()) {}
    std::pair<First*, Second*> operator*() const { return {*first_, *second_}; }
    Iterator& operator++() {
      ++first_;
      ++second_;
      return *this;
    }
    bool operator!=(End) const { return first_ != End{} && second_ != typename Items<Second>::End{}; }

   private:
    typename Items<First>::Iterator first_;
    typename Items<Second>::Iterator second_;
  };

  Pairs(T3Tree_Node* first, T3Tree_Node* second) : first_(first), second_(second) {}
  Iterator begin() const { return {first_, second_}; }
  End end() const { return {}; }

 private:
  T3Tree_Node* first_;
  T3Tree_Node* second_;
};

/// The declarations of a list, each group before what stands in it: `for (auto* decl : DeclsInGroups(list))`.
/// The next one is asked for when the body is through with one.
class DeclsInGroups {
 public:
  struct End {};
  class Iterator {
   public:
    explicit Iterator(T3Tree_Node* list) { Settle(list); }
    _T3Decl* operator*() const { return decl_; }
    Iterator& operator++() {
      T3Tree_Node* next = decl_->next;
      if (auto* group = decl_->try_as<T3GroupDecl>()) {
        behind_.push_back(next);
        next = group->body;
      }
      Settle(next);
      return *this;
    }
    bool operator!=(End) const { return decl_ != nullptr; }

   private:
    void Settle(T3Tree_Node* at) {
      for (; !T3Is<_T3Decl>(at) && !behind_.empty(); behind_.pop_back()) at = behind_.back();
      decl_ = T3Is<_T3Decl>(at) ? static_cast<_T3Decl*>(at) : nullptr;
    }

    _T3Decl* decl_ = nullptr;
    /// Where the walk goes on behind the groups that it is in.
    std::vector<T3Tree_Node*> behind_;
  };

  explicit DeclsInGroups(T3Tree_Node* list) : list_(list) {}
  Iterator begin() const { return Iterator(list_); }
  End end() const { return {}; }

 private:
  T3Tree_Node* list_;
};
