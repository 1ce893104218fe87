// The loop of an `alt`, piece by piece: what `alt`, `call` and `interleave` share.
#pragma once

#include <functional>
#include <string>

#include "FileAPI/CFunction.h"
#include "frontend/T3Tree.h"

namespace cgalt {
/// What `repeat` and `break` in a construct refer to.
struct AltNames {
  std::string repeat_var;
  std::string repeat_label;
  std::string break_label;
  std::string scope;
};

AltNames BeginAlt(CFunction& function);
/// Keeps the names where what lies in a T3AltStmt or T3CallStmt finds them.
void StoreNames(T3Tree_Node* statement, const AltNames& names);
void BeginRounds(const AltNames& names, CFunction& function);
/// The branch for an operation that stands alone.
T3GuardedAlt* GuardedAlt(T3Tree_Node* operation);
/// An alternative for branches that stand where `like` does.
T3AltStmt* AltAround(T3Tree_Node* branches, T3Tree_Node* like);
/// The branch behind that of a trigger in `owner`; null behind any other.
T3GuardedAlt* ExpandTrigger(_T3Alt* alt, T3Tree_Node* owner);
/// A branch of the loop: its guard, its operation, and what follows when that has been successful.
void GenBranch(_T3Alt* alt, const AltNames& names, CFunction& function, const std::function<void()>& body);
void TryDefaults(const AltNames& names, CFunction& function);
/// `alternatives` may have changing guards: what they come to can be another without an event.
void Wait(T3Tree_Node* alternatives, CFunction& function);
void EndRounds(const AltNames& names, CFunction& function);
}  // namespace cgalt
