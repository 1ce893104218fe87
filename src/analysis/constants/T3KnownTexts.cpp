#include "analysis/constants/T3KnownTexts.h"

#include <algorithm>
#include <cctype>
#include <unordered_map>
#include <vector>

#include "analysis/constants/T3ConstantValues.h"
#include "analysis/types/T3Constants.h"
#include "analysis/types/T3KnownNumbers.h"
#include "driver/modules/T3UTF8String.h"
#include "support/ModuleCaches.h"
#include "support/StringM.h"

namespace {
using Text = std::optional<T3KnownText>;
using Number = std::optional<int64_t>;

constexpr T3Kind kBits = T3Kind::T3BitStringLiteral;
constexpr T3Kind kHex = T3Kind::T3HexStringLiteral;
constexpr T3Kind kOctets = T3Kind::T3OctStringLiteral;
constexpr T3Kind kCharacters = T3Kind::T3CharStringLiteral;

// ---- What is kept ----

// The longest text that is put together. Short ones are always kept, long ones as long as there is room.
constexpr size_t kLongestText = 100000;
constexpr size_t kShortText = 100;
constexpr size_t kRoomForTexts = 64000000;

// The texts of what is no literal, by the number of the expression: nothing where one is not known, or is
// being put together.
struct KeptTexts {
  std::unordered_map<uint32_t, Text> texts;
  size_t size = 0;

  Text Keep(T3Tree_Node* value, Text text) {
    const size_t length = text ? text->text.size() : 0;
    if (length > kLongestText || (length > kShortText && size + length > kRoomForTexts)) return std::nullopt;
    size += length;
    return texts[value->number] = std::move(text);
  }
};
KeptTexts& g_texts = *new KeptTexts;

// Functions that nest deeper, by themselves or through constants, are not computed.
constexpr int kMaxDepthOfTexts = 200;
int g_depth_of_texts = 0;

// ---- Literals ----

// The digits of 'digits'X, in capitals.
std::string DigitsOf(tStringRef text) {
  std::string digits;
  for (const char c : StringM::StGetString(text))
    if (std::isxdigit(static_cast<unsigned char>(c)) != 0)
      digits += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    else if (c == '\'' && !digits.empty())
      break;
  return digits;
}

Text LiteralText(T3Tree_Node* value) {
  if (auto* literal = value->try_as<T3BitStringLiteral>())
    return T3KnownText{kBits, DigitsOf(literal->value)};
  if (auto* literal = value->try_as<T3HexStringLiteral>()) return T3KnownText{kHex, DigitsOf(literal->value)};
  if (auto* literal = value->try_as<T3OctStringLiteral>())
    return T3KnownText{kOctets, DigitsOf(literal->value)};
  if (!value->is<T3CharStringLiteral>() && !value->is<T3UnivCharLiteral>()) return std::nullopt;
  auto text = ConstCharValue(value);
  return text ? Text(T3KnownText{kCharacters, *std::move(text)}) : std::nullopt;
}

// ---- Elements ----

// Where the elements of a text begin, and its end.
std::vector<size_t> Places(const T3KnownText& text) {
  std::vector<size_t> places;
  for (size_t at = 0; at < text.text.size(); ++at)
    if (text.kind == kOctets ? at % 2 == 0 : text.kind != kCharacters || (text.text[at] & 0xc0) != 0x80)
      places.push_back(at);
  places.push_back(text.text.size());
  return places;
}

struct Stretch {
  size_t begin;
  size_t size;
};

// Some elements of a text; nothing where it has fewer.
std::optional<Stretch> StretchOf(const T3KnownText& text, Number index, Number count) {
  const auto places = Places(text);
  const auto last = static_cast<int64_t>(places.size()) - 1;
  if (!index || !count || *index < 0 || *count < 0 || *index > last || *count > last - *index)
    return std::nullopt;
  const size_t begin = places[static_cast<size_t>(*index)];
  return Stretch{begin, places[static_cast<size_t>(*index + *count)] - begin};
}

Text Substring(T3Substring* function) {
  auto* definition = function->template_value->try_as<T3TemplateDef>();
  const Text text = definition == nullptr ? std::nullopt : KnownText(definition->constraint);
  if (!text) return std::nullopt;
  const auto part = StretchOf(*text, KnownInteger(function->index), KnownInteger(function->count));
  return part ? Text(T3KnownText{text->kind, text->text.substr(part->begin, part->size)}) : std::nullopt;
}

Text Replaced(T3Replace* function) {
  Text text = KnownText(function->value);
  const Text by = KnownText(function->replace_with);
  if (!text || !by || text->kind != by->kind) return std::nullopt;
  const auto part = StretchOf(*text, KnownInteger(function->index), KnownInteger(function->count));
  if (!part) return std::nullopt;
  text->text.replace(part->begin, part->size, by->text);
  return text;
}

// To the left by a number of elements; a shift fills with zeros.
Text Moved(_T3ShiftOrRotateExpression* node) {
  Text text = KnownText(node->value);
  const Number given = KnownInteger(node->shift);
  const bool shifts = node->is<_T3ShiftExpression>();
  if (!text || !given || (shifts && text->kind == kCharacters)) return std::nullopt;
  const auto places = Places(*text);
  const auto size = static_cast<int64_t>(places.size()) - 1;
  if (size == 0) return text;
  const bool left = node->is<T3ShiftLeft>() || node->is<T3RotateLeft>();
  const int64_t by = shifts ? std::clamp(*given, -size, size) : *given % size;
  const int64_t to_left = ((left ? by : -by) % size + size) % size;
  std::string& all = text->text;
  std::rotate(all.begin(), all.begin() + static_cast<std::ptrdiff_t>(places[to_left]), all.end());
  if (!shifts || by == 0) return text;
  const auto lost = static_cast<std::ptrdiff_t>(places[by < 0 ? -by : by]);
  if ((by > 0) == left)
    std::fill(all.end() - lost, all.end(), '0');
  else
    std::fill(all.begin(), all.begin() + lost, '0');
  return text;
}

// ---- Digits ----

int ValueOf(char digit) {
  return digit <= '9' ? digit - '0' : digit - 'A' + 10;
}

char DigitOf(unsigned value) {
  return "0123456789ABCDEF"[value & 15];
}

Text Inverted(T3Tree_Node* operand) {
  Text text = KnownText(operand);
  if (!text || text->kind == kCharacters) return std::nullopt;
  for (char& digit : text->text) digit = DigitOf(ValueOf(digit) ^ (text->kind == kBits ? 1 : 15));
  return text;
}

Text Combined(_T3BinaryStringLogic* node) {
  Text left = KnownText(node->left);
  const Text right = left ? KnownText(node->right) : std::nullopt;
  if (!right || left->kind == kCharacters || left->kind != right->kind) return std::nullopt;
  if (left->text.size() != right->text.size()) return std::nullopt;
  for (size_t i = 0; i < left->text.size(); ++i) {
    const int a = ValueOf(left->text[i]);
    const int b = ValueOf(right->text[i]);
    left->text[i] = DigitOf(node->is<T3And4b>() ? a & b : node->is<T3Or4b>() ? a | b : a ^ b);
  }
  return left;
}

// The digits of a number, `bits` in each; nothing where it has more than there is room for.
Text OfInteger(_T3PreDefinedLengthFunction* function, T3Kind kind, int bits) {
  const Number value = KnownInteger(function->value);
  const Number length = KnownInteger(function->length);
  if (!value || !length || *value < 0 || *length < 0) return std::nullopt;
  if (*length > static_cast<int64_t>(kLongestText)) return std::nullopt;
  std::string digits(static_cast<size_t>(kind == kOctets ? 2 * *length : *length), '0');
  auto rest = static_cast<uint64_t>(*value);
  for (auto at = digits.rbegin(); at != digits.rend(); ++at, rest >>= bits)
    *at = DigitOf(static_cast<unsigned>(rest & ((1u << bits) - 1)));
  return rest == 0 ? Text(T3KnownText{kind, digits}) : std::nullopt;
}

std::string ToBits(const std::string& digits) {
  std::string bits;
  for (const char digit : digits)
    for (int i = 3; i >= 0; --i) bits += static_cast<char>('0' + (ValueOf(digit) >> i & 1));
  return bits;
}

std::string ToDigits(std::string bits, size_t unit) {
  bits.insert(0, (unit - bits.size() % unit) % unit, '0');
  std::string digits;
  for (size_t at = 0; at < bits.size(); at += 4) {
    unsigned value = 0;
    for (size_t i = 0; i < 4; ++i) value = value * 2 + static_cast<unsigned>(bits[at + i] - '0');
    digits += DigitOf(value);
  }
  return digits;
}

// ---- Characters ----

std::optional<std::string> OctetsOfDigits(std::string digits) {
  if (digits.size() % 2 != 0) return std::nullopt;
  for (char& c : digits) {
    if (std::isxdigit(static_cast<unsigned char>(c)) == 0) return std::nullopt;
    c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return digits;
}

std::optional<std::string> CharactersOfOctets(const std::string& digits) {
  std::string text;
  for (size_t at = 0; at + 1 < digits.size(); at += 2) {
    const int code = ValueOf(digits[at]) * 16 + ValueOf(digits[at + 1]);
    if (code > 127) return std::nullopt;
    text += static_cast<char>(code);
  }
  return text;
}

std::optional<std::string> OctetsOfCharacters(const std::string& text) {
  std::string digits;
  for (const char c : text) {
    if ((c & 0x80) != 0) return std::nullopt;
    digits += DigitOf(static_cast<unsigned>(c) >> 4);
    digits += DigitOf(static_cast<unsigned>(c));
  }
  return digits;
}

Text CharacterOf(T3Tree_Node* number, int64_t most) {
  const Number code = KnownInteger(number);
  if (!code || *code < 0 || *code > most) return std::nullopt;
  return T3KnownText{kCharacters, Utf8Of(static_cast<uint64_t>(*code))};
}

Text DecimalOf(T3Tree_Node* number) {
  const Number value = KnownInteger(number);
  return value ? Text(T3KnownText{kCharacters, std::to_string(*value)}) : std::nullopt;
}

// ---- Forms ----

// What a function that goes from one kind of string to another makes of its operand.
template <class Convert>
Text Converted(T3Tree_Node* function, T3Kind from, T3Kind to, Convert convert) {
  const Text text = KnownText(function->as<_T3PreDefinedFunction>()->value);
  if (!text || text->kind != from) return std::nullopt;
  const std::optional<std::string> converted = convert(text->text);
  return converted ? Text(T3KnownText{to, *converted}) : std::nullopt;
}

std::string Same(std::string text) {
  return text;
}

Text OfConversion(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3Bit2Str:
      return Converted(node, kBits, kCharacters, Same);
    case T3Kind::T3Hex2Str:
      return Converted(node, kHex, kCharacters, Same);
    case T3Kind::T3Oct2Str:
      return Converted(node, kOctets, kCharacters, Same);
    case T3Kind::T3Str2Oct:
      return Converted(node, kCharacters, kOctets, OctetsOfDigits);
    case T3Kind::T3Oct2Char:
      return Converted(node, kOctets, kCharacters, CharactersOfOctets);
    case T3Kind::T3Char2Oct:
      return Converted(node, kCharacters, kOctets, OctetsOfCharacters);
    case T3Kind::T3Bit2Hex:
      return Converted(node, kBits, kHex, [](std::string bits) { return ToDigits(std::move(bits), 4); });
    case T3Kind::T3Bit2Oct:
      return Converted(node, kBits, kOctets, [](std::string bits) { return ToDigits(std::move(bits), 8); });
    case T3Kind::T3Hex2Oct:
      return Converted(node, kHex, kOctets,
                       [](const std::string& digits) { return ToDigits(ToBits(digits), 8); });
    case T3Kind::T3Oct2Hex:
      return Converted(node, kOctets, kHex, Same);
    case T3Kind::T3Hex2Bit:
      return Converted(node, kHex, kBits, ToBits);
    case T3Kind::T3Oct2Bit:
      return Converted(node, kOctets, kBits, ToBits);
    default:
      return std::nullopt;
  }
}

Text TextOfForm(T3Tree_Node* node) {
  switch (node->kind) {
    case T3Kind::T3UnaryNot4b:
      return Inverted(node->as<T3UnaryNot4b>()->arg);
    case T3Kind::T3Int2Bit:
      return OfInteger(node->as<_T3PreDefinedLengthFunction>(), kBits, 1);
    case T3Kind::T3Int2Hex:
      return OfInteger(node->as<_T3PreDefinedLengthFunction>(), kHex, 4);
    case T3Kind::T3Int2Oct:
      return OfInteger(node->as<_T3PreDefinedLengthFunction>(), kOctets, 4);
    case T3Kind::T3Int2Char:
      return CharacterOf(node->as<_T3PreDefinedFunction>()->value, 127);
    case T3Kind::T3Int2UniChar:
      return CharacterOf(node->as<_T3PreDefinedFunction>()->value, 0x7fffffff);
    case T3Kind::T3Int2Str:
      return DecimalOf(node->as<_T3PreDefinedFunction>()->value);
    case T3Kind::T3Substring:
      return Substring(node->as<T3Substring>());
    case T3Kind::T3Replace:
      return Replaced(node->as<T3Replace>());
    default:
      break;
  }
  if (node->is<_T3BinaryStringLogic>()) return Combined(node->as<_T3BinaryStringLogic>());
  if (node->is<_T3ShiftOrRotateExpression>()) return Moved(node->as<_T3ShiftOrRotateExpression>());
  return OfConversion(node);
}

bool HasOperands(T3Tree_Node* value) {
  return value->is<_T3PreDefinedFunction>() || value->is<T3Substring>() || value->is<T3UnaryNot4b>() ||
         value->is<_T3BinaryStringLogic>() || value->is<_T3ShiftOrRotateExpression>();
}

// What is still being computed needs itself, and is not known.
Text Computed(T3Tree_Node* value) {
  if (!HasOperands(value)) return LiteralText(value);
  if (g_depth_of_texts >= kMaxDepthOfTexts) return std::nullopt;
  g_texts.texts.emplace(value->number, std::nullopt);
  ++g_depth_of_texts;
  Text text = TextOfForm(value);
  --g_depth_of_texts;
  if (text) text->computed = true;
  return g_texts.Keep(value, std::move(text));
}

// ---- Concatenations ----

void Append(Text& text, const Text& part) {
  const bool other = text && part && text->kind != part->kind && text->kind != T3Kind::T3NoExpression;
  if (!text || !part || other || text->text.size() + part->text.size() > kLongestText) {
    text.reset();
    return;
  }
  text->kind = part->kind;
  text->text += part->text;
  text->computed |= part->computed;
}

// A concatenation whose operands are being looked at.
struct OpenText {
  T3Tree_Node* value;
  std::vector<T3Tree_Node*> operands{value};
  Text text = T3KnownText();
};

// A constant in a concatenation is put together once, before what it stands in.
Text Concatenated(T3Tree_Node* root) {
  std::vector<OpenText> open;
  const auto begin = [&open](T3Tree_Node* value) {
    g_texts.texts.emplace(value->number, std::nullopt);
    open.push_back({value});
  };
  begin(root);
  for (;;) {
    OpenText& top = open.back();
    if (top.operands.empty() || !top.text) {
      const Text text = g_texts.Keep(top.value, std::move(top.text));
      open.pop_back();
      if (open.empty()) return text;
      Append(open.back().text, text);
      continue;
    }
    T3Tree_Node* operand = top.operands.back();
    top.operands.pop_back();
    if (auto* both = operand->try_as<T3Concatenate>()) {
      top.operands.push_back(both->right);
      top.operands.push_back(both->left);
      continue;
    }
    T3Tree_Node* value = ConstantValueOf(operand);
    if (const auto kept = g_texts.texts.find(value->number); kept != g_texts.texts.end())
      Append(top.text, kept->second);
    else if (value->is<T3Concatenate>())
      begin(value);
    else
      Append(top.text, Computed(value));
  }
}
}  // namespace

std::optional<T3KnownText> KnownText(T3Tree_Node* expression) {
  if (!T3Is<_T3Expression>(expression)) return std::nullopt;
  T3Tree_Node* value = ConstantValueOf(expression);
  if (const auto kept = g_texts.texts.find(value->number); kept != g_texts.texts.end()) return kept->second;
  return value->is<T3Concatenate>() ? Concatenated(value) : Computed(value);
}

std::optional<std::string> KnownCharacters(T3Tree_Node* expression) {
  auto text = KnownText(expression);
  return text && text->kind == kCharacters ? std::optional(std::move(text->text)) : std::nullopt;
}

std::u32string CodesOf(const std::string& text) {
  std::u32string codes;
  const auto* at = reinterpret_cast<const unsigned char*>(text.data());
  for (int length = static_cast<int>(text.size()); length > 0;) {
    unsigned char group = 0, plane = 0, row = 0, cell = 0;
    at = UTF_8ToUCS_4(at, length, group, plane, row, cell);
    codes += static_cast<char32_t>(uint32_t{group} << 24 | uint32_t{plane} << 16 | uint32_t{row} << 8 | cell);
  }
  return codes;
}

int64_t LengthOfText(const T3KnownText& text) {
  return static_cast<int64_t>(Places(text).size()) - 1;
}

namespace {
const ModuleCache kKnownTextsCache{[] {
                                     g_texts.texts.clear();
                                     g_texts.size = 0;
                                   },
                                   ModuleCache::Holds::ForTree};
}  // namespace
