// The tests of a value against a constraint, as straight-line code.
#pragma once

#include <string_view>

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"
#include "generator/text/LUMOS.h"

/// What a test that fails does.
enum break_on_fail_t { break_return, break_assign, break_by_mode };

/// The texts are those of the caller.
struct CGTest {
  vexa_template_mode_t mode;
  /// The value under test, and the variable that a failure sets to false.
  std::string_view value;
  std::string_view result;
  break_on_fail_t on_fail;
  /// A mismatch is not told: within a list of alternatives it is none.
  bool quiet;
  /// Where in the whole the value stands, for the log.
  std::string_view field;
  /// What is tested, where no run-time value can tell what was expected.
  T3Tree_Node* constraint = nullptr;
};

/// Tests a value of the type.
void GenConstraint(T3Tree_Node* constraint, T3Tree_Node* type, const CGTest& test, CFunction& function);
/// The failure of a test by a condition; `expected` is a run-time value.
void TestForFailure(std::string_view condition, const CGTest& test, std::string_view reason,
                    std::string_view expected, CFunction& function);
