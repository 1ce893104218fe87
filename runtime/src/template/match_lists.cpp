// Matching of lists: wildcards, permutations, sets, subsets and supersets. What generated
// code may interrupt keeps its arrays in the memory scope of the task.
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

// Pairs of an item and an element that were tried already.
class Matches {
 public:
  Matches(Value list, size_t items)
      : list_(list), width_(list->parts.size), known_(affordable(items, width_)) {}

  bool operator()(size_t row, Value pattern, size_t element) {
    char& known = known_[row * width_ + element];
    if (!known) known = match_value(pattern, element_at(element)) ? 1 : 2;
    return known == 1;
  }

  Value element_at(size_t i) {
    Value element = list_->parts.data[i];
    if (!element) fault("an element of a list is not initialized");
    return element;
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
  Scratch<char> known_;
};

// Finds partners for items among the elements [first, first + count), each its own.
class Assignment {
 public:
  Assignment(Matches& matches, Value* items, const size_t* rows, size_t item_count, size_t first,
             size_t count)
      : matches_(matches),
        items_(items),
        rows_(rows),
        item_count_(item_count),
        first_(first),
        count_(count),
        partner_(count + 1),
        seen_(count + 1) {}

  bool complete() {
    if (item_count_ > count_) return false;
    for (size_t e = 0; e < count_; ++e) partner_[e] = free_element;
    for (size_t i = 0; i < item_count_; ++i) {
      std::memset(seen_.data(), 0, count_);
      if (!place(i)) return false;
    }
    return true;
  }

 private:
  static constexpr size_t free_element = SIZE_MAX;

  bool place(size_t item) {
    check_stack();
    // The element in the same place is the likely partner.
    for (size_t n = 0; n < count_; ++n) {
      size_t e = (item + n) % count_;
      if (seen_[e] || !matches_(rows_[item], items_[item], first_ + e)) continue;
      seen_[e] = 1;
      if (partner_[e] != free_element && !place(partner_[e])) continue;
      partner_[e] = item;
      return true;
    }
    return false;
  }

  Matches& matches_;
  Value* items_;
  const size_t* rows_;
  size_t item_count_, first_, count_;
  Scratch<size_t> partner_;
  Scratch<char> seen_;
};

// The items without "*", and what the "*"s take together.
struct Group {
  Scratch<Value> items;
  Scratch<size_t> rows;
  size_t count = 0;
  bool star = false;
  lumo_long_integer_t lower = 0, upper = 0;  // of all "*"

  explicit Group(size_t most) : items(most + 1), rows(most + 1) {}

  void add(const Item& item, size_t row) {
    if (!item.star) {
      items[count] = item.pattern;
      rows[count++] = row;
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

// Which prefixes of the list the items so far can stand for.
class Prefixes {
 public:
  Prefixes(Value list, size_t rows)
      : size_(list->parts.size), now_(size_ + 1), next_(size_ + 1), matches_(list, rows) {
    now_[0] = 1;
  }

  void single(const Item& item, size_t row) {
    clear_next();
    for (size_t p = 0; p < size_; ++p)
      if (now_[p] && matches_(row, item.pattern, p)) next_[p + 1] = 1;
    step();
  }

  void star(const Item& item) {
    clear_next();
    size_t upper = item.upper < 0 ? size_ : static_cast<size_t>(item.upper);
    size_t lower = static_cast<size_t>(item.lower);
    size_t reachable = SIZE_MAX;  // the last start that still reaches the place
    for (size_t q = lower; q <= size_; ++q) {
      if (now_[q - lower]) reachable = q - lower;
      if (reachable != SIZE_MAX && q - reachable <= upper) next_[q] = 1;
    }
    step();
  }

  void permutation(Group& group) {
    clear_next();
    for (size_t p = 0; p + group.count <= size_; ++p) {
      if (!now_[p]) continue;
      const size_t most = group.star ? size_ - p : group.count;
      for (size_t length = shortest(group, p, most); length <= most; ++length)
        if (group.takes(length)) next_[p + length] = 1;
    }
    step();
  }

  bool whole() { return now_[size_]; }

 private:
  // How many elements from the place on hold partners for all items; more than most when none do. What more
  // elements there are is left to "*".
  size_t shortest(Group& group, size_t place, size_t most) {
    auto suffices = [&](size_t length) {
      TempScope scope;
      return Assignment(matches_, group.items.data(), group.rows.data(), group.count, place, length)
          .complete();
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
  void clear_next() { std::memset(next_.data(), 0, size_ + 1); }
  void step() { std::memcpy(now_.data(), next_.data(), size_ + 1); }

  size_t size_;
  Scratch<char> now_, next_;
  Matches matches_;
};

bool match_in_order(Value list, Scratch<Item>& items, size_t count) {
  if (list->parts.size != count) return false;
  for (size_t i = 0; i < count; ++i) {
    Value element = list->parts.data[i];
    if (!element) fault("an element of a list is not initialized");
    if (!match_value(items[i].pattern, element)) return false;
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
  Prefixes prefixes(v, pattern.count);
  for (size_t i = 0; i < pattern.count;) {
    if (!items[i].in_group) {
      if (items[i].star) {
        prefixes.star(items[i]);
      } else {
        prefixes.single(items[i], i);
      }
      ++i;
      continue;
    }
    Group group(pattern.count);
    do {
      group.add(items[i], i);
      ++i;
    } while (i < pattern.count && items[i].in_permutation);
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
      return trace_element(i, "value mismatch", element, items[i].pattern);
  }
  if (v->parts.size > pattern.count)
    trace_element(pattern.count, "element unexpected", force_part(v, pattern.count), nullptr);
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
    if (!fits) return trace_element(k, "element unexpected", element, nullptr);
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
  for (size_t i = 0; i < pattern.count; ++i) group.add(items[i], i);
  if (!group.takes(v->parts.size)) return false;
  Matches matches(v, pattern.count);
  return Assignment(matches, group.items.data(), group.rows.data(), group.count, 0, v->parts.size).complete();
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
  Scratch<size_t> rows(count + 1);
  for (size_t i = 0; i < count; ++i) rows[i] = i;
  Matches matches(v, count);
  return Assignment(matches, items, rows.data(), count, 0, v->parts.size).complete();
}

namespace {

// Finds an item of its own for each element: the other way round than Assignment.
class Cover {
 public:
  Cover(Value list, Value* items, size_t count)
      : matches_(list, count), items_(items), count_(count), taken_by_(count + 1), seen_(count + 1) {}

  bool place(size_t element) {
    check_stack();
    for (size_t n = 0; n < count_; ++n) {
      size_t i = (element + n) % count_;
      if (seen_[i] || !matches_(i, items_[i], element)) continue;
      seen_[i] = 1;
      if (taken_by_[i] && !place(taken_by_[i] - 1)) continue;
      taken_by_[i] = element + 1;
      return true;
    }
    return false;
  }

  void forget_seen() { std::memset(seen_.data(), 0, count_); }

 private:
  Matches matches_;
  Value* items_;
  size_t count_;
  Scratch<size_t> taken_by_;
  Scratch<char> seen_;
};

}  // namespace

bool match_subset(Value list, Value* items, size_t count) {
  Value v = list_of(list);
  if (!v || v->parts.size > count) return false;
  Quiet quiet;
  TempScope scope;
  Cover cover(v, items, count);
  for (size_t e = 0; e < v->parts.size; ++e) {
    cover.forget_seen();
    if (!cover.place(e)) return false;
  }
  return true;
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
