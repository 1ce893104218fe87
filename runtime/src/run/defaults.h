// The altsteps that a component activated as defaults.
#pragma once

#include "run/component.h"

namespace lumos {

void deactivate_all(Component& component);

}  // namespace lumos
