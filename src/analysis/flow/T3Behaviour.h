// What a behaviour may do at run time, found out from its body and the behaviours that it calls.
#pragma once

#include <span>

#include "analysis/walk/T3Eval.h"

/// True when a function, altstep or test case may create a test component, itself or through what it calls.
bool MayCreatePtc(T3Tree_Node* decl);

std::span<const T3Rule> BehaviourRules();
