// Alternatives that did not take a message since the last snapshot. When a verdict worse than pass is set
// then, they tell why: the mismatch is only looked for at that time.
#pragma once

#include <string>

#include "ports/port.h"

namespace lumos {

// The pattern did not match the content.
void note_attempt(Value pattern, Value content, Attempted what = Attempted::value);
// The alternatives go on: they wait, or one of them has taken a message whatever it was, as `trigger` does.
// The attempts up to now may tell why nothing else came; those before are forgotten.
void keep_attempts();
// What was waited for has come.
void forget_past_attempts();
// The content goes out of use: it is kept until the next snapshot if an attempt needs it. Takes it over.
void release_content(Value content);
// Mismatches of the attempts, the nearest first; empty if there are none.
std::vector<std::string> explain_attempts();

}  // namespace lumos
