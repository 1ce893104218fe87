// Encoding and decoding of values as tokens of text, by plans.
#pragma once

#include "codec/text_plan.h"

namespace lumos {

// As raw_encode and raw_decode.
bool text_encode(const TextPlan& plan, Value v, std::string& octets, std::string& fault);
Value text_decode(const TextPlan& plan, std::string_view octets, size_t& taken, std::string& fault);

}  // namespace lumos
