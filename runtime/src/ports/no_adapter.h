// What the substitutes for a missing adapter tell the rest of the library.
#pragma once

namespace lumos {

// Set by a substitute when it is called: nothing is linked that could answer.
extern bool adapter_is_missing;

// True when an adapter is linked that takes messages.
bool has_adapter();

}  // namespace lumos
