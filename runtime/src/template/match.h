// Matching of lists, shared by dynamic templates and the calls of generated match functions.
#pragma once

#include "value/value.h"

namespace lumos {

// Answer of lumo_match_continue_on_fail, an option of the run.
extern bool match_continues_on_fail;

// The item templates of a list; permutations and lengths may be null.
struct ListPattern {
  Value* items;
  size_t count;
  const lumo_permutation_kind_t* permutations;
  const lumo_length_constraint_t* lengths;
};

bool match_record_of(Value list, const ListPattern& pattern);
bool match_set_of(Value list, const ListPattern& pattern);
bool match_subset(Value list, Value* items, size_t count);
bool match_superset(Value list, Value* items, size_t count);

}  // namespace lumos
