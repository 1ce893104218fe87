// From the notation of patterns to programs.
#include "template/pattern_program.h"

namespace lumos::patterns {

namespace {

constexpr size_t most_instructions = 200000;
constexpr int deepest_pattern = 500;

class Compiler {
 public:
  Compiler(const std::u32string& text, bool (*stack_is_short)()) : text_(text), stack_is_short_(stack_is_short) {}

  Program run() {
    alternatives();
    if (error_.empty() && at_ < text_.size()) error_ = "unbalanced ')'";
    emit({Instruction::accept});
    program_.text = text_;
    program_.groups = groups_;
    program_.error = error_;
    return std::move(program_);
  }

 private:
  bool ok() const { return error_.empty(); }
  bool more() const { return at_ < text_.size(); }
  char32_t peek() const { return more() ? text_[at_] : 0; }

  void fail(const char* message) {
    if (ok()) error_ = message;
  }

  size_t here() const { return program_.code.size(); }

  size_t emit(const Instruction& instruction) {
    if (here() >= most_instructions) fail("the pattern is too large");
    if (ok() || instruction.code == Instruction::accept) program_.code.push_back(instruction);
    return here() - 1;
  }

  void insert(size_t place, const Instruction& instruction) {
    if (here() >= most_instructions) return fail("the pattern is too large");
    for (size_t i = place; i < here(); ++i) shift(program_.code[i], place);
    program_.code.insert(program_.code.begin() + static_cast<long>(place), instruction);
  }

  static void shift(Instruction& i, size_t place) {
    if (i.code != Instruction::split && i.code != Instruction::jump) return;
    if (i.x >= place) ++i.x;
    if (i.y >= place) ++i.y;
  }

  void alternatives() {
    if (++depth_ > deepest_pattern || stack_is_short_()) fail("the pattern is nested too deeply");
    size_t start = here();
    sequence();
    while (ok() && more() && peek() == '|') {
      ++at_;
      Instruction split{Instruction::split};
      split.x = start + 1;
      insert(start, split);
      size_t leave = emit({Instruction::jump});
      program_.code[start].y = here();
      start = here();
      pending_jumps_.push_back({leave, depth_});
      sequence();
    }
    while (!pending_jumps_.empty() && pending_jumps_.back().second == depth_) {
      if (ok()) program_.code[pending_jumps_.back().first].x = here();
      pending_jumps_.pop_back();
    }
    --depth_;
  }

  void sequence() {
    while (ok() && more() && peek() != '|' && peek() != ')') {
      size_t start = here();
      element();
      repetitions(start);
    }
  }

  void element() {
    char32_t c = text_[at_++];
    switch (c) {
      case '?':
        emit({Instruction::any});
        return;
      case '*':
        return any_number([this] { emit({Instruction::any}); });
      case '(':
        group();
        return;
      case '[':
        set();
        return;
      case '\\':
        escape();
        return;
      default:
        single(c);
        return;
    }
  }

  void single(char32_t c) { ranges({{c, c}}, false); }

  void ranges(const std::vector<CharRange>& list, bool negated) {
    std::vector<CharRange>& all = program_.ranges;
    emit({Instruction::set, negated, all.size(), all.size() + list.size()});
    all.insert(all.end(), list.begin(), list.end());
  }

  void group() {
    size_t number = groups_++;
    Instruction open{Instruction::save};
    open.x = 2 * number;
    emit(open);
    alternatives();
    if (!more()) return fail("')' is missing");
    ++at_;
    Instruction close{Instruction::save};
    close.x = 2 * number + 1;
    emit(close);
  }

  // One escaped character, or false if the escape is a class, which is added to the list.
  bool escaped(char32_t& c, std::vector<CharRange>& list) {
    if (!more()) {
      fail("the pattern ends with a backslash");
      return false;
    }
    c = text_[at_++];
    switch (c) {
      case 'd':
        list.push_back({'0', '9'});
        return false;
      case 'w':
        list.insert(list.end(), {{'0', '9'}, {'A', 'Z'}, {'a', 'z'}});
        return false;
      case 's':
        list.insert(list.end(), {{9, 13}, {28, 32}});
        return false;
      case 't':
        c = 9;
        return true;
      case 'n':
        list.push_back({10, 13});
        return false;
      case 'r':
        c = 13;
        return true;
      case 'q':
        c = quadruple();
        return true;
      default:
        return true;
    }
  }

  char32_t quadruple() {
    char32_t code = 0;
    if (peek() != '{') {
      fail("'{' is missing behind \\q");
      return 0;
    }
    ++at_;
    for (int i = 0; i < 4; ++i) {
      size_t number = decimal();
      if (number > 255) fail("a number of \\q is above 255");
      code = code << 8 | static_cast<char32_t>(number);
      if (peek() != (i < 3 ? U',' : U'}')) {
        fail("\\q needs four numbers in braces");
        return 0;
      }
      ++at_;
    }
    return code;
  }

  size_t decimal() {
    while (peek() == ' ') ++at_;
    if (peek() < '0' || peek() > '9') {
      fail("a number is missing");
      return 0;
    }
    size_t number = 0;
    while (peek() >= '0' && peek() <= '9') {
      if (number < 1000000) number = number * 10 + (text_[at_] - '0');
      ++at_;
    }
    while (peek() == ' ') ++at_;
    return number;
  }

  void escape() {
    std::vector<CharRange> list;
    char32_t c = 0;
    if (escaped(c, list)) {
      single(c);
    } else {
      ranges(list, false);
    }
  }

  void set() {
    bool negated = peek() == '^';
    if (negated) ++at_;
    std::vector<CharRange> list;
    while (ok() && more() && peek() != ']') {
      char32_t from = text_[at_++];
      if (from == '\\' && !escaped(from, list)) continue;
      char32_t to = from;
      if (peek() == '-' && at_ + 1 < text_.size() && text_[at_ + 1] != ']') {
        ++at_;
        to = text_[at_++];
        std::vector<CharRange> ignored;
        if (to == '\\' && !escaped(to, ignored)) fail("a class cannot bound a range");
      }
      if (to < from) fail("a range of characters is empty");
      list.push_back({from, to});
    }
    if (!more()) return fail("']' is missing");
    ++at_;
    ranges(list, negated);
  }

  void repetitions(size_t start) {
    while (ok() && more()) {
      if (peek() == '+') {
        ++at_;
        repeat(start, 1, SIZE_MAX);
      } else if (peek() == '#') {
        ++at_;
        counted(start);
      } else {
        return;
      }
    }
  }

  void counted(size_t start) {
    if (peek() != '(') {
      if (peek() < '0' || peek() > '9') return fail("a count is missing behind '#'");
      size_t count = text_[at_++] - '0';
      return repeat(start, count, count);
    }
    ++at_;
    size_t least = 0, most = SIZE_MAX;
    while (peek() == ' ') ++at_;
    if (peek() != ',') least = decimal();
    if (peek() == ',') {
      ++at_;
      while (peek() == ' ') ++at_;
      if (peek() != ')') most = decimal();
    } else {
      most = least;
    }
    if (peek() != ')') return fail("')' is missing behind a count");
    ++at_;
    if (most < least) return fail("the counts of a repetition are in the wrong order");
    repeat(start, least, most);
  }

  // Replaces what stands behind start by so many copies of it.
  void repeat(size_t start, size_t least, size_t most) {
    std::vector<Instruction> body(program_.code.begin() + static_cast<long>(start), program_.code.end());
    program_.code.resize(start);
    for (size_t i = 0; i < least && ok(); ++i) append(body, start);
    if (most == SIZE_MAX) return any_number([&] { append(body, start); });
    std::vector<size_t> splits;
    for (size_t i = least; i < most && ok(); ++i) {
      splits.push_back(emit({Instruction::split}));
      append(body, start);
    }
    for (size_t split : splits) {
      if (!ok()) return;
      program_.code[split].x = split + 1;
      program_.code[split].y = here();
    }
  }

  // Of what the body emits, as much as there is.
  template <class Body>
  void any_number(const Body& body) {
    const size_t split = emit({Instruction::split});
    body();
    const size_t back = emit({Instruction::jump});
    if (!ok()) return;
    program_.code[split].x = split + 1;
    program_.code[split].y = here();
    program_.code[back].x = split;
  }

  void append(const std::vector<Instruction>& body, size_t origin) {
    size_t moved = here() - origin;
    if (here() + body.size() > most_instructions) return fail("the pattern is too large");
    for (Instruction i : body) {
      if (i.code == Instruction::split || i.code == Instruction::jump) {
        i.x += moved;
        i.y += moved;
      }
      program_.code.push_back(i);
    }
  }

  const std::u32string& text_;
  bool (*const stack_is_short_)();
  size_t at_ = 0;
  size_t groups_ = 0;
  int depth_ = 0;
  std::vector<std::pair<size_t, int>> pending_jumps_;
  Program program_;
  std::string error_;
};

}  // namespace

Program program_of(const std::u32string& text, bool (*stack_is_short)()) {
  return Compiler(text, stack_is_short).run();
}

}  // namespace lumos::patterns
