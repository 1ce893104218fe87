// A text by a format of printf.
#pragma once

#include <string>

std::string FormatText(const char* format, ...) __attribute__((format(printf, 1, 2)));
