// What the generators have in common: which functions a module gets and in which order, their heads, and the
// references to places in a home.
#pragma once

#include <functional>
#include <string>

#include "asn1/generate/Asn2T3.h"
#include "asn1/generate/T3AsnNames.h"

namespace asn1 {

/// A place in a home: an expression of C, and whether it is a pointer to the value.
struct HomeRef {
  std::string text;
  bool is_pointer = false;
  /// What a member of the structure at the place is named through.
  std::string Member(const std::string& name) const { return text + (is_pointer ? "->" : ".") + name; }
  std::string Address() const { return is_pointer ? text : "&(" + text + ")"; }
  std::string Value() const { return is_pointer ? "(*" + text + ")" : text; }
};

/// A component of the structure at a place.
HomeRef ComponentRef(const HomeRef& structure, const AsnType& component);
/// The element of the list at a place, by the counter of a depth.
HomeRef ElementRef(const HomeRef& list, int depth);
/// The test of a component's bit, and the statement that sets it.
std::string PresenceTest(const HomeRef& structure, const AsnType& type, const AsnType& component);
std::string PresenceSet(const HomeRef& structure, const AsnType& type, const AsnType& component);
/// The definition whose function converts a component or element, which its users call; none where that is
/// written in line.
AsnType Called(const AsnType& type);

/// "v" and a number.
std::string Var(int depth);

/// What the option GENERATE= asks functions for.
enum GenerateLevel { kGenerateNone, kGenerateEntries, kGenerateVisibles, kGenerateEntriesAndVisibles };
/// The level that a module's options give.
int GenerateLevelOf(const ModRec& module);

using FunctionCall = std::function<void(const AsnType&)>;
/// Calls for each definition that gets a function by the level: `normal` once, when it has been called for
/// the definitions of the module that this one refers to; and `entry` behind it where the type is an entry
/// type.
void cGenerateTypeFunctions(ModRec& module, int level, const FunctionCall& normal, const FunctionCall& entry);

/// The head of a function. The arguments in front of the home and behind it are declarations with ", "
/// between them; `before` ends with ", " where something follows. Without a type of the home there is no such
/// argument.
struct FunctionHead {
  std::string result;
  std::string name;
  bool has_utility = false;  // the record that conversions work with is the first argument
  std::string before;
  std::string home;
  std::string behind;
};
/// Writes the prototype to the header, and to the source the head and the brace.
void cBeginFunction(T3AsnFiles& files, const FunctionHead& head);

/// The head of a function of a type's family whose arguments stand before and behind the home.
FunctionHead HeadOf(const AsnType& type, const char* family);
}  // namespace asn1
