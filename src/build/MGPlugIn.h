// The two patterns that hosts and makefile dialects are built on.
//
// PlugIn<T> keeps the list of prototypes of T, each of which can make an object of its own class from a
// name. LetterEnvelope<T> is the handle that client code declares: it owns the object (the letter) that
// was made and to which it forwards.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

template <class T>
class PlugIn {
 public:
  virtual ~PlugIn() = default;

  /// A new object of the first registered class that answers to `name`; the caller owns it. Throws a
  /// std::string when none does.
  virtual T* create_instance(const std::string& name) const {
    // By index: an object that is made registers itself, which may move the list.
    for (size_t i = 0; i < registered_items().size(); ++i) {
      if (T* made = registered_items()[i]->create_instance(name)) return made;
    }
    throw std::string("could not create instance");
  }

  /// The prototypes in order of registration. The list is made at the first call and kept to the end of
  /// the process, since static objects register and leave in any order.
  static std::vector<T*>& registered_items() {
    static auto* const items = new std::vector<T*>;
    return *items;
  }
  static const std::vector<T*>& const_registered_items() { return registered_items(); }

 protected:
  static void register_item(T* item) { registered_items().push_back(item); }
  /// To be called when an object ends, so that no trial reaches it any more.
  static void unregister_item(T* item) { std::erase(registered_items(), item); }
};

template <class T>
class LetterEnvelope {
 public:
  LetterEnvelope() = default;
  LetterEnvelope(const LetterEnvelope&) = delete;
  LetterEnvelope& operator=(const LetterEnvelope&) = delete;
  virtual ~LetterEnvelope() = default;

  /// Takes ownership of `letter` and destroys the one held before.
  void set_instance(T* letter) { letter_.reset(letter); }

  /// The letter. Throws a std::string when there is none.
  T& instance() {
    if (letter_ == nullptr) throw std::string("no letter in the envelope");
    return *letter_;
  }
  const T& instance() const {
    if (letter_ == nullptr) throw std::string("no letter in the envelope");
    return *letter_;
  }

 protected:
  bool has_instance() const { return letter_ != nullptr; }

 private:
  std::unique_ptr<T> letter_;
};
