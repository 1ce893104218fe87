#include "generator/text/T3Decompile.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string_view>

#include "frontend/T3KindCover.h"
#include "generator/text/LUMOS.h"

namespace {
constexpr const char* kNotAvailable = "<Description is n/a>";
// The trees of a program nest as deep as the parser allows; a text for a log need not.
constexpr int kMaxDepth = 500;
int g_depth = 0;

struct Word {
  T3Kind kind;
  const char* text;
};

// Operators and what is spelled by one word.
constexpr Word kWords[] = {
    {T3Kind::T3Minus, "-"},
    {T3Kind::T3Plus, "+"},
    {T3Kind::T3Divide, "/"},
    {T3Kind::T3Multiply, "*"},
    {T3Kind::T3Mod, "mod"},
    {T3Kind::T3Rem, "rem"},
    {T3Kind::T3And, "and"},
    {T3Kind::T3Or, "or"},
    {T3Kind::T3Xor, "xor"},
    {T3Kind::T3And4b, "and4b"},
    {T3Kind::T3Or4b, "or4b"},
    {T3Kind::T3Xor4b, "xor4b"},
    {T3Kind::T3Equal, "=="},
    {T3Kind::T3NotEqual, "!="},
    {T3Kind::T3Less, "<"},
    {T3Kind::T3Greater, ">"},
    {T3Kind::T3LessOrEqual, "<="},
    {T3Kind::T3GreaterOrEqual, ">="},
    {T3Kind::T3Concatenate, "&"},
    {T3Kind::T3ShiftLeft, "<<"},
    {T3Kind::T3ShiftRight, ">>"},
    {T3Kind::T3RotateLeft, "<@"},
    {T3Kind::T3RotateRight, "@>"},
    {T3Kind::T3UnaryMinus, "-"},
    {T3Kind::T3UnaryNot, "not "},
    {T3Kind::T3UnaryNot4b, "not4b "},
    {T3Kind::T3NotUsedSymbol, "-"},
    {T3Kind::T3Omit, "omit"},
    {T3Kind::T3Infinity, "infinity"},
    {T3Kind::T3NoWait, "nowait"},
    {T3Kind::T3Null, "null"},
    {T3Kind::T3AnyValue, "?"},
    {T3Kind::T3AnyOrOmit, "*"},
    {T3Kind::T3Self, "self"},
    {T3Kind::T3MTC, "mtc"},
    {T3Kind::T3System, "system"},
    {T3Kind::T3AnyTimer, "any timer"},
    {T3Kind::T3AllTimer, "all timer"},
    {T3Kind::T3AnyPort, "any port"},
    {T3Kind::T3AllPort, "all port"},
    {T3Kind::T3AnyComponent, "any component"},
    {T3Kind::T3AllComponent, "all component"},
    {T3Kind::T3GetVerdict, "getverdict"},
    {T3Kind::T3PortAll, "all port"},
    {T3Kind::T3Int2Bit, "int2bit"},
    {T3Kind::T3Int2Hex, "int2hex"},
    {T3Kind::T3Int2Oct, "int2oct"},
    {T3Kind::T3Int2Char, "int2char"},
    {T3Kind::T3Char2Int, "char2int"},
    {T3Kind::T3Int2UniChar, "int2unichar"},
    {T3Kind::T3UniChar2Int, "unichar2int"},
    {T3Kind::T3Bit2Int, "bit2int"},
    {T3Kind::T3Hex2Int, "hex2int"},
    {T3Kind::T3Oct2Int, "oct2int"},
    {T3Kind::T3Str2Int, "str2int"},
    {T3Kind::T3Int2Str, "int2str"},
    {T3Kind::T3Bit2Str, "bit2str"},
    {T3Kind::T3Hex2Str, "hex2str"},
    {T3Kind::T3Oct2Str, "oct2str"},
    {T3Kind::T3Str2Oct, "str2oct"},
    {T3Kind::T3Oct2Char, "oct2char"},
    {T3Kind::T3Char2Oct, "char2oct"},
    {T3Kind::T3Bit2Hex, "bit2hex"},
    {T3Kind::T3Hex2Oct, "hex2oct"},
    {T3Kind::T3Bit2Oct, "bit2oct"},
    {T3Kind::T3Hex2Bit, "hex2bit"},
    {T3Kind::T3Oct2Hex, "oct2hex"},
    {T3Kind::T3Oct2Bit, "oct2bit"},
    {T3Kind::T3Int2Float, "int2float"},
    {T3Kind::T3Float2Int, "float2int"},
    {T3Kind::T3Str2Float, "str2float"},
    {T3Kind::T3Enum2Int, "enum2int"},
    {T3Kind::T3Rnd, "rnd"},
    {T3Kind::T3Replace, "replace"},
    {T3Kind::T3DecValue, "decvalue"},
    {T3Kind::T3Substring, "substr"},
    {T3Kind::T3Decompose, "decomp"},
    {T3Kind::T3LengthOf, "lengthof"},
    {T3Kind::T3SizeOf, "sizeof"},
    {T3Kind::T3SizeOfType, "sizeoftype"},
    {T3Kind::T3IsPresent, "ispresent"},
    {T3Kind::T3IsChosen, "ischosen"},
    {T3Kind::T3IsValue, "isvalue"},
    {T3Kind::T3EncValue, "encvalue"},
    {T3Kind::T3Integer, "integer"},
    {T3Kind::T3Float, "float"},
    {T3Kind::T3Boolean, "boolean"},
    {T3Kind::T3VerdictType, "verdicttype"},
    {T3Kind::T3BitStringType, "bitstring"},
    {T3Kind::T3OctetStringType, "octetstring"},
    {T3Kind::T3HexStringType, "hexstring"},
    {T3Kind::T3CharStringType, "charstring"},
    {T3Kind::T3UniversalCharStringType, "universal charstring"},
    {T3Kind::T3CharacterType, "char"},
    {T3Kind::T3UniversalCharacterType, "universal char"},
    {T3Kind::T3ObjectIdentifierType, "objid"},
    {T3Kind::T3TimerType, "timer"},
    {T3Kind::T3Default, "default"},
    {T3Kind::T3Address, "address"},
    {T3Kind::T3AnyType, "anytype"},
};

struct Spelled {
  static constexpr bool Has(size_t kind) {
    return std::any_of(std::begin(kWords), std::end(kWords),
                       [kind](const Word& word) { return static_cast<size_t>(word.kind) == kind; });
  }
};
using FromParts =
    T3Kinds<T3IntLiteral, T3FloatLiteral, T3BooleanLiteral, T3VerdictLiteral, T3ObjectIdentifierLiteral,
            T3CharStringLiteral, T3UnivCharStringLiteral, T3BitStringLiteral, T3OctStringLiteral,
            T3HexStringLiteral, T3UnivCharLiteral, T3Regexp, T3Identifier, T3PortIdentifier,
            T3PortArrayElement, T3Parameterization, T3Qualifier, T3Subscription, T3CompoundValue, T3Match,
            T3ValueOf, T3LengthRange, T3Complement, T3ValueList, T3ValueRange, _T3SpecialStringMatch,
            T3CharStringMatch, _T3SuperOrSubSet, ExtraMatchingExpressions>;
// What a template can't hold: operations of components, and names of other things than values.
using NotAvailable = T3Kinds<T3NoExpression, T3Execute, T3Create, T3Running, T3Alive, T3Read, T3Activate,
                             _T3AddressReference, T3ObjIdQualifier>;
static_assert(T3Covers<_T3Expression, Spelled, FromParts, NotAvailable>());

// Null for what is not spelled by a word.
const char* WordOf(T3Tree_Node* node) {
  static constexpr auto by_kind = [] {
    std::array<const char*, kT3KindCount> words{};
    for (const Word& word : kWords) words[static_cast<size_t>(word.kind)] = word.text;
    return words;
  }();
  return by_kind[static_cast<size_t>(node->kind)];
}

std::string Text(tStringRef string) {
  return std::string(StringM::StGetString(string));
}
std::string Name(tIdent name) {
  return std::string(gIdents.GetString(name));
}

// A node of any kind that stands for a value.
std::string Decompile(T3Tree_Node* node);

// Adds an item to a list.
void Append(std::string& list, const std::string& item) {
  if (!list.empty()) list += ", ";
  list += item;
}

// ---- Operators ----

std::string EncloseExpressionInBrackets(T3Tree_Node* outer, T3Tree_Node* inner) {
  const int precedence = GetOperatorPrecendence(inner);
  const std::string text = Decompile(inner);
  return precedence > 0 && precedence < GetOperatorPrecendence(outer) ? "(" + text + ")" : text;
}

std::string Infix(T3Tree_Node* node, T3Tree_Node* left, T3Tree_Node* right) {
  return EncloseExpressionInBrackets(node, left) + " " + WordOf(node) + " " +
         EncloseExpressionInBrackets(node, right);
}

// ---- Literals ----

const char* DecompileVerdict(t3_verdict_t verdict) {
  switch (verdict) {
    case t3_verdict_t::Pass:
      return "pass";
    case t3_verdict_t::Fail:
      return "fail";
    case t3_verdict_t::Inconc:
      return "inconc";
    case t3_verdict_t::None:
      return "none";
    default:
      return "error";
  }
}

std::string DecompileUCharLiteral(T3UnivCharLiteral* node) {
  return "char(" + Decompile(node->group) + ", " + Decompile(node->plane) + ", " + Decompile(node->row) +
         ", " + Decompile(node->cell) + ")";
}

std::string DecompileObjIdList(T3Tree_Node* list) {
  std::string text = "objid {";
  for (auto* item : Items<T3ObjIdItem>(list)) text += " " + Decompile(item->obj_id_item);
  return text + " }";
}

// A quote inside is written twice.
std::string DecompileString(std::string_view value) {
  std::string text;
  for (size_t i = 0; i < value.size(); ++i) {
    text += value[i];
    if (value[i] == '"' && i > 0 && i + 1 < value.size()) text += '"';
  }
  return text;
}

std::string DecompileLiteralExpression(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3IntLiteral:
      return Text(node->as<T3IntLiteral>()->value);
    case T3Kind::T3FloatLiteral:
      return Text(node->as<T3FloatLiteral>()->value);
    case T3Kind::T3BooleanLiteral:
      return node->as<T3BooleanLiteral>()->value ? "true" : "false";
    case T3Kind::T3VerdictLiteral:
      return DecompileVerdict(node->as<T3VerdictLiteral>()->value);
    case T3Kind::T3CharStringLiteral:
      return DecompileString(StringM::StGetString(node->as<T3CharStringLiteral>()->value));
    case T3Kind::T3UnivCharStringLiteral:
      return DecompileString(StringM::StGetString(node->as<T3UnivCharStringLiteral>()->value));
    case T3Kind::T3BitStringLiteral:
      return Text(node->as<T3BitStringLiteral>()->value);
    case T3Kind::T3OctStringLiteral:
      return Text(node->as<T3OctStringLiteral>()->value);
    case T3Kind::T3HexStringLiteral:
      return Text(node->as<T3HexStringLiteral>()->value);
    case T3Kind::T3UnivCharLiteral:
      return DecompileUCharLiteral(node->as<T3UnivCharLiteral>());
    case T3Kind::T3ObjectIdentifierLiteral:
      return DecompileObjIdList(node->as<T3ObjectIdentifierLiteral>()->value);
    default:
      return kNotAvailable;
  }
}

// ---- Matching ----

std::string DecompileValueList(T3Tree_Node* list) {
  std::string text;
  for (auto* item : Items<T3ValueListItem>(list)) Append(text, Decompile(item->value));
  return "(" + text + ")";
}

std::string DecompileBound(T3Tree_Node* bound) {
  if (auto* single = bound->try_as<T3SingleBound>()) return "(" + Decompile(single->ub) + ")";
  if (auto* range = bound->try_as<T3RangeBound>())
    return "(" + Decompile(range->lb) + ".." + Decompile(range->ub) + ")";
  return kNotAvailable;
}

// The text as it was written, with the names in braces where they stood.
std::string DecompilePattern(T3Tree_Node* node) {
  if (auto* join = node->try_as<T3Concatenate>())
    return DecompilePattern(join->left) + DecompilePattern(join->right);
  if (!node->is<T3CharStringLiteral>()) return "{" + Decompile(node) + "}";
  const std::string text = Decompile(node);
  return text.substr(1, text.size() - 2);
}

std::string DecompileMatchingExpression(T3Tree_Node* node) {
  if (auto* list = node->try_as<T3ValueList>()) return DecompileValueList(list->values);
  if (auto* others = node->try_as<T3Complement>()) return "complement" + DecompileValueList(others->values);
  if (auto* range = node->try_as<T3ValueRange>())
    return "(" + Decompile(range->lb) + " .. " + Decompile(range->ub) + ")";
  if (auto* pattern = node->try_as<_T3SpecialStringMatch>()) return "pattern " + Text(pattern->value);
  if (auto* pattern = node->try_as<T3CharStringMatch>())
    return "pattern \"" + DecompilePattern(pattern->pattern) + "\"";
  if (auto* set = node->try_as<_T3SuperOrSubSet>())
    return (node->is<T3SubSet>() ? "subset" : "superset") + DecompileValueList(set->values);
  return kNotAvailable;
}

std::string DecompileExtraMatchingExpressions(ExtraMatchingExpressions* node) {
  std::string text = Decompile(node->object);
  if (auto* sized = node->try_as<T3LengthMatch>()) text += " length" + DecompileBound(sized->size);
  if (auto* sized = node->try_as<T3IfPresentIfLengthMatch>()) text += " length" + DecompileBound(sized->size);
  if (!node->is<T3LengthMatch>()) text += " ifpresent";
  return text;
}

// ---- Compound values ----

void AddFieldSpec(std::string& text, T3Tree_Node* spec) {
  if (auto* name = spec->try_as<T3FieldName>()) {
    const bool qualified = name->module != nullptr && name->module->is<T3Identifier>();
    if (qualified) text.append(gIdents.GetString(name->module->as<T3Identifier>()->id)).append(".");
    text.append(gIdents.GetString(name->name)).append(" := ");
  } else if (auto* index = spec->try_as<T3FieldIndex>()) {
    text.append("[").append(Decompile(index->index)).append("] := ");
  }
}

bool BeginsPermutation(t3_permutation_kind_t kind) {
  return kind == t3_permutation_kind_t::Head || kind == t3_permutation_kind_t::HeadTail;
}
bool EndsPermutation(t3_permutation_kind_t kind) {
  return kind == t3_permutation_kind_t::Tail || kind == t3_permutation_kind_t::HeadTail;
}

void AddFieldValue(std::string& text, T3FieldValue* value) {
  if (BeginsPermutation(value->permutation_kind)) text += "permutation(";
  AddFieldSpec(text, value->field);
  text += Decompile(value->value);
  if (EndsPermutation(value->permutation_kind)) text += ')';
}

std::string DecompileCompoundValue(T3CompoundValue* node) {
  std::string text = "{";
  for (auto* at : Items<T3FieldValue>(node->value)) {
    if (text.size() > 1) text += ", ";
    AddFieldValue(text, at);
  }
  return text += '}';
}

// ---- References and calls ----

std::string DecompileType(T3Tree_Node* type) {
  if (auto* reference = type->try_as<T3TypeReference>()) return Decompile(reference->reference);
  const char* word = type->is<_T3BuiltinType>() ? WordOf(type) : nullptr;
  return word != nullptr ? word : kNotAvailable;
}

// A template that is given in the place of a value, with its type and what it modifies.
std::string DecompileInlineTemplate(T3TemplateDef* definition) {
  std::string text;
  if (definition->parent->is<T3TypeReference>() || definition->parent->is<_T3BuiltinType>())
    text = DecompileType(definition->parent) + " : ";
  if (auto* modifies = definition->modifies->try_as<T3TemplateReference>())
    text += "modifies " + Decompile(modifies->reference) + " := ";
  return text + Decompile(definition->constraint);
}

std::string DecompileActualParList(T3Tree_Node* list) {
  std::string text;
  for (auto* actual : Items<T3ActualPar>(list)) Append(text, Decompile(actual->expression));
  return "(" + text + ")";
}

std::string DecompileQualification(T3Tree_Node* node) {
  if (auto* call = node->try_as<T3Parameterization>())
    return Decompile(call->base) + DecompileActualParList(call->apl);
  if (auto* field = node->try_as<T3Qualifier>()) return Decompile(field->base) + "." + Name(field->id);
  if (auto* element = node->try_as<T3Subscription>())
    return Decompile(element->base) + "[" + Decompile(element->index) + "]";
  return kNotAvailable;
}

// A call by the word of the kind; operands that are not there are left out.
std::string CallOf(T3Tree_Node* node, std::initializer_list<T3Tree_Node*> operands) {
  const char* word = WordOf(node);
  if (word == nullptr) return kNotAvailable;
  std::string text;
  for (T3Tree_Node* operand : operands)
    if (operand != nullptr && !operand->is<T3NoExpression>()) Append(text, Decompile(operand));
  return word + ("(" + text + ")");
}

std::string DecompilePredefinedFunction(_T3PreDefinedFunction* node) {
  if (auto* sized = node->try_as<_T3PreDefinedLengthFunction>())
    return CallOf(node, {node->value, sized->length});
  if (auto* decode = node->try_as<T3DecValue>()) return CallOf(node, {node->value, decode->decoded_value});
  if (auto* replace = node->try_as<T3Replace>())
    return CallOf(node, {node->value, replace->index, replace->count, replace->replace_with});
  return CallOf(node, {node->value});
}

std::string DecompilePredefinedTemplateFunction(_T3PreDefinedTemplateFunction* node) {
  if (auto* part = node->try_as<T3Substring>())
    return CallOf(node, {node->template_value, part->index, part->count});
  if (auto* part = node->try_as<T3Decompose>())
    return CallOf(node, {node->template_value, part->index, part->count});
  return CallOf(node, {node->template_value});
}

std::string DecompilePortReference(T3Tree_Node* node) {
  if (auto* port = node->try_as<T3PortIdentifier>()) return Name(port->name);
  if (auto* element = node->try_as<T3PortArrayElement>())
    return Decompile(element->base) + "[" + Decompile(element->index) + "]";
  return kNotAvailable;
}

std::string DecompileReference(T3Tree_Node* node) {
  if (auto* name = node->try_as<T3Identifier>()) return Name(name->id);
  if (node->is<_T3Qualification>()) return DecompileQualification(node);
  if (auto* function = node->try_as<_T3PreDefinedFunction>()) return DecompilePredefinedFunction(function);
  if (auto* function = node->try_as<_T3PreDefinedTemplateFunction>())
    return DecompilePredefinedTemplateFunction(function);
  if (auto* regexp = node->try_as<T3Regexp>())
    return "regexp(" + Decompile(regexp->argument) + ", " + Decompile(regexp->pattern) + ", " +
           Decompile(regexp->number) + ")";
  if (node->is<_T3PortReference>()) return DecompilePortReference(node);
  return kNotAvailable;
}

// Forms that are spelled by one word and stand alone.
bool IsWord(T3Tree_Node* node) {
  return !node->is<_T3PreDefinedFunction>() && !node->is<_T3PreDefinedTemplateFunction>() &&
         WordOf(node) != nullptr;
}

std::string DecompileNode(T3Tree_Node* node) {
  if (auto* definition = node->try_as<T3TemplateDef>()) return DecompileInlineTemplate(definition);
  if (node->is<_T3Type>()) return DecompileType(node);
  if (auto* both = node->try_as<_T3BinaryExpression>()) return Infix(node, both->left, both->right);
  if (auto* shift = node->try_as<_T3ShiftOrRotateExpression>())
    return Infix(node, shift->value, shift->shift);
  if (auto* one = node->try_as<_T3UnaryExpression>())
    return WordOf(node) + EncloseExpressionInBrackets(node, one->arg);
  if (IsWord(node)) return WordOf(node);
  if (node->is<_T3LiteralExpression>()) return DecompileLiteralExpression(node);
  if (node->is<_T3MatchingExpression>()) return DecompileMatchingExpression(node);
  if (auto* extra = node->try_as<ExtraMatchingExpressions>()) return DecompileExtraMatchingExpressions(extra);
  if (auto* compound = node->try_as<T3CompoundValue>()) return DecompileCompoundValue(compound);
  if (auto* range = node->try_as<T3LengthRange>())
    return "length(" + Decompile(range->lb) + " .. " + Decompile(range->ub) + ")";
  if (auto* match = node->try_as<T3Match>())
    return "match(" + Decompile(match->expression) + "," + Decompile(match->template_value) + ")";
  if (auto* value = node->try_as<T3ValueOf>()) return "valueof(" + Decompile(value->template_value) + ")";
  return node->is<_T3Reference>() ? DecompileReference(node) : kNotAvailable;
}

std::string Decompile(T3Tree_Node* node) {
  if (node == nullptr || g_depth >= kMaxDepth) return kNotAvailable;
  ++g_depth;
  std::string text = DecompileNode(node);
  --g_depth;
  return text;
}
}  // namespace

int GetOperatorPrecendence(T3Tree_Node* expression) {
  switch (expression->kind) {
    case T3Kind::T3Or:
      return 1;
    case T3Kind::T3Xor:
      return 2;
    case T3Kind::T3And:
      return 3;
    case T3Kind::T3UnaryNot:
      return 4;
    case T3Kind::T3Equal:
    case T3Kind::T3NotEqual:
      return 5;
    case T3Kind::T3Or4b:
      return 8;
    case T3Kind::T3Xor4b:
      return 9;
    case T3Kind::T3And4b:
      return 10;
    case T3Kind::T3UnaryNot4b:
      return 11;
    case T3Kind::T3Plus:
    case T3Kind::T3Minus:
    case T3Kind::T3Concatenate:
      return 12;
    case T3Kind::T3UnaryMinus:
      return 13;
    default:
      if (expression->is<_T3Relational>()) return 6;
      if (expression->is<_T3ShiftOrRotateExpression>()) return 7;
      return expression->is<_T3BinaryArithmeticExpression>() ? 13 : 0;
  }
}

std::string DecompileExpression(T3Tree_Node* expression) {
  return Decompile(expression);
}

std::string DecompileTemplateDef(T3Tree_Node* definition) {
  auto* def = definition->try_as<T3TemplateDef>();
  return def == nullptr ? kNotAvailable : Decompile(def->constraint);
}

namespace {
// How many bytes the first characters of a text in UTF-8 take.
size_t SizeOfFirst(size_t count, std::string_view text) {
  if (text.size() <= count) return text.size();
  size_t end = 0;
  for (; end < text.size(); ++end) {
    const bool begins = (static_cast<unsigned char>(text[end]) & 0xC0U) != 0x80U;
    if (begins && count-- == 0) break;
  }
  return end;
}

std::string Shortened(std::string text, long limit) {
  const size_t most = limit < 0 ? 0 : static_cast<size_t>(limit);
  if (SizeOfFirst(most, text) < text.size())
    text.replace(SizeOfFirst(most > 3 ? most - 3 : 1, text), std::string::npos, "...");
  return EscapeEscape(text);
}
}  // namespace

std::string GetTemplateDescription(T3Tree_Node* decl, long limit) {
  auto* definition = decl->as<T3TemplateDecl>()->definition->try_as<T3TemplateDef>();
  return definition == nullptr ? "<description is n/a>" : Shortened(DecompileTemplateDef(definition), limit);
}

std::string GetConstraintDescription(T3Tree_Node* constraint, long limit) {
  return Shortened(DecompileExpression(constraint), limit);
}
