// Predefined functions: calls of the run-time system.
#include "analysis/types/T3Types.h"
#include "analysis/walk/T3RuleParts.h"
#include "asn1/integration/T3Representation.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/expressions/CGModes.h"
#include "generator/expressions/CGReads.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CGTypeAccess.h"
#include "generator/text/CLocations.h"
#include "generator/text/T3CodeDefs.h"

namespace cg {
namespace {
// Whether the module's edition has the older meaning of some conversions.
bool IsEarlyEdition() {
  T3Tree_Node* edition = CGCurrentModule()->representation;
  return T3Is<T3TTCN_3_Edition1>(edition) || T3Is<T3TTCN_3_Edition2>(edition);
}

// A function of one operand: its word, and the form that the operand is wanted in.
struct Conversion {
  const char* word;
  T3Kind kind;
  vexa_expression_mode_t operand;
};
const Conversion kConversions[] = {
    {LUMO_OCT2CHAR, T3Kind::T3Oct2Char, vexa_rts_mode},
    {LUMO_CHAR2OCT, T3Kind::T3Char2Oct, vexa_rts_mode},
    {LUMO_INT2STR, T3Kind::T3Int2Str, vexa_c_mode},
    {LUMO_INT2FLOAT, T3Kind::T3Int2Float, vexa_c_mode},
    {LUMO_CHAR2INT, T3Kind::T3Char2Int, vexa_rts_mode},
    {LUMO_UNICHAR2INT, T3Kind::T3UniChar2Int, vexa_rts_mode},
    {LUMO_BIT2INT, T3Kind::T3Bit2Int, vexa_rts_mode},
    {LUMO_HEX2INT, T3Kind::T3Hex2Int, vexa_rts_mode},
    {LUMO_OCT2INT, T3Kind::T3Oct2Int, vexa_rts_mode},
    {LUMO_FLOAT2INT, T3Kind::T3Float2Int, vexa_c_mode},
    {LUMO_ENUM2INT, T3Kind::T3Enum2Int, vexa_rts_mode},
    {LUMO_BIT2STR, T3Kind::T3Bit2Str, vexa_rts_mode},
    {LUMO_HEX2STR, T3Kind::T3Hex2Str, vexa_rts_mode},
    {LUMO_BIT2HEX, T3Kind::T3Bit2Hex, vexa_rts_mode},
    {LUMO_HEX2OCT, T3Kind::T3Hex2Oct, vexa_rts_mode},
    {LUMO_BIT2OCT, T3Kind::T3Bit2Oct, vexa_rts_mode},
    {LUMO_HEX2BIT, T3Kind::T3Hex2Bit, vexa_rts_mode},
    {LUMO_OCT2HEX, T3Kind::T3Oct2Hex, vexa_rts_mode},
    {LUMO_OCT2BIT, T3Kind::T3Oct2Bit, vexa_rts_mode},
    {LUMO_RND, T3Kind::T3Rnd, vexa_rts_mode},
};

// The words that depend on the edition or on the type of the result; empty for other kinds.
std::string VaryingWord(T3Tree_Node* node) {
  const bool early = IsEarlyEdition();
  T3Tree_Node* type = TypeOf(node);
  const bool is_string = type->is<T3CharStringType>() || type->is<T3UniversalCharStringType>();
  switch (node->kind) {
    case T3Kind::T3Oct2Str:
      return early ? LUMO_OCT2CHAR : LUMO_OCT2STR;
    case T3Kind::T3Str2Oct:
      return early ? LUMO_CHAR2OCT : LUMO_STR2OCT;
    case T3Kind::T3Str2Int:
      return early ? LUMO_STR2INT_ZERO : LUMO_STR2INT;
    case T3Kind::T3Str2Float:
      return early ? LUMO_STR2FLOAT_ZERO : LUMO_STR2FLOAT;
    case T3Kind::T3Int2Char:
      return is_string ? LUMO_INT2CHARSTR : LUMO_INT2CHAR;
    case T3Kind::T3Int2UniChar:
      return is_string ? LUMO_INT2UNICHARSTR : LUMO_INT2UNICHAR;
    default:
      return "";
  }
}

const Conversion* ConversionOf(T3Kind kind) {
  for (const Conversion& conversion : kConversions)
    if (conversion.kind == kind) return &conversion;
  return nullptr;
}

// Stores the call of a function whose result is a run-time value.
void Store(T3Tree_Node* node, std::string_view word, std::vector<std::string> arguments, Mode mode) {
  arguments.emplace_back(AllocationMode(mode.allocation));
  arguments.emplace_back(VEXA_CONTEXT);
  SetRTSLocation(node, Call(word, arguments));
}

// The operands of a function in their order, each in the form that is wanted of it.
struct Wanted {
  T3Tree_Node* operand;
  vexa_expression_mode_t form;
  bool is_index = false;
  Mode mode = vexa_temp_alloc;
};

std::vector<std::string> InOrder(const std::vector<Wanted>& all, CFunction& function) {
  std::vector<T3Tree_Node*> nodes;
  for (const Wanted& one : all) nodes.push_back(one.operand);
  const Operands operands(nodes);
  std::vector<std::string> texts;
  for (size_t i = 0; i < all.size(); ++i) {
    CGExpression(nodes[i], all[i].form, all[i].mode, function);
    ShortLocation(nodes[i], all[i].form, function);
    const std::string_view text = OperandInOrder(operands, i, all[i].form, function);
    texts.push_back(all[i].is_index ? CastToUnsignedLong(text) : std::string(text));
  }
  return texts;
}

// The functions are told what stands there, a template too.
std::string_view AsTemplate(T3Tree_Node* operand, CFunction& function) {
  return InRTS(operand, CGTemplateMode(), function);
}

// A reference may lead to nothing; what stands in calls and operators on the way is read as anywhere else.
std::string_view Probed(T3Tree_Node* operand, CFunction& function) {
  if (!operand->is<T3Qualifier>() && !operand->is<T3Subscription>()) return AsTemplate(operand, function);
  return InRTS(operand, CGTemplateMode().with(CGAccess::Probe), function);
}

// What has been decoded goes to the second operand, and what is left of the bits to the first one.
void Decode(T3DecValue* node, Mode mode, CFunction& function) {
  const std::string bits(AsTemplate(node->value, function));
  const std::string decoded(InRTS(node->decoded_value, CGTemplateMode().with(CGAccess::Write), function));
  Store(node, LUMO_DECVALUE, {bits, decoded}, mode);
}

void Plain(_T3PreDefinedFunction* node, Mode mode, CFunction& function) {
  if (auto* decoding = node->try_as<T3DecValue>()) return Decode(decoding, mode, function);
  if (auto* sized = node->try_as<_T3PreDefinedLengthFunction>()) {
    const char* word = node->is<T3Int2Bit>()   ? LUMO_INT2BIT
                       : node->is<T3Int2Hex>() ? LUMO_INT2HEX
                                               : LUMO_INT2OCT;
    return Store(node, word, InOrder({{node->value, vexa_c_mode}, {sized->length, vexa_c_mode}}, function),
                 mode);
  }
  if (auto* replace = node->try_as<T3Replace>()) {
    return Store(node, LUMO_REPLACE,
                 InOrder({{node->value, vexa_rts_mode},
                          {replace->index, vexa_c_mode, true},
                          {replace->count, vexa_c_mode, true},
                          {replace->replace_with, vexa_rts_mode}},
                         function),
                 mode);
  }
  const std::string varying = VaryingWord(node);
  if (!varying.empty()) {
    const bool from_number = node->is<T3Int2Char>() || node->is<T3Int2UniChar>();
    return Store(node, varying,
                 {std::string(from_number ? InC(node->value, function)
                                          : InRTS(node->value, vexa_temp_alloc, function))},
                 mode);
  }
  const Conversion* conversion = ConversionOf(node->kind);
  if (conversion == nullptr) NotSupported(node);
  Store(node, conversion->word,
        {std::string(conversion->operand == vexa_c_mode ? InC(node->value, function)
                                                        : InRTS(node->value, vexa_temp_alloc, function))},
        mode);
}

// `ispresent` and `ischosen` ask the value around the field.
void AskField(T3Tree_Node* node, T3Tree_Node* operand, CFunction& function) {
  auto* field = operand->try_as<T3Qualifier>();
  if (field == nullptr) NotSupported(node);
  const std::string_view parent =
      node->is<T3IsPresent>() ? Probed(WholeOf(field), function) : AsTemplate(WholeOf(field), function);
  const int64_t index = PlaceOfField(field);
  SetCLocation(node, Call(node->is<T3IsPresent>() ? LUMO_ISPRESENT : LUMO_ISCHOSEN,
                          {parent, std::to_string(index), VEXA_CONTEXT}));
}

// What a type itself, or one below something that need not be there, is asked by: a value without contents.
std::string OfItsType(T3Tree_Node* operand, CFunction& function) {
  if (!NamesType(operand) && !operand->is<T3Qualifier>() && !operand->is<T3Subscription>())
    return std::string(AsTemplate(operand, function));
  return Call(LUMO_TYPE_INSTANTIATE_VALUE,
              {VEXATypeRef(ExpressionLocalType(operand)), LUMO_TEMP_ALLOC_C, VEXA_CONTEXT});
}

void PartOf(T3Tree_Node* node, const char* word, T3Tree_Node* whole, T3Tree_Node* index, T3Tree_Node* count,
            Mode mode, CFunction& function) {
  Store(node, word,
        InOrder({{whole, vexa_rts_mode, false, CGTemplateMode()},
                 {index, vexa_c_mode, true},
                 {count, vexa_c_mode, true}},
                function),
        mode);
}

void OfTemplate(_T3PreDefinedTemplateFunction* node, Mode mode, CFunction& function) {
  T3Tree_Node* operand = node->template_value;
  if (auto* definition = operand->try_as<T3TemplateDef>()) operand = definition->constraint;
  if (node->is<T3IsPresent>() || node->is<T3IsChosen>()) return AskField(node, operand, function);
  if (node->is<T3SizeOfType>() || NamesType(operand))
    return SetCLocation(node,
                        CastToLongLong(Call(LUMO_SIZEOFTYPE, {OfItsType(operand, function), VEXA_CONTEXT})));
  if (auto* part = node->try_as<T3Substring>())
    return PartOf(node, LUMO_SUBSTRING, operand, part->index, part->count, mode, function);
  if (auto* part = node->try_as<T3Decompose>())
    return PartOf(node, LUMO_DECOMPOSE, operand, part->index, part->count, mode, function);
  const std::string_view value =
      node->is<T3IsValue>() ? Probed(operand, function) : AsTemplate(operand, function);
  switch (node->kind) {
    case T3Kind::T3LengthOf:
      return SetCLocation(node, CastToLongLong(Call(LUMO_LENGTH_OF, {value, VEXA_CONTEXT})));
    case T3Kind::T3SizeOf:
      return SetCLocation(node, CastToLongLong(Call(LUMO_SIZE_OF, {value, VEXA_CONTEXT})));
    case T3Kind::T3IsValue:
      return SetCLocation(node, Call(LUMO_ISVALUE, {value, VEXA_CONTEXT}));
    case T3Kind::T3EncValue:
      return Store(node, LUMO_ENCVALUE, {std::string(value)}, mode);
    default:
      NotSupported(node);
  }
}
}  // namespace

bool PreDefinedFunction(T3Tree_Node* node, Mode mode, CFunction& function) {
  if (auto* plain = node->try_as<_T3PreDefinedFunction>()) {
    Plain(plain, mode, function);
  } else if (auto* of_template = node->try_as<_T3PreDefinedTemplateFunction>()) {
    OfTemplate(of_template, mode, function);
  } else if (auto* regexp = node->try_as<T3Regexp>()) {
    Store(node, LUMO_REGEXP_REGEXP,
          InOrder({{regexp->argument, vexa_rts_mode},
                   {regexp->pattern, vexa_rts_mode},
                   {regexp->number, vexa_c_mode}},
                  function),
          mode);
  } else {
    return false;
  }
  return true;
}
}  // namespace cg
