// Parses the modules of one file. Also parses single types, values and constraints from ranges of tokens
// whose kind becomes known only later.
#pragma once

#include <memory>

#include "mesk/Ast.h"

namespace mesk {

class Parser {
 public:
  Parser(const SourceFile& file, const std::vector<Token>& tokens, Arena& arena, Reporter& reporter)
      : file_(file), tokens_(tokens), arena_(arena), reporter_(reporter) {}

  /// All modules of the file. After an error parsing goes on with the next definition.
  void parseFile(SourceFile& file, std::vector<std::unique_ptr<Module>>& modules);

  /// The definitions of the module that holds what is built in.
  void parseBuiltins(Module& module);

  // The following read from `pos` on, report errors and leave by Abandoned.
  int pos = 0;
  TypeAst* parseType();
  ValueAst* parseValue();
  /// What stands between the braces of a value set, or between parentheses.
  ConstraintAst* parseElementSets();
  /// A reference with its module and its actual parameters.
  RefAst parseReference();
  std::vector<std::string_view> parseFieldPath();

  const Token& peek(int ahead = 0) const;
  bool isSymbol(std::string_view text, int ahead = 0) const;
  bool isWord(std::string_view text, int ahead = 0) const;
  bool accept(std::string_view symbol);
  bool acceptWord(std::string_view word);
  void expect(std::string_view symbol);
  void expectWord(std::string_view word);
  [[noreturn]] void fail(const std::string& text);
  /// Steps over a pair of braces and gives their range.
  Range skipBraces();

 private:
  // Modules
  std::unique_ptr<Module> parseModule(SourceFile& file);
  void parseHeader(Module& module);
  void parseExports(Module& module);
  void parseImports(Module& module);
  void parseSymbol(std::vector<std::pair<std::string_view, int>>& symbols);
  void refuseMacro();
  bool parseAssignment(Module& module);
  void parseParameters(Definition& definition);
  void addDefinition(Module& module, Definition&& definition);
  void recover(int from);
  // Types
  bool parsePlainType(TypeAst& type);
  void parseUntaggedType(TypeAst& type);
  void parseTags(TypeAst& type);
  void parseNamed(TypeAst& type, bool required);
  void parseEnumeration(TypeAst& type);
  void parseStructOrList(TypeAst& type, asn1::MainType structure, asn1::MainType list);
  void parseComponents(TypeAst& type);
  void parseComponent(TypeAst& type, int addition);
  void parseNamedReference(TypeAst& type);
  void splitArguments(Range braces, std::vector<Range>& args);
  bool parseSelection(TypeAst& type);
  bool parseTypeOfWords(TypeAst& type);
  void parseAny(TypeAst& type);
  // Values
  bool parseLiteral(ValueAst& value);
  bool parseWordValue(ValueAst& value);
  // Constraints
  ConstraintAst* parseConstraint();
  ConstraintAst* parseElementSet();
  ConstraintAst* parseIntersection();
  ConstraintAst* parseIntersectionElement();
  ConstraintAst* parseElement();
  ConstraintAst* parseValueOrRange();
  ConstraintAst* parseWithComponents();
  ConstraintAst* parseTableConstraint();
  ConstraintAst* makeConstraint(asn1::ConstraintKind kind);
  ConstraintAst* join(asn1::ConstraintKind kind, ConstraintAst* first, ConstraintAst* second);
  bool parseException();
  // Classes
  ClassAst* parseClass();
  void parseField(ClassAst& cls);
  void parseSyntax(std::vector<SyntaxAst>& syntax, std::string_view close);

  bool acceptBracket();

  bool isFieldAccess() const;
  std::string_view takeLower(const char* what);
  std::string_view takeUpper(const char* what);
  static std::string describe(const Token& token);

  const SourceFile& file_;
  const std::vector<Token>& tokens_;
  Arena& arena_;
  Reporter& reporter_;
  int depth_ = 0;
  bool half_bracket_ = false;
};

}  // namespace mesk
