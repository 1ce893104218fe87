// What the units of the constraint generator share: a unit for each group of forms.
#pragma once

#include <string>
#include <vector>

#include "generator/templates/CGConstraint.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace cgtest {
inline std::string Negated(std::string_view condition) {
  return joined({C_NOT, "(", condition, ")"});
}

inline void FailIfOmitted(const CGTest& test, CFunction& function) {
  TestForFailure(joined({test.value, " == ", LUMO_OMIT_VALUE_C}), test, "omit unexpected", LUMO_NO_VALUE_C,
                 function);
}

/// Runs `inner` where there is a value: nothing can be asked of an omitted one.
template <class Inner>
void UnlessOmitted(const CGTest& test, CFunction& function, const Inner& inner) {
  FailIfOmitted(test, function);
  function.beginElse();
  inner();
  function.endIf();
}

/// By the run-time system: what holds templates.
void MatchTemplate(T3Tree_Node* node, const CGTest& test, std::string_view reason, CFunction& function);

// Numbers and lengths.
void TestNumberRange(T3ValueRange* range, T3Tree_Node* type, const CGTest& test, CFunction& function);
/// The length that stands behind a template: a bound or a range of them.
void TestBound(T3Tree_Node* bound, T3Tree_Node* type, const CGTest& test, CFunction& function);
/// A length that is the whole constraint of a subtype.
void TestLengthRange(T3LengthRange* length, T3Tree_Node* type, const CGTest& test, CFunction& function);

// Characters.
/// Each character of the value in one of the ranges, by a table; false, and nothing is written, where their
/// bounds are not known before the suite runs.
bool TestCharacters(const std::vector<T3Tree_Node*>& ranges, T3Tree_Node* type, const CGTest& test,
                    CFunction& function);
/// The items of a list that begins with a range of characters; empty for any other.
std::vector<T3Tree_Node*> CharacterRanges(T3ValueList* list, T3Tree_Node* type);
bool IsOfCharacters(T3Tree_Node* type);
void TestPattern(T3Tree_Node* node, const CGTest& test, CFunction& function);

// What has parts.
void TestCompound(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function);
void TestList(T3CompoundValue* node, T3Tree_Node* type, const CGTest& test, CFunction& function);
void TestSuperOrSubSet(_T3SuperOrSubSet* node, const CGTest& test, CFunction& function);
}  // namespace cgtest
