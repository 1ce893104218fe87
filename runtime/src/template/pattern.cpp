#include "template/pattern.h"

#include <strings.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

#include "value/characters.h"
#include "value/error.h"
#include "value/location.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/types.h"

namespace lumos {

namespace {

// --- the program of a pattern

struct CharRange {
  char32_t from, to;
};

struct Instruction {
  enum Code : uint8_t { set, any, split, jump, save, accept } code;
  bool negated = false;
  // Targets; number of a place to save; the first range of a set and the one behind its last.
  size_t x = 0, y = 0;
};

struct Program {
  std::u32string text;
  std::vector<Instruction> code;
  std::vector<CharRange> ranges;
  size_t groups = 0;
  std::string error;
};

constexpr size_t most_instructions = 200000;
constexpr int deepest_pattern = 500;

// --- from notation to program

class Compiler {
 public:
  explicit Compiler(const std::u32string& text) : text_(text) {}

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
    if (++depth_ > deepest_pattern || stack_is_short()) fail("the pattern is nested too deeply");
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
      case '*': {
        size_t split = emit({Instruction::split});
        emit({Instruction::any});
        size_t back = emit({Instruction::jump});
        if (!ok()) return;
        program_.code[split].x = split + 1;
        program_.code[split].y = here();
        program_.code[back].x = split;
        return;
      }
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
    if (most == SIZE_MAX) {
      size_t split = emit({Instruction::split});
      append(body, start);
      size_t back = emit({Instruction::jump});
      if (!ok()) return;
      program_.code[split].x = split + 1;
      program_.code[split].y = here();
      program_.code[back].x = split;
      return;
    }
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
  size_t at_ = 0;
  size_t groups_ = 0;
  int depth_ = 0;
  std::vector<std::pair<size_t, int>> pending_jumps_;
  Program program_;
  std::string error_;
};

// --- running a program: all threads step through the text together

struct Threads {
  std::vector<size_t> at;
  std::vector<size_t> places;  // saved, as many for each thread

  void clear() {
    at.clear();
    places.clear();
  }
};

// What runs need, kept from one to the next. One ends before another begins, and a fault that ends it leaves
// nothing behind that matters.
struct Room {
  Threads now, next, open;
  std::vector<size_t> places;  // of the thread that is followed
  std::vector<size_t> seen;    // the last round in which an instruction was reached
  size_t round = 0;
};
Room& room() {
  static auto* all = new Room;
  return *all;
}

// More than patience allows are not taken.
constexpr size_t most_pattern_steps = 2000000000;

class Machine {
 public:
  Machine(const Program& program, bool save)
      : room_(room()), program_(program), places_(save ? 2 * program.groups : 0) {
    if (room_.seen.size() < program.code.size()) room_.seen.resize(program.code.size(), 0);
  }

  bool run(const Characters& text, std::vector<size_t>* saved) {
    begin();
    for (size_t i = 0; i < text.size() && !now_.at.empty(); ++i) {
      const char32_t c = text[i];
      step(i + 1, [&](const Instruction& instruction) { return takes(instruction, c); });
      if (steps_ > most_pattern_steps)
        fault("matching a text of %zu characters with a pattern takes too long", text.size());
    }
    for (size_t t = 0; t < now_.at.size(); ++t) {
      if (program_.code[now_.at[t]].code != Instruction::accept) continue;
      if (saved) saved->assign(places_of(now_, t), places_of(now_, t) + places_);
      return true;
    }
    return false;
  }

  // Steps on as long as any characters would be taken.
  long length() {
    begin();
    for (size_t taken = 0; !now_.at.empty() && taken < program_.code.size(); ++taken) {
      const bool is_end = accepts();
      step(taken + 1, takes_any);
      if (is_end) return now_.at.empty() ? static_cast<long>(taken) : -1;
    }
    return -1;
  }

  // The longest beginning that is accepted. A character is also tried in the other case.
  size_t longest(std::string_view text, bool any_case) {
    size_t best = std::string_view::npos;
    begin();
    for (size_t i = 0;; ++i) {
      if (accepts()) best = i;
      if (i == text.size() || now_.at.empty()) return best;
      const auto c = static_cast<unsigned char>(text[i]);
      step(i + 1, [&](const Instruction& instruction) {
        return takes(instruction, c) ||
               (any_case && (takes(instruction, static_cast<unsigned char>(std::tolower(c))) ||
                             takes(instruction, static_cast<unsigned char>(std::toupper(c)))));
      });
    }
  }

 private:
  const size_t* places_of(const Threads& threads, size_t t) const {
    return threads.places.data() + t * places_;
  }

  void begin() {
    now_.clear();
    room_.places.assign(places_, SIZE_MAX);
    ++room_.round;
    add(now_, 0, 0);
  }

  // Those that take the character go on behind it, at a place of the text.
  template <class Takes>
  void step(size_t place, Takes takes_it) {
    next_.clear();
    ++room_.round;
    for (size_t t = 0; t < now_.at.size(); ++t) {
      if (!takes_it(program_.code[now_.at[t]])) continue;
      if (places_) room_.places.assign(places_of(now_, t), places_of(now_, t) + places_);
      add(next_, now_.at[t] + 1, place);
    }
    steps_ += now_.at.size();
    std::swap(now_, next_);
  }

  bool accepts() const {
    return std::any_of(now_.at.begin(), now_.at.end(),
                       [&](size_t at) { return program_.code[at].code == Instruction::accept; });
  }

  static bool takes_any(const Instruction& i) {
    return i.code == Instruction::any || i.code == Instruction::set;
  }

  bool takes(const Instruction& i, char32_t c) const {
    if (i.code == Instruction::any) return true;
    if (i.code != Instruction::set) return false;
    bool inside = false;
    for (size_t r = i.x; r < i.y && !inside; ++r)
      inside = program_.ranges[r].from <= c && c <= program_.ranges[r].to;
    return inside != i.negated;
  }

  void push(Threads& list, size_t at) {
    list.at.push_back(at);
    if (places_) list.places.insert(list.places.end(), room_.places.begin(), room_.places.end());
  }

  size_t pop(Threads& list) {
    const size_t at = list.at.back();
    list.at.pop_back();
    if (!places_) return at;
    const auto first = list.places.end() - static_cast<ptrdiff_t>(places_);
    room_.places.assign(first, list.places.end());
    list.places.erase(first, list.places.end());
    return at;
  }

  // Follows jumps; earlier alternatives come first. Each instruction is reached once in a round.
  void add(Threads& list, size_t at, size_t place) {
    Threads& open = room_.open;
    open.clear();
    for (;;) {
      const bool is_new = std::exchange(room_.seen[at], room_.round) != room_.round;
      const Instruction& i = program_.code[at];
      steps_ += 1 + places_ / 8;
      if (is_new && i.code == Instruction::jump) {
        at = i.x;
      } else if (is_new && i.code == Instruction::split) {
        push(open, i.y);
        at = i.x;
      } else if (is_new && i.code == Instruction::save) {
        if (i.x < places_) room_.places[i.x] = place;
        ++at;
      } else {
        if (is_new) push(list, at);
        if (open.at.empty()) return;
        at = pop(open);
      }
    }
  }

  Room& room_;
  Threads &now_ = room_.now, &next_ = room_.next;
  const Program& program_;
  size_t places_;
  size_t steps_ = 0;
};

// --- references and the cache

std::u32string content_of(const char* name, bool& found) {
  Value v = find_named_value(name);
  if (v && v->form == Form::pattern) v = v->parts.data[0];
  found = v && is_text_kind(v->kind) && (v->form == Form::string || v->form == Form::wide_string);
  return found ? wide_text(v) : std::u32string();
}

// Puts the text of the values in for "{name}" and "\N{name}".
std::u32string expanded(const std::u32string& text, int depth) {
  std::u32string result;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] != 'N') {
      bool quadruple = text[i + 1] == 'q';
      result += text[i];
      result += text[++i];
      if (quadruple)
        while (i + 1 < text.size() && text[i] != '}') result += text[++i];
      continue;
    }
    size_t open = text[i] == '\\' && i + 2 < text.size() && text[i + 2] == '{' ? i + 2 : i;
    size_t close = text[open] == '{' ? text.find(U'}', open) : std::u32string::npos;
    bool found = false;
    std::u32string content;
    if (close != std::u32string::npos && depth < 20)
      content = content_of(narrow_text(text.substr(open + 1, close - open - 1)).c_str(), found);
    if (!found) {
      result += text[i];
      continue;
    }
    result += expanded(content, depth + 1);
    i = close;
  }
  return result;
}

// Whether a text holds what `expanded` replaces.
bool names_values(const std::u32string& text) {
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '{') return true;
    if (text[i] != '\\' || i + 1 == text.size()) continue;
    if (text[++i] == 'N') return true;
    if (text[i] == 'q') i = std::min(text.find(U'}', i), text.size() - 1);
  }
  return false;
}

// Programs by a hash of their texts, where most are found again.
const Program* found_programs[256];

const Program*& place_of_program(const Characters& text) {
  uint32_t hash = 2166136261u;
  for (size_t i = 0; i < text.size(); ++i) hash = (hash ^ text[i]) * 16777619u;
  return found_programs[hash % std::size(found_programs)];
}

// Null where it was not found before. Only texts that name no values are.
const Program* found_program(const Characters& text) {
  const Program* program = place_of_program(text);
  return program && compare(Characters(program->text), text) == 0 ? program : nullptr;
}

const Program& compiled_program(const std::u32string& text) {
  constexpr size_t most_cached = 1000000;  // instructions and characters
  static auto* cache = new std::map<std::u32string, std::unique_ptr<Program>>;
  static size_t cached = 0;
  const auto found = cache->find(text);
  if (found != cache->end()) return *found->second;
  auto program = std::make_unique<Program>(Compiler(text).run());
  const size_t size = program->code.size() + text.size();
  if (cached + size > most_cached) {
    std::fill(std::begin(found_programs), std::end(found_programs), nullptr);
    cache->clear();
    cached = 0;
  }
  cached += size;
  return *cache->emplace(text, std::move(program)).first->second;
}

const Program& new_program(const std::u32string& text) {
  const Program& program = compiled_program(text);
  place_of_program(Characters(text)) = &program;
  return program;
}

Value pattern_text(Value pattern) {
  if (!pattern) fault("use of a pattern that is not initialized");
  if (pattern->form == Form::pattern) pattern = pattern->parts.data[0];
  if (pattern->form != Form::special && is_template(pattern))
    pattern = valueof_value(pattern, lumo_temp_alloc_c);
  pattern = settled(pattern);
  if (pattern->form == Form::unset || pattern->form == Form::special)
    fault("use of a pattern that is not initialized");
  return pattern;
}

// Its texts end before a fault does not return.
const Program& readable_program(Value pattern) {
  const Program* program = found_program(Characters(pattern));
  if (!program) {
    const std::u32string text = wide_text(pattern);
    program = names_values(text) ? &compiled_program(expanded(text, 0)) : &new_program(text);
  }
  if (!program->error.empty()) fault("pattern is not readable: %s", program->error.c_str());
  return *program;
}

bool run_pattern(Value pattern, Value v, std::vector<size_t>* places) {
  const Program& program = readable_program(pattern);
  return Machine(program, places != nullptr).run(Characters(v), places);
}

// Wildcards in digits: "?" is one element, "*" any number of them.
bool match_digits(Value pattern, Value v) {
  size_t unit = v->kind == lumo_type_kind_octetstring ? 2 : 1;
  const char* p = pattern->text.data;
  const char* end = p + pattern->text.size;
  const char* s = v->text.data;
  const char* last = s + v->text.size;
  const char *star = nullptr, *tried = nullptr;
  for (size_t steps = 0; s < last; ++steps) {
    if (steps > most_pattern_steps)
      fault("matching a string of %zu digits with a pattern takes too long", v->text.size);
    if (p < end && *p == '*') {
      star = ++p;
      tried = s;
    } else if (p < end && *p == '?') {
      ++p;
      s += unit;
    } else if (p + unit <= end && !strncasecmp(p, s, unit)) {
      p += unit;
      s += unit;
    } else if (star) {
      p = star;
      s = tried += unit;
    } else {
      return false;
    }
  }
  while (p < end && *p == '*') ++p;
  return p == end;
}

}  // namespace

bool match_pattern(Value pattern, Value v) {
  if (v && is_omit(v)) return false;
  pattern = pattern_text(pattern);
  if (!v) fault("use of a value that is not initialized");
  if (v->form != Form::special && is_template(v)) v = valueof_value(v, lumo_temp_alloc_c);
  v = settled(v);
  if (v->form == Form::unset) fault("use of a string that is not initialized");
  if (is_text_kind(v->kind)) return run_pattern(pattern, v, nullptr);
  if (v->form != Form::string) fault("a pattern cannot match a value of type '%s'", type_name(v->type));
  return pattern->form == Form::string && match_digits(pattern, v);
}

long pattern_length(Value pattern) {
  return Machine(readable_program(pattern_text(pattern)), false).length();
}

TextPart pattern_group(Value pattern, Value v, size_t group) {
  pattern = pattern_text(pattern);
  static auto& places = *new std::vector<size_t>;  // kept for the next time; a fault leaves nothing behind
  const bool fits = run_pattern(pattern, v, &places) && 2 * group + 1 < places.size();
  const size_t first = fits ? places[2 * group] : SIZE_MAX, end = fits ? places[2 * group + 1] : SIZE_MAX;
  if (first == SIZE_MAX || end == SIZE_MAX) return {};
  return {first, end - first};
}

namespace {
const Program& program_of_octets(std::string_view pattern) {
  const Program* program = found_program(Characters(pattern));
  return program ? *program : new_program(std::u32string(pattern.begin(), pattern.end()));
}
}  // namespace

size_t pattern_prefix(std::string_view pattern, std::string_view text, bool any_case) {
  const Program& program = program_of_octets(pattern);
  return program.error.empty() ? Machine(program, false).longest(text, any_case) : std::string_view::npos;
}

bool readable_pattern(std::string_view pattern) {
  return program_of_octets(pattern).error.empty();
}

}  // namespace lumos
