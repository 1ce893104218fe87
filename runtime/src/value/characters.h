// The characters of a text where they lie, whatever form it has.
#pragma once

#include "value/value.h"

namespace lumos {

// Of a string or character, as long as that is not changed; no characters for other values.
class Characters {
 public:
  Characters() = default;
  explicit Characters(Value v) {
    switch (v->form) {
      case Form::string:
        narrow_ = v->text.data;
        size_ = v->text.size;
        break;
      case Form::wide_string:
        wide_ = v->wide.data;
        size_ = v->wide.size;
        break;
      case Form::character:
        narrow_ = &v->character;
        size_ = 1;
        break;
      case Form::wide_character:
        wide_ = &v->wide_character;
        size_ = 1;
        break;
      default:
        break;
    }
  }
  explicit Characters(std::string_view octets) : narrow_(octets.data()), size_(octets.size()) {}
  explicit Characters(std::u32string_view text) : wide_(text.data()), size_(text.size()) {}

  size_t size() const { return size_; }
  char32_t operator[](size_t i) const {
    return wide_ ? wide_[i] : char32_t{static_cast<unsigned char>(narrow_[i])};
  }
  // Whether all have a property.
  template <class Property>
  bool all(Property has) const {
    for (size_t i = 0; i < size_; ++i)
      if (!has((*this)[i])) return false;
    return true;
  }
  // Puts them behind each other at a place with room for them.
  template <class Character>
  void copy_to(Character* place) const {
    for (size_t i = 0; i < size_; ++i) place[i] = static_cast<Character>((*this)[i]);
  }

 private:
  const char* narrow_ = nullptr;
  const char32_t* wide_ = nullptr;
  size_t size_ = 0;
};

// Below, equal to or above 0 like the order of the texts.
inline int compare(const Characters& a, const Characters& b) {
  const size_t common = a.size() < b.size() ? a.size() : b.size();
  for (size_t i = 0; i < common; ++i)
    if (a[i] != b[i]) return a[i] < b[i] ? -1 : 1;
  return a.size() < b.size() ? -1 : a.size() > b.size();
}

}  // namespace lumos
