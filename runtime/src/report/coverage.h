// How often the lines of the source were reached, and the blocks that begin there entered. Counted only on
// request, in memory that processes share, so that the counts outlive one that ends at once.
#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "value/shared.h"

namespace lumos {

struct LineCount {
  std::string_view file;
  bool is_code;         // generated from the source
  unsigned long first;  // the line of the first of them
  struct Count {
    uint64_t hits, blocks;
  };
  const Count* counts;
  size_t size;
};

// To be made before processes part that both look at it.
class CountBox {
 public:
  CountBox();
  ~CountBox();
  CountBox(const CountBox&) = delete;
  bool is_made() const { return static_cast<bool>(shared_); }
  // Of the lines that were counted, in no order; the same may come more than once, and belongs together then.
  void each(const std::function<void(const LineCount&)>& act) const;

 private:
  friend struct Counting;
  struct Contents;
  Shared<Contents> shared_;
};

// From now on all is counted, beginning with nothing; false if there is no memory for it.
bool count_lines();
bool counts_lines();
// The files stay known, so that a run without test cases reports them as not reached.
void clear_counts();
// From now on counts go there, and to nowhere else.
void count_into(CountBox& box);
// What was counted elsewhere.
void add_counts(const CountBox& box);

}  // namespace lumos
