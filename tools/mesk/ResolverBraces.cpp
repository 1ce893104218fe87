// Values in braces, read by their type: structures, lists, bits, object identifiers, reals, characters.
#include <algorithm>
#include <unordered_map>

#include "mesk/Resolver.h"

namespace mesk {

using namespace asn1;

void Resolver::fillBraces(const ValueAst& ast, const Context& context, TypeNode& type, ValueNode& node) {
  Parser parser = parserAt(context, ast.range.begin + 1);
  const int end = ast.range.end - 1;
  switch (type.main) {
    case TYP_SEQ:
    case TYP_SET:
      fillStruct(parser, end, context, type, node);
      break;
    case TYP_SEQOF:
    case TYP_SETOF:
      fillList(parser, end, context, type, node);
      break;
    case TYP_BITSTR:
      fillBits(parser, end, context, type, node);
      break;
    case TYP_OBJID:
      fillIdentifier(parser, end, context, node);
      break;
    case TYP_REAL:
      fillRealParts(parser, end, context, node);
      break;
    case TYP_EXTERNAL:
    case TYP_EMB_PDV:
    case TYP_CHASTR:
    case TYP_INSTANCE_OF:
      return;  // refused where values are translated
    default:
      if (type.main >= TYP_NUMSTR && type.main <= TYP_UNISTR) {
        fillCharacters(parser, end, context, type, node);
        break;
      }
      mismatch(ast, context, type);
  }
  if (parser.pos != end) parser.fail("expected \",\" or \"}\"");
}

/// The place of the component that a value in braces goes to: by its name, or in old sources, where
/// components and their values have none, by the order. The name is stepped over.
size_t Resolver::nextComponent(Parser& parser, const Context& context, const TypeNode& type, size_t next) {
  const int token = parser.pos;
  const Token& word = parser.peek();
  const bool named = word.kind == Tok::kLower && !parser.isSymbol(",", 1) && !parser.isSymbol("}", 1) &&
                     !parser.isSymbol(":", 1) && !parser.isSymbol(".", 1);
  if (!named) {
    while (next < type.components.size() &&
           (type.components[next]->isMarker() || !type.components[next]->name.empty())) {
      ++next;
    }
    if (next == type.components.size()) parser.fail("expected the name of a component");
    reporter_.notStandard(placeOf(context, token), "a component needs a name");
    return next;
  }
  const size_t found = placeOfComponent(type, word.text);
  if (found == type.components.size()) {
    error(context, token,
          std::string("the ") + asn1Name(type.main) + " has no component " + inQuotes(word.text));
    throw Abandoned();
  }
  ++parser.pos;
  return found;
}

void Resolver::fillStruct(Parser& parser, int end, const Context& context, TypeNode& type, ValueNode& node) {
  std::vector<bool> given(type.components.size(), false);
  size_t next = 0;
  const int begin = parser.pos;
  while (parser.pos < end) {
    const int token = parser.pos;
    const size_t index = nextComponent(parser, context, type, next);
    TypeNode* component = type.components[index];
    if (given[index]) {
      error(context, token, "the component " + inQuotes(component->name) + " has a value already");
      throw Abandoned();
    }
    if (index < next && type.main == TYP_SEQ)
      error(context, token, "the component " + inQuotes(component->name) + " is out of order");
    given[index] = true;
    next = index + 1;
    ValueNode* value = makeValue(*parser.parseValue(), context, component);
    value->name = component->name;
    node.components.push_back(value);
    if (parser.pos >= end) break;
    parser.expect(",");
    if (parser.pos >= end) parser.fail("expected a value");
  }
  checkAllGiven(given, context, begin - 1, type);
}

void Resolver::checkAllGiven(const std::vector<bool>& given, const Context& context, int token,
                             const TypeNode& type) {
  for (size_t i = 0; i < given.size(); ++i) {
    const TypeNode& component = *type.components[i];
    if (given[i] || component.isMarker() || component.presence != kMandatory || component.addition > 0)
      continue;
    error(context, token, "the component " + inQuotes(component.name) + " has no value");
  }
}

void Resolver::fillList(Parser& parser, int end, const Context& context, TypeNode& type, ValueNode& node) {
  while (parser.pos < end) {
    // Elements may have a name in old sources.
    const bool named = parser.peek().kind == Tok::kLower && parser.pos + 1 < end &&
                       !parser.isSymbol(",", 1) && !parser.isSymbol(":", 1) && !parser.isSymbol(".", 1) &&
                       !parser.isSymbol("{", 1);
    if (named) reporter_.notStandard(placeOf(context, parser.pos++), "an element has no name");
    node.components.push_back(makeValue(*parser.parseValue(), context, type.components.front()));
    if (parser.pos >= end) break;
    parser.expect(",");
    if (parser.pos >= end) parser.fail("expected a value");
  }
}

void Resolver::fillBits(Parser& parser, int end, const Context& context, TypeNode& type, ValueNode& node) {
  node.has_text = true;
  while (parser.pos < end) {
    const Token& word = parser.peek();
    const NamedNode* found = itemOf(type, word.text);
    if (word.kind != Tok::kLower || found == nullptr) parser.fail("expected the name of a bit");
    if (found->number >= static_cast<int64_t>(kMaxStringUnits) - 1) {
      error(context, parser.pos, "the number of the bit is too large");
      throw Abandoned();
    }
    const auto bit = static_cast<size_t>(std::max<int64_t>(found->number, 0));
    if (node.text.size() <= bit) node.text.resize(bit + 1, '0');
    node.text[bit] = '1';
    ++parser.pos;
    if (parser.pos >= end) break;
    parser.expect(",");
    if (parser.pos >= end) parser.fail("expected the name of a bit");
  }
}

/// An arc that the standard names, by its name alone: behind those that lead to it.
bool Resolver::standardArc(const Token& word, ValueNode& part, const std::vector<ValueNode*>& before) const {
  static const std::unordered_map<std::string_view, int> kRoots = {
      {"itu-t", 0}, {"ccitt", 0}, {"itu-r", 0}, {"iso", 1}, {"joint-iso-itu-t", 2}, {"joint-iso-ccitt", 2}};
  static const std::unordered_map<std::string_view, int> kFirst[3] = {
      {{"recommendation", 0},
       {"question", 1},
       {"administration", 2},
       {"network-operator", 3},
       {"identified-organization", 4},
       {"r-recommendation", 5}},
      {{"standard", 0}, {"registration-authority", 1}, {"member-body", 2}, {"identified-organization", 3}},
      {}};
  const auto number = [&](size_t i) { return static_cast<int64_t>(before[i]->integer); };
  int arc = -1;
  if (before.empty()) {
    const auto found = kRoots.find(word.text);
    if (found != kRoots.end()) arc = found->second;
  } else if (before.size() == 1 && number(0) <= 2) {
    const auto found = kFirst[number(0)].find(word.text);
    if (found != kFirst[number(0)].end()) arc = found->second;
  } else if (before.size() == 2 && number(0) == 0 && number(1) == 0 && word.text.size() == 1) {
    arc = word.text[0] - 'a' + 1;  // the series of the recommendations
  }
  part.name = word.text;
  part.integer = arc;
  return arc >= 0;
}

/// A value by its name: another object identifier in the first place, else a number.
void Resolver::addNamedArcs(const ValueAst& ast, const Context& context, ValueNode& node) {
  const bool named = ast.kind == ValueAst::kRef || ast.kind == ValueAst::kField;
  const ValueNode* meant = named ? behind(makeReferenceValue(ast, context, nullptr)) : nullptr;
  if (named && !meant) throw Abandoned();
  const bool prefix = meant && meant->main == TYP_OBJID && node.components.empty();
  if (!prefix && (!meant || meant->main != TYP_INTEGER)) {
    error(context, ast.token, "this is not a part of an object identifier");
    throw Abandoned();
  }
  const std::vector<ValueNode*> single{const_cast<ValueNode*>(meant)};
  for (const ValueNode* arc : prefix ? meant->components : single) {
    ValueNode* part = newValue(context, ast.token, nullptr);
    part->main = TYP_INTEGER;
    part->name = prefix ? arc->name : ast.ref.name;
    part->integer = arc->integer;
    node.components.push_back(part);
  }
}

void Resolver::checkArcs(const ValueNode& node, const Context& context) {
  const auto& arcs = node.components;
  for (const ValueNode* arc : arcs) {
    if (arc->integer >= 0 && FitsInt64(arc->integer)) continue;
    return error(context, arc->token,
                 arc->integer < 0 ? "the parts of an object identifier must not be negative"
                                  : "the number is too large for a part of an object identifier");
  }
  if (arcs[0]->integer > 2)
    error(context, arcs[0]->token, "the first part of an object identifier must be 0, 1 or 2");
  else if (arcs.size() > 1 && arcs[0]->integer < 2 && arcs[1]->integer > 39)
    error(context, arcs[1]->token, "the second part of an object identifier must be at most 39 here");
}

void Resolver::fillIdentifier(Parser& parser, int end, const Context& context, ValueNode& node) {
  if (parser.pos >= end) parser.fail("expected a part of an object identifier");
  while (parser.pos < end) {
    ValueNode* part = newValue(context, parser.pos, nullptr);
    part->main = TYP_INTEGER;
    const Token& word = parser.peek();
    if (word.kind == Tok::kNumber) {
      part->integer = integerOf(*parser.parseValue(), context, "a part of an object identifier").value_or(0);
    } else if (word.kind == Tok::kLower && parser.isSymbol("(", 1)) {
      part->name = word.text;
      parser.pos += 2;
      part->integer = integerOf(*parser.parseValue(), context, "a part of an object identifier").value_or(0);
      parser.expect(")");
    } else if (word.kind == Tok::kLower && standardArc(word, *part, node.components)) {
      ++parser.pos;
    } else {
      addNamedArcs(*parser.parseValue(), context, node);
      continue;
    }
    node.components.push_back(part);
  }
  checkArcs(node, context);
}

void Resolver::fillRealParts(Parser& parser, int end, const Context& context, ValueNode& node) {
  static constexpr std::string_view kNames[] = {"mantissa", "base", "exponent"};
  int64_t parts[3] = {0, 0, 0};
  const int begin = parser.pos;
  for (int i = 0; i < 3; ++i) {
    if (parser.peek().kind == Tok::kLower && parser.peek().text == kNames[i]) ++parser.pos;
    parts[i] = integerOf(*parser.parseValue(), context, "a part of a real number").value_or(0);
    if (i < 2) parser.expect(",");
  }
  if (parser.pos > end) parser.fail("expected a real number");
  node.base = -1;
  node.mantissa = parts[0];
  if (parts[0] == 0) return;
  if (parts[1] != 2 && parts[1] != 10)
    return error(context, begin, "the base of a real number must be 2 or 10");
  if (parts[2] > 32767 || parts[2] < -32767) return error(context, begin, "the exponent is too large");
  node.base = static_cast<int>(parts[1]);
  node.exponent = static_cast<int>(parts[2]);
}

/// {"text", reference, {0, 0, 0, 65}, {0, 10}}: the pieces of a string, and a single quadruple or tuple.
void Resolver::fillCharacters(Parser& parser, int end, const Context& context, TypeNode& type,
                              ValueNode& node) {
  std::vector<uint32_t> characters;
  const Place place = placeOf(context, parser.pos);
  const auto numbers = [&](Parser& inner, int inner_end) {
    std::vector<int64_t> parts;
    const int token = inner.pos;
    while (inner.pos < inner_end) {
      parts.push_back(integerOf(*inner.parseValue(), context, "a character").value_or(0));
      if (inner.pos < inner_end) inner.expect(",");
    }
    if (parts.size() != 2 && parts.size() != 4) inner.fail("expected a character of two or four numbers");
    // Column and row of a table of 128 characters; or group, plane, row and cell.
    const int64_t first_end = parts.size() == 2 ? 8 : 128, part_end = parts.size() == 2 ? 16 : 256;
    uint32_t code = 0;
    for (size_t i = 0; i < parts.size(); ++i) {
      if (parts[i] < 0 || parts[i] >= (i == 0 ? first_end : part_end)) {
        error(context, token, "the numbers of the character are out of range");
        throw Abandoned();
      }
      code = code * static_cast<uint32_t>(part_end) + static_cast<uint32_t>(parts[i]);
    }
    characters.push_back(code);
  };
  if (parser.peek().kind == Tok::kNumber || parser.isSymbol("-")) {
    numbers(parser, end);
  } else {
    while (parser.pos < end) {
      if (parser.isSymbol("{")) {
        const Range range = parser.skipBraces();
        Parser inner = parserAt(context, range.begin + 1);
        numbers(inner, range.end - 1);
      } else {
        const ValueNode* piece = behind(makeValue(*parser.parseValue(), context, &type));
        if (piece && !piece->wide.empty()) {
          characters.insert(characters.end(), piece->wide.begin(), piece->wide.end());
        } else if (piece) {
          for (char c : piece->text) characters.push_back(static_cast<unsigned char>(c));
        }
      }
      if (characters.size() > kMaxStringUnits) {
        reporter_.error(place, "the string is too long");
        throw Abandoned();
      }
      if (parser.pos >= end) break;
      parser.expect(",");
      if (parser.pos >= end) parser.fail("expected a string or a character");
    }
  }
  setCharacters(std::move(characters), type, node, place);
}

}  // namespace mesk
