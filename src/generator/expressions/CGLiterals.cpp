// Literals: numbers, truth values and texts are expressions of C; all others are run-time values that are
// set.
#include <limits>
#include <vector>

#include "analysis/types/T3Constants.h"
#include "analysis/types/T3References.h"
#include "driver/modules/T3UTF8String.h"
#include "generator/expressions/CGExpressionParts.h"
#include "generator/text/CGModuleText.h"
#include "generator/text/CLocations.h"
#include "generator/text/LUMOS.h"
#include "generator/text/T3CodeDefs.h"
#include "generator/text/T3Context.h"

namespace cg {
std::string CharacterText(char c) {
  if (c == '\'' || c == '\\') return std::string("'\\") + c + "'";
  if (static_cast<unsigned char>(c) >= ' ' && static_cast<unsigned char>(c) < 127)
    return std::string("'") + c + "'";
  std::string octal = "000";
  const auto code = static_cast<unsigned char>(c);
  for (size_t i = 0; i < 3; ++i) octal[2 - i] = static_cast<char>('0' + (code >> (3 * i) & 7U));
  return "'\\" + octal + "'";
}

std::string WideCharacterText(unsigned group, unsigned plane, unsigned row, unsigned cell) {
  return "{" + std::to_string(group) + "," + std::to_string(plane) + "," + std::to_string(row) + "," +
         std::to_string(cell) + "}";
}

namespace {
// The characters of a literal without the quotes around it.
std::string TextOf(T3Tree_Node* literal) {
  const std::string_view written = StringM::StGetString(literal->as<T3CharStringLiteral>()->value);
  return std::string(written.size() < 2 ? written : written.substr(1, written.size() - 2));
}

const std::string& GreatestInteger() {
  static const std::string greatest = std::to_string(std::numeric_limits<int64_t>::max());
  return greatest;
}

// Leading zeros would make an octal number of it.
std::string_view DigitsOf(T3IntLiteral* literal) {
  std::string_view digits = StringM::StGetString(literal->value);
  while (digits.size() > 1 && digits.front() == '0') digits.remove_prefix(1);
  return digits;
}

// A number of more than 64 bits, which was warned of, counts as the greatest one, as for the analysis.
std::string IntegerText(T3IntLiteral* literal) {
  return Call(LUMO_LONG_INTEGER_LITERAL,
              {IsBeyondIntegers(literal) ? GreatestInteger() : std::string(DigitsOf(literal))});
}

std::string CValueString(T3Tree_Node* node) {
  if (auto* integer = node->try_as<T3IntLiteral>()) return IntegerText(integer);
  if (auto* number = node->try_as<T3FloatLiteral>()) return StringM::StGetCStr(number->value);
  if (node->is<T3Infinity>()) return "(1.0 / 0.0)";  // ASN.1 has it as a value
  if (auto* truth = node->try_as<T3BooleanLiteral>()) return truth->value ? C_TRUE : C_FALSE;
  T3Tree_Node* type = TypeOf(node);
  const std::string text = TextOf(node);
  if ((type->is<T3CharacterType>() || type->is<T3UniversalCharacterType>()) && !text.empty())
    return CharacterText(text.front());
  return SliceString(CStringOfLiteral(StringM::StGetString(node->as<T3CharStringLiteral>()->value)), 2000);
}

// ---- Wide characters ----

struct WideChar {
  unsigned char group = 0;
  unsigned char plane = 0;
  unsigned char row = 0;
  unsigned char cell = 0;
};

std::vector<WideChar> WideCharsOf(T3Tree_Node* node) {
  std::vector<WideChar> characters;
  if (auto* quadruple = node->try_as<T3UnivCharLiteral>()) {
    const auto part = [](T3Tree_Node* number) {
      return static_cast<unsigned char>(ConstIntValue(number).value_or(0));
    };
    characters.push_back(
        {part(quadruple->group), part(quadruple->plane), part(quadruple->row), part(quadruple->cell)});
    return characters;
  }
  const std::string text = TextOf(node);
  const auto* at = reinterpret_cast<const unsigned char*>(text.data());
  for (int length = static_cast<int>(text.size()); length > 0;) {
    WideChar c;
    at = UTF_8ToUCS_4(at, length, c.group, c.plane, c.row, c.cell);
    characters.push_back(c);
  }
  return characters;
}

// Makes the value of an array of characters.
void WideCharOrWideString(T3Tree_Node* node, std::string_view array, size_t count, Mode mode,
                          CFunction& function) {
  const std::string target = AllocateRTSValue(node, mode, function);
  if (TypeOf(node)->is<T3UniversalCharacterType>())
    function.call(LUMO_VALUE_SET_UNIVERSAL_CHAR, {target, joined({array, "[0]"}), VEXA_CONTEXT});
  else
    function.call(LUMO_VALUE_SET_UNIVERSAL_CHARSTRING_FROM_WCHAR_ARRAY,
                  {target, array, std::to_string(count), VEXA_CONTEXT});
}

std::string TextOfWideChar(const WideChar& c) {
  return WideCharacterText(c.group, c.plane, c.row, c.cell);
}

// One character stands where it is used.
void GenUniversalChar(T3Tree_Node* node, Mode mode, CFunction& function) {
  const std::vector<WideChar> characters = WideCharsOf(node);
  std::string initializers;
  for (const WideChar& c : characters) initializers += (initializers.empty() ? "" : ", ") + TextOfWideChar(c);
  const std::string name = function.declareArray(LUMO_WIDE_CHAR_T, "{" + initializers + "}");
  WideCharOrWideString(node, name, characters.size(), mode, function);
}

// A text has a table of its own.
std::string WideTable(const std::vector<WideChar>& characters) {
  CFile& file = gT3Context.file();
  auto array = file.beginArray(LUMO_WIDE_CHAR_T, file.uniqueName("vexa_wide_string_literal"), true);
  for (const WideChar& c : characters) array->addElement(TextOfWideChar(c));
  array->end();
  return "((const " + std::string(LUMO_WIDE_CHAR_T) + " *) " + array->name() + ")";
}

void GenUTF8String(T3Tree_Node* node, Mode mode, CFunction& function) {
  const std::vector<WideChar> characters = WideCharsOf(node);
  WideCharOrWideString(node, WideTable(characters), characters.size(), mode, function);
}

// ---- Others ----

const char* VerdictValue(t3_verdict_t verdict) {
  switch (verdict) {
    case t3_verdict_t::Pass:
      return LUMO_VALUE_VERDICT_PASS_C;
    case t3_verdict_t::Fail:
      return LUMO_VALUE_VERDICT_FAIL_C;
    case t3_verdict_t::Inconc:
      return LUMO_VALUE_VERDICT_INCONC_C;
    case t3_verdict_t::None:
      return LUMO_VALUE_VERDICT_NONE_C;
    default:
      return LUMO_VALUE_VERDICT_ERROR_C;
  }
}

// The digits between the apostrophes of '...'X.
std::string Digits(tStringRef literal) {
  const std::string_view text = StringM::StGetString(literal);
  const size_t first = text.find('\'');
  const size_t last = text.rfind('\'');
  std::string digits;
  for (const char c : text.substr(first + 1, last - first - 1))
    if (c != ' ' && c != '\n' && c != '\t' && c != '\r') digits += c;
  return digits;
}

void GenSpecialString(T3Tree_Node* node, Mode mode, CFunction& function) {
  const std::string target = AllocateRTSValue(node, mode, function);
  const char* setter = LUMO_VALUE_SET_BITSTRING;
  tStringRef value = nullptr;
  if (auto* hex = node->try_as<T3HexStringLiteral>()) {
    setter = LUMO_VALUE_SET_HEXSTRING;
    value = hex->value;
  } else if (auto* octets = node->try_as<T3OctStringLiteral>()) {
    setter = LUMO_VALUE_SET_OCTETSTRING;
    value = octets->value;
  } else {
    value = node->as<T3BitStringLiteral>()->value;
  }
  function.call(setter, {target, Quote(Digits(value)), VEXA_CONTEXT});
}

const char* NullWord(T3Tree_Node* type) {
  if (type->is<T3Default>()) return LUMO_VALUE_NULL_DEFAULT_REFERENCE_C;
  return type->is<T3ComponentType>() ? LUMO_VALUE_NULL_COMPONENT_REFERENCE_C : LUMO_VALUE_NULL_ADDRESS_C;
}

// The value of another object identifier, number by number.
void AddObjectIdentifier(T3Tree_Node* item, std::string_view target, CFunction& function) {
  const std::string_view source = InRTS(item, vexa_temp_alloc, function);
  const std::string index = function.getTmpVariable(C_UNSIGNED_LONG);
  const std::string count = function.getTmpVariable(C_UNSIGNED_LONG);
  function.callAndAssign(count, LUMO_SIZE_OF, {source, VEXA_CONTEXT});
  function.beginFor(index, "0", index + " " + C_LT + " " + count, index + "++");
  const std::string number = Call(LUMO_VALUE_GET_OBJECTID_ELEMENT, {source, index, VEXA_CONTEXT});
  function.call(LUMO_VALUE_ADD_OBJECTID_ELEMENT, {target, number, VEXA_CONTEXT});
  function.endFor();
  function.releaseTmpVariable(index);
  function.releaseTmpVariable(count);
}

void GenObjectIdentifierLiteral(T3ObjectIdentifierLiteral* node, Mode mode, CFunction& function) {
  const std::string target = AllocateRTSValue(node, mode, function);
  for (auto* at : Items<T3ObjIdItem>(node->value)) {
    T3Tree_Node* item = at->obj_id_item;
    if (T3Tree_Node* number = NumberInComponent(item)) item = number;
    const auto number = item->is<_T3Expression>() ? ConstIntValue(item) : std::nullopt;
    if (!number && item->is<_T3Reference>() && TypeOf(item)->is<T3ObjectIdentifierType>()) {
      AddObjectIdentifier(item, target, function);
      continue;
    }
    if (!number && (!item->is<_T3Reference>() || !TypeOf(item)->is<T3Integer>())) NotSupported(item);
    const std::string text = number ? Call(LUMO_LONG_INTEGER_LITERAL, {std::to_string(*number)})
                                    : std::string(InC(item, function));
    function.call(LUMO_VALUE_ADD_OBJECTID_ELEMENT, {target, text, VEXA_CONTEXT});
  }
}
}  // namespace

bool IsWideLiteral(T3Tree_Node* node) {
  if (node->is<T3UnivCharLiteral>()) return true;
  auto* literal = node->try_as<T3CharStringLiteral>();
  if (literal == nullptr) return false;
  for (const char c : StringM::StGetString(literal->value))
    if ((static_cast<unsigned char>(c) & 0x80U) != 0) return true;
  return false;
}

bool IsWideText(T3Tree_Node* node) {
  return node->is<T3CharStringLiteral>() && IsWideLiteral(node) &&
         TypeOf(node)->is<T3UniversalCharStringType>();
}

void SetWideText(T3Tree_Node* node, std::string_view target, CFunction& function) {
  const std::vector<WideChar> characters = WideCharsOf(node);
  function.call(LUMO_VALUE_SET_UNIVERSAL_CHARSTRING_FROM_WCHAR_ARRAY,
                {target, WideTable(characters), std::to_string(characters.size()), VEXA_CONTEXT});
}

bool IsBeyondIntegers(T3Tree_Node* node) {
  auto* literal = node->try_as<T3IntLiteral>();
  if (literal == nullptr) return false;
  const std::string_view digits = DigitsOf(literal);
  const std::string& greatest = GreatestInteger();
  return digits.size() > greatest.size() || (digits.size() == greatest.size() && digits > greatest);
}

bool Literal(T3Tree_Node* node, Mode mode, CFunction& function) {
  switch (node->kind) {
    case T3Kind::T3UnivCharLiteral:
      GenUniversalChar(node, mode, function);
      return true;
    case T3Kind::T3CharStringLiteral:
      if (IsWideLiteral(node)) {
        GenUTF8String(node, mode, function);
        return true;
      }
      [[fallthrough]];
    case T3Kind::T3IntLiteral:
    case T3Kind::T3FloatLiteral:
    case T3Kind::T3Infinity:
    case T3Kind::T3BooleanLiteral:
      SetCLocation(node, CValueString(node));
      return true;
    case T3Kind::T3BitStringLiteral:
    case T3Kind::T3OctStringLiteral:
    case T3Kind::T3HexStringLiteral:
      GenSpecialString(node, mode, function);
      return true;
    case T3Kind::T3VerdictLiteral:
      function.call(LUMO_VALUE_SET_VERDICT,
                    {AllocateRTSValue(node, mode, function),
                     VerdictValue(node->as<T3VerdictLiteral>()->value), VEXA_CONTEXT});
      return true;
    case T3Kind::T3Omit:
      SetRTSLocation(node, LUMO_OMIT_VALUE_C);
      return true;
    case T3Kind::T3Null:
      SetRTSLocation(node, NullWord(TypeOf(node)));
      return true;
    case T3Kind::T3ObjectIdentifierLiteral:
      GenObjectIdentifierLiteral(node->as<T3ObjectIdentifierLiteral>(), mode, function);
      return true;
    default:
      return false;
  }
}
}  // namespace cg
