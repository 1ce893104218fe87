// Wide strings of generated code. Temporary ones live in the memory scope of a task.
#pragma once

#include <string>

#include "lumos.h"

struct lumo_wide_string_struct {
  std::u32string text;
  bool temporary = false;
};
