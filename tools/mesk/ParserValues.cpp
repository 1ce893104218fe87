// Values and information object classes.
#include "mesk/Parser.h"

namespace mesk {

using namespace asn1;

/// Numbers, strings, and what stands in braces; false for a value that begins with another token.
bool Parser::parseLiteral(ValueAst& value) {
  if (isSymbol("{")) {
    value.kind = ValueAst::kBraces;
    value.range = skipBraces();
    return true;
  }
  value.negative = isSymbol("-") && (peek(1).kind == Tok::kNumber || peek(1).kind == Tok::kReal);
  const Token& token = peek(value.negative ? 1 : 0);
  switch (token.kind) {
    case Tok::kNumber:
      value.kind = ValueAst::kInteger;
      break;
    case Tok::kReal:
      value.kind = ValueAst::kReal;
      break;
    case Tok::kCString:
      value.kind = ValueAst::kCString;
      break;
    case Tok::kBString:
      value.kind = ValueAst::kBString;
      break;
    case Tok::kHString:
      value.kind = ValueAst::kHString;
      break;
    default:
      return false;
  }
  value.text = token.text;
  pos += value.negative ? 2 : 1;
  return true;
}

/// The words that are values, and a type with its value; false for a reference.
bool Parser::parseWordValue(ValueAst& value) {
  static constexpr struct {
    const char* word;
    ValueAst::Kind kind;
  } kWords[] = {{"TRUE", ValueAst::kTrue},
                {"FALSE", ValueAst::kFalse},
                {"PLUS-INFINITY", ValueAst::kPlusInfinity},
                {"MINUS-INFINITY", ValueAst::kMinusInfinity}};
  for (const auto& row : kWords) {
    if (!acceptWord(row.word)) continue;
    value.kind = row.kind;
    return true;
  }
  if (isWord("NULL") && !isSymbol(":", 1)) {
    value.kind = ValueAst::kNull;
    ++pos;
    return true;
  }
  if (isSymbol(".", 1) && peek(2).kind == Tok::kLower) return false;
  value.kind = ValueAst::kTyped;
  value.type = parseType();
  if (!isSymbol(":")) {
    pos = value.token;
    fail("expected a value");
  }
  ++pos;
  value.inner = parseValue();
  return true;
}

ValueAst* Parser::parseValue() {
  Depth depth(depth_);
  if (!depth.ok()) fail("values are nested too deeply; expected an end");
  ValueAst& value = arena_.values.emplace_back();
  value.token = pos;
  value.text = peek().text;
  if (parseLiteral(value)) return &value;
  if (peek().kind == Tok::kLower && isSymbol(":", 1)) {
    value.kind = ValueAst::kChoice;
    pos += 2;
    value.inner = parseValue();
    return &value;
  }
  if (peek().kind == Tok::kUpper && parseWordValue(value)) return &value;
  if (peek().kind != Tok::kUpper && peek().kind != Tok::kLower) fail("expected a value");
  value.kind = ValueAst::kRef;
  value.ref = parseReference();
  if (isFieldAccess()) {
    ++pos;
    value.kind = ValueAst::kField;
    value.fields = parseFieldPath();
  }
  return &value;
}

ClassAst* Parser::parseClass() {
  ClassAst& cls = arena_.classes.emplace_back();
  cls.token = pos;
  expectWord("CLASS");
  expect("{");
  do {
    parseField(cls);
  } while (accept(","));
  expect("}");
  if (acceptWord("WITH")) {
    expectWord("SYNTAX");
    cls.has_syntax = true;
    expect("{");
    parseSyntax(cls.syntax, "}");
  }
  return &cls;
}

void Parser::parseField(ClassAst& cls) {
  FieldAst field;
  field.token = pos;
  if (peek().kind != Tok::kField) fail("expected a field");
  field.name = tokens_[pos++].text;
  if (!cls.by_name.emplace(field.name, cls.fields.size()).second) {
    --pos;
    fail("expected another name for this field");
  }
  const bool set = field.name[1] <= 'Z';
  const bool ends = isSymbol(",") || isSymbol("}") || isWord("OPTIONAL") || isWord("DEFAULT");
  if (set && ends) {
    field.kind = kTypeField;
  } else if (peek().kind == Tok::kField) {
    field.kind = set ? kVariableValueSetField : kVariableValueField;
    field.fields = parseFieldPath();
  } else {
    field.kind = set ? kFixedValueSetField : kFixedValueField;
    field.type = parseType();
  }
  if (acceptWord("UNIQUE")) field.unique = true;
  if (acceptWord("OPTIONAL")) {
    field.optional = true;
  } else if (acceptWord("DEFAULT")) {
    field.default_setting.begin = pos;
    if (isSymbol("{")) {
      skipBraces();
    } else if (field.kind == kTypeField) {
      parseType();
    } else {
      parseValue();
    }
    field.default_setting.end = pos;
  }
  cls.fields.push_back(std::move(field));
}

/// A closing bracket of a group. Two of them may have been read as one.
bool Parser::acceptBracket() {
  if (accept("]")) return true;
  if (!isSymbol("]]")) return false;
  if (half_bracket_) ++pos;
  half_bracket_ = !half_bracket_;
  return true;
}

void Parser::parseSyntax(std::vector<SyntaxAst>& syntax, std::string_view close) {
  Depth depth(depth_);
  if (!depth.ok()) fail("syntax groups are nested too deeply; expected an end");
  while (close == "]" ? !acceptBracket() : !accept(close)) {
    SyntaxAst part;
    part.token = pos;
    if (isSymbol("[") || isSymbol("[[")) {
      // Two brackets may have been read as one.
      if (accept("[[")) {
        SyntaxAst inner;
        inner.token = part.token;
        parseSyntax(inner.group, "]");
        part.group.push_back(std::move(inner));
      } else {
        ++pos;
      }
      parseSyntax(part.group, "]");
      if (part.group.empty()) fail("expected a word or a field in the group");
    } else if (peek().kind == Tok::kField) {
      part.field = tokens_[pos++].text;
    } else if (peek().kind == Tok::kUpper || isSymbol(",")) {
      part.word = tokens_[pos++].text;
    } else {
      fail("expected a word, a field or a group");
    }
    syntax.push_back(std::move(part));
  }
}

}  // namespace mesk
