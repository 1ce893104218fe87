// Why a value does not match: told to the log as matching goes on, or noted as one path into the value.
#pragma once

#include <string>
#include <vector>

#include "value/task.h"

namespace lumos {

// While it stands, the first mismatch of the task is noted and nothing is logged. Matching tells mismatches
// from the inside to the outside, so each one around what is known already completes the path to it.
class MismatchTrace {
 public:
  MismatchTrace();
  ~MismatchTrace();
  MismatchTrace(const MismatchTrace&) = delete;
  // `expected_text` where no value tells what was expected.
  void add(const std::string& where, const char* reason, Value actual, Value expected,
           const char* expected_text = nullptr);
  // The whole is a part of something.
  void put_before(const std::string& path);
  bool is_found() const { return is_found_; }
  // How deep the mismatch lies: the more fits, the deeper it tends to be.
  size_t depth() const;
  // Where it lies in the value: the numbers of the fields and elements that lead to it.
  std::vector<size_t> place_in(Value whole) const;
  // `answers[0].rdata.a: expected "192.0.2.11", actual "192.0.2.10"`.
  std::string text() const;

 private:
  void note(const std::string& path, const char* reason, Value actual, Value expected,
            const char* expected_text);
  MismatchTrace* outer_;
  bool is_found_ = false;
  std::string path_, reason_, actual_, expected_;
  Value innermost_ = nullptr;
};

// Whether somebody notes mismatches, and what matches now is no alternative among several.
bool traces_mismatches();
// A mismatch of an element of a list, behind those within the element.
void trace_element(Value list, size_t index, const char* reason, Value actual, Value expected);
// A mismatch of the list as a whole.
void trace_list(const char* reason, Value list, Value expected);

}  // namespace lumos
