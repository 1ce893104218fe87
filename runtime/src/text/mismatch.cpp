#include "text/mismatch.h"

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <utility>

#include "text/log.h"
#include "text/text_forms.h"
#include "value/characters.h"
#include "value/types.h"
#include "value/value.h"

namespace lumos {

namespace {

constexpr size_t longest_shown = 200;
MismatchTrace* trace = nullptr;
// What generated code says of the mismatch that it tells next.
const char* expected_text = nullptr;

bool is_given(Value v) {
  return v && v != lumo_no_value_c;
}

// Of what is cut the length is told, which may be what does not fit.
std::string shown(Value v) {
  if (!is_given(v)) return "";
  const std::string text = render(v);
  if (text.size() <= longest_shown) return text;
  std::string cut = std::string(beginning(text, longest_shown)) + "...";
  if (v->dynamic) return cut;
  if (v->form == Form::vector) return cut + " (length " + std::to_string(v->parts.size) + ")";
  const size_t digits = v->kind == lumo_type_kind_octetstring ? 2 : 1;
  const size_t length = Characters(v).size() / digits;
  return length ? cut + " (length " + std::to_string(length) + ")" : cut;
}

bool is_long(Value v) {
  return is_given(v) && !v->dynamic && render(v).size() > longest_shown;
}

// Some elements of a string, with what says that there are more.
std::string shown_part(Value v, size_t from, size_t count) {
  const Characters all(v);
  const size_t to = std::min(all.size(), from + count);
  TempScope scope;
  Value part = make_root(v->type, lumo_temp_alloc_c);
  if (v->form == Form::wide_string) {
    set_wide(part, v->wide.data + from, to - from);
  } else {
    set_text(part, {v->text.data + from, to - from});
  }
  return (from ? "..." : "") + render(part) + (to < all.size() ? "..." : "");
}

// Of long strings the places around the first difference; false for other values.
bool narrow_strings(std::string& reason, Value actual, Value expected, std::string& shown_actual,
                    std::string& shown_expected) {
  if (!is_given(actual) || !is_given(expected) || (!is_long(actual) && !is_long(expected))) return false;
  for (Value v : {actual, expected})
    if (v->dynamic || (v->form != Form::string && v->form != Form::wide_string)) return false;
  const Characters a(actual), e(expected);
  const size_t digits = actual->kind == lumo_type_kind_octetstring ? 2 : 1;
  size_t place = 0;
  while (place < std::min(a.size(), e.size()) && a[place] == e[place]) ++place;
  place -= place % digits;
  constexpr size_t before = 16, all = 64;
  const size_t from = place > before ? place - before : 0;
  shown_actual = shown_part(actual, from, all);
  shown_expected = shown_part(expected, from, all);
  reason = "different from [" + std::to_string(place / digits) + "] on";
  return true;
}

// Generated code puts the text of its template in angle brackets before the path.
std::string path_in(const std::string& where) {
  std::string path = where.substr(where.rfind('>') + 1);
  if (!path.empty() && path[0] == '.') path.erase(0, 1);
  return path;
}

bool is_around(Value outer, Value inner) {
  for (; inner; inner = inner->parent)
    if (inner == outer) return true;
  return false;
}

std::string joined(const std::string& outer, const std::string& inner) {
  return outer + (outer.empty() || inner.empty() || inner[0] == '[' ? "" : ".") + inner;
}

// The number of the first element in the source.
long base_of(Value list) {
  return base_kind(list->type) == lumo_type_kind_array ? array_base(list->type) : 0;
}

std::string shown_index(Value list, size_t index) {
  return "[" + std::to_string(base_of(list) + static_cast<long>(index)) + "]";
}

bool is_unset(Value v) {
  return !v || v->form == Form::unset || is_omit(v);
}

bool is_same(Value a, Value b) {
  return is_unset(a) || is_unset(b) ? is_unset(a) == is_unset(b) : equal_values(a, b);
}

// The elements of a list, found by their values.
class Elements {
 public:
  explicit Elements(Value list) : list_(list) {
    for (size_t i = 0; i < list->parts.size; ++i) all_.push_back({key(list->parts.data[i]), i});
    std::sort(all_.begin(), all_.end());
    taken_.resize(all_.size());
  }
  // Whether there is one like it; one that is taken is not found again.
  bool find(Value element, bool takes) {
    const uint64_t wanted = key(element);
    const auto at = std::lower_bound(all_.begin(), all_.end(), std::pair<uint64_t, size_t>(wanted, 0));
    if (at == all_.end() || at->first != wanted) return false;
    const size_t first = static_cast<size_t>(at - all_.begin());
    // Those in front are taken first.
    for (size_t i = first + taken_[first]; i < all_.size() && all_[i].first == wanted; ++i) {
      if (!is_same(list_->parts.data[all_[i].second], element)) continue;
      if (takes) std::swap(all_[i], all_[first + taken_[first]++]);
      return true;
    }
    return false;
  }

 private:
  static uint64_t key(Value v) { return is_unset(v) ? 0 : hash_value(v); }
  Value list_;
  std::vector<std::pair<uint64_t, size_t>> all_;  // by hash
  std::vector<size_t> taken_;                     // of those of a hash, at the first of them
};

// The first element of a list that is not in another one, or where each has a partner of its own there the
// first without one; SIZE_MAX if there is none.
size_t first_missing(Value list, Value others, bool has_own_partner) {
  Elements elements(others);
  for (size_t i = 0; i < list->parts.size; ++i)
    if (!elements.find(list->parts.data[i], has_own_partner)) return i;
  return SIZE_MAX;
}

// Of lists without an order, an element that only one of them has. Where one has it more often, short lists
// tell more as wholes.
void compare_sets(std::string& path, std::string& reason, Value& actual, Value& expected) {
  for (const bool has_own_partner : {false, true}) {
    if (has_own_partner && !is_long(actual) && !is_long(expected)) return;
    const size_t missing = first_missing(expected, actual, has_own_partner);
    if (missing != SIZE_MAX) {
      reason = "element missing";
      expected = expected->parts.data[missing];
      return;
    }
    const size_t unexpected = first_missing(actual, expected, has_own_partner);
    if (unexpected == SIZE_MAX) continue;
    path = joined(path, shown_index(actual, unexpected));
    reason = "element unexpected";
    actual = actual->parts.data[unexpected];
    expected = nullptr;
    return;
  }
}

// Lists of different lengths are told as wholes where they are short.
bool have_alike_parts(Value actual, Value expected) {
  if (expected->form != actual->form) return false;
  if (actual->form == Form::choice) return actual->index == expected->index;
  if (actual->parts.size == expected->parts.size)
    return actual->form == Form::fields || actual->form == Form::vector;
  return actual->form == Form::vector && (is_long(actual) || is_long(expected));
}

// From two values that differ to the first parts of them that do.
void narrow(std::string& path, std::string& reason, Value& actual, Value& expected) {
  while (is_given(actual) && is_given(expected) && !is_template(actual) && !is_template(expected)) {
    const Form form = actual->form;
    if (form == Form::vector && expected->form == form && base_kind(actual->type) == lumo_type_kind_setof)
      return compare_sets(path, reason, actual, expected);
    if (!have_alike_parts(actual, expected)) return;
    const size_t both = std::min(actual->parts.size, expected->parts.size);
    size_t i = 0;
    while (i < both && is_same(actual->parts.data[i], expected->parts.data[i])) ++i;
    if (i == both && i == std::max(actual->parts.size, expected->parts.size)) return;
    reason = "value mismatch";
    if (i == actual->parts.size) {
      reason = "element missing";
      expected = expected->parts.data[i];
      return;
    }
    const lumo_field_info_t* fields = field_info(actual->type);
    const size_t field = form == Form::choice ? static_cast<size_t>(actual->index) : i;
    path = joined(path,
                  form == Form::vector || !fields ? shown_index(actual, i) : shown_name(actual->type, field));
    actual = is_unset(actual->parts.data[i]) ? lumo_omit_value_c : actual->parts.data[i];
    if (i == both) {
      reason = "element unexpected";
      expected = nullptr;
      return;
    }
    expected = is_unset(expected->parts.data[i]) ? lumo_omit_value_c : expected->parts.data[i];
  }
}

// Goes along a path and adds the numbers of fields and elements; false where it leads nowhere.
bool walk(const std::string& path, Value& whole, std::vector<size_t>& place) {
  for (size_t at = 0; at < path.size();) {
    if (!is_given(whole) || !has_parts(whole->form)) return false;
    const size_t end = std::min(path.find_first_of(".[", at + 1), path.size());
    const long i = path[at] == '[' ? std::strtol(path.c_str() + at + 1, nullptr, 10) - base_of(whole)
                                   : field_index(whole->type, path.substr(at, end - at).c_str());
    place.push_back(static_cast<size_t>(i));
    const size_t part = whole->form == Form::choice ? 0 : place.back();
    if (part >= whole->parts.size) return false;
    whole = whole->parts.data[part];
    at = end + (end < path.size() && path[end] == '.');
  }
  return true;
}

// Whether what the path leads to is left out there.
bool lacks(Value whole, const std::string& path) {
  std::vector<size_t> place;
  return walk(path, whole, place) && is_unset(whole);
}

// Null for what is left out, which has no place among values.
Value with_place(Value v) {
  return is_given(v) && (v->parent || !is_unset(v)) ? v : nullptr;
}

bool is_of_alternatives(std::string_view reason) {
  for (const std::string_view known :
       {"value list mismatch", "complement list mismatch", "superset or subset mismatch"})
    if (reason == known) return true;
  return false;
}

void mismatch(const std::string& where, const char* reason, Value actual, Value expected) {
  const char* text_of_expected = std::exchange(expected_text, nullptr);
  if (trace) return trace->add(where, reason, actual, expected, text_of_expected);
  std::string text = "mismatch";
  if (!where.empty()) text += " at " + where;
  text += ": ";
  text += reason;
  if (is_given(actual)) text += ", actual " + render(actual);
  if (is_given(expected)) text += ", expected " + render(expected);
  if (text_of_expected) text += std::string(", expected ") + text_of_expected;
  log_line(lumo_log_msg_event_c, text);
}

bool is_wanted() {
  return !current_task->quiet && (trace || log_enabled(lumo_log_msg_event_c));
}

}  // namespace

MismatchTrace::MismatchTrace() : outer_(trace) {
  trace = this;
}

MismatchTrace::~MismatchTrace() {
  trace = outer_;
}

void MismatchTrace::add(const std::string& where, const char* reason, Value actual, Value expected,
                        const char* expected_text) {
  const std::string path = path_in(where);
  if (is_found_) {
    const bool is_outer = innermost_ ? is_around(actual, innermost_) : lacks(actual, path_);
    // What was tried before is only one of several alternatives.
    if (is_outer && is_of_alternatives(reason)) return note(path, reason, actual, expected, expected_text);
    if (!is_outer || path.empty()) return;
    path_ = joined(path, path_);
    innermost_ = with_place(actual);
    return;
  }
  note(path, reason, actual, expected, expected_text);
}

void MismatchTrace::note(const std::string& path, const char* reason, Value actual, Value expected,
                         const char* expected_text) {
  is_found_ = true;
  path_ = path;
  reason_ = reason;
  innermost_ = with_place(actual);
  // A missing element is no counterpart of the list.
  if (!expected_text && reason_ != "element missing") narrow(path_, reason_, actual, expected);
  if (!expected_text && narrow_strings(reason_, actual, expected, actual_, expected_)) return;
  actual_ = shown(actual);
  expected_ = expected_text ? expected_text : shown(expected);
  if (expected_text) reason_ = "value mismatch";
}

void MismatchTrace::put_before(const std::string& path) {
  path_ = joined(path, path_);
}

size_t MismatchTrace::depth() const {
  size_t depth = path_.empty() ? 0 : 1;
  for (char c : path_) depth += c == '.' || c == '[';
  return depth;
}

std::vector<size_t> MismatchTrace::place_in(Value whole) const {
  std::vector<size_t> place;
  walk(path_, whole, place);
  return place;
}

std::string MismatchTrace::text() const {
  std::string text = path_.empty() ? "" : path_ + ": ";
  const bool is_told = reason_ != "value mismatch";
  std::string expected = reason_ == "omit expected"     ? "omit"
                         : reason_ == "omit unexpected" ? "a value"
                                                        : expected_;
  if (expected.empty() || (is_told && expected == expected_)) text += reason_ + ", ";
  if (!expected.empty()) text += "expected " + expected + ", ";
  return text + "actual " + (actual_.empty() ? "omit" : actual_);
}

bool traces_mismatches() {
  return trace && !current_task->quiet;
}

void trace_element(Value list, size_t index, const char* reason, Value actual, Value expected) {
  trace->add(shown_index(list, index), reason, actual, expected);
}

void trace_list(const char* reason, Value list, Value expected) {
  trace->add("", reason, list, expected);
}

}  // namespace lumos

using namespace lumos;

void lumo_log_template_expected(const char* text, lumo_context_t) {
  expected_text = is_wanted() ? text : nullptr;
}

void lumo_log_template_mismatch_by_name_event(const char* field, const char* reason, lumo_value_t actual,
                                              lumo_value_t expected, lumo_context_t) {
  if (is_wanted()) mismatch(field ? field : "", reason, actual, expected);
}

void lumo_log_template_mismatch_by_index_event(unsigned long index, const char* reason, lumo_value_t actual,
                                               lumo_value_t expected, lumo_context_t) {
  if (is_wanted()) mismatch("[" + std::to_string(index) + "]", reason, actual, expected);
}

void lumo_log_template_mismatch_event(const char* reason, lumo_value_t actual, lumo_value_t expected,
                                      lumo_context_t) {
  if (is_wanted()) mismatch("", reason, actual, expected);
}
