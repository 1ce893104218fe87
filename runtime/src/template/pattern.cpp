#include "template/pattern.h"

#include <strings.h>

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <utility>

#include "template/pattern_program.h"
#include "value/characters.h"
#include "value/error.h"
#include "value/location.h"
#include "value/task.h"
#include "template/templates.h"
#include "value/types.h"

namespace lumos {

namespace {

using namespace patterns;

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
  auto program = std::make_unique<Program>(program_of(text, [] { return stack_is_short(); }));
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
  Machine machine(readable_program(pattern), places != nullptr);
  const Characters text(v);
  const bool fits = machine.run(text, places);
  if (machine.takes_too_long()) fault("matching a text of %zu characters with a pattern takes too long", text.size());
  return fits;
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
