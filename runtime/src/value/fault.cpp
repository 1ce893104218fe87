// Faults, as far as values know of them: a text, and nothing behind it.
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <optional>

#include <signal.h>

#include "text/log.h"
#include "value/error.h"
#include "value/hooks.h"

namespace lumos {

namespace {
Task process_task;
}  // namespace

Task* current_task = &process_task;
constinit Hooks hooks;

void fault(const char* format, ...) {
  static char text[2048];
  static bool reporting = false;
  if (!reporting) {
    reporting = true;
    va_list list;
    va_start(list, format);
    std::vsnprintf(text, sizeof text, format, list);
    va_end(list);
    log_line(lumo_log_msg_error_c, text);
  }
  reporting = false;
  if (hooks.end_faulty) hooks.end_faulty(text);
  std::fprintf(stderr, "%s\n", text);
  std::exit(2);
}

void refuse(const char* format, ...) {
  static char text[1024];
  va_list list;
  va_start(list, format);
  std::vsnprintf(text, sizeof text, format, list);
  va_end(list);
  if (current_task->decoding == 0) fault("%s", text);
  current_task->refused = true;
  log_line(lumo_log_msg_error_c, text);
}

void refuse_effect(const char* operation) {
  fault("'%s' is not allowed in the local definitions of an altstep", operation);
}

void refuse_choice(const char* operation) {
  fault("'%s' is not allowed while alternatives are looked at", operation);
}

const char* stack_limit = nullptr;

void stack_fault() {
  fault("the calls or the value are nested too deeply");
}

namespace {

// Given back when memory ends, so that this can be told.
void* memory_reserve = nullptr;

// Where an integer was divided by -1 at last.
std::optional<Frame> division;

bool is_at_division() {
  if (!division || current_task->frames.empty()) return division && !division->file;
  const Frame& here = current_task->frames.back();
  return here.file == division->file && here.line == division->line;
}

// A quotient of integers that no integer is: C leaves it to the machine. Code of the user may divide too.
void arithmetic_fault(int signal) {
  if (!is_at_division() && hooks.crash) return hooks.crash(signal);
  fault("the quotient of two integers is beyond 64 bits");
}

void memory_fault() {
  static bool is_first = true;
  if (is_first) {
    is_first = false;
    std::free(memory_reserve);
  }
  fault("the memory is used up");
}

}  // namespace

void note_division_by_minus_one() {
  division = current_task->frames.empty() ? Frame() : current_task->frames.back();
}

void catch_faults() {
  static bool is_done = false;
  if (is_done) return;
  is_done = true;
  memory_reserve = std::malloc(256 * 1024);
  std::set_new_handler(memory_fault);
  struct sigaction action = {};
  action.sa_handler = arithmetic_fault;
  action.sa_flags = SA_NODEFER;
  sigaction(SIGFPE, &action, nullptr);
}

void* allocate(void* memory, size_t size) {
  void* data = std::realloc(memory, size);
  if (!data) memory_fault();
  return data;
}

}  // namespace lumos
