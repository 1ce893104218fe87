// Module headers, imports and exports, assignments, and the basic steps of the parser.
#include "mesk/Parser.h"

namespace mesk {

const Token& Parser::peek(int ahead) const {
  const size_t index = static_cast<size_t>(pos + ahead);
  return index < tokens_.size() ? tokens_[index] : tokens_.back();
}

bool Parser::isSymbol(std::string_view text, int ahead) const {
  return peek(ahead).kind == Tok::kSymbol && peek(ahead).text == text;
}

bool Parser::isWord(std::string_view text, int ahead) const {
  return peek(ahead).kind == Tok::kUpper && peek(ahead).text == text;
}

bool Parser::accept(std::string_view symbol) {
  if (!isSymbol(symbol)) return false;
  ++pos;
  return true;
}

bool Parser::acceptWord(std::string_view word) {
  if (!isWord(word)) return false;
  ++pos;
  return true;
}

std::string Parser::describe(const Token& token) {
  switch (token.kind) {
    case Tok::kEnd:
      return "the end of the file";
    case Tok::kCString:
      return "a string";
    case Tok::kBString:
    case Tok::kHString:
      return "a string of digits";
    default:
      return "\"" + std::string(token.text.substr(0, 60)) + "\"";
  }
}

void Parser::fail(const std::string& text) {
  reporter_.error(Place{&file_, peek().line, peek().column}, text + ", found " + describe(peek()));
  throw Abandoned();
}

void Parser::expect(std::string_view symbol) {
  if (!accept(symbol)) fail("expected \"" + std::string(symbol) + "\"");
}

void Parser::expectWord(std::string_view word) {
  if (!acceptWord(word)) fail("expected " + std::string(word));
}

Range Parser::skipBraces() {
  if (!isSymbol("{")) fail("expected \"{\"");
  const int begin = pos;
  if (tokens_[pos].match < 0) {
    reporter_.error(Place{&file_, peek().line, peek().column}, "a brace is not closed");
    throw Abandoned();
  }
  pos = tokens_[pos].match + 1;
  return Range{begin, pos};
}

std::string_view Parser::takeLower(const char* what) {
  if (peek().kind != Tok::kLower) fail(std::string("expected ") + what);
  return tokens_[pos++].text;
}

std::string_view Parser::takeUpper(const char* what) {
  if (peek().kind != Tok::kUpper || isReservedWord(peek().text)) fail(std::string("expected ") + what);
  return tokens_[pos++].text;
}

void Parser::parseFile(SourceFile& file, std::vector<std::unique_ptr<Module>>& modules) {
  if (peek().kind == Tok::kEnd) {
    reporter_.error(Place{&file_, peek().line, peek().column}, "the file holds no module");
    return;
  }
  try {
    while (peek().kind != Tok::kEnd) modules.push_back(parseModule(file));
  } catch (const Abandoned&) {
    // The header of a module is wrong: nothing behind it can be trusted.
  }
}

std::unique_ptr<Module> Parser::parseModule(SourceFile& file) {
  auto module = std::make_unique<Module>();
  module->file = &file;
  module->tokens = &tokens_;
  parseHeader(*module);
  while (!acceptWord("END")) {
    const int begin = pos;
    try {
      if (peek().kind == Tok::kEnd) fail("expected END");
      if (!parseAssignment(*module)) fail("expected a definition");
    } catch (const Abandoned&) {
      if (peek().kind == Tok::kEnd) break;
      recover(begin);
    }
  }
  return module;
}

void Parser::parseBuiltins(Module& module) {
  parseHeader(module);
  while (!acceptWord("END")) parseAssignment(module);
}

/// To the next place that looks like the beginning of a definition: the first word in the line of a "::=".
void Parser::recover(int from) {
  int index = pos > from ? pos : from + 1;
  // Behind the "::=" of the definition that failed.
  for (int i = from; i < index; ++i) {
    if (tokens_[i].kind == Tok::kEnd) index = i;
  }
  bool skipped = false;
  for (int i = from; i < index; ++i) skipped |= tokens_[i].kind == Tok::kSymbol && tokens_[i].text == "::=";
  for (;; ++index) {
    const Token& token = tokens_[index];
    if (token.kind == Tok::kEnd) break;
    if (token.kind == Tok::kUpper && token.text == "END") break;
    if (token.kind != Tok::kSymbol || token.text != "::=") continue;
    int first = index;
    while (first > 0 && tokens_[first - 1].line == token.line) --first;
    if (first > from && (tokens_[first].kind == Tok::kUpper || tokens_[first].kind == Tok::kLower) &&
        (skipped || tokens_[first].line > tokens_[from].line)) {
      index = first;
      break;
    }
    skipped = true;
  }
  pos = index;
}

void Parser::parseHeader(Module& module) {
  module.token = pos;
  module.name = takeUpper("a module name");
  if (isSymbol("{")) skipBraces();
  expectWord("DEFINITIONS");
  if (acceptWord("EXPLICIT")) {
    expectWord("TAGS");
  } else if (acceptWord("IMPLICIT")) {
    module.tag_default = Module::kImplicitTags;
    expectWord("TAGS");
  } else if (acceptWord("AUTOMATIC")) {
    module.tag_default = Module::kAutomaticTags;
    expectWord("TAGS");
  }
  if (acceptWord("EXTENSIBILITY")) {
    expectWord("IMPLIED");
    module.extensibility_implied = true;
  }
  expect("::=");
  expectWord("BEGIN");
  if (acceptWord("EXPORTS")) parseExports(module);
  if (acceptWord("IMPORTS")) parseImports(module);
}

void Parser::parseSymbol(std::vector<std::pair<std::string_view, int>>& symbols) {
  const Token& token = peek();
  if (token.kind != Tok::kLower &&
      (token.kind != Tok::kUpper ||
       (isReservedWord(token.text) && token.text != "TYPE-IDENTIFIER" && token.text != "ABSTRACT-SYNTAX"))) {
    fail("expected a name");
  }
  symbols.emplace_back(token.text, pos++);
  if (isSymbol("{") && isSymbol("}", 1)) pos += 2;
}

void Parser::parseExports(Module& module) {
  if (acceptWord("ALL")) return expect(";");
  module.exports_all = false;
  if (accept(";")) return;
  do {
    parseSymbol(module.exports);
  } while (accept(","));
  expect(";");
}

void Parser::parseImports(Module& module) {
  while (!accept(";")) {
    ImportAst import;
    do {
      parseSymbol(import.symbols);
    } while (accept(","));
    expectWord("FROM");
    import.token = pos;
    import.module = takeUpper("a module name");
    if (isSymbol("{")) {
      skipBraces();
    } else if (peek().kind == Tok::kLower && !isSymbol(",", 1) && !isWord("FROM", 1)) {
      parseReference();  // the module's identifier by a value
    }
    module.imports.push_back(std::move(import));
  }
}

void Parser::addDefinition(Module& module, Definition&& definition) {
  definition.module = &module;
  auto [place, fresh] = module.by_name.emplace(definition.name, nullptr);
  if (!fresh) {
    reporter_.error(module.place(definition.token),
                    "\"" + std::string(definition.name) + "\" is already defined in line " +
                        std::to_string((*module.tokens)[place->second->token].line));
    return;
  }
  module.definitions.push_back(std::move(definition));
  place->second = &module.definitions.back();
}

void Parser::parseParameters(Definition& definition) {
  definition.parameterized = true;
  expect("{");
  do {
    ParamAst param;
    const Token& second = peek(1);
    if (second.kind == Tok::kSymbol && (second.text == "," || second.text == "}")) {
      param.token = pos;
      param.name = peek().text;
      if (peek().kind != Tok::kUpper || isReservedWord(peek().text)) fail("expected a parameter");
      ++pos;
    } else {
      param.governor = parseType();
      expect(":");
      param.token = pos;
      if (peek().kind != Tok::kLower && (peek().kind != Tok::kUpper || isReservedWord(peek().text))) {
        fail("expected a parameter");
      }
      param.name = tokens_[pos++].text;
    }
    for (const ParamAst& other : definition.params) {
      if (other.name == param.name) {
        --pos;
        fail("expected another name for this parameter");
      }
    }
    definition.params.push_back(param);
  } while (accept(","));
  expect("}");
}

// Its notation is no ASN.1 of its own: one error says all of it.
void Parser::refuseMacro() {
  reporter_.error(Place{&file_, peek().line, peek().column},
                  "macros are not supported; expected a definition, found " + describe(peek()));
  pos += 2;
  expect("::=");
  if (!acceptWord("BEGIN")) {  // another one's name
    parseReference();
    return;
  }
  while (!acceptWord("END")) {
    if (peek().kind == Tok::kEnd) fail("expected END");
    ++pos;
  }
}

bool Parser::parseAssignment(Module& module) {
  Definition definition;
  definition.token = pos;
  if (peek().kind == Tok::kUpper && isWord("MACRO", 1)) {
    refuseMacro();
    return true;
  }
  if (peek().kind == Tok::kLower) {
    definition.name = tokens_[pos++].text;
    if (isSymbol("{")) parseParameters(definition);
    definition.kind = DefKind::kValue;
    definition.type = parseType();
    expect("::=");
    definition.value = parseValue();
    addDefinition(module, std::move(definition));
    return true;
  }
  if (peek().kind != Tok::kUpper) return false;
  if (module.builtin) {
    definition.name = tokens_[pos++].text;
  } else {
    definition.name = takeUpper("a definition");
  }
  if (isSymbol("{")) parseParameters(definition);
  if (accept("::=")) {
    if (isWord("CLASS")) {
      definition.kind = DefKind::kClass;
      definition.kind_state = State::kDone;
      definition.cls = parseClass();
    } else {
      definition.type = parseType();
    }
  } else {
    definition.kind = DefKind::kValueSet;
    definition.type = parseType();
    expect("::=");
    if (isSymbol("{")) {
      definition.range = skipBraces();
    } else {
      fail("expected a set in braces");
    }
  }
  addDefinition(module, std::move(definition));
  return true;
}

}  // namespace mesk
