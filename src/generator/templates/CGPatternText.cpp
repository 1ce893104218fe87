// The texts of patterns, for matching at run time and for straight-line tests alike.
#include <vector>

#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"

namespace cg {
namespace {
// The pattern of a binary string as a text without its quotes and its letter.
std::string SpecialPattern(_T3SpecialStringMatch* node, CFunction& function) {
  const std::string text(StringM::StGetString(node->value));
  const size_t begin = text.find('\'');
  const size_t end = text.rfind('\'');
  const std::string digits =
      begin == std::string::npos || end <= begin ? text : text.substr(begin + 1, end - begin - 1);
  std::string pattern = Temporary(LUMO_VALUE_T, function);
  function.callAndAssign(pattern, LUMO_TYPE_INSTANTIATE_VALUE,
                         {LUMO_CHARSTRING_TYPE, LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
  function.call(LUMO_VALUE_SET_STRING, {pattern, Quote(digits), VEXA_CONTEXT});
  return pattern;
}

// A name in the text of a pattern may be that of a template, whose own pattern is meant.
std::string JoinedPattern(T3Tree_Node* node, CFunction& function) {
  // What is joined first stands innermost: the text is written from its beginning on, and not once a level.
  std::string text;
  std::vector<T3Tree_Node*> behind;
  for (; node->is<T3Concatenate>(); node = node->as<T3Concatenate>()->left) {
    behind.push_back(node->as<T3Concatenate>()->right);
    text += joined({LUMO_CONCATENATE, "("});
  }
  text += InRTS(node, CGTemplateMode(), function);
  for (; !behind.empty(); behind.pop_back())
    text += joined(
        {", ", JoinedPattern(behind.back(), function), ", ", LUMO_TEMP_ALLOC_C, ", ", VEXA_CONTEXT, ")"});
  return text;
}
}  // namespace

std::string PatternText(T3Tree_Node* node, CFunction& function) {
  if (auto* special = node->try_as<_T3SpecialStringMatch>()) return SpecialPattern(special, function);
  return JoinedPattern(node->as<T3CharStringMatch>()->pattern, function);
}
}  // namespace cg
