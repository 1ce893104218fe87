// What the generators of conversions have in common: the references to places in a home, and function heads.
#pragma once

#include <string>

#include "asn1/generate/Asn2T3.h"

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
/// Whether a component may be missing from a home.
bool MayBeMissing(const AsnType& component);
/// Whether a conversion of a type is a function of its own, which its users call.
bool IsCalled(const AsnType& type);

/// "v" and a number.
std::string Var(int depth);

/// Begins a function: its prototype in the header, its head and brace in the source. The parts of the
/// arguments stand before and behind the home.
void BeginFunction(T3AsnFiles& files, const AsnType& type, const std::string& result, const char* family,
                   const std::string& before, const std::string& behind);
}  // namespace asn1
