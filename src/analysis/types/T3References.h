// References: what a name, qualification, subscription or call means, and the type that it has by itself,
// before a context chooses. Resolved once, from the innermost base outwards, without recursion.
#pragma once

#include <array>

#include "frontend/T3Tree.h"

/// Resolves a reference with all its bases: `def` and the three views of its own type. Names that mean
/// nothing are reported here, once.
void ResolveReference(T3Tree_Node* reference);
/// The declaration that an identifier or a qualified name means, imports followed, found without reports and
/// without trace: the walk may not have come by, and reports are due there. T3NoDecl where there is none.
T3Tree_Node* DefQuietly(T3Tree_Node* name);
/// True for a name: an identifier, or one behind the name of a module, which means the same.
bool IsName(T3Tree_Node* expression);
/// True for an element or a field, such as the one that `anytype` has for a type: no name, whatever it means.
bool IsPartOfSomething(T3Tree_Node* expression);
/// True for a type, module or behaviour by its name, and for what is meant to be a part of one: no value.
bool NamesNoValue(T3Tree_Node* expression);
/// True for a template by its name, with parameters or without: one of the module or an import, a variable or
/// a parameter that holds templates.
bool NamesTemplate(T3Tree_Node* expression);
/// Gives a reference that was made all that is known of the one that was written: what it means and its
/// types.
void TakeMeaning(_T3Reference* made, _T3Reference* written);
/// The bare name of something local that a qualifier names behind the name of its own module, with all that
/// is known of the qualifier; null for any other expression.
T3Tree_Node* BareLocalName(T3Tree_Node* expression);
/// The number in `name(number)`, a component of an object identifier; null for any other component. The name
/// means nothing, unless it is that of something that is called with a list of parameters.
T3Tree_Node* NumberInComponent(T3Tree_Node* component);
/// Lets a reference and its bases mean nothing, without a word.
void LetMeanNothing(T3Tree_Node* reference);
/// The bases of a reference, the innermost first, and the reference itself as the last.
class T3ReferenceChain {
 public:
  explicit T3ReferenceChain(T3Tree_Node* reference);
  T3Tree_Node* const* begin() const { return IsShort() ? short_.data() : long_.data(); }
  T3Tree_Node* const* end() const { return begin() + count_; }

 private:
  static constexpr size_t kShort = 8;
  bool IsShort() const { return count_ <= kShort; }
  size_t count_ = 0;
  std::array<T3Tree_Node*, kShort> short_;
  T3NodeList long_;
};
