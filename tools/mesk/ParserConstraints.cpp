// Constraints.
#include "mesk/Parser.h"

namespace mesk {

using namespace asn1;

ConstraintAst* Parser::makeConstraint(ConstraintKind kind) {
  ConstraintAst& constraint = arena_.constraints.emplace_back();
  constraint.kind = kind;
  constraint.token = pos;
  return &constraint;
}

ConstraintAst* Parser::join(ConstraintKind kind, ConstraintAst* first, ConstraintAst* second) {
  ConstraintAst* joined = makeConstraint(kind);
  joined->token = first->token;
  joined->first = first;
  joined->second = second;
  return joined;
}

/// An exception behind its "!", if one stands here.
bool Parser::parseException() {
  if (!accept("!")) return false;
  if (peek().kind == Tok::kNumber || isSymbol("-") || peek().kind == Tok::kLower) {
    parseValue();
  } else {
    parseType();
    expect(":");
    parseValue();
  }
  return true;
}

ConstraintAst* Parser::parseConstraint() {
  Depth depth(depth_);
  if (!depth.ok()) fail("constraints are nested too deeply; expected an end");
  expect("(");
  ConstraintAst* constraint = nullptr;
  if (isWord("CONSTRAINED")) {
    constraint = makeConstraint(kUserDefined);
    ++pos;
    expectWord("BY");
    skipBraces();
  } else if (isWord("CONTAINING")) {
    constraint = makeConstraint(kContents);
    ++pos;
    constraint->type = parseType();
    if (acceptWord("ENCODED")) {
      expectWord("BY");
      constraint->value = parseValue();
    }
  } else if (isWord("ENCODED")) {
    constraint = makeConstraint(kContents);
    ++pos;
    expectWord("BY");
    constraint->value = parseValue();
  } else {
    constraint = parseElementSets();
  }
  if (parseException()) constraint->exception = true;
  expect(")");
  return constraint;
}

ConstraintAst* Parser::parseElementSets() {
  ConstraintAst* constraint = nullptr;
  if (isSymbol("...")) {
    constraint = makeConstraint(kExtensionMarker);
    ++pos;
  } else {
    constraint = parseElementSet();
    if (!isSymbol(",")) return constraint;
    ++pos;
    ConstraintAst* marker = makeConstraint(kExtensionMarker);
    expect("...");
    constraint = join(kCatenation, constraint, marker);
  }
  if (accept(",")) constraint = join(kCatenation, constraint, parseElementSet());
  return constraint;
}

ConstraintAst* Parser::parseElementSet() {
  Depth depth(depth_);
  if (!depth.ok()) fail("constraints are nested too deeply; expected an end");
  if (isWord("ALL")) {
    ConstraintAst* constraint = makeConstraint(kAllExcept);
    ++pos;
    expectWord("EXCEPT");
    constraint->first = parseElement();
    return constraint;
  }
  // Long unions become balanced, so that their depth stays small.
  std::vector<ConstraintAst*> parts{parseIntersection()};
  while (accept("|") || acceptWord("UNION")) parts.push_back(parseIntersection());
  while (parts.size() > 1) {
    if (parts.size() <= 16) {
      parts[1] = join(kUnion, parts[0], parts[1]);
      parts.erase(parts.begin());
      continue;
    }
    std::vector<ConstraintAst*> halved;
    for (size_t i = 0; i < parts.size(); i += 2) {
      halved.push_back(i + 1 < parts.size() ? join(kUnion, parts[i], parts[i + 1]) : parts[i]);
    }
    parts = std::move(halved);
  }
  return parts[0];
}

ConstraintAst* Parser::parseIntersection() {
  ConstraintAst* constraint = parseIntersectionElement();
  for (int count = 0; accept("^") || acceptWord("INTERSECTION"); ++count) {
    if (count > 100) fail("too many intersections; expected an end");
    constraint = join(kIntersection, constraint, parseIntersectionElement());
  }
  return constraint;
}

ConstraintAst* Parser::parseIntersectionElement() {
  ConstraintAst* constraint = parseElement();
  if (acceptWord("EXCEPT")) constraint = join(kExcept, constraint, parseElement());
  return constraint;
}

ConstraintAst* Parser::parseElement() {
  Depth depth(depth_);
  if (!depth.ok()) fail("constraints are nested too deeply; expected an end");
  if (accept("(")) {
    ConstraintAst* inner = parseElementSet();
    expect(")");
    return inner;
  }
  if (isWord("SIZE") || isWord("FROM")) {
    ConstraintAst* constraint = makeConstraint(isWord("SIZE") ? kSize : kPermittedAlphabet);
    ++pos;
    constraint->first = parseConstraint();
    return constraint;
  }
  if (isWord("WITH")) return parseWithComponents();
  if (isWord("PATTERN")) {
    ConstraintAst* constraint = makeConstraint(kPattern);
    ++pos;
    constraint->value = parseValue();
    return constraint;
  }
  if (isSymbol("{") && peek(1).kind == Tok::kUpper && !isReservedWord(peek(1).text))
    return parseTableConstraint();
  const bool includes = isWord("INCLUDES");
  const Token& token = peek();
  static constexpr std::string_view kValueWords[] = {"TRUE",          "FALSE",          "NULL",
                                                     "PLUS-INFINITY", "MINUS-INFINITY", "MIN"};
  bool value_word = token.kind != Tok::kUpper;
  for (std::string_view word : kValueWords) value_word |= token.text == word;
  // Module.value begins with a capital, too.
  value_word |= token.kind == Tok::kUpper && isSymbol(".", 1) && peek(2).kind == Tok::kLower;
  if (includes || (!value_word && token.kind == Tok::kUpper)) {
    ConstraintAst* constraint = makeConstraint(kContainedSubtype);
    if (includes) ++pos;
    constraint->type = parseType();
    return constraint;
  }
  return parseValueOrRange();
}

ConstraintAst* Parser::parseValueOrRange() {
  ConstraintAst* constraint = makeConstraint(kSingleValue);
  const bool minimum = acceptWord("MIN");
  if (!minimum) constraint->value = parseValue();
  if (isSymbol("<") || isSymbol("..")) {
    constraint->kind = kValueRange;
    if (accept("<")) constraint->open |= kLowOpen;
    expect("..");
    if (accept("<")) constraint->open |= kHighOpen;
    if (!acceptWord("MAX")) constraint->value2 = parseValue();
  } else if (minimum) {
    fail("expected \"..\"");
  }
  return constraint;
}

ConstraintAst* Parser::parseWithComponents() {
  ConstraintAst* constraint = makeConstraint(kWithComponent);
  ++pos;
  if (acceptWord("COMPONENT")) {
    constraint->first = parseConstraint();
    return constraint;
  }
  expectWord("COMPONENTS");
  constraint->kind = kWithComponents;
  expect("{");
  if (accept("...")) {
    constraint->partial = true;
    if (!isSymbol("}")) expect(",");
  }
  if (accept("}")) return constraint;
  do {
    ConstraintAst* component = makeConstraint(kComponentConstraint);
    component->name = takeLower("the name of a component");
    if (isSymbol("(")) component->first = parseConstraint();
    if (acceptWord("PRESENT")) {
      component->presence = kPresencePresent;
    } else if (acceptWord("ABSENT")) {
      component->presence = kPresenceAbsent;
    } else if (acceptWord("OPTIONAL")) {
      component->presence = kPresenceOptional;
    }
    constraint->components.push_back(component);
  } while (accept(","));
  expect("}");
  return constraint;
}

ConstraintAst* Parser::parseTableConstraint() {
  ConstraintAst* constraint = makeConstraint(kTableConstraint);
  expect("{");
  constraint->set = parseReference();
  expect("}");
  if (!accept("{")) return constraint;
  do {
    AtPath path;
    path.token = pos;
    expect("@");
    while (isSymbol(".") || isSymbol("..") || isSymbol("..."))
      path.level += static_cast<int>(peek().text.size()), ++pos;
    do {
      path.names.push_back(takeLower("the name of a component"));
    } while (accept("."));
    constraint->paths.push_back(path);
  } while (accept(","));
  expect("}");
  return constraint;
}

}  // namespace mesk
