// Constants in the texts of attributes: '0101'B, 17, "text", a literal of an enumeration, the name of a
// constant.
#pragma once

#include <string_view>

#include "value/value.h"

namespace lumos {

// A value of the type, which is never freed; null if the text is none of it. Names are looked for in the
// module first, then in all modules.
Value read_constant(lumo_type_t type, std::string_view text, const char* module);

}  // namespace lumos
