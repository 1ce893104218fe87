// Values: references, numbers, strings; named items of types.
#include <algorithm>
#include <unordered_set>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

namespace {

bool isCharacterString(MainType main) {
  return (main >= TYP_NUMSTR && main <= TYP_UNISTR) || main == TYP_OBJDESCR;
}
bool isTime(MainType main) {
  return main == TYP_GENTIME || main == TYP_UTCTIME;
}

/// Whether a value of one type may stand, by its name, for a value of another.
bool compatible(MainType one, MainType other) {
  const auto text = [](MainType main) { return isCharacterString(main) || isTime(main); };
  return one == other || (text(one) && text(other)) || one == TYP_ANY || one == TYP_OPEN ||
         other == TYP_OPEN || other == TYP_ANY;
}

/// A number of 64 bits.
bool parseInteger(std::string_view digits, bool negative, int64_t& result) {
  Wide value = 0;
  if (!ParseWide(digits, negative, value) || !FitsInt64(value)) return false;
  result = static_cast<int64_t>(value);
  return true;
}

}  // namespace

ValueNode* Resolver::newValue(const Context& context, int token, TypeNode* type) {
  ValueNode& node = values_.emplace_back();
  node.module = current_;
  node.source = context.module;
  node.token = token;
  node.type = type;
  return &node;
}

/// Values that are no more than others' names are made from the last of a chain on, so that its length is no depth.
void Resolver::makeValuesBehind(const Definition& definition) {
  std::vector<Definition*> chain;
  std::unordered_set<const Definition*> seen{&definition};
  for (const Definition* at = &definition; at->value && at->value->kind == ValueAst::kRef;) {
    Definition* next = find(at->value->ref, Context{at->module, nullptr}, false);
    // A circle is told where it is met.
    if (next && !seen.insert(next).second) return;
    if (!next || next->kind != DefKind::kValue || next->state != State::kNew || next->parameterized) break;
    chain.push_back(next);
    at = next;
  }
  for (auto at = chain.rbegin(); at != chain.rend(); ++at) guarded([&] { valueOf(**at); });
}

ValueNode* Resolver::valueOf(Definition& definition) {
  if (definition.value_node) return definition.value_node;
  const Context context{definition.module, nullptr};
  if (definition.state == State::kNew && !definition.parameterized) makeValuesBehind(definition);
  if (definition.state != State::kNew) {
    if (definition.state == State::kBusy)
      error(context, definition.token, inQuotes(definition.name) + " refers to itself");
    throw Abandoned();
  }
  Depth depth(depth_);
  if (!depth.ok()) {
    error(context, definition.token, "references are nested too deeply");
    throw Abandoned();
  }
  definition.state = State::kBusy;
  Module* outer_module = current_;
  TypeNode* outer_definition = current_definition_;
  current_ = definition.module;
  current_definition_ = nullptr;
  const auto leave = [&] {
    current_ = outer_module;
    current_definition_ = outer_definition;
    definition.state = State::kDone;
  };
  try {
    const DefKind kind = kindOf(definition);
    ValueNode* node = nullptr;
    if (kind == DefKind::kValue) {
      node = makeValue(*definition.value, context, makeType(*definition.type, context, nullptr));
    } else {
      const ClassUse cls = classOf(*definition.type, context);
      if (!cls) throw Abandoned();
      TypeNode* governor = classReference(cls, context, definition.type->token);
      node = kind == DefKind::kObject ? makeObject(*definition.value, context, cls, governor)
                                      : makeObjectSet(definition.range, context, cls, governor);
    }
    node->name = definition.name;
    node->token = definition.token;
    definition.value_node = node;
  } catch (...) {
    leave();
    throw;
  }
  leave();
  return definition.value_node;
}

const ValueNode* Resolver::behind(const ValueNode* value) {
  for (int steps = 0; value && value->main == TYP_SYNONYM && steps < 1000; ++steps) {
    value = value->ref ? valueOf(*value->ref) : nullptr;
  }
  return value && value->main == TYP_SYNONYM ? nullptr : value;
}

std::optional<Wide> Resolver::literal(const ValueAst& ast, const Context& context) {
  Wide value = 0;
  if (ParseWide(ast.text, ast.negative, value)) return value;
  error(context, ast.token, "the number is too large");
  return std::nullopt;
}

/// The number, of at most 64 bits, that a value stands for; an error says what it was wanted for.
std::optional<int64_t> Resolver::integerOf(const ValueAst& ast, const Context& context, const char* what) {
  std::optional<Wide> number;
  if (ast.kind == ValueAst::kInteger) {
    number = literal(ast, context);
    if (!number) return std::nullopt;
  } else if (const ValueNode* value = behind(makeValue(ast, context, plainType(TYP_INTEGER)));
             value && value->main == TYP_INTEGER) {
    number = value->integer;
  }
  if (number && FitsInt64(*number)) return static_cast<int64_t>(*number);
  error(context, ast.token,
        number ? std::string("the number is too large for ") + what
               : std::string("a number is needed for ") + what);
  return std::nullopt;
}

/// A named item; its number stays 0 where it has none, or a faulty one.
NamedNode Resolver::makeNamed(const TypeNode& node, size_t index) {
  const NamedAst& named = node.ast->named[index];
  NamedNode item;
  item.name = named.name;
  const Place place = placeOf(node.context, named.token);
  item.line = place.line;
  item.column = place.column;
  item.after_marker = node.marker >= 0 && static_cast<size_t>(node.marker) == index;
  if (!named.number) return item;
  std::optional<int64_t> number;
  try {
    number = integerOf(*named.number, node.context, "a named item");
  } catch (const Abandoned&) {
    // It has been reported; the items behind it still want their names.
  }
  item.number = number.value_or(0);
  if (number && *number < 0 && node.main == TYP_BITSTR)
    error(node.context, named.token, "the number of a bit must not be negative");
  return item;
}

void Resolver::nameItems(TypeNode& node) {
  if (node.named_done) return;
  Depth depth(depth_);
  node.named_done = true;
  if (!depth.ok()) {
    reporter_.error(node.source->place(node.token), "references are nested too deeply");
    throw Abandoned();
  }
  Module* outer = current_;
  current_ = node.module;
  std::vector<bool> numbered;
  std::unordered_set<std::string_view> names;
  for (size_t i = 0; i < node.ast->named.size(); ++i) {
    const NamedAst& named = node.ast->named[i];
    const NamedNode item = makeNamed(node, i);
    if (!names.insert(named.name).second)
      error(node.context, named.token, "the name " + inQuotes(named.name) + " appears twice");
    numbered.push_back(named.number != nullptr);
    node.named.push_back(item);
  }
  current_ = outer;
  if (node.main == TYP_ENUM) numberEnumeration(node, numbered);
  checkDistinctItems(node);
}

void Resolver::checkDistinctItems(const TypeNode& node) {
  std::unordered_set<int64_t> numbers;
  for (size_t i = 0; i < node.named.size(); ++i) {
    if (numbers.insert(node.named[i].number).second) continue;
    error(node.context, node.ast->named[i].token,
          "the number " + std::to_string(node.named[i].number) + " appears twice");
  }
}

/// Gives numbers to the items that have none: first to those of the root, then to the additions, which go
/// upwards.
void Resolver::numberEnumeration(TypeNode& node, std::vector<bool>& numbered) {
  const size_t roots = node.marker < 0 ? node.named.size() : static_cast<size_t>(node.marker);
  std::unordered_set<int64_t> used;
  for (size_t i = 0; i < roots; ++i) {
    if (numbered[i]) used.insert(node.named[i].number);
  }
  int64_t next = 0;
  for (size_t i = 0; i < roots; ++i) {
    if (numbered[i]) continue;
    while (used.count(next)) ++next;
    node.named[i].number = next++;
  }
  for (size_t i = 0; i < roots; ++i) used.insert(node.named[i].number);
  next = 0;
  bool first = true;
  for (size_t i = roots; i < node.named.size(); ++i) {
    if (!numbered[i]) {
      while (used.count(next)) ++next;
      node.named[i].number = next;
    } else if (!first && node.named[i].number < next) {
      error(node.context, node.ast->named[i].token, "the numbers of additions must ascend");
    }
    first = false;
    if (node.named[i].number >= next && node.named[i].number < INT64_MAX) next = node.named[i].number + 1;
  }
}

void Resolver::mismatch(const ValueAst& ast, const Context& context, const TypeNode& type) {
  error(context, ast.token, std::string("the value does not fit the type ") + asn1Name(type.main));
  throw Abandoned();
}

/// Makes a value; its governor may be none where the type can't be known, after an error.
ValueNode* Resolver::makeValue(const ValueAst& ast, const Context& context, TypeNode* governor) {
  Depth depth(depth_);
  if (!depth.ok()) {
    error(context, ast.token, "values are nested too deeply");
    throw Abandoned();
  }
  TypeNode* type = base(governor);
  if (governor && !type) throw Abandoned();  // the type is at fault
  TypeNode* written = importedType(governor, context, ast.token);
  if (ast.kind == ValueAst::kRef || ast.kind == ValueAst::kField) {
    if (type && ast.kind == ValueAst::kRef && ast.ref.module.empty() && !ast.ref.has_args) {
      ValueNode* node = newValue(context, ast.token, written);
      if (makeItem(ast, context, *type, *node)) return node;
    }
    ValueNode* node = makeReferenceValue(ast, context, governor);
    if (!node->type) node->type = written;
    return node;
  }
  ValueNode* node = newValue(context, ast.token, written);
  if (type) fillValue(ast, context, *type, *node);
  return node;
}

const NamedNode* Resolver::itemOf(TypeNode& type, std::string_view name) {
  nameItems(type);
  const size_t place = places_.find(type.named, name, [](const NamedNode& named) { return named.name; });
  return place == type.named.size() ? nullptr : &type.named[place];
}

/// An enumeration item or a named number.
bool Resolver::makeItem(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node) {
  if (type.main != TYP_ENUM && type.main != TYP_INTEGER) return false;
  const NamedNode* found = itemOf(type, ast.ref.name);
  if (found == nullptr || argument(ast.ref, context)) return false;
  node.main = type.main;
  node.integer = found->number;
  node.text = found->name;
  node.has_text = true;
  return true;
}

ValueNode* Resolver::makeFieldValue(const ValueAst& ast, const Context& context, TypeNode* governor) {
  const auto found = value_settings_.find(settingOf(ast.ref, ast.fields, context));
  if (found == value_settings_.end()) {
    error(context, ast.token, inQuotes(ast.fields.back()) + " is not a value");
    throw Abandoned();
  }
  return makeValue(*found->second.first, found->second.second, governor);
}

ValueNode* Resolver::makeArgumentValue(const ValueAst& ast, const Argument& arg, const Context& context,
                                       TypeNode* governor) {
  if (arg.param->name[0] < 'a') {
    error(context, ast.token, inQuotes(ast.ref.name) + " is not a value");
    throw Abandoned();
  }
  return makeValue(*valueOfArgument(arg), arg.context, governor);
}

/// Whether a value that is named can be one of the type, as far as its own type can be seen.
void Resolver::checkCompatible(const ValueAst& ast, const Context& context, const TypeNode& type,
                               const Definition& definition) {
  const auto [behind_type, where] = lookThrough(*definition.type, Context{definition.module, nullptr});
  const bool plain = behind_type->kind == TypeAst::kPlain || behind_type->kind == TypeAst::kStruct ||
                     behind_type->kind == TypeAst::kList;
  if (!plain || compatible(type.main, behind_type->main)) return;
  error(context, ast.token,
        "the value " + inQuotes(ast.ref.name) + " is of type " + asn1Name(behind_type->main) + ", " +
            asn1Name(type.main) + " is needed");
  throw Abandoned();
}

ValueNode* Resolver::makeReferenceValue(const ValueAst& ast, const Context& context, TypeNode* governor) {
  if (ast.kind == ValueAst::kField) return makeFieldValue(ast, context, governor);
  if (const Argument* arg = argument(ast.ref, context))
    return makeArgumentValue(ast, *arg, context, governor);
  TypeNode* type = base(governor);
  const bool is_item = type && type->main == TYP_ENUM;
  Definition* definition = find(ast.ref, context, !is_item);
  if (!definition) {
    if (is_item) error(context, ast.token, inQuotes(ast.ref.name) + " is not an item of the enumeration");
    throw Abandoned();
  }
  if (kindOf(*definition) != DefKind::kValue) {
    error(context, ast.token, inQuotes(ast.ref.name) + " is not a value");
    throw Abandoned();
  }
  if (definition->parameterized) {
    const Env* env = bind(*definition, ast.ref, context);
    if (!env) throw Abandoned();
    return makeValue(*definition->value, Context{definition->module, env}, governor);
  }
  if (ast.ref.has_args) {
    error(context, ast.token, inQuotes(ast.ref.name) + " takes no parameters");
    throw Abandoned();
  }
  ValueNode* node = newValue(context, ast.token, nullptr);
  node->main = TYP_SYNONYM;
  node->ref = definition;
  if (type) checkCompatible(ast, context, *type, *definition);
  // Values that only refer to each other are found here.
  behind(node);
  return node;
}

/// "name : value" of a CHOICE.
void Resolver::fillAlternative(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node) {
  if (type.main != TYP_CHOICE) mismatch(ast, context, type);
  TypeNode* alternative = componentOf(type, ast.text);
  if (alternative == nullptr) {
    error(context, ast.token, "the CHOICE has no alternative " + inQuotes(ast.text));
    throw Abandoned();
  }
  ValueNode* chosen = makeValue(*ast.inner, context, alternative);
  chosen->name = ast.text;
  node.components.push_back(chosen);
}

void Resolver::fillValue(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node) {
  node.main = type.main;
  if (type.main == TYP_NONE) return;  // its type is refused later
  switch (ast.kind) {
    case ValueAst::kBraces:
      return fillBraces(ast, context, type, node);
    case ValueAst::kTrue:
    case ValueAst::kFalse:
      if (type.main != TYP_BOOLEAN) mismatch(ast, context, type);
      node.integer = ast.kind == ValueAst::kTrue;
      return;
    case ValueAst::kNull:
      if (type.main != TYP_NULL) mismatch(ast, context, type);
      return;
    case ValueAst::kInteger:
      if (type.main == TYP_REAL) return fillReal(ast, context, node);
      if (type.main != TYP_INTEGER) mismatch(ast, context, type);
      node.integer = literal(ast, context).value_or(0);
      return;
    case ValueAst::kReal:
    case ValueAst::kPlusInfinity:
    case ValueAst::kMinusInfinity:
      if (type.main != TYP_REAL) mismatch(ast, context, type);
      return fillReal(ast, context, node);
    case ValueAst::kCString:
    case ValueAst::kBString:
    case ValueAst::kHString:
      return fillString(ast, context, type, node);
    case ValueAst::kChoice:
      return fillAlternative(ast, context, type, node);
    case ValueAst::kTyped:
      if (type.main != TYP_ANY && type.main != TYP_OPEN) mismatch(ast, context, type);
      node.actual_type = makeType(*ast.type, context, nullptr);
      node.components.push_back(makeValue(*ast.inner, context, node.actual_type));
      return;
    default:
      mismatch(ast, context, type);
  }
}

/// The governor of a value as its own module can write it. For a type of another module a node like it is
/// made, which refers to what the type refers to, or has its main type only; for one that has parts, which
/// would be missing, none: whoever reads the value knows them by its place.
TypeNode* Resolver::importedType(TypeNode* type, const Context& context, int token) {
  if (!type || !type->module) return nullptr;
  if (type->module == current_) return type;
  if (!type->ref && !type->components.empty()) return nullptr;
  TypeNode*& made = imported_types_[{current_, type}];
  if (made) return made;
  made = newType(context, token, nullptr);
  made->main = type->main;
  made->ref = type->definition && type->main != TYP_SYNONYM ? nullptr : type->ref;
  made->ref_name = type->ref_name;
  made->of_definition = nullptr;
  return made;
}

void Resolver::fillReal(const ValueAst& ast, const Context& context, ValueNode& node) {
  node.base = -1;
  if (ast.kind == ValueAst::kPlusInfinity || ast.kind == ValueAst::kMinusInfinity) {
    node.mantissa = ast.kind == ValueAst::kPlusInfinity ? -1 : -2;
    return;
  }
  std::string digits;
  int64_t exponent = 0;
  bool point = false;
  for (size_t i = 0; i < ast.text.size(); ++i) {
    const char c = ast.text[i];
    if (isDigit(c)) {
      digits += c;
      exponent -= point ? 1 : 0;
    } else if (c == '.') {
      point = true;
    } else {
      const bool minus = ast.text[i + 1] == '-';
      int64_t written = 0;
      const size_t begin = i + 1 + (minus || ast.text[i + 1] == '+' ? 1 : 0);
      if (!parseInteger(ast.text.substr(begin), minus, written) || written > 100000 || written < -100000) {
        error(context, ast.token, "the exponent is too large");
        return;
      }
      exponent += written;
      break;
    }
  }
  while (digits.size() > 1 && digits.back() == '0') digits.pop_back(), ++exponent;
  if (!parseInteger(digits, ast.negative, node.mantissa))
    return error(context, ast.token, "the number has too many digits");
  if (node.mantissa == 0) return;
  if (exponent > 32767 || exponent < -32767) return error(context, ast.token, "the exponent is too large");
  node.base = 10;
  node.exponent = static_cast<int>(exponent);
}

void Resolver::fillTime(const ValueAst& ast, const Context& context, const TypeNode& type, ValueNode& node) {
  node.text = ast.text;
  node.has_text = true;
  const size_t least = type.main == TYP_UTCTIME ? 11 : 10;
  const size_t digits = std::min(ast.text.find_first_not_of("0123456789"), ast.text.size());
  if (digits < least - 1 || ast.text.find_first_not_of("0123456789.,Z+-") != std::string_view::npos)
    error(context, ast.token, std::string("this is not a time of type ") + asn1Name(type.main));
}

namespace {
std::vector<uint32_t> charactersOf(std::string_view text) {
  std::vector<uint32_t> characters;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto lead = static_cast<unsigned char>(text[i]);
    const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    uint32_t code = more == 0 ? lead : lead & (0x3Fu >> more);
    for (int k = 0; k < more && i + 1 < text.size(); ++k)
      code = (code << 6) | (static_cast<unsigned char>(text[++i]) & 0x3Fu);
    characters.push_back(code);
  }
  return characters;
}

constexpr const char* kDigits = "0123456789ABCDEF";

std::string bitsOf(std::string_view hex) {
  std::string bits;
  for (char c : hex) {
    const int value = isDigit(c) ? c - '0' : c - 'A' + 10;
    for (int bit = 3; bit >= 0; --bit) bits += static_cast<char>('0' + ((value >> bit) & 1));
  }
  return bits;
}

/// Hexadecimal digits of whole octets; what is missing is zero.
std::string octetsOf(std::string bits) {
  while (bits.size() % 8) bits += '0';
  std::string digits;
  for (size_t i = 0; i < bits.size(); i += 4)
    digits += kDigits[(bits[i] - '0') * 8 + (bits[i + 1] - '0') * 4 + (bits[i + 2] - '0') * 2 +
                      (bits[i + 3] - '0')];
  return digits;
}
}  // namespace

void Resolver::fillString(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node) {
  if (ast.kind == ValueAst::kCString) {
    if (isTime(type.main)) return fillTime(ast, context, type, node);
    if (!isCharacterString(type.main)) mismatch(ast, context, type);
    setCharacters(charactersOf(ast.text), type, node, placeOf(context, ast.token));
    return;
  }
  if (type.main != TYP_BITSTR && type.main != TYP_OCTSTR) mismatch(ast, context, type);
  const bool hex = ast.kind == ValueAst::kHString;
  node.text = ast.text;
  if (type.main == TYP_BITSTR && hex)
    node.text = bitsOf(ast.text);
  else if (type.main == TYP_OCTSTR && !hex)
    node.text = octetsOf(std::string(ast.text));
  else if (type.main == TYP_OCTSTR && ast.text.size() % 2)
    node.text += '0';
  node.has_text = true;
}

/// Stores the characters of a string in the width of its type.
bool Resolver::setCharacters(std::vector<uint32_t> characters, TypeNode& type, ValueNode& node,
                             const Place& place) {
  const char* allowed = nullptr;
  if (type.main == TYP_NUMSTR) allowed = "0123456789 ";
  if (type.main == TYP_PRISTR) {
    allowed = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789 '()+,-./:=?";
  }
  const uint32_t most = type.main == TYP_UNISTR                              ? 0x7FFFFFFF
                        : type.main == TYP_BMPSTR                            ? 0xFFFF
                        : type.main == TYP_IA5STR || type.main == TYP_VISSTR ? 127
                                                                             : 255;
  for (uint32_t c : characters) {
    const bool in =
        c <= most &&
        (!allowed || (c != 0 && c < 128 &&
                      std::string_view(allowed).find(static_cast<char>(c)) != std::string_view::npos)) &&
        (type.main != TYP_VISSTR || c >= 32);
    if (in && c != 0) continue;
    reporter_.error(place, in ? "the character of the number 0 is not supported in values"
                              : std::string("the string holds a character that ") + asn1Name(type.main) +
                                    " does not have");
    return false;
  }
  node.has_text = true;
  if (type.main == TYP_BMPSTR || type.main == TYP_UNISTR) {
    node.wide = std::move(characters);
  } else {
    for (uint32_t c : characters) node.text += static_cast<char>(c);
  }
  return true;
}

}  // namespace mesk
