// The name that a user may have meant by one that is not known.
#pragma once

#include <string>
#include <vector>

namespace lumos {

// ", did you mean 'NAME'?" for the name that is nearest, or nothing where none is near.
std::string did_you_mean(const std::string& unknown, const std::vector<std::string>& known);

}  // namespace lumos
