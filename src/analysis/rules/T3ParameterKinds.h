// The kinds of formal parameters that some declarations and operations refuse.
#pragma once

#include "frontend/T3Tree.h"

struct ParameterKinds {
  /// `out` or `inout`; ports and timers, which are always passed so, do not count.
  bool out = false;
  bool timer = false;
  bool port = false;
};
/// What a list of formal parameters has.
ParameterKinds KindsOf(T3Tree_Node* fpl);
/// Reports, where it is `refused`, that `what` must not have a `kind` of parameter, at `node`.
void RefuseParameters(T3Tree_Node* node, const char* what, bool refused, const char* kind);
