// Predefined functions: what each takes and gives.
#include "analysis/inference/T3InferenceParts.h"
#include "analysis/inference/T3PatternReferences.h"
#include "analysis/types/T3References.h"

namespace t3infer {
namespace {
struct Conversion {
  T3OwnTypes argument;
  T3Tree_Node* result;
};

// Argument and result of the functions of one value; the result is null where the edition decides.
Conversion ConversionOf(T3Kind kind) {
  switch (kind) {
    case T3Kind::T3Int2Bit:
      return {{gT3IntegerType}, gT3BitStringType};
    case T3Kind::T3Int2Hex:
      return {{gT3IntegerType}, gT3HexStringType};
    case T3Kind::T3Int2Oct:
      return {{gT3IntegerType}, gT3OctetStringType};
    case T3Kind::T3Int2Char:
    case T3Kind::T3Int2UniChar:
      return {{gT3IntegerType}, nullptr};
    case T3Kind::T3Char2Int:
      return {CharacterTypes(), gT3IntegerType};
    case T3Kind::T3UniChar2Int:
      return {AllCharacterTypes(), gT3IntegerType};
    case T3Kind::T3Bit2Int:
      return {{gT3BitStringType}, gT3IntegerType};
    case T3Kind::T3Hex2Int:
      return {{gT3HexStringType}, gT3IntegerType};
    case T3Kind::T3Oct2Int:
      return {{gT3OctetStringType}, gT3IntegerType};
    case T3Kind::T3Str2Int:
      return {CharacterTypes(), gT3IntegerType};
    case T3Kind::T3Int2Str:
      return {{gT3IntegerType}, gT3CharStringType};
    case T3Kind::T3Bit2Str:
      return {{gT3BitStringType}, gT3CharStringType};
    case T3Kind::T3Hex2Str:
      return {{gT3HexStringType}, gT3CharStringType};
    case T3Kind::T3Oct2Str:
    case T3Kind::T3Oct2Char:
      return {{gT3OctetStringType}, gT3CharStringType};
    case T3Kind::T3Str2Oct:
    case T3Kind::T3Char2Oct:
      return {CharacterTypes(), gT3OctetStringType};
    case T3Kind::T3Bit2Hex:
      return {{gT3BitStringType}, gT3HexStringType};
    case T3Kind::T3Hex2Oct:
      return {{gT3HexStringType}, gT3OctetStringType};
    case T3Kind::T3Bit2Oct:
      return {{gT3BitStringType}, gT3OctetStringType};
    case T3Kind::T3Hex2Bit:
      return {{gT3HexStringType}, gT3BitStringType};
    case T3Kind::T3Oct2Hex:
      return {{gT3OctetStringType}, gT3HexStringType};
    case T3Kind::T3Oct2Bit:
      return {{gT3OctetStringType}, gT3BitStringType};
    case T3Kind::T3Int2Float:
      return {{gT3IntegerType}, gT3FloatType};
    case T3Kind::T3Float2Int:
      return {{gT3FloatType}, gT3IntegerType};
    case T3Kind::T3Str2Float:
      return {CharacterTypes(), gT3FloatType};
    case T3Kind::T3Enum2Int:
      return {{gT3AnyEnumeratedType}, gT3IntegerType};
    case T3Kind::T3Rnd:
      return {{gT3FloatType}, gT3FloatType};
    default:
      return {{gT3BitStringType}, gT3IntegerType};  // decvalue
  }
}

// Editions 1 and 2 know a type of single characters only.
bool HasSingleCharacters(T3Tree_Node* node) {
  if (node->place == nullptr || node->place->vexa_my_module == nullptr) return false;
  const T3Tree_Node* edition = node->place->vexa_my_module->as<T3Module>()->representation;
  return T3Is<T3TTCN_3_Edition1>(edition) || T3Is<T3TTCN_3_Edition2>(edition);
}

T3Tree_Node* SingleCharacter(T3Tree_Node* node) {
  return node->is<T3Int2UniChar>() ? gT3UniversalCharacterType : gT3CharacterType;
}

T3OwnTypes CharacterResult(T3Tree_Node* node) {
  return {SingleCharacter(node), node->is<T3Int2UniChar>() ? gT3UniversalCharStringType : gT3CharStringType};
}

T3Inference InferReplace(T3Replace* node, T3Candidates& candidates, bool strict, bool report) {
  Fails(node->value, OperandCandidates(candidates));
  Fails(node->index, {gT3IntegerType});
  Fails(node->count, {gT3IntegerType});
  Fails(node->replace_with, {BaseOf(node->value)});
  return FinishAsPart(node, candidates, BaseOf(node->value), strict, report);
}
}  // namespace

T3OwnTypes CharacterTypes() {
  return {gT3CharStringType, gT3CharacterType};
}

T3OwnTypes AllCharacterTypes() {
  return {gT3CharStringType, gT3CharacterType, gT3UniversalCharStringType, gT3UniversalCharacterType};
}

T3Inference InferRegexp(T3Regexp* node, T3Candidates& candidates, bool strict, bool report) {
  Fails(node->argument, OperandCandidates(candidates));
  ResolvePatternReferences(node->pattern);
  Fails(node->pattern, T3Candidates(AllCharacterTypes(), AllCharacterTypes()));
  Fails(node->number, {gT3IntegerType});
  return FinishAsPart(node, candidates, BaseOf(node->argument), strict, report);
}

T3Inference InferPredefined(_T3PreDefinedFunction* node, T3Candidates& candidates, bool strict, bool report) {
  if (auto* replace = node->try_as<T3Replace>()) return InferReplace(replace, candidates, strict, report);
  const Conversion conversion = ConversionOf(node->kind);
  const bool failed = Fails(node->value, T3Candidates(conversion.argument, conversion.argument));
  if (auto* sized =
          node->is<_T3PreDefinedLengthFunction>() ? node->as<_T3PreDefinedLengthFunction>() : nullptr)
    Fails(sized->length, {gT3IntegerType});
  if (auto* decoding = node->try_as<T3DecValue>()) Fails(decoding->decoded_value, Anything());
  if (conversion.result == nullptr && HasSingleCharacters(node))
    return FinishOne(node, candidates, SingleCharacter(node), failed, strict, report);
  if (conversion.result == nullptr) return FinishSet(node, candidates, CharacterResult(node), failed, report);
  return FinishOne(node, candidates, conversion.result, failed, strict, report);
}

T3Inference InferTemplateFunction(_T3PreDefinedTemplateFunction* node, T3Candidates& candidates, bool strict,
                                  bool report) {
  switch (node->kind) {
    case T3Kind::T3Substring: {
      auto* function = node->as<T3Substring>();
      Fails(node->template_value, OperandCandidates(candidates));
      Fails(function->index, {gT3IntegerType});
      Fails(function->count, {gT3IntegerType});
      return FinishAsPart(node, candidates, BaseOf(node->template_value), strict, report);
    }
    case T3Kind::T3Decompose: {
      auto* function = node->as<T3Decompose>();
      const bool failed = Fails(node->template_value, {gT3ObjectIdentifierType});
      Fails(function->index, {gT3IntegerType});
      Fails(function->count, {gT3IntegerType});
      return FinishOne(node, candidates, gT3ObjectIdentifierType, failed, strict, report);
    }
    case T3Kind::T3LengthOf:
    case T3Kind::T3SizeOf:
    case T3Kind::T3SizeOfType:
      return FinishOne(node, candidates, gT3IntegerType, Fails(node->template_value, Anything()), strict,
                       report);
    case T3Kind::T3EncValue:
      return FinishOne(node, candidates, gT3BitStringType, Fails(node->template_value, Anything()), strict,
                       report);
    default:  // ispresent, ischosen, isvalue
      return FinishOne(node, candidates, gT3BooleanType, Fails(node->template_value, Anything()), strict,
                       report);
  }
}

namespace {
bool HasOwnType(T3Tree_Node* pattern) {
  auto* definition = pattern->try_as<T3TemplateDef>();
  return definition != nullptr &&
         (!T3Is<T3NoType>(definition->parent) || definition->modifies->is<T3TemplateReference>() ||
          NamesTemplate(definition->constraint));
}

// What has no type by itself has that of the pattern, without its constraints. A pattern with a type of its
// own may be of another one than the value: then it does not match.
void InferValueForPattern(T3Tree_Node* value, T3Tree_Node* pattern) {
  Fails(pattern, Anything());
  const T3Candidates own(ExpressionBaseType(pattern));
  T3Candidates candidates = own;
  if (Infer(value, candidates, false, false) != T3Inference::Unreported) return;
  Fails(value, HasOwnType(pattern) && !value->is<T3CompoundValue>() ? Anything() : own);
}
}  // namespace

T3Inference InferMatch(T3Match* node, T3Candidates& candidates, bool strict, bool report) {
  if (HasOwnType(node->template_value) || node->expression->is<T3CompoundValue>()) {
    InferValueForPattern(node->expression, node->template_value);
  } else {
    Fails(node->expression, Anything());
    const bool no_value = NamesNoValue(node->expression) || BaseOf(node->expression)->is<T3NoType>();
    Fails(node->template_value, no_value ? T3Candidates(gT3ErrorType)
                                         : T3Candidates(LocalOf(node->expression), BaseOf(node->expression)));
  }
  if (node->template_value->is<T3TemplateDef>()) DecideLeft(node->expression, node->template_value);
  node->attr().last_pass = true;
  return FinishOne(node, candidates, gT3BooleanType, false, strict, report);
}

namespace {
bool NamesDeclared(T3Tree_Node* reference) {
  if (!reference->is<_T3Reference>()) return false;
  T3Tree_Node* root = reference;
  while (root->is<_T3Qualification>()) root = root->as<_T3Qualification>()->base;
  const auto is_declared = [](T3Tree_Node* def) { return T3Is<_T3Decl>(def) || T3Is<_T3FormalPar>(def); };
  return is_declared(Def(reference)) || is_declared(Def(root));
}

// Where several types would do, and one is that of the operand itself, it is that one.
void PreferOwnType(T3Tree_Node* operand, T3Candidates& candidates) {
  auto* definition = operand->try_as<T3TemplateDef>();
  if (!NamesDeclared(definition == nullptr ? operand : definition->constraint)) return;
  if (Fails(operand, Anything())) return;
  T3Candidates own = candidates;
  Exclude(own, LocalOf(operand), BaseOf(operand), false, true);
  if (own.CountValid() == 1) candidates = own;
}
}  // namespace

T3Inference InferValueOf(T3ValueOf* node, T3Candidates& candidates, bool strict) {
  if (strict && candidates.CountValid() > 1) PreferOwnType(node->template_value, candidates);
  const T3Inference result = InferAny(node->template_value, candidates);
  SetResult(node, result == T3Inference::Good ? Check(candidates) : gT3ErrorType);
  return result;
}
}  // namespace t3infer
