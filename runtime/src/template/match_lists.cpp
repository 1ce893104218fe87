// Matching of lists: wildcards, permutations, sets, subsets and supersets. What generated
// code may interrupt keeps its arrays in the memory scope of the task.
#include <algorithm>

#include "value/error.h"
#include "template/match.h"
#include "value/scratch.h"
#include "value/task.h"
#include "template/templates.h"
#include "text/mismatch.h"

namespace lumos {

namespace {

// An item "*", perhaps with a length.
bool is_star(Value item, lumo_long_integer_t& lower, lumo_long_integer_t& upper) {
  if (is_special(item, Special::anyornone) && !item->restraint) return true;
  Value inner = item;
  if (item->form == Form::wrapped) inner = item->parts.data[0];
  if (!inner || !is_special(inner, Special::anyornone)) return false;
  if (item->restraint && item->restraint->has_length) {
    lower = item->restraint->lower;
    upper = item->restraint->upper;
  }
  return true;
}

struct Item {
  Value pattern;
  bool star;
  bool in_permutation;  // goes on with the item before
  bool in_group;        // of a permutation at all
  lumo_long_integer_t lower, upper;
};

void read_items(const ListPattern& list, Scratch<Item>& items) {
  for (size_t i = 0; i < list.count; ++i) {
    Item& item = items[i];
    item.pattern = list.items[i];
    if (!item.pattern) fault("a template of a list is not initialized");
    item.lower = 0;
    item.upper = -1;
    if (list.lengths) {
      item.lower = list.lengths[i].lower;
      item.upper = list.lengths[i].upper;
    }
    item.star = is_star(item.pattern, item.lower, item.upper);
    lumo_permutation_kind_t kind = list.permutations ? list.permutations[i] : lumo_not_permutated_c;
    item.in_group = kind != lumo_not_permutated_c;
    item.in_permutation = kind == lumo_permutation_body_c || kind == lumo_permutation_tail_c;
  }
}

// More than patience allows are not taken.
constexpr size_t most_list_steps = 2000000000;
constexpr size_t steps_of_match = 10;  // that matching an element counts for

[[noreturn]] void takes_too_long(size_t elements) {
  fault("matching a list of %zu elements takes too long", elements);
}

Value element_of(Value list, size_t i) {
  Value element = list->parts.data[i];
  if (!element) fault("an element of a list is not initialized");
  return element;
}

// Pairs of an item and an element that were tried already.
class Matches {
 public:
  Matches(Value list, size_t items)
      : list_(list), width_(list->parts.size), known_(affordable(items, width_)) {}

  bool operator()(size_t row, Value pattern, size_t element) {
    char& known = known_[row * width_ + element];
    if (!known) known = match_value(pattern, element_of(list_, element)) ? 1 : 2;
    return known == 1;
  }

  void spend(size_t steps) {
    spent_ += steps;
    if (spent_ > most_list_steps) takes_too_long(width_);
  }

 private:
  // More pairs than memory and patience hold are not begun with.
  static size_t affordable(size_t items, size_t elements) {
    constexpr size_t most_pairs = 200000000;
    if (elements && items > most_pairs / elements)
      fault("matching a list of %zu elements with %zu templates takes too long", elements, items);
    return items * elements;
  }

  Value list_;
  size_t width_;
  size_t spent_ = 0;
  Scratch<char> known_;
};

// Finds a partner of its own on the right for each on the left. Those that the first look leaves without one
// get theirs by paths along which others change theirs, in rounds: each goes along the shortest paths, and
// there are few of them. `fits` is asked whether two may be partners.
template <class Fits>
class Pairing {
 public:
  Pairing(Matches& matches, size_t left, size_t right, Fits fits)
      : matches_(matches),
        left_(left),
        right_(right),
        fits_(fits),
        left_of_(right + 1),
        right_of_(left + 1),
        layer_(left + 1),
        tried_(left + 1),
        open_(left + 1) {}

  bool complete() {
    if (left_ > right_) return false;
    size_t missing = 0;
    for (size_t i = 0; i < left_; ++i) {
      bool fits_any = false;
      if (!take_free(i, fits_any)) ++missing;
      if (!fits_any) return false;
    }
    while (missing) {
      if (!find_layers()) return false;
      for (size_t i = 0; i < left_; ++i)
        if (!right_of_[i] && change_along_path(i)) --missing;
    }
    return true;
  }

 private:
  // The one in the same place is the likely partner.
  size_t candidate(size_t i, size_t n) const {
    const size_t e = i % right_ + n;
    return e < right_ ? e : e - right_;
  }

  bool take_free(size_t i, bool& fits_any) {
    for (size_t n = 0; n < right_; ++n) {
      const size_t e = candidate(i, n);
      if (left_of_[e] && fits_any) continue;
      if (!fits_(i, e)) continue;
      fits_any = true;
      if (left_of_[e]) continue;
      left_of_[e] = i + 1;
      right_of_[i] = e + 1;
      return true;
    }
    return false;
  }

  // How far those on the left are from one without a partner; false if no path leads to a free one on the
  // right.
  bool find_layers() {
    size_t end = 0;
    bool is_found = false;
    for (size_t i = 0; i < left_; ++i) {
      tried_[i] = 0;
      layer_[i] = right_of_[i] ? 0 : 1;
      if (layer_[i]) open_[end++] = i;
    }
    for (size_t at = 0; at < end; ++at) {
      const size_t i = open_[at];
      matches_.spend(right_);
      for (size_t e = 0; e < right_; ++e) {
        const size_t other = left_of_[e];
        if ((other && layer_[other - 1]) || !fits_(i, e)) continue;
        if (!other) is_found = true;
        if (!other || is_found) continue;
        layer_[other - 1] = layer_[i] + 1;
        open_[end++] = other - 1;
      }
    }
    return is_found;
  }

  // Deeper and deeper by layers, each candidate once in a round; what is open is the path.
  bool change_along_path(size_t first) {
    size_t depth = 0;
    open_[0] = first;
    matches_.spend(right_);
    for (;;) {
      const size_t i = open_[depth];
      if (tried_[i] == right_) {
        if (depth-- == 0) return false;
        continue;
      }
      const size_t e = candidate(i, tried_[i]++), other = left_of_[e];
      if ((other && layer_[other - 1] != layer_[i] + 1) || !fits_(i, e)) continue;
      if (!other) return take_path(depth), true;
      matches_.spend(right_);
      open_[++depth] = other - 1;
    }
  }

  void take_path(size_t depth) {
    for (size_t at = 0; at <= depth; ++at) {
      const size_t i = open_[at], e = candidate(i, tried_[i] - 1);
      left_of_[e] = i + 1;
      right_of_[i] = e + 1;
    }
  }

  Matches& matches_;
  size_t left_, right_;
  Fits fits_;
  Scratch<size_t> left_of_, right_of_, layer_, tried_, open_;  // places count from 1, 0 is none
};

template <class Fits>
bool pair_all(Matches& matches, size_t left, size_t right, Fits fits) {
  TempScope scope;
  return Pairing<Fits>(matches, left, right, fits).complete();
}

// The items without "*", and what the "*"s take together.
struct Group {
  Scratch<Value> items;
  size_t count = 0;
  bool star = false;
  lumo_long_integer_t lower = 0, upper = 0;  // of all "*"

  explicit Group(size_t most) : items(most + 1) {}

  void add(const Item& item) {
    if (!item.star) {
      items[count++] = item.pattern;
      return;
    }
    star = true;
    lower += item.lower;
    upper = upper < 0 || item.upper < 0 ? -1 : upper + item.upper;
  }

  bool takes(size_t elements) const {
    if (elements < count) return false;
    auto rest = static_cast<lumo_long_integer_t>(elements - count);
    if (!star) return rest == 0;
    return rest >= lower && (upper < 0 || rest <= upper);
  }
};

// Which prefixes of the list the items so far can stand for: none outside of a window, which is looked
// through.
class Prefixes {
 public:
  explicit Prefixes(Value list) : list_(list), size_(list->parts.size), now_(size_ + 1), next_(size_ + 1) {
    now_[0] = 1;
  }

  void single(const Item& item) {
    size_t first = SIZE_MAX, last = 0;
    for (size_t p = first_; p <= last_ && p < size_; ++p) {
      if (!now_[p] || !match_value(item.pattern, element_of(list_, p))) continue;
      next_[p + 1] = 1;
      first = std::min(first, p + 1);
      last = p + 1;
    }
    spend(steps_of_match * (last_ + 1 - first_));
    step(first, last);
  }

  void star(const Item& item) {
    if (is_empty()) return;
    const size_t lower = static_cast<size_t>(std::min<lumo_long_integer_t>(item.lower, max_length()));
    const size_t upper =
        item.upper < 0 ? size_ : static_cast<size_t>(std::min<lumo_long_integer_t>(item.upper, max_length()));
    size_t reachable = SIZE_MAX;  // the last start that still reaches the place
    const size_t first = first_ + lower, last = std::min(size_, last_ + upper);
    for (size_t q = first; q <= last; ++q) {
      if (q - lower <= last_ && now_[q - lower]) reachable = q - lower;
      next_[q] = reachable != SIZE_MAX && q - reachable <= upper;
    }
    spend(last + 1 - std::min(first, last));
    first <= last ? step(first, last) : step(SIZE_MAX, 0);
  }

  void permutation(Group& group) {
    if (is_empty()) return;
    // Pairs are tried more than once only here.
    TempScope scope;
    Matches matches(list_, group.count);
    size_t first = SIZE_MAX, last = 0;
    for (size_t p = first_; p <= last_ && p + group.count <= size_; ++p) {
      if (!now_[p]) continue;
      const size_t most = group.star ? size_ - p : group.count;
      for (size_t length = shortest(matches, group, p, most); length <= most; ++length) {
        if (!group.takes(length)) continue;
        next_[p + length] = 1;
        first = std::min(first, p + length);
        last = std::max(last, p + length);
      }
      spend(most + 1);
    }
    step(first, last);
  }

  bool whole() { return now_[size_]; }

 private:
  bool is_empty() const { return first_ > last_; }
  lumo_long_integer_t max_length() const { return static_cast<lumo_long_integer_t>(size_) + 1; }

  void spend(size_t steps) {
    spent_ += steps;
    if (spent_ > most_list_steps) takes_too_long(size_);
  }

  // How many elements from the place on hold partners for all items; more than most when none do. What more
  // elements there are is left to "*".
  size_t shortest(Matches& matches, Group& group, size_t place, size_t most) {
    auto suffices = [&](size_t length) {
      return pair_all(matches, group.count, length,
                      [&](size_t i, size_t e) { return matches(i, group.items[i], place + e); });
    };
    if (!suffices(most)) return most + 1;
    size_t low = group.count, high = most;
    while (low < high) {
      const size_t middle = low + (high - low) / 2;
      if (suffices(middle))
        high = middle;
      else
        low = middle + 1;
    }
    return high;
  }
  // The window of the next prefixes; none if the first is behind the last.
  void step(size_t first, size_t last) {
    if (!is_empty()) std::memset(now_.data() + first_, 0, last_ + 1 - first_);
    first_ = first;
    last_ = last;
    if (is_empty()) return;
    std::memcpy(now_.data() + first, next_.data() + first, last + 1 - first);
    std::memset(next_.data() + first, 0, last + 1 - first);
  }

  Value list_;
  size_t size_;
  size_t first_ = 0, last_ = 0;
  size_t spent_ = 0;
  Scratch<char> now_, next_;
};

bool match_in_order(Value list, Scratch<Item>& items, size_t count) {
  if (list->parts.size != count) return false;
  for (size_t i = 0; i < count; ++i) {
    if (!match_value(items[i].pattern, element_of(list, i))) return false;
  }
  return true;
}

Value list_of(Value v) {
  if (!v || is_omit(v)) return nullptr;
  v = settled(v);
  if (is_template(v)) v = valueof_value(v, lumo_temp_alloc_c);
  if (v->form == Form::unset) fault("use of a list that is not initialized");
  return v->form == Form::vector ? v : nullptr;
}

}  // namespace

namespace {

bool fits_record_of(Value list, const ListPattern& pattern) {
  Value v = list_of(list);
  if (!v) return false;
  Quiet quiet;
  TempScope scope;
  Scratch<Item> items(pattern.count + 1);
  read_items(pattern, items);
  bool plain = true;
  for (size_t i = 0; i < pattern.count; ++i) plain = plain && !items[i].star && !items[i].in_group;
  if (plain) return match_in_order(v, items, pattern.count);
  Prefixes prefixes(v);
  for (size_t i = 0; i < pattern.count;) {
    if (!items[i].in_group) {
      if (items[i].star) {
        prefixes.star(items[i]);
      } else {
        prefixes.single(items[i]);
      }
      ++i;
      continue;
    }
    TempScope scope_of_group;
    size_t end = i;
    do {
      ++end;
    } while (end < pattern.count && items[end].in_permutation);
    Group group(end - i);
    for (; i < end; ++i) group.add(items[i]);
    prefixes.permutation(group);
  }
  return prefixes.whole();
}

// The first element that the items before the first "*" or permutation do not take.
void explain_record_of(Value list, const ListPattern& pattern) {
  Value v = list_of(list);
  if (!v) return;
  Scratch<Item> items(pattern.count + 1);
  read_items(pattern, items);
  for (size_t i = 0; i < pattern.count; ++i) {
    if (items[i].star || items[i].in_group) return;
    if (i >= v->parts.size) return trace_list("element missing", list, items[i].pattern);
    Value element = force_part(v, i);
    if (!match_value(items[i].pattern, element))
      return trace_element(v, i, "value mismatch", element, items[i].pattern);
  }
  if (v->parts.size > pattern.count)
    trace_element(v, pattern.count, "element unexpected", force_part(v, pattern.count), nullptr);
}

bool some_fits(Value v, Value pattern) {
  Quiet quiet;
  for (size_t i = 0; i < v->parts.size; ++i)
    if (match_value(pattern, force_part(v, i))) return true;
  return false;
}

// An element that no item takes, or an item that takes no element.
void explain_set_of(Value list, const ListPattern& pattern) {
  Value v = list_of(list);
  if (!v) return;
  Scratch<Item> items(pattern.count + 1);
  read_items(pattern, items);
  bool has_star = false;
  for (size_t i = 0; i < pattern.count; ++i) {
    has_star = has_star || items[i].star;
    if (!items[i].star && !some_fits(v, items[i].pattern))
      return trace_list("element missing", list, items[i].pattern);
  }
  for (size_t k = 0; !has_star && k < v->parts.size; ++k) {
    Value element = force_part(v, k);
    Quiet quiet;
    bool fits = false;
    for (size_t i = 0; i < pattern.count; ++i) fits = fits || match_value(items[i].pattern, element);
    if (!fits) return trace_element(v, k, "element unexpected", element, nullptr);
  }
}

}  // namespace

bool match_record_of(Value list, const ListPattern& pattern) {
  const bool fits = fits_record_of(list, pattern);
  if (!fits && traces_mismatches()) explain_record_of(list, pattern);
  return fits;
}

namespace {

bool fits_set_of(Value list, const ListPattern& pattern) {
  Value v = list_of(list);
  if (!v) return false;
  Quiet quiet;
  TempScope scope;
  Scratch<Item> items(pattern.count + 1);
  read_items(pattern, items);
  Group group(pattern.count);
  for (size_t i = 0; i < pattern.count; ++i) group.add(items[i]);
  if (!group.takes(v->parts.size)) return false;
  Matches matches(v, group.count);
  return pair_all(matches, group.count, v->parts.size,
                  [&](size_t i, size_t e) { return matches(i, group.items[i], e); });
}

}  // namespace

bool match_set_of(Value list, const ListPattern& pattern) {
  const bool fits = fits_set_of(list, pattern);
  if (!fits && traces_mismatches()) explain_set_of(list, pattern);
  return fits;
}

bool match_superset(Value list, Value* items, size_t count) {
  Value v = list_of(list);
  if (!v || v->parts.size < count) return false;
  Quiet quiet;
  TempScope scope;
  Matches matches(v, count);
  return pair_all(matches, count, v->parts.size, [&](size_t i, size_t e) { return matches(i, items[i], e); });
}

bool match_subset(Value list, Value* items, size_t count) {
  Value v = list_of(list);
  if (!v || v->parts.size > count) return false;
  Quiet quiet;
  TempScope scope;
  Matches matches(v, count);
  return pair_all(matches, v->parts.size, count, [&](size_t e, size_t i) { return matches(i, items[i], e); });
}

}  // namespace lumos

using namespace lumos;

lumo_boolean_t lumo_recordof_match(lumo_value_t value, lumo_value_t templates[],
                                   lumo_permutation_kind_t permutations[], lumo_length_constraint_t lengths[],
                                   unsigned long count, lumo_context_t) {
  return match_record_of(value, {templates, count, permutations, lengths});
}

lumo_boolean_t lumo_setof_match(lumo_value_t value, lumo_value_t templates[],
                                lumo_permutation_kind_t permutations[], lumo_length_constraint_t lengths[],
                                unsigned long count, lumo_context_t) {
  return match_set_of(value, {templates, count, permutations, lengths});
}

lumo_boolean_t lumo_subset_match(lumo_value_t value, lumo_value_t templates[], unsigned long count,
                                 lumo_context_t) {
  return match_subset(value, templates, count);
}

lumo_boolean_t lumo_superset_match(lumo_value_t value, lumo_value_t templates[], unsigned long count,
                                   lumo_context_t) {
  return match_superset(value, templates, count);
}
