#include "report/code_scan.h"

#include <algorithm>
#include <charconv>
#include <deque>
#include <utility>

namespace lumos {

namespace {

bool begins(std::string_view line, std::string_view word) {
  return line.substr(0, word.size()) == word;
}

unsigned long number_in(std::string_view text) {
  unsigned long number = 0;
  text.remove_prefix(std::min(text.find_first_of("0123456789"), text.size()));
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

// Takes the next string literal off the text.
std::string take_literal(std::string_view& text) {
  std::string literal;
  text.remove_prefix(std::min(text.find('"'), text.size()));
  size_t end = 1;
  for (; end < text.size() && text[end] != '"'; ++end) {
    end += text[end] == '\\';
    if (end < text.size()) literal += text[end];
  }
  text.remove_prefix(std::min(end + 1, text.size()));
  return literal;
}

// Module, name, ..., file, line, ... of a call that may go on on further lines.
CodeFunction function_of(std::string_view call) {
  CodeFunction f;
  take_literal(call);
  f.name = take_literal(call);
  f.file = take_literal(call);
  f.line = number_in(call);
  return f;
}

class CodeScanner {
 public:
  CodeScan run(std::string_view text) {
    for (; !text.empty(); ++number_) {
      const size_t size = std::min(text.find('\n'), text.size());
      const size_t blanks = std::min(text.find_first_not_of(' '), size);
      take(text.substr(blanks), text.substr(blanks, size - blanks), blanks);
      text.remove_prefix(std::min(size + 1, text.size()));
    }
    end_function();
    return std::move(scan_);
  }

 private:
  static constexpr std::string_view jump = "jump";
  struct Expanded {
    unsigned long line = 0;  // of the source
    size_t blanks = 0;
  };
  struct OpenBlock {
    size_t blanks;  // in front of its lines
    CodeBlock* block;
    bool is_loop;  // the one around a "for", of whose end nothing is said
  };
  // With the text behind the line.
  void take(std::string_view text, std::string_view line, size_t blanks) {
    if (!line.empty() && line[0] != '/') last_ = std::exchange(current_, number_);
    if (begins(line, "lumo_source_location_push(")) {
      end_function();
      scan_.functions.push_back(function_of(text));
    } else if (begins(line, "lumo_source_location_set_line(")) {
      reach(number_in(line), blanks);
    } else if (begins(line, "lumo_source_location_push_block(")) {
      enter(blanks);
    } else if (begins(line, "lumo_source_location_pop_block(")) {
      leave(blanks);
    } else if (begins(line, "lumo_log_alt_wait_event(")) {
      if (is_in_statement()) scan_.functions.back().statements.back().is_counted = false;
    } else if (begins(line, "/* ")) {
      note(line, blanks);
    } else if (begins(line, "}")) {
      while (!open_.empty() && open_.back().blanks > blanks) open_.pop_back();
    }
  }
  bool is_in_statement() const {
    return !scan_.functions.empty() && !scan_.functions.back().statements.empty();
  }
  void note(std::string_view line, size_t blanks) {
    const size_t place = line.rfind(" - line ");
    if (place == line.npos) return;
    line.remove_prefix(place);
    before_ = std::exchange(kind_, line.substr(std::min(line.find(" : "), line.size())));
    for (Expanded* statement : {&interleave_, &waiting_})
      if (blanks <= statement->blanks && !(is("T3AltStmt") && number_in(line) == statement->line))
        *statement = {};
    if (kind_.find(" marks end of scope") == kind_.npos) return;
    const bool is_block = is("T3BlockStmt");
    kind_ = {};
    // where a behaviour is left, its end is told first
    if (begins(before_, " : T3RetStmt"))
      kind_ = jump;
    else if (is_block)
      end_block(number_in(line), blanks);
  }
  void end_block(unsigned long line, size_t blanks) {
    if (is_of_last(blanks)) open_.back().block->end = line;
  }
  // Jumps leave blocks before their end.
  void leave(size_t blanks) {
    if (is_of_last(blanks) && (kind_.empty() || open_.back().is_loop)) open_.pop_back();
  }
  bool is_of_last(size_t blanks) const { return !open_.empty() && open_.back().blanks == blanks; }
  bool is(std::string_view kind) const {
    return begins(kind_.substr(std::min<size_t>(3, kind_.size())), kind);
  }
  void reach(unsigned long line, size_t blanks) {
    const bool is_said_twice = last_ == statement_;
    statement_ = number_;
    if (scan_.functions.empty()) return;
    std::vector<CodeStatement>& all = scan_.functions.back().statements;
    if (!interleave_.line && is("T3InterleaveStmt")) interleave_ = {line, blanks};
    // what waits for one thing alone is an alternative in the code
    if (is("T3AltStmt") && is_said_twice && !all.empty() && all.back().source == line &&
        !begins(before_, " : T3InterleaveStmt"))
      waiting_ = {line, blanks};
    const bool is_part = (is("T3AltStmt") && (line == interleave_.line || line == waiting_.line)) ||
                         (is("T3GuardedAlt") && line == waiting_.line);
    all.push_back({number_, line, !kind_.empty() && kind_ != jump && !is_part});
  }
  void enter(size_t blanks) {
    scan_.entries.push_back(number_);
    if (scan_.functions.empty()) return;
    CodeFunction& f = scan_.functions.back();
    if (!f.body) {
      f.body = number_;
      return;
    }
    blocks_.push_back({number_, statement_, 0, interleave_.line != 0});
    open_.push_back({blanks, &blocks_.back(), is("T3ForStmt")});
  }
  // A loop, and what waits for one thing alone, is a block of the code only; no end of a scope is marked
  // there.
  void end_function() {
    for (const CodeBlock& b : blocks_)
      if (b.end) scan_.functions.back().blocks.push_back(b);
    blocks_.clear();
    open_.clear();
    statement_ = 0;
    interleave_ = waiting_ = {};
  }

  CodeScan scan_;
  unsigned long number_ = 1;              // of the line
  unsigned long current_ = 0, last_ = 0;  // of the last with code, of the one before
  unsigned long statement_ = 0;           // of the last that tells a statement
  std::string_view kind_, before_;        // of the statement, empty where a block ends; of that before
  Expanded interleave_, waiting_;         // statements that the code is of; none where their line is 0
  std::deque<CodeBlock> blocks_;          // of the function
  std::vector<OpenBlock> open_;           // those not left yet
};

}  // namespace

CodeScan scan_code(std::string_view text) {
  return CodeScanner().run(text);
}

}  // namespace lumos
