// The texts of patterns, for matching at run time and for straight-line tests alike.
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
  auto* join = node->try_as<T3Concatenate>();
  if (join == nullptr) return std::string(InRTS(node, CGTemplateMode(), function));
  const std::string left = JoinedPattern(join->left, function);
  return Call(LUMO_CONCATENATE,
              {left, JoinedPattern(join->right, function), LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
}
}  // namespace

std::string PatternText(T3Tree_Node* node, CFunction& function) {
  if (auto* special = node->try_as<_T3SpecialStringMatch>()) return SpecialPattern(special, function);
  return JoinedPattern(node->as<T3CharStringMatch>()->pattern, function);
}
}  // namespace cg
