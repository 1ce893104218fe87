#include "driver/diagnostics/T3Error.h"

#include <cstdio>
#include <cstdlib>
#include <map>
#include <span>

#include "driver/diagnostics/Errors.h"
#include "driver/diagnostics/T3ToldErrors.h"
#include "driver/options/T3CommandLine.h"
#include "support/ModuleCaches.h"

long gParseErrors = 0;

namespace {
constexpr size_t kLongestMessage = 2047;

// The strongest level that has been reported at a position.
auto& errorMap = *new std::map<tPosition, vexa_error_severity_t, lt_Position>;
const ModuleCache kCache{[] { errorMap.clear(); }, ModuleCache::Holds::ForRun};

// The row's text with its "%s" replaced in order.
std::string Fill(const _vexa_error_message_t& row, std::span<const T3ErrorArg> arguments) {
  if (static_cast<size_t>(row.expected_args) != arguments.size())
    throw internal_exception("T3Error", __LINE__, "vexa_filtered_error",
                             std::string("wrong number of arguments for \"") + row.text + "\"");
  std::string text;
  auto next = arguments.begin();
  for (const char* c = row.text; *c != '\0'; ++c) {
    if (c[0] == '%' && c[1] == 's' && next != arguments.end()) {
      text += (next++)->text();
      ++c;
    } else {
      text += *c;
    }
  }
  if (text.size() > kLongestMessage) text.resize(kLongestMessage);
  return text;
}

void Report(const _vexa_error_message_t& row, const tPosition& position,
            std::span<const T3ErrorArg> arguments) {
  vexa_error_through_filter(Fill(row, arguments), position, row.severity);
}

void PrintLine(const std::string& text) {
  const std::string line = text + '\n';
  std::fwrite(line.data(), 1, line.size(), stdout);
  std::fflush(stdout);
}
}  // namespace

void vexa_check_limit() {
  if (gErrors.ErrorCount() + gParseErrors >= gT3CommandLine.maximum_errors) throw MaximumErrorsExceeded();
}

void vexa_error(const std::string& text, const tPosition& position) {
  gErrors.Message(text, kError, position);
  vexa_check_limit();
}

bool vexa_error_is_told(const tPosition& position) {
  return errorMap.contains(position);
}

void vexa_error_through_filter(const std::string& text, const tPosition& position,
                               vexa_error_severity_t severity) {
  if (position == NoPosition) {
    vexa_error(text, position);
    return;
  }
  const auto [entry, is_new] = errorMap.try_emplace(position, severity);
  if (!is_new) {
    if (entry->second <= severity) return;
    entry->second = severity;
  }
  gErrors.Message(text, kError, position);
  vexa_check_limit();
}

void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position) {
  Report(row, position, {});
}

void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position, T3ErrorArg a) {
  const T3ErrorArg arguments[] = {a};
  Report(row, position, arguments);
}

void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position, T3ErrorArg a,
                         T3ErrorArg b) {
  const T3ErrorArg arguments[] = {a, b};
  Report(row, position, arguments);
}

void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position, T3ErrorArg a,
                         T3ErrorArg b, T3ErrorArg c) {
  const T3ErrorArg arguments[] = {a, b, c};
  Report(row, position, arguments);
}

void vexa_filtered_error(const _vexa_error_message_t& row, const tPosition& position, T3ErrorArg a,
                         T3ErrorArg b, T3ErrorArg c, T3ErrorArg d) {
  const T3ErrorArg arguments[] = {a, b, c, d};
  Report(row, position, arguments);
}

void vexa_warning(verbosity_level_t verbosity, const std::string& text, const tPosition& position) {
  if (verbosity >= verbosity_level_t::Warnings) gErrors.Message(text, kWarning, position);
}

void vexa_compiler_phases(verbosity_level_t verbosity, const std::string& text) {
  if (verbosity >= verbosity_level_t::Stages) PrintLine(text);
}

void vexa_progress(verbosity_level_t verbosity, const std::string& text) {
  if (verbosity >= verbosity_level_t::Progress) PrintLine(text);
}

void yyAbort(const char* routine) {
  std::string text = routine;
  if (text.find('.') == std::string::npos) text = "T3Control." + text;
  gErrors.ErrorMessageI(kCodeRoutineFailed, kFatal, NoPosition, kInfoText, text.c_str());
  std::exit(1);
}
