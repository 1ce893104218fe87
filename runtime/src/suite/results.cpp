#include "suite/results.h"

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "report/report_file.h"
#include "run/component.h"
#include "run/ending.h"
#include "text/log.h"
#include "text/text_forms.h"
#include "value/kept_file.h"

namespace lumos {

namespace {

bool prints = true, shows_progress = false;
size_t planned_cases = 0;
int output_error = 0;
std::atomic<bool>* shared_loss = nullptr;

bool is_set(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value;
}

bool is_on(const char* variable) {
  return is_set(variable) && std::strcmp(std::getenv(variable), "0") != 0;
}

bool with_colors() {
  static const bool chosen = [] {
    if (is_set("NO_COLOR")) return false;
    if (is_on("CLICOLOR_FORCE") || is_on("FORCE_COLOR")) return true;
    if (is_set("CLICOLOR") && !is_on("CLICOLOR")) return false;
    const char* terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) && terminal && std::strcmp(terminal, "dumb") != 0;
  }();
  return chosen;
}

bool with_progress() {
  static const bool chosen = [] {
    const char* terminal = std::getenv("TERM");
    return isatty(STDOUT_FILENO) && isatty(STDERR_FILENO) && terminal && std::strcmp(terminal, "dumb") != 0;
  }();
  return chosen;
}

constexpr size_t most_shown = 8000;  // of a reason; reports have all of it

std::string colored_verdict(lumo_verdict_t verdict, bool colored) {
  static const char* const colors[] = {"36", "32", "33", "31", "1;31"};
  if (!colored) return verdict_name(verdict);
  return std::string("\033[") + colors[verdict] + "m" + verdict_name(verdict) + "\033[0m";
}

KeptFile output;

void print(const std::string& text) {
  const bool is_written =
      !output_error && output.is_there() && (errno = 0, std::fwrite(text.data(), 1, text.size(), stdout) == text.size());
  if (is_written && std::fflush(stdout) == 0) return;
  if (!output_error) output_error = errno ? errno : EIO;
  if (shared_loss) *shared_loss = true;
}

class Progress : public Reporter {
 public:
  void test_case_begins(const Execution& execution) override {
    tell_running(execution.full_own_name());
  }
  void run_ends(const Results&) override { set_log_footer(""); }
};

}  // namespace

std::string result_line(const Result& r, bool colored) {
  char duration[40];
  std::snprintf(duration, sizeof duration, " %.3f s", seconds_of(r.duration));
  std::string line = r.full_own_name() + ": " + colored_verdict(r.verdict, colored) + duration;
  if (is_good(r.verdict)) return line;
  const std::string place = short_text(r.place);
  if (!place.empty()) line += " " + place;
  if (!r.reason.empty()) line += " " + line_text(shortened(r.reason, most_shown));
  return line;
}

static const std::string lost_output = "standard output cannot be written: ";

bool has_lost_output(const Result& result) {
  return result.reason.starts_with(lost_output);
}

void share_lost_output(std::atomic<bool>* place) {
  shared_loss = place;
}

void print_result(Result& result) {
  set_log_footer("");
  if (!prints) return;
  print(result_line(result, with_colors()) + "\n");
  if (!output_error) return;
  result.verdict = lumo_verdict_error_c;
  result.reason = lost_output + std::strerror(output_error);
}

void print_remark(const std::string& text) {
  if (prints) return print(text);
  std::fputs(text.c_str(), stderr);
}

void tell_results(bool to_standard_output) {
  prints = to_standard_output;
  output = KeptFile(STDOUT_FILENO);
  result_listener = print_result;
}

void show_progress() {
  shows_progress = prints && with_progress();
  if (shows_progress) add_reporter(std::make_unique<Progress>());
}

void tell_running(const std::string& names) {
  if (!shows_progress) return;
  std::string line = "[" + std::to_string(results().size() + 1);
  if (planned_cases) line += "/" + std::to_string(planned_cases);
  set_log_footer(line + ", " + std::to_string(results().bad()) + " failed] " + names);
}

void erase_progress() {
  if (prints && with_progress()) erase_log_footer();
}

void set_planned(size_t count) {
  planned_cases = count;
}

void print_summary() {
  if (!prints) return;
  if (ending_reason()) print(std::string("the run ended early: ") + ending_reason() + "\n");
  const Results::Counts counts = results().counts();
  std::string text;
  if (results().size() > 1 && results().bad()) {
    text = "failed:\n";
    results().each_bad([&](const Result& r) { text += "  " + result_line(r, with_colors()) + "\n"; });
  }
  char line[200];
  std::snprintf(line, sizeof line, "%zu test case%s: %zu pass, %zu none, %zu inconc, %zu fail, %zu error\n",
                results().size(), results().size() == 1 ? "" : "s", counts[lumo_verdict_pass_c],
                counts[lumo_verdict_none_c], counts[lumo_verdict_inconc_c], counts[lumo_verdict_fail_c],
                counts[lumo_verdict_error_c]);
  print(text + line);
}

int status_of_results() {
  if (output_error) std::fprintf(stderr, "%s%s\n", lost_output.c_str(), std::strerror(output_error));
  if (log_failure()) std::fprintf(stderr, "the log cannot be written: %s\n", log_failure());
  const bool is_lost = output_error || log_failure() || reports_failed();
  return results().bad() || is_lost || ending_reason() ? 1 : 0;
}

}  // namespace lumos
