// What a call does with its arguments. Parameters by value are values: an argument that something
// written meanwhile could change - what another parameter gives back, a variable of the component -
// is copied. What goes out is unset at first. Arguments by reference live as long as the call.
#pragma once

#include <cstddef>

#include "lumos.h"

namespace lumos {

// Stands while a behaviour runs; the slots have their arguments again behind it.
class Arguments {
 public:
  Arguments(lumo_type_t type, unsigned long argc, lumo_value_t argv[]);
  // Not run when a fault leaves the call: then the task forgets all calls.
  void end();

 private:
  size_t saved_, pinned_;
};

// A fault for an argument that the behaviour, which is called later, may not be given.
void check_arguments(lumo_type_t type, unsigned long argc, lumo_value_t argv[]);

// What a behaviour gave back belongs to the types of its parameters and result, or that is a fault.
void check_results(lumo_type_t type, lumo_value_t argv[]);

}  // namespace lumos
