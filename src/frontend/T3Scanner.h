// The scanner: turns the bytes of one source file, ASCII or UTF-8, into tokens.
//
// A file is read as a whole, since values of tokens are taken from its text without copying. The longest
// text that is a token wins. Strings and the text of a `pattern` have rules of their own; comments nest
// unless strict conformance is asked for. An illegal byte or a literal that does not end is reported
// through gErrors, and scanning goes on.
#pragma once

#include <cstddef>
#include <memory>
#include <string_view>
#include <vector>

#include "T3Tokens.h"
#include "support/LargePages.h"
#include "support/Idents.h"
#include "support/Position.h"
#include "support/StringM.h"

/// Where a token stands and its value: the text of a literal as written, a name, or true and false.
struct T3Scanner_tScanAttribute {
  tPosition Position;
  union {
    tStringRef string = nullptr;
    tIdent ident;
    bool boolean;
  };
};

class T3Scanner {
 public:
  T3Scanner() = default;
  ~T3Scanner();
  T3Scanner(const T3Scanner&) = delete;
  T3Scanner& operator=(const T3Scanner&) = delete;

  /// Opens and reads a file; the tokens before continue when it is closed. A failure is fatal.
  void BeginFile(const char* path);
  /// The same for a text that is already in memory, and is copied.
  void BeginText(std::string_view text);
  /// Closes the file that was begun last. Closing more often than opening is fatal.
  void CloseFile();

  /// The next token; EndOfFile at the end, as often as it is asked for.
  T3Token GetToken();
  /// Position and value of the token read last.
  const T3Scanner_tScanAttribute& Attribute() const { return attribute_; }
  /// The attribute of a token that a repair inserts: the current position, and the empty value.
  void ErrorAttribute(T3Token token, T3Scanner_tScanAttribute* attribute) const;
  /// The number of lines read so far, counting from 1.
  uint32_t Line() const { return line_; }

 private:
  struct Source {
    LargeBlock text;
    const char* next = nullptr;
    const char* end = nullptr;
    ptrdiff_t line_start = 0;
    uint32_t line = 0;
    bool at_pattern = false;
  };

  void Enter(LargeBlock text, size_t size);
  T3Token IllegalByte();
  T3Token NameOrKeyword();
  T3Token Name(std::string_view name);
  void TellTooLong(const char* what) const;
  T3Token Number();
  T3Token DigitString();
  T3Token Macro();
  T3Token String();
  T3Token PatternKeyword();
  T3Token PatternText();
  T3Token ScanToken();
  bool SkipBlanks();
  void SkipLine();
  bool SkipComment();
  void WarnOfNesting(const char* at) const;
  void Tab(const char* at);
  void NewLine(const char* at);
  tStringRef Keep(std::string_view text, const char* what);
  tPosition Here(const char* at) const;
  T3Token Take(T3Token token, size_t length);
  T3Token Unterminated(const char* text);

  LargeBlock text_;
  const char* next_ = nullptr;
  /// The quote that ends the last string of digits.
  const char* told_quote_ = nullptr;
  const char* end_ = nullptr;
  // Offset in the text of column 1 of the current line; tabs move it to the left, even below 0.
  ptrdiff_t line_start_ = 0;
  uint32_t line_ = 1;
  // The keyword `pattern` was read, and a text follows.
  bool at_pattern_ = false;
  T3Scanner_tScanAttribute attribute_;
  std::vector<Source> outer_;
};

/// The text of a token, as diagnostics show it.
const char* yyGetTokenName(unsigned short token);
