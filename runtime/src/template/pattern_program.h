// What the notation of patterns of characters says, as a program, and the machine that runs it: all threads step
// through the text together, in time linear in it. It knows nothing of values, so that the compiler asks it as well.
#pragma once

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace lumos::patterns {

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
  std::string error;  // why the text cannot be read, or empty
};

/// A text that cannot be read gives a program with an error. `stack_is_short` is asked where the text nests.
Program program_of(const std::u32string& text, bool (*stack_is_short)());

// More than patience allows are not taken.
constexpr size_t most_pattern_steps = 2000000000;

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
inline Room& room() {
  static auto* all = new Room;
  return *all;
}

class Machine {
 public:
  Machine(const Program& program, bool save, size_t most_steps = most_pattern_steps)
      : room_(room()), program_(program), places_(save ? 2 * program.groups : 0), most_steps_(most_steps) {
    if (room_.seen.size() < program.code.size()) room_.seen.resize(program.code.size(), 0);
  }

  /// Whether all of the text matches; false as well where that takes too long. Where the groups begin and end
  /// is saved, if wanted.
  template <class Text>
  bool run(const Text& text, std::vector<size_t>* saved) {
    begin();
    for (size_t i = 0; i < text.size() && !now_.at.empty(); ++i) {
      const char32_t c = text[i];
      step(i + 1, [&](const Instruction& instruction) { return takes(instruction, c); });
      if (takes_too_long()) return false;
    }
    for (size_t t = 0; t < now_.at.size(); ++t) {
      if (program_.code[now_.at[t]].code != Instruction::accept) continue;
      if (saved) saved->assign(places_of(now_, t), places_of(now_, t) + places_);
      return true;
    }
    return false;
  }

  bool takes_too_long() const { return steps_ > most_steps_; }

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
  size_t steps_ = 0, most_steps_;
};

}  // namespace lumos::patterns
