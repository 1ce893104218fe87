// Exceptions of the compiler's own faults and of the error limit.
#pragma once

#include <exception>
#include <string>

/// A fault of the compiler itself; ends the run with status -4. The text has the form
/// newline, source name, ":", line, " (", operation, ") - ", message.
class internal_exception : public std::exception {
 public:
  explicit internal_exception(std::string text) : text_(std::move(text)) {}
  internal_exception(const char* source, int line, const char* operation, const std::string& message)
      : text_("\n" + std::string(source) + ":" + std::to_string(line) + " (" + operation + ") - " + message) {
  }
  const char* what() const noexcept override { return text_.c_str(); }

 private:
  std::string text_;
};

/// The `-m` limit was reached; ends the run with status -12.
class MaximumErrorsExceeded {};
