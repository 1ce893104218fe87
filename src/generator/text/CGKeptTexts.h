// Texts that are asked for again and again while a module is written: each is made once.
#pragma once

#include <cstring>
#include <string>
#include <string_view>

#include "frontend/T3Tree.h"
#include "support/NumberMap.h"

/// A copy of a text that stays as long as the tree, with a zero behind it.
inline std::string_view CGKeep(std::string_view text) {
  char* memory = static_cast<char*>(gT3AST.AllocAttributes(text.size() + 1));
  std::memcpy(memory, text.data(), text.size());
  memory[text.size()] = '\0';
  return {memory, text.size()};
}

/// By the number of what a text tells of. A table is emptied with the module (support/ModuleCaches); the
/// texts themselves stay as long as the tree.
class CGKeptTexts {
 public:
  /// What `make` has returned for the number.
  template <class Make>
  std::string_view Of(uint64_t number, const Make& make) {
    if (const std::string_view* known = texts_.Find(number)) return *known;
    const std::string text = make();
    return texts_[number] = CGKeep(text);
  }
  void clear() { texts_.clear(); }

 private:
  NumberMap<std::string_view> texts_;
};
