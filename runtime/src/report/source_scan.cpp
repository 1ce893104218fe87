#include "report/source_scan.h"

#include <algorithm>
#include <cctype>
#include <utility>

namespace lumos {

namespace {

struct Token {
  std::string_view text;  // one character, or a word, or ":="
  unsigned long line;
};

// Words and single characters, without comments and blanks; a string is a token of one quote.
class Tokens {
 public:
  explicit Tokens(std::string_view text) : text_(text) {}
  bool next(Token& token) {
    skip_blanks();
    if (place_ >= text_.size()) return false;
    const size_t begin = place_;
    token.line = line_;
    const char c = text_[place_++];
    if (c == '"' || c == '\'') {
      skip_string(c);
      token.text = text_.substr(begin, 1);
      return true;
    }
    if (std::isalnum(static_cast<unsigned char>(c)) || c == '_') {
      while (place_ < text_.size() && is_part_of_word(text_[place_])) ++place_;
    } else if (c == ':' && place_ < text_.size() && text_[place_] == '=') {
      ++place_;
    }
    token.text = text_.substr(begin, place_ - begin);
    return true;
  }

 private:
  static bool is_part_of_word(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }
  void skip_blanks() {
    while (place_ < text_.size()) {
      const std::string_view two = text_.substr(place_, 2);
      if (two == "//") {
        skip_to("\n", 0);
      } else if (two == "/*") {
        place_ += 2;
        skip_to("*/", 2);
      } else if (std::isspace(static_cast<unsigned char>(text_[place_]))) {
        line_ += text_[place_++] == '\n';
      } else {
        return;
      }
    }
  }
  void skip_to(std::string_view end, size_t more) {
    const size_t found = std::min(text_.find(end, place_), text_.size());
    line_ += static_cast<unsigned long>(std::count(text_.begin() + static_cast<long>(place_),
                                                   text_.begin() + static_cast<long>(found), '\n'));
    place_ = std::min(found + more, text_.size());
  }
  void skip_string(char quote) { skip_to(std::string_view(&quote, 1), 1); }

  std::string_view text_;
  size_t place_ = 0;
  unsigned long line_ = 1;
};

bool is_any_of(std::string_view word, std::initializer_list<std::string_view> words) {
  return std::find(words.begin(), words.end(), word) != words.end();
}

// An open brace, bracket or parenthesis.
struct Level {
  char open;
  bool is_block = false;    // of statements
  size_t block = SIZE_MAX;  // its number among the blocks
  bool begins = false;      // a statement may begin here
  // The statement that is being read.
  size_t number = 0;
  unsigned long statement = 0;
  bool is_declaration = false;
  bool declares = false;     // which says where it stands only with an initial value
  bool is_frame = false;     // whose braces hold alternatives, not statements
  bool interleaves = false;  // which go in any order
  bool holds_ways = false, is_interleaved = false;
  bool branches = false, is_if = false, is_chain = false, is_do = false;
};

class Scanner {
 public:
  explicit Scanner(std::string_view text) : tokens_(text) {}
  SourceScan run() {
    for (Token token; tokens_.next(token); last_ = token.text) take(token);
    return std::move(scan_);
  }

 private:
  bool in_body() const { return body_ > 0; }
  void take(const Token& t) {
    const char c = t.text[0];
    if (t.text == "else" && last_ == "[" && levels_.size() > 1) forget(levels_[levels_.size() - 2].statement);
    if (c == '(' && last_ == "case" && in_body()) ++scan_.statements[levels_.back().statement];
    if (c == '{' || c == '(' || c == '[') return open(t);
    if (c == '}' || c == ')' || c == ']') return close(t);
    if (!in_body()) return look_for_body(t);
    Level& level = levels_.back();
    if (!level.is_block) return;
    if (c == ';') {
      level.begins = true;
      level.declares = level.is_declaration = false;
    } else if (c == ',' && level.is_declaration) {
      level.declares = true;
    } else if (t.text == ":=" && level.declares) {
      level.declares = false;
      note_statement(level, t.line);
    } else if (t.text == "call" && last_ == ".") {
      level.is_frame = true;
    } else if (t.text == "else") {
      level.is_chain = true;
      level.begins = false;
    } else if (level.is_chain && !level.begins && t.text == "if") {
      ++scan_.statements[t.line];
    } else if (level.begins || (is_branching(t.text) && !level.is_chain && last_ != "select")) {
      begin_statement(level, t);
    }
  }
  static bool is_branching(std::string_view word) {
    return is_any_of(word, {"if", "alt", "interleave", "select", "for", "while", "do"});
  }
  void begin_statement(Level& level, const Token& t) {
    const bool is_way = t.text == "case";
    const bool ends_loop = std::exchange(level.is_do, t.text == "do") && t.text == "while";
    level.begins = false;
    level.is_chain = false;
    level.is_if = t.text == "if";
    level.is_frame = is_any_of(t.text, {"alt", "interleave", "select"});
    level.interleaves = t.text == "interleave";
    level.branches = is_way || is_any_of(t.text, {"if", "["});
    level.statement = t.line;
    level.number = ++statements_;
    level.declares = level.is_declaration = is_any_of(t.text, {"var", "timer"});
    // of these nothing is said
    if (!level.declares && !ends_loop && !is_any_of(t.text, {"{", "template"}))
      note_statement(level, t.line, is_way);
    if (t.text == "select") select_ = {t.line, level.block};
    if (is_way) stand_at_case(t.line);
  }
  void note_statement(Level& level, unsigned long line, bool is_way = false) {
    unsigned long& first =
        level.block == SIZE_MAX ? scan_.functions.back().first : scan_.blocks[level.block].first;
    if (!first) first = line;
    if (!is_way) last_noted_ = line, ++scan_.statements[line];
  }
  void forget(unsigned long line) {
    const auto place = scan_.statements.find(line);
    if (place != scan_.statements.end() && --place->second == 0) scan_.statements.erase(place);
  }
  // A selection is reached where its first case is looked at.
  void stand_at_case(unsigned long line) {
    const auto [select, block] = select_;
    select_ = {0, SIZE_MAX};
    if (!select || last_noted_ != select) return;
    forget(select);
    unsigned long& first = block == SIZE_MAX ? scan_.functions.back().first : scan_.blocks[block].first;
    if (first == select) first = line;
  }
  void look_for_body(const Token& t) {
    if (is_any_of(t.text, {"function", "testcase", "altstep"}) && last_ != "external") {
      is_pending_ = true;
      scan_.functions.push_back({"", t.line, 0});
    } else if (t.text == "control") {
      is_pending_ = true;
      scan_.functions.push_back({"control", t.line, 0});
    } else if (is_pending_ && scan_.functions.back().name.empty()) {
      scan_.functions.back().name = t.text;
    } else if (t.text == "external" ||
               is_any_of(t.text, {"type", "const", "template", "signature", "modulepar"})) {
      drop_pending();
    }
  }
  void drop_pending() {
    if (is_pending_) scan_.functions.pop_back();
    is_pending_ = false;
  }
  bool opens_block() const {
    return !is_any_of(last_, {":=", ",", "(", ":", "=", "&", "return", "modifies"}) &&
           levels_.back().is_block;
  }
  void open(const Token& t) {
    Level level;
    level.open = t.text[0];
    if (level.open == '{' && in_body() && opens_block()) {
      open_block(level, t);
    } else if (level.open == '{' && is_pending_) {
      is_pending_ = false;
      level.is_block = level.begins = true;
    } else if (level.open == '[' && in_body() && levels_.back().is_block && levels_.back().begins) {
      begin_statement(levels_.back(), t);
    }
    if (level.is_block) ++body_;
    levels_.push_back(level);
  }
  void open_block(Level& level, const Token& t) {
    Level& around = levels_.back();
    if (around.begins) begin_statement(around, t);
    level.is_block = level.begins = true;
    level.block = around.is_frame ? around.block : scan_.blocks.size();
    level.holds_ways = around.is_frame;
    level.is_interleaved = around.is_interleaved || (around.is_frame && around.interleaves);
    if (around.is_frame) return;
    scan_.blocks.push_back({scan_.functions.size() - 1, around.number, around.statement, t.line, 0, 0,
                            around.branches, around.is_if, last_ == "else", level.is_interleaved});
  }
  void close(const Token& t) {
    if (levels_.empty()) return;
    const bool was_block = levels_.back().is_block;
    if (was_block && levels_.back().block != SIZE_MAX && !levels_.back().holds_ways)
      scan_.blocks[levels_.back().block].end = t.line;
    levels_.pop_back();
    if (!was_block) return;
    --body_;
    if (!levels_.empty()) levels_.back().begins = true;
  }

  Tokens tokens_;
  SourceScan scan_;
  std::vector<Level> levels_;
  std::string_view last_;
  std::pair<unsigned long, size_t> select_{0, SIZE_MAX};  // the line of one, and the block that it stands in
  unsigned long last_noted_ = 0;
  bool is_pending_ = false;
  size_t body_ = 0, statements_ = 0;
};

}  // namespace

SourceScan scan_source(std::string_view text) {
  return Scanner(text).run();
}

}  // namespace lumos
