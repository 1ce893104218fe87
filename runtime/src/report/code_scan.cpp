#include "report/code_scan.h"

#include <algorithm>
#include <charconv>
#include <utility>

namespace lumos {

namespace {

bool begins(std::string_view line, std::string_view word) {
  return line.substr(0, word.size()) == word;
}

// "file", 12, ... behind the name of the function, of a call that may go on on further lines.
CodeFunction function_of(std::string_view call) {
  CodeFunction f;
  std::string_view quoted[3];
  for (std::string_view& text : quoted) {
    const size_t begin = call.find('"');
    if (begin == call.npos) return f;
    call.remove_prefix(begin + 1);
    text = call.substr(0, call.find('"'));
    call.remove_prefix(std::min(text.size() + 1, call.size()));
  }
  f.name = quoted[1];
  f.file = quoted[2];
  call.remove_prefix(std::min(call.find_first_of("0123456789"), call.size()));
  std::from_chars(call.data(), call.data() + call.size(), f.line);
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
  struct Block {
    CodeBlock place;
    bool has_braces;
  };
  // With the text behind the line.
  void take(std::string_view text, std::string_view line, size_t blanks) {
    if (begins(line, "lumo_source_location_push(")) {
      end_function();
      scan_.functions.push_back(function_of(text.substr(0, text.find(';'))));
    } else if (begins(line, "lumo_source_location_set_line(")) {
      statement_ = number_;
    } else if (begins(line, "lumo_source_location_push_block(")) {
      enter(blanks);
    } else if (begins(line, "lumo_source_location_pop_block(")) {
      if (is_of_last(blanks)) open_.pop_back();
    } else if (begins(line, "/* ") && line.find(" : T3BlockStmt marks end of scope") != line.npos) {
      if (is_of_last(blanks)) blocks_[open_.back().second].has_braces = true;
    }
  }
  bool is_of_last(size_t blanks) const { return !open_.empty() && open_.back().first == blanks; }
  void enter(size_t blanks) {
    scan_.entries.push_back(number_);
    if (scan_.functions.empty()) return;
    CodeFunction& f = scan_.functions.back();
    if (!f.body) {
      f.body = number_;
      return;
    }
    open_.push_back({blanks, blocks_.size()});
    blocks_.push_back({{number_, statement_}, false});
  }
  // A loop, and what waits for one thing alone, is a block of the code only; no end of a scope is marked
  // there.
  void end_function() {
    for (const Block& b : blocks_)
      if (b.has_braces) scan_.functions.back().blocks.push_back(b.place);
    blocks_.clear();
    open_.clear();
    statement_ = 0;
  }

  CodeScan scan_;
  unsigned long number_ = 1, statement_ = 0;     // of the line, and of the last that tells a statement
  std::vector<Block> blocks_;                    // of the function
  std::vector<std::pair<size_t, size_t>> open_;  // of those not left yet: the blanks in front, the number
};

}  // namespace

CodeScan scan_code(std::string_view text) {
  return CodeScanner().run(text);
}

}  // namespace lumos
