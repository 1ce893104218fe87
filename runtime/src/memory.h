// The pool of value nodes; for the unit that makes and ends values.
#pragma once

#include "value.h"

namespace lumos {

lumo_value_struct* take_node();
void give_node(lumo_value_struct* node);

}  // namespace lumos
