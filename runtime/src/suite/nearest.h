// Names in messages: one that is not known, and the one that a user may have meant by it.
#pragma once

#include <string>
#include <vector>

namespace lumos {

// A name as messages show it: in quotes, in one line, and cut where it is too long for one.
std::string in_quotes(const std::string& name);
// ", did you mean 'NAME'?" for the name that is nearest, or nothing where none is near.
std::string did_you_mean(const std::string& unknown, const std::vector<std::string>& known);

}  // namespace lumos
