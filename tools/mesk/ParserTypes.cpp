// Types, references and actual parameters.
#include <unordered_map>

#include "mesk/Parser.h"

namespace mesk {

using namespace asn1;

TypeAst* Parser::parseType() {
  Depth depth(depth_);
  if (!depth.ok()) fail("types are nested too deeply; expected an end");
  TypeAst& type = arena_.types.emplace_back();
  type.token = pos;
  parseTags(type);
  parseUntaggedType(type);
  while (isSymbol("(")) type.constraints.push_back(parseConstraint());
  return &type;
}

void Parser::parseTags(TypeAst& type) {
  while (isSymbol("[")) {
    TagAst tag;
    tag.token = pos++;
    if (acceptWord("UNIVERSAL")) {
      tag.tag_class = kTagUniversal;
    } else if (acceptWord("APPLICATION")) {
      tag.tag_class = kTagApplication;
    } else if (acceptWord("PRIVATE")) {
      tag.tag_class = kTagPrivate;
    }
    tag.number = parseValue();
    expect("]");
    if (acceptWord("IMPLICIT")) {
      tag.mode = TagMode::kImplicit;
    } else if (acceptWord("EXPLICIT")) {
      tag.mode = TagMode::kExplicit;
    }
    type.tags.push_back(tag);
  }
}

/// The types that are one word.
bool Parser::parsePlainType(TypeAst& type) {
  static const std::unordered_map<std::string_view, MainType> kTypes = {{"BOOLEAN", TYP_BOOLEAN},
                                                                        {"REAL", TYP_REAL},
                                                                        {"NULL", TYP_NULL},
                                                                        {"NumericString", TYP_NUMSTR},
                                                                        {"PrintableString", TYP_PRISTR},
                                                                        {"TeletexString", TYP_TELSTR},
                                                                        {"T61String", TYP_TELSTR},
                                                                        {"VideotexString", TYP_VIDSTR},
                                                                        {"VisibleString", TYP_VISSTR},
                                                                        {"ISO646String", TYP_VISSTR},
                                                                        {"IA5String", TYP_IA5STR},
                                                                        {"GraphicString", TYP_GRASTR},
                                                                        {"GeneralString", TYP_GENSTR},
                                                                        {"BMPString", TYP_BMPSTR},
                                                                        {"UniversalString", TYP_UNISTR},
                                                                        {"GeneralizedTime", TYP_GENTIME},
                                                                        {"UTCTime", TYP_UTCTIME},
                                                                        {"EXTERNAL", TYP_EXTERNAL},
                                                                        {"ObjectDescriptor", TYP_OBJDESCR}};
  const auto found = kTypes.find(peek().text);
  if (found == kTypes.end()) return false;
  type.main = found->second;
  ++pos;
  return true;
}

bool Parser::parseSelection(TypeAst& type) {
  if (peek().kind != Tok::kLower || !isSymbol("<", 1)) return false;
  type.kind = TypeAst::kSelection;
  type.main = TYP_SELECTION;
  type.word = tokens_[pos].text;
  pos += 2;
  type.element = parseType();
  return true;
}

/// The types without parts that are more than one word, or have something behind their word.
bool Parser::parseTypeOfWords(TypeAst& type) {
  if (acceptWord("INTEGER")) {
    type.main = TYP_INTEGER;
    if (isSymbol("{")) parseNamed(type, true);
  } else if (acceptWord("BIT")) {
    expectWord("STRING");
    type.main = TYP_BITSTR;
    if (isSymbol("{")) parseNamed(type, true);
  } else if (acceptWord("OCTET")) {
    expectWord("STRING");
    type.main = TYP_OCTSTR;
  } else if (acceptWord("OBJECT")) {
    expectWord("IDENTIFIER");
    type.main = TYP_OBJID;
  } else if (acceptWord("EMBEDDED")) {
    expectWord("PDV");
    type.main = TYP_EMB_PDV;
  } else if (acceptWord("CHARACTER")) {
    expectWord("STRING");
    type.main = TYP_CHASTR;
  } else if (acceptWord("ANY")) {
    parseAny(type);
  } else if (isWord("UTF8String") || isWord("RELATIVE-OID")) {
    type.word = tokens_[pos++].text;  // refused where the types are translated, with all others
  } else {
    return false;
  }
  return true;
}

void Parser::parseAny(TypeAst& type) {
  type.main = TYP_ANY;
  reporter_.notStandard(Place{&file_, peek(-1).line, peek(-1).column}, "ANY is no type of the standard");
  if (!acceptWord("DEFINED")) return;
  expectWord("BY");
  type.word = takeLower("the name of a component");
}

void Parser::parseUntaggedType(TypeAst& type) {
  if (parseSelection(type)) return;
  if (peek().kind == Tok::kLower && isSymbol(".", 1)) return parseNamedReference(type);
  if (peek().kind != Tok::kUpper) fail("expected a type");
  if (parsePlainType(type) || parseTypeOfWords(type)) return;
  if (acceptWord("ENUMERATED")) {
    parseEnumeration(type);
  } else if (acceptWord("SEQUENCE")) {
    parseStructOrList(type, TYP_SEQ, TYP_SEQOF);
  } else if (acceptWord("SET")) {
    parseStructOrList(type, TYP_SET, TYP_SETOF);
  } else if (acceptWord("CHOICE")) {
    type.kind = TypeAst::kStruct;
    type.main = TYP_CHOICE;
    parseComponents(type);
  } else if (acceptWord("INSTANCE")) {
    expectWord("OF");
    type.kind = TypeAst::kInstance;
    type.main = TYP_INSTANCE_OF;
    type.ref = parseReference();
  } else {
    parseNamedReference(type);
  }
}

bool Parser::isFieldAccess() const {
  return isSymbol(".") && peek(1).kind == Tok::kField;
}

std::vector<std::string_view> Parser::parseFieldPath() {
  std::vector<std::string_view> fields;
  do {
    if (peek().kind != Tok::kField) fail("expected a field");
    fields.push_back(tokens_[pos++].text);
  } while (isFieldAccess() && accept("."));
  return fields;
}

void Parser::parseNamedReference(TypeAst& type) {
  type.kind = TypeAst::kRef;
  type.ref = parseReference();
  if (isFieldAccess()) {
    ++pos;
    type.kind = TypeAst::kField;
    type.fields = parseFieldPath();
  }
}

RefAst Parser::parseReference() {
  RefAst ref;
  ref.token = pos;
  const bool builtin = isWord("TYPE-IDENTIFIER") || isWord("ABSTRACT-SYNTAX");
  if (peek().kind != Tok::kLower &&
      (peek().kind != Tok::kUpper || (!builtin && isReservedWord(peek().text)))) {
    fail("expected a type, a value or a name");
  }
  ref.name = tokens_[pos++].text;
  if (tokens_[pos - 1].kind == Tok::kUpper && isSymbol(".") &&
      (peek(1).kind == Tok::kUpper || peek(1).kind == Tok::kLower)) {
    ref.module = ref.name;
    ref.token = ++pos;
    ref.name = tokens_[pos++].text;
  }
  // A brace behind a name is a list of actual parameters, wherever a reference may stand.
  if (isSymbol("{")) {
    ref.has_args = true;
    splitArguments(skipBraces(), ref.args);
  }
  return ref;
}

void Parser::splitArguments(Range braces, std::vector<Range>& args) {
  int depth = 0;
  Range current{braces.begin + 1, 0};
  for (int i = braces.begin + 1; i < braces.end; ++i) {
    const Token& token = tokens_[i];
    if (token.kind != Tok::kSymbol) continue;
    const bool last = i == braces.end - 1;
    if (last || (token.text == "," && depth == 0)) {
      current.end = i;
      if (current.end == current.begin) {
        pos = i;
        fail("expected an actual parameter");
      }
      args.push_back(current);
      current.begin = i + 1;
    } else if (token.text == "{" || token.text == "(" || token.text == "[" || token.text == "[[") {
      ++depth;
    } else if (token.text == "}" || token.text == ")" || token.text == "]" || token.text == "]]") {
      --depth;
    }
  }
}

void Parser::parseNamed(TypeAst& type, bool required) {
  expect("{");
  if (!required && accept("}")) return;
  do {
    NamedAst named;
    named.token = pos;
    named.name = takeLower("a name");
    expect("(");
    named.number = parseValue();
    expect(")");
    type.named.push_back(named);
  } while (accept(","));
  expect("}");
}

void Parser::parseEnumeration(TypeAst& type) {
  type.main = TYP_ENUM;
  expect("{");
  do {
    if (isSymbol("...")) {
      if (type.marker >= 0) fail("expected no second extension marker");
      if (type.named.empty()) fail("expected an enumeration item");
      ++pos;
      type.marker = static_cast<int>(type.named.size());
      parseException();
      continue;
    }
    NamedAst named;
    named.token = pos;
    named.name = takeLower("an enumeration item");
    if (accept("(")) {
      named.number = parseValue();
      expect(")");
    }
    type.named.push_back(named);
  } while (accept(","));
  expect("}");
}

void Parser::parseStructOrList(TypeAst& type, MainType structure, MainType list) {
  if (isSymbol("{")) {
    type.kind = TypeAst::kStruct;
    type.main = structure;
    return parseComponents(type);
  }
  type.kind = TypeAst::kList;
  type.main = list;
  if (isWord("SIZE")) {
    type.constraints.push_back(parseElement());
  } else if (isSymbol("(")) {
    type.constraints.push_back(parseConstraint());
  }
  expectWord("OF");
  if (peek().kind == Tok::kLower && !isSymbol("<", 1) && !isSymbol(".", 1)) ++pos;  // the element's name
  type.element = parseType();
}

void Parser::parseComponents(TypeAst& type) {
  expect("{");
  int markers = 0, groups = 0;
  if (!isSymbol("}")) {
    do {
      const int addition = markers == 1 ? 1 : 0;
      if (isSymbol("...")) {
        if (++markers > 2) fail("expected no third extension marker");
        ComponentAst marker;
        marker.kind = ComponentAst::kMarker;
        marker.token = pos++;
        parseException();
        type.components.push_back(marker);
      } else if (isSymbol("[[")) {
        if (markers != 1) fail("expected a component; groups stand behind an extension marker");
        ++pos;
        if (peek().kind == Tok::kNumber && isSymbol(":", 1)) pos += 2;
        if (groups < 200) ++groups;
        do {
          parseComponent(type, 1 + groups);
        } while (accept(","));
        expect("]]");
      } else {
        parseComponent(type, addition);
      }
    } while (accept(","));
  }
  expect("}");
  if (type.main == TYP_CHOICE && type.components.size() == static_cast<size_t>(markers) && markers == 0) {
    --pos;
    fail("expected an alternative");
  }
}

void Parser::parseComponent(TypeAst& type, int addition) {
  ComponentAst component;
  component.token = pos;
  component.addition = addition;
  if (type.main != TYP_CHOICE && isWord("COMPONENTS")) {
    ++pos;
    expectWord("OF");
    component.kind = ComponentAst::kComponentsOf;
    component.type = parseType();
    type.components.push_back(component);
    return;
  }
  // The name may be missing in old sources.
  if (peek().kind == Tok::kLower && !isSymbol("<", 1) && !isSymbol(".", 1))
    component.name = tokens_[pos++].text;
  else
    reporter_.notStandard(Place{&file_, peek().line, peek().column}, "a component needs a name");
  component.type = parseType();
  if (type.main != TYP_CHOICE) {
    if (acceptWord("OPTIONAL")) {
      component.presence = kOptional;
    } else if (acceptWord("DEFAULT")) {
      component.presence = asn1::kDefault;
      component.default_value = parseValue();
    }
  }
  type.components.push_back(component);
}

}  // namespace mesk
