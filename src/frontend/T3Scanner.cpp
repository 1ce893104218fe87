#include "frontend/T3Scanner.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <string>

#include "driver/diagnostics/Errors.h"
#include "driver/options/T3CommandLine.h"
#include "frontend/T3ParserDefs.h"
#include "frontend/T3ScannerSource.h"
#include "support/LargePages.h"

#include "T3TokenTables.inc"

namespace {
// Bytes behind the text, so that keywords and symbols are looked up without a test for the end.
constexpr size_t kPadding = 16;
constexpr size_t kFirstBlock = 64 * 1024;

// Classes of bytes.
constexpr uint8_t kLower = 1;
constexpr uint8_t kUpper = 2;
constexpr uint8_t kDigit = 4;
constexpr uint8_t kUnderscore = 8;
constexpr uint8_t kHexLetter = 16;
constexpr uint8_t kWildcard = 32;
// What may stand between tokens, or begin what does.
constexpr uint8_t kBetween = 64;
constexpr uint8_t kNameByte = kLower | kUpper | kDigit | kUnderscore;

constexpr std::array<uint8_t, 256> MakeByteClasses() {
  std::array<uint8_t, 256> classes{};
  for (int c = 'a'; c <= 'z'; ++c) classes[static_cast<size_t>(c)] = kLower;
  for (int c = 'A'; c <= 'Z'; ++c) classes[static_cast<size_t>(c)] = kUpper;
  for (int c = '0'; c <= '9'; ++c) classes[static_cast<size_t>(c)] = kDigit;
  for (const char c : {'a', 'b', 'c', 'd', 'e', 'f', 'A', 'B', 'C', 'D', 'E', 'F'})
    classes[static_cast<size_t>(c)] |= kHexLetter;
  for (const char c : {' ', '\r', '\t', '\n', '/', '\0'}) classes[static_cast<size_t>(c)] = kBetween;
  classes['_'] = kUnderscore;
  classes['?'] = kWildcard;
  classes['*'] = kWildcard;
  return classes;
}
constexpr std::array<uint8_t, 256> kByteClass = MakeByteClasses();

inline uint8_t ByteClass(char c) {
  return kByteClass[static_cast<unsigned char>(c)];
}

inline bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Eight bytes as a little-endian number; bytes behind `length` count as 0.
inline uint64_t LoadBytes(const char* at, size_t length) {
  uint64_t bytes;
  std::memcpy(&bytes, at, sizeof bytes);
  if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap64(bytes);
  return length >= 8 ? bytes : bytes & ((uint64_t{1} << (8 * length)) - 1);
}

const Keyword* FindKeyword(const char* at, size_t length) {
  const uint64_t first = LoadBytes(at, length);
  const uint64_t last = length > 8 ? LoadBytes(at + length - 8, 8) : first;
  const Keyword& keyword =
      kKeywords[kKeywordPlace[(first + 3 * last) * kKeywordFactor >> (64 - kKeywordHashBits)]];
  const bool same = keyword.first == first && keyword.last == last && keyword.length == length;
  return same ? &keyword : nullptr;
}

// The text behind `handle`; null if it cannot be read to its end.
LargeBlock ReadAll(int handle, size_t& size) {
  // One byte more than the file is said to hold, so that its end is met without a larger block.
  size_t capacity = std::max(kFirstBlock, T3Scanner_SourceSize(handle) + 1);
  LargeBlock text = MakeLargeBlock(capacity + kPadding);
  size = 0;
  while (const ssize_t count = T3Scanner_GetLine(handle, text.get() + size, capacity - size)) {
    if (count < 0) return {};
    size += static_cast<size_t>(count);
    if (size < capacity) continue;
    capacity *= 2;
    LargeBlock larger = MakeLargeBlock(capacity + kPadding);
    std::memcpy(larger.get(), text.get(), size);
    text = std::move(larger);
  }
  return text;
}

// The number of bytes of a character: more than one where the first begins a sequence that is there.
size_t LengthOfCharacter(const char* at) {
  const auto lead = static_cast<unsigned char>(*at);
  const size_t length = lead >= 0xf0 && lead < 0xf5 ? 4 : lead >= 0xe0 ? 3 : lead >= 0xc2 ? 2 : 1;
  for (size_t i = 1; i < length; ++i)
    if ((static_cast<unsigned char>(at[i]) & 0xc0) != 0x80) return 1;
  return length;
}
}  // namespace

const char* yyGetTokenName(unsigned short token) {
  return token < kT3TokenCount ? kT3TokenText[token] : "";
}

T3Scanner::~T3Scanner() = default;

void T3Scanner::BeginFile(const char* path) {
  const int handle = T3Scanner_BeginSourceFile(path);
  size_t size = 0;
  LargeBlock text = handle < 0 ? LargeBlock() : ReadAll(handle, size);
  if (handle >= 0) T3Scanner_CloseSource(handle);
  if (text)
    Enter(std::move(text), size);
  else
    gErrors.ErrorMessageI(kCodeCannotOpenInput, kFatal, NoPosition, kInfoText, "T3Scanner");
}

void T3Scanner::BeginText(std::string_view text) {
  LargeBlock copy = MakeLargeBlock(text.size() + kPadding);
  if (!text.empty()) std::memcpy(copy.get(), text.data(), text.size());
  Enter(std::move(copy), text.size());
}

void T3Scanner::Enter(LargeBlock text, size_t size) {
  outer_.push_back({std::move(text_), next_, end_, line_start_, line_, at_pattern_});
  text_ = std::move(text);
  next_ = text_.get();
  told_quote_ = nullptr;
  end_ = next_ + size;
  std::memset(text_.get() + size, 0, kPadding);
  line_start_ = 0;
  line_ = 1;
  at_pattern_ = false;
}

void T3Scanner::CloseFile() {
  if (outer_.empty()) {
    gErrors.ErrorMessageI(kCodeFileStackUnderflow, kFatal, NoPosition, kInfoText, "T3Scanner");
    return;
  }
  Source& outer = outer_.back();
  text_ = std::move(outer.text);
  next_ = outer.next;
  end_ = outer.end;
  line_start_ = outer.line_start;
  line_ = outer.line;
  at_pattern_ = outer.at_pattern;
  outer_.pop_back();
}

tPosition T3Scanner::Here(const char* at) const {
  const ptrdiff_t column = at - text_.get() - line_start_ + 1;
  return {line_, static_cast<uint32_t>(gCurrentFilename),
          static_cast<uint16_t>(column < 65535 ? column : 65535)};
}

void T3Scanner::NewLine(const char* at) {
  ++line_;
  line_start_ = at - text_.get() + 1;
}

// The column moves to the next multiple of 8, plus 1.
void T3Scanner::Tab(const char* at) {
  const ptrdiff_t column = at - text_.get() - line_start_;
  line_start_ -= 7 - column % 8;
}

void T3Scanner::ErrorAttribute(T3Token token, T3Scanner_tScanAttribute* attribute) const {
  attribute->Position = Here(next_);
  if (token == T3Token::identifier)
    attribute->ident = NoIdent;
  else if (token == T3Token::boolean_value)
    attribute->boolean = false;
  else
    attribute->string = gStringM.EmptyString();
}

// Stores the text of a value.
tStringRef T3Scanner::Keep(std::string_view text, const char* what) {
  if (text.size() > kMaxStringLength) [[unlikely]]
    TellTooLong(what);
  return gStringM.PutString(text);
}

T3Token T3Scanner::GetToken() {
  while (SkipBlanks()) {
    attribute_.Position = Here(next_);
    const T3Token token = ScanToken();
    // Token 0 stands for nothing found: an illegal byte, or a literal that does not end.
    if (token != T3Token::EndOfFile) [[likely]]
      return token;
  }
  attribute_.Position = Here(next_);
  attribute_.string = gStringM.EmptyString();
  return T3Token::EndOfFile;
}

// Moves to the next byte of a token; false at the end of the file.
inline bool T3Scanner::SkipBlanks() {
  for (;;) {
    const char* at = next_;
    while (*at == ' ') ++at;
    next_ = at;
    if (!(ByteClass(*at) & kBetween)) return true;
    switch (*at) {
      case '\t':
        Tab(at);
        break;
      case '\n':
        NewLine(at);
        break;
      case '/':
        if (at[1] == '/') {
          SkipLine();
        } else if (at[1] != '*') {
          return true;
        } else if (!SkipComment()) {
          return false;
        }
        continue;
      case '\0':
        return at != end_;
      default:
        break;
    }
    ++next_;
  }
}

// Moves to the end of the line.
void T3Scanner::SkipLine() {
  const void* newline = std::memchr(next_, '\n', static_cast<size_t>(end_ - next_));
  next_ = newline != nullptr ? static_cast<const char*>(newline) : end_;
}

void T3Scanner::WarnOfNesting(const char* at) const {
  vexa_warning(gT3CommandLine.CommonVerbosity(),
               "treating '/*' as beginning of nested comment, consider that it's a non-standard extension",
               Here(at));
}

// Skips a comment from its beginning. False when the file ends in it, which is reported.
bool T3Scanner::SkipComment() {
  const bool nests = !gT3CommandLine.strict;
  const tPosition comment_position = Here(next_);
  long comment_counter = 1;
  next_ += 2;
  while (next_ != end_) {
    const char c = *next_;
    if (c == '*' && next_[1] == '/') {
      next_ += 2;
      if (--comment_counter == 0) return true;
    } else if (nests && c == '/' && next_[1] == '*') {
      ++comment_counter;
      WarnOfNesting(next_);
      next_ += 2;
    } else {
      if (c == '\n')
        NewLine(next_);
      else if (c == '\t')
        Tab(next_);
      ++next_;
    }
  }
  gErrors.Message("unterminated comment", kError, comment_position);
  gErrors.ExcuseSyntaxError(Here(end_));
  return false;
}

inline T3Token T3Scanner::Take(T3Token token, size_t length) {
  next_ += length;
  return token;
}

inline T3Token T3Scanner::ScanToken() {
  if (at_pattern_) [[unlikely]]
    return PatternText();
  const uint8_t byte_class = ByteClass(*next_);
  if (byte_class & (kLower | kUpper)) return NameOrKeyword();
  if (byte_class & kDigit) return Number();
  const char next = next_[1];
  switch (*next_) {
    case '.':
      return next == '.' ? Take(T3Token::DotDot, 2) : Take(T3Token::Dot, 1);
    case ';':
      return Take(T3Token::Semicolon, 1);
    case ',':
      return Take(T3Token::Comma, 1);
    case '(':
      return Take(T3Token::LeftParen, 1);
    case ')':
      return Take(T3Token::RightParen, 1);
    case '[':
      return Take(T3Token::LeftBracket, 1);
    case ']':
      return Take(T3Token::RightBracket, 1);
    case '{':
      return Take(T3Token::LeftBrace, 1);
    case '}':
      return Take(T3Token::RightBrace, 1);
    case ':':
      return next == '=' ? Take(T3Token::Assign, 2) : Take(T3Token::Colon, 1);
    case '-':
      return next == '>' ? Take(T3Token::Arrow, 2) : Take(T3Token::Minus, 1);
    case '&':
      return Take(T3Token::Ampersand, 1);
    case '+':
      return Take(T3Token::Plus, 1);
    case '/':
      return Take(T3Token::Slash, 1);
    case '=':
      return next == '=' ? Take(T3Token::Equal, 2) : IllegalByte();
    case '!':
      return next == '=' ? Take(T3Token::NotEqual, 2) : IllegalByte();
    case '<':
      if (next == '=') return Take(T3Token::LessOrEqual, 2);
      if (next == '<') return Take(T3Token::ShiftLeft, 2);
      return next == '@' ? Take(T3Token::RotateLeft, 2) : Take(T3Token::Less, 1);
    case '>':
      if (next == '=') return Take(T3Token::GreaterOrEqual, 2);
      return next == '>' ? Take(T3Token::ShiftRight, 2) : Take(T3Token::Greater, 1);
    case '@':
      return next == '>' ? Take(T3Token::RotateRight, 2) : IllegalByte();
    case '?':
      return Take(T3Token::Question, 1);
    case '*':
      return Take(T3Token::Star, 1);
    case '\'':
      return DigitString();
    case '"':
      return String();
    case '_':
      return Macro();
    default:
      return IllegalByte();
  }
}

// Behind a syntax error of its line a byte says nothing new, and one in its line follows from it; nor does
// the quote that ends what has been told at the one before it.
T3Token T3Scanner::IllegalByte() {
  const std::string text(next_, LengthOfCharacter(next_));
  const bool told = next_ == told_quote_;
  next_ += text.size();
  if (told || gErrors.HasSyntaxError(attribute_.Position)) return T3Token::EndOfFile;
  const bool one = text.size() == 1;
  gErrors.MessageI("illegal character", kError, attribute_.Position, one ? kInfoCharacter : kInfoText,
                   text.c_str());
  gErrors.ExcuseSyntaxError(attribute_.Position);
  // A file that is no text at all ends here, and not after a message for each of its bytes.
  vexa_check_limit();
  return T3Token::EndOfFile;
}

T3Token T3Scanner::NameOrKeyword() {
  const char* const begin = next_;
  const char* at = begin;
  uint8_t seen = 0;
  for (uint8_t c = ByteClass(*at); c & kNameByte; c = ByteClass(*++at)) seen |= c;
  next_ = at;
  const auto length = static_cast<size_t>(at - begin);
  if (!(seen & (kUpper | kUnderscore)) && length >= kShortestKeyword && length <= kLongestKeyword) {
    if (const Keyword* keyword = FindKeyword(begin, length)) {
      if (keyword->token == T3Token::kw_pattern) return PatternKeyword();
      attribute_.boolean = keyword->value;
      return keyword->token;
    }
  }
  return Name(std::string_view(begin, length));
}

inline T3Token T3Scanner::Name(std::string_view name) {
  if (name.size() > kMaxStringLength) [[unlikely]] {
    TellTooLong("identifier");
    name = name.substr(0, kMaxStringLength);
  }
  attribute_.ident = gIdents.MakeIdent(name);
  return T3Token::identifier;
}

// Tells that the store cannot hold the text of a token, which is stored up to the limit.
[[gnu::cold]] void T3Scanner::TellTooLong(const char* what) const {
  gErrors.Message(std::string(what) + " is longer than " + std::to_string(kMaxStringLength) + " characters",
                  kError, attribute_.Position);
}

// A text behind the keyword has its own rules; any other token behind it, or a comment, takes them away.
T3Token T3Scanner::PatternKeyword() {
  const char* at = next_;
  while (*at == ' ' || *at == '\t' || *at == '\r' || *at == '\n') ++at;
  at_pattern_ = *at == '"';
  return T3Token::kw_pattern;
}

T3Token T3Scanner::Number() {
  const char* const begin = next_;
  const char* at = begin + 1;
  if (*begin != '0')
    while (IsDigit(*at)) ++at;
  T3Token token = T3Token::integer_value;
  if (*at == '.' && at[1] != '.') {
    token = T3Token::float_value;
    ++at;
    while (IsDigit(*at)) ++at;
  }
  if (*at == 'E') {
    const char* exponent = at[1] == '-' ? at + 2 : at + 1;
    if (IsDigit(*exponent)) {
      token = T3Token::float_value;
      at = exponent;
      while (IsDigit(*at)) ++at;
    }
  }
  next_ = at;
  attribute_.string = Keep(std::string_view(begin, static_cast<size_t>(at - begin)), "number");
  return token;
}

// A string of digits in single quotes, with the letter of its kind behind.
T3Token T3Scanner::DigitString() {
  const char* at = next_ + 1;
  uint8_t seen = 0;
  bool binary = true;
  for (uint8_t c = ByteClass(*at); c & (kDigit | kHexLetter | kWildcard); c = ByteClass(*++at)) {
    seen |= c;
    if (!(c & kWildcard) && *at != '0' && *at != '1') binary = false;
  }
  if (*at != '\'') return IllegalByte();
  told_quote_ = at;
  const bool match = seen & kWildcard;
  T3Token token;
  if (at[1] == 'B' && binary)
    token = match ? T3Token::bit_string_match_val : T3Token::bit_string_val;
  else if (at[1] == 'H')
    token = match ? T3Token::hex_string_match_val : T3Token::hex_string_val;
  else if (at[1] == 'O')
    token = match ? T3Token::oct_string_match_val : T3Token::oct_string_val;
  else
    return IllegalByte();
  at += 2;
  attribute_.string = Keep(std::string_view(next_, static_cast<size_t>(at - next_)), "string literal");
  next_ = at;
  return token;
}

T3Token T3Scanner::Macro() {
  for (const T3Token token :
       {T3Token::Macro_MODULE, T3Token::Macro_FILE, T3Token::Macro_LINE, T3Token::Macro_SCOPE}) {
    const std::string_view text = kT3TokenText[static_cast<size_t>(token)];
    if (std::string_view(next_, static_cast<size_t>(end_ - next_)).substr(0, text.size()) == text)
      return Take(token, text.size());
  }
  return IllegalByte();
}

T3Token T3Scanner::Unterminated(const char* what) {
  next_ = end_;
  gErrors.Message(what, kError, attribute_.Position);
  gErrors.ExcuseSyntaxError(Here(end_));
  return T3Token::EndOfFile;
}

// The value keeps its enclosing quotes; a doubled quote in it becomes a single one.
T3Token T3Scanner::String() {
  const char* const begin = next_;
  const char* piece = begin;
  std::string text;
  for (const char* at = begin + 1;; ++at) {
    if (*at == '"') {
      if (at[1] != '"') {
        next_ = at + 1;
        break;
      }
      text.append(piece, ++at);
      piece = at + 1;
    } else if (*at == '\n') {
      NewLine(at);
    } else if (*at == '\t') {
      Tab(at);
    } else if (at == end_) {
      return Unterminated("unterminated string constant");
    }
  }
  std::string_view value(piece, static_cast<size_t>(next_ - piece));
  if (!text.empty()) value = text.append(value);
  attribute_.string = Keep(value, "string constant");
  return T3Token::cstring_freetext;
}

// As a string; and a backslash takes the next character with it, of which a quote stands alone.
T3Token T3Scanner::PatternText() {
  at_pattern_ = false;
  std::string text = "\"";
  for (const char* at = next_ + 1;; ++at) {
    if (*at == '\\' && at + 1 != end_) {
      if (*++at != '"') text += '\\';
    } else if (*at == '"') {
      if (at[1] != '"') {
        next_ = at + 1;
        break;
      }
      ++at;
    } else if (at == end_) {
      return Unterminated("unterminated string constant");
    }
    if (*at == '\n')
      NewLine(at);
    else if (*at == '\t')
      Tab(at);
    text += *at;
  }
  text += '"';
  attribute_.string = Keep(text, "string constant");
  return T3Token::pattern_text;
}
