#include "text/mismatch.h"

#include <string_view>
#include <utility>

#include "text/log.h"
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

std::string shown(Value v) {
  if (!is_given(v)) return "";
  std::string text = render(v);
  if (text.size() > longest_shown) text = text.substr(0, longest_shown) + "...";
  return text;
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

bool is_unset(Value v) {
  return !v || v->form == Form::unset || is_omit(v);
}

bool is_same(Value a, Value b) {
  return is_unset(a) || is_unset(b) ? is_unset(a) == is_unset(b) : equal_values(a, b);
}

bool is_among(Value one, Value all) {
  for (size_t i = 0; i < all->parts.size; ++i)
    if (is_same(all->parts.data[i], one)) return true;
  return false;
}

// Of lists without an order, an element that only one of them has.
void compare_sets(std::string& path, std::string& reason, Value& actual, Value& expected) {
  for (size_t i = 0; i < expected->parts.size; ++i) {
    const Value element = expected->parts.data[i];
    if (is_among(element, actual)) continue;
    reason = "element missing";
    expected = element;
    return;
  }
  for (size_t i = 0; i < actual->parts.size; ++i) {
    const Value element = actual->parts.data[i];
    if (is_among(element, expected)) continue;
    path = joined(path, "[" + std::to_string(i) + "]");
    reason = "element unexpected";
    actual = element;
    expected = nullptr;
    return;
  }
}

// From two values that differ to the first parts of them that do.
void narrow(std::string& path, std::string& reason, Value& actual, Value& expected) {
  while (is_given(actual) && is_given(expected) && !is_template(actual) && !is_template(expected)) {
    const Form form = actual->form;
    if (form == Form::vector && expected->form == form && base_kind(actual->type) == lumo_type_kind_setof)
      return compare_sets(path, reason, actual, expected);
    const bool has_parts = form == Form::fields || form == Form::vector || form == Form::choice;
    if (!has_parts || expected->form != form || actual->parts.size != expected->parts.size ||
        (form == Form::choice && actual->index != expected->index))
      return;
    size_t i = 0;
    while (i < actual->parts.size && is_same(actual->parts.data[i], expected->parts.data[i])) ++i;
    if (i == actual->parts.size) return;
    const lumo_field_info_t* fields = field_info(actual->type);
    const size_t field = form == Form::choice ? static_cast<size_t>(actual->index) : i;
    path = joined(path, form == Form::vector || !fields ? "[" + std::to_string(i) + "]"
                                                        : shown_name(actual->type, field));
    actual = is_unset(actual->parts.data[i]) ? lumo_omit_value_c : actual->parts.data[i];
    expected = is_unset(expected->parts.data[i]) ? lumo_omit_value_c : expected->parts.data[i];
  }
}

// Whether the field that the path begins with is left out there.
bool lacks(Value record, const std::string& path) {
  if (!is_given(record) || record->form != Form::fields) return false;
  const long index = field_index(record->type, path.substr(0, path.find_first_of(".[")).c_str());
  return index >= 0 && static_cast<size_t>(index) < record->parts.size &&
         is_unset(record->parts.data[static_cast<size_t>(index)]);
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
    innermost_ = actual;
    return;
  }
  note(path, reason, actual, expected, expected_text);
}

void MismatchTrace::note(const std::string& path, const char* reason, Value actual, Value expected,
                         const char* expected_text) {
  is_found_ = true;
  path_ = path;
  reason_ = reason;
  innermost_ = is_given(actual) && (actual->parent || !is_unset(actual)) ? actual : nullptr;
  if (reason_ == "value mismatch") narrow(path_, reason_, actual, expected);
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

void trace_element(size_t index, const char* reason, Value actual, Value expected) {
  trace->add("[" + std::to_string(index) + "]", reason, actual, expected);
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
