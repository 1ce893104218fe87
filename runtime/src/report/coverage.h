// How often the lines of the source were reached, and the blocks that begin there entered. Counted only on
// request.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace lumos {

struct LineCount {
  std::string file;
  unsigned long line;
  uint64_t hits, blocks;
};

// From now on all is counted, beginning with nothing.
void count_lines();
// The files stay known, so that a run without test cases reports them as not reached.
void clear_counts();
void add_count(const std::string& file, unsigned long line, uint64_t hits, uint64_t blocks);
// In the order of files and lines; line 0 of a file where nothing was reached.
void each_count(const std::function<void(const LineCount&)>& act);

}  // namespace lumos
