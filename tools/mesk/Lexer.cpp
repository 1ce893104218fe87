#include "mesk/Lexer.h"

#include <algorithm>
#include <iterator>

namespace mesk {

bool isLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

namespace {
// In the order of their characters.
constexpr std::string_view kReserved[] = {"ABSENT",
                                          "ABSTRACT-SYNTAX",
                                          "ALL",
                                          "ANY",
                                          "APPLICATION",
                                          "AUTOMATIC",
                                          "BEGIN",
                                          "BIT",
                                          "BMPString",
                                          "BOOLEAN",
                                          "BY",
                                          "CHARACTER",
                                          "CHOICE",
                                          "CLASS",
                                          "COMPONENT",
                                          "COMPONENTS",
                                          "CONSTRAINED",
                                          "CONTAINING",
                                          "DEFAULT",
                                          "DEFINED",
                                          "DEFINITIONS",
                                          "EMBEDDED",
                                          "ENCODED",
                                          "END",
                                          "ENUMERATED",
                                          "EXCEPT",
                                          "EXPLICIT",
                                          "EXPORTS",
                                          "EXTENSIBILITY",
                                          "EXTERNAL",
                                          "FALSE",
                                          "FROM",
                                          "GeneralString",
                                          "GeneralizedTime",
                                          "GraphicString",
                                          "IA5String",
                                          "IDENTIFIER",
                                          "IMPLICIT",
                                          "IMPLIED",
                                          "IMPORTS",
                                          "INCLUDES",
                                          "INSTANCE",
                                          "INTEGER",
                                          "INTERSECTION",
                                          "ISO646String",
                                          "MAX",
                                          "MIN",
                                          "MINUS-INFINITY",
                                          "NULL",
                                          "NumericString",
                                          "OBJECT",
                                          "OCTET",
                                          "OF",
                                          "OPTIONAL",
                                          "ObjectDescriptor",
                                          "PATTERN",
                                          "PDV",
                                          "PLUS-INFINITY",
                                          "PRESENT",
                                          "PRIVATE",
                                          "PrintableString",
                                          "REAL",
                                          "RELATIVE-OID",
                                          "SEQUENCE",
                                          "SET",
                                          "SIZE",
                                          "STRING",
                                          "SYNTAX",
                                          "T61String",
                                          "TAGS",
                                          "TRUE",
                                          "TYPE-IDENTIFIER",
                                          "TeletexString",
                                          "UNION",
                                          "UNIQUE",
                                          "UNIVERSAL",
                                          "UTCTime",
                                          "UTF8String",
                                          "UniversalString",
                                          "VideotexString",
                                          "VisibleString",
                                          "WITH"};
}  // namespace

bool isReservedWord(std::string_view word) {
  return std::binary_search(std::begin(kReserved), std::end(kReserved), word);
}

namespace {

bool isNewline(char c) {
  return c == '\n' || c == '\r' || c == '\v' || c == '\f';
}

bool isSpace(char c) {
  return c == ' ' || c == '\t' || isNewline(c);
}

class Lexer {
 public:
  Lexer(SourceFile& file, Reporter& reporter) : file_(file), text_(file.text), reporter_(reporter) {}

  std::vector<Token> run() {
    while (skipBlanks()) next();
    add(Tok::kEnd, std::string_view());
    matchBraces();
    return std::move(tokens_);
  }

 private:
  char at(size_t offset) const { return pos_ + offset < text_.size() ? text_[pos_ + offset] : '\0'; }

  // Lines are counted as editors do.
  void step() {
    const char c = text_[pos_++];
    if (c == '\n' || (c == '\r' && at(0) != '\n')) {
      ++line_;
      line_start_ = pos_;
    }
  }

  void error(const std::string& text) { reporter_.error(Place{&file_, start_line_, start_column_}, text); }

  void mark() {
    start_line_ = line_;
    start_column_ = static_cast<int>(pos_ - line_start_) + 1;
  }

  void add(Tok kind, std::string_view text) {
    tokens_.push_back(Token{kind, text, start_line_, start_column_, -1});
  }

  void skipLineComment() {
    // A line of hyphens is a comment, however many they are.
    const size_t end = text_.find_first_not_of("- \t", pos_);
    if (end == std::string::npos || isNewline(text_[end])) {
      pos_ = std::min(end, text_.size());
      return;
    }
    pos_ += 2;
    while (pos_ < text_.size() && !isNewline(text_[pos_])) {
      if (text_[pos_] == '-' && at(1) == '-') {
        pos_ += 2;
        return;
      }
      ++pos_;
    }
  }

  void skipBlockComment() {
    int depth = 0;
    do {
      if (pos_ >= text_.size()) return error("a comment is not closed");
      if (text_[pos_] == '/' && at(1) == '*') {
        ++depth;
        pos_ += 2;
      } else if (text_[pos_] == '*' && at(1) == '/') {
        --depth;
        pos_ += 2;
      } else {
        step();
      }
    } while (depth > 0);
  }

  /// To the next token; false at the end of the text.
  bool skipBlanks() {
    for (;;) {
      while (pos_ < text_.size() && isSpace(text_[pos_])) step();
      mark();
      if (pos_ >= text_.size()) return false;
      if (text_[pos_] == '-' && at(1) == '-') {
        skipLineComment();
      } else if (text_[pos_] == '/' && at(1) == '*') {
        skipBlockComment();
      } else {
        return true;
      }
    }
  }

  std::string_view word() {
    const size_t begin = pos_;
    while (isLetter(at(0)) || isDigit(at(0)) || (at(0) == '-' && at(1) != '-')) ++pos_;
    const std::string_view found(text_.data() + begin, pos_ - begin);
    if (found.back() == '-') error("a name must not end in a hyphen");
    return found;
  }

  void number() {
    const size_t begin = pos_;
    while (isDigit(at(0))) ++pos_;
    bool real = false;
    if (at(0) == '.' && at(1) != '.') {
      real = true;
      ++pos_;
      while (isDigit(at(0))) ++pos_;
    }
    const size_t sign = at(1) == '-' || at(1) == '+' ? 1 : 0;
    if ((at(0) == 'e' || at(0) == 'E') && isDigit(at(1 + sign))) {
      real = true;
      pos_ += 1 + sign;
      while (isDigit(at(0))) ++pos_;
    }
    const std::string_view found(text_.data() + begin, pos_ - begin);
    if (!real && found.size() > 1 && found[0] == '0') error("a number must not begin with 0");
    add(real ? Tok::kReal : Tok::kNumber, found);
  }

  void characterString() {
    std::string value;
    ++pos_;
    for (;;) {
      if (pos_ >= text_.size()) {
        error("a string is not closed");
        break;
      }
      const char c = text_[pos_];
      if (c == '"') {
        ++pos_;
        if (at(0) != '"') break;
        ++pos_;
        value += '"';
      } else if (isNewline(c)) {
        // Blanks around a line end don't belong to the string.
        while (!value.empty() && isSpace(value.back())) value.pop_back();
        step();
        while (pos_ < text_.size() && isSpace(text_[pos_])) step();
      } else {
        value += c;
        ++pos_;
      }
    }
    file_.strings.push_back(std::move(value));
    add(Tok::kCString, file_.strings.back());
  }

  void digitString() {
    std::string digits;
    ++pos_;
    while (pos_ < text_.size() && text_[pos_] != '\'') {
      if (!isSpace(text_[pos_])) digits += text_[pos_];
      step();
    }
    if (pos_ >= text_.size()) return error("a string of digits is not closed");
    ++pos_;
    const char kind = at(0);
    const char* allowed = kind == 'B' ? "01" : "0123456789ABCDEF";
    if (kind != 'B' && kind != 'H') {
      error("a string of digits must be followed by B or H");
      while (isLetter(at(0)) || isDigit(at(0))) ++pos_;
    } else {
      ++pos_;
      if (digits.find_first_not_of(allowed) != std::string::npos) {
        error(kind == 'B' ? "a binary string holds the digits 0 and 1 only"
                          : "a hexadecimal string holds the digits 0 to 9 and A to F only");
        digits.clear();
      }
    }
    file_.strings.push_back(std::move(digits));
    add(kind == 'B' ? Tok::kBString : Tok::kHString, file_.strings.back());
  }

  void symbol() {
    static constexpr std::string_view kLong[] = {"::=", "...", "..", "[[", "]]"};
    const std::string_view rest = std::string_view(text_).substr(pos_);
    for (std::string_view text : kLong) {
      if (rest.substr(0, text.size()) != text) continue;
      add(Tok::kSymbol, rest.substr(0, text.size()));
      pos_ += text.size();
      return;
    }
    if (std::string_view("{}()[]<>,.;:|^!@=-*").find(rest[0]) == std::string_view::npos) {
      error("illegal character");
      while (pos_ < text_.size() && static_cast<unsigned char>(text_[pos_]) >= 128) ++pos_;
      if (rest.data() == text_.data() + pos_) ++pos_;
      return;
    }
    add(Tok::kSymbol, rest.substr(0, 1));
    ++pos_;
  }

  void next() {
    const char c = text_[pos_];
    if (isLetter(c)) {
      const std::string_view found = word();
      add(c <= 'Z' ? Tok::kUpper : Tok::kLower, found);
    } else if (isDigit(c)) {
      number();
    } else if (c == '&' && isLetter(at(1))) {
      const size_t begin = pos_++;
      word();
      add(Tok::kField, std::string_view(text_.data() + begin, pos_ - begin));
    } else if (c == '"') {
      characterString();
    } else if (c == '\'') {
      digitString();
    } else {
      symbol();
    }
  }

  void matchBraces() {
    std::vector<int> open;
    for (size_t i = 0; i < tokens_.size(); ++i) {
      if (tokens_[i].kind != Tok::kSymbol) continue;
      if (tokens_[i].text == "{") {
        open.push_back(static_cast<int>(i));
      } else if (tokens_[i].text == "}" && !open.empty()) {
        tokens_[open.back()].match = static_cast<int>(i);
        open.pop_back();
      }
    }
  }

  SourceFile& file_;
  const std::string& text_;
  Reporter& reporter_;
  std::vector<Token> tokens_;
  size_t pos_ = 0, line_start_ = 0;
  int line_ = 1, start_line_ = 1, start_column_ = 1;
};

}  // namespace

std::vector<Token> tokenize(SourceFile& file, Reporter& reporter) {
  return Lexer(file, reporter).run();
}

}  // namespace mesk
