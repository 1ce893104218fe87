// The temporary variables of a function, known by the numbers of their names, which rise in the order of
// their declarations.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

class CTmpVariables {
 public:
  enum class Release { done, unused, unknown };

  CTmpVariables();
  CTmpVariables(const CTmpVariables&) = delete;
  CTmpVariables& operator=(const CTmpVariables&) = delete;
  ~CTmpVariables();

  /// The first variable of the type that is not in use, which is in use from now on. Where there is none,
  /// `fresh` is entered as one, which the caller declares. Returns the variable.
  unsigned take(std::string_view type, unsigned fresh);
  /// The variable is free again.
  Release release(std::string_view name);
  bool has(std::string_view name) const { return find(name) != kNone; }

 private:
  static constexpr unsigned kNone = ~0u;
  struct Variable {
    /// The place of its type; none for what is no temporary variable.
    unsigned type = kNone;
    bool in_use = false;
  };
  struct Type {
    std::string name;
    /// A heap of the variables that are not in use, the first on top.
    std::vector<unsigned> free;
  };
  /// A function has temporary variables of few types.
  struct Tables {
    std::vector<Variable> variables;
    std::vector<Type> types;
    size_t type_count = 0;
  };

  unsigned typePlace(std::string_view type);
  unsigned find(std::string_view name) const;

  static std::vector<std::unique_ptr<Tables>>& spare();

  /// Made, or taken over from a function that has ended, at the first variable.
  std::unique_ptr<Tables> tables_;
};
