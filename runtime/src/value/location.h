// Where behaviours stand in the source, and which named values they see.
#pragma once

#include "value/task.h"

namespace lumos {

// A line of the source, and of the code that was made of it; no code where it is not known.
struct CountedPlace {
  const char* file;
  unsigned long line;
  const char* code;
  unsigned long code_line;
};
// Told where behaviours come along, and whether a block begins there. Null tells nobody.
extern void (*line_counter)(const CountedPlace& place, bool is_block);

// The value of that name that the current behaviour sees: its variables and parameters, the
// elements of its component, what its module knows. Null if there is none.
Value find_named_value(const char* name);

// While a template that was instantiated in an outer frame runs, names are looked up from
// that frame. frames below 0 changes nothing.
class VisibleFrames {
 public:
  explicit VisibleFrames(long frames) : saved_(current_task->visible_frames) {
    if (frames >= 0) current_task->visible_frames = static_cast<size_t>(frames);
  }
  ~VisibleFrames() { current_task->visible_frames = saved_; }

 private:
  size_t saved_;
};

}  // namespace lumos
