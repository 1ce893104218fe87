#include "suite/suite_options.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <filesystem>
#include <map>

#include "report/report_file.h"
#include "report/reports.h"
#include "value/clock.h"
#include "run/fiber.h"
#include "text/log.h"
#include "text/log_file.h"
#include "template/match.h"
#include "ports/outside.h"
#include "suite/nearest.h"
#include "suite/option_place.h"
#include "suite/params.h"
#include "transport/link_spec.h"

namespace lumos {

namespace {

struct Option {
  char letter;  // 0 for none
  const char* word;
  const char* argument;  // null for none; in brackets where it may be missing
  const char* help;
  bool (*set)(SuiteOptions&, const std::string&);

  bool is_optional() const { return argument && argument[0] == '['; }
};

std::map<std::string, const Option*>& places_of_output() {
  static auto& all = *new std::map<std::string, const Option*>;
  return all;
}

const Option* current_option = nullptr;  // whose value is set
std::string own_message;  // of what could not be set; where it is empty the table tells what is wrong

// By the places that something is written to, who does it. False with a message where another one does.
bool claim_place(const std::string& path) {
  const bool is_output = is_standard_output(path);
  if (!is_output && is_special_place(path)) return true;
  const std::string place = is_output ? "-" : place_behind_links(path);
  const auto [known, is_new] = places_of_output().try_emplace(place, current_option);
  if (known->second == current_option) return true;
  own_message = std::string("option '") + current_option->word + "' and option '" + known->second->word +
                "' cannot both write to " + (is_output ? "standard output" : in_quotes(path));
  return false;
}

// What the command line chooses holds in place of what a file does.
bool set_testcases(SuiteOptions& options, const std::string& list) {
  const bool is_in_file = !option_place().empty();
  if (!is_in_file && options.testcases_of_file) options.testcases.clear();
  options.testcases_of_file = is_in_file;
  const size_t before = options.testcases.size();
  for (size_t start = 0; start <= list.size();) {
    const size_t comma = std::min(list.find(',', start), list.size());
    const std::string name = trimmed(list.substr(start, comma - start));
    if (!name.empty()) options.testcases.push_back(name);
    if (!name.empty()) note_option_place(name.substr(name[0] == '!'));
    start = comma + 1;
  }
  return options.testcases.size() > before;
}

bool set_link(SuiteOptions&, const std::string& text) {
  note_option_place(text.substr(0, text.find('=')));
  return add_link(text);
}

bool set_timeout(SuiteOptions& options, const std::string& text) {
  char* end;
  options.timeout = std::strtod(text.c_str(), &end);
  return !text.empty() && !*end && options.timeout >= 0;
}

bool set_count(long& count, const std::string& text, long most = 1000000) {
  char* end;
  count = std::strtol(text.c_str(), &end, 10);
  return !text.empty() && !*end && count >= 1 && count <= most;
}

bool set_log_limit(const std::string& text) {
  long kilobytes;
  const bool is_good = set_count(kilobytes, text);
  if (is_good) set_log_size(static_cast<size_t>(kilobytes) * 1024);
  return is_good;
}

bool set_seed(SuiteOptions& options, const std::string& text) {
  char* end;
  errno = 0;
  options.seed = std::strtoull(text.c_str(), &end, 10);
  return options.has_seed = !text.empty() && text[0] != '-' && !*end && errno == 0;
}

bool set_shard(SuiteOptions& options, const std::string& text) {
  const size_t slash = text.find('/');
  return slash != std::string::npos && set_count(options.shards, text.substr(slash + 1)) &&
         set_count(options.shard, text.substr(0, slash), options.shards);
}

bool set_explore(SuiteOptions& options, const std::string& text) {
  set_simulated(true);
  return set_count(options.explore, text);
}

template <std::unique_ptr<Reporter> (*Make)(const std::string&)>
bool set_report(SuiteOptions& options, const std::string& path) {
  for (const SuiteOptions::Report& known : options.reports)
    if (known.make == Make && known.path == path) return true;
  if (!claim_place(path)) return false;
  options.reports.push_back({Make, path, option_place()});
  return true;
}

bool read_configuration(SuiteOptions& options, const std::string& path);

bool set_stack(SuiteOptions&, const std::string& text) {
  char* end;
  long kilobytes = std::strtol(text.c_str(), &end, 10);
  if (text.empty() || *end || kilobytes < 128 || kilobytes > 1024 * 1024) return false;
  set_fiber_stack_size(static_cast<size_t>(kilobytes) * 1024);
  return true;
}

bool set_parameter_file(SuiteOptions&, const std::string& path) {
  return read_parameter_file(path, own_message);
}

#define SET(...)                                                       \
  [](SuiteOptions& o, const std::string& text) -> bool {               \
    return static_cast<void>(o), static_cast<void>(text), __VA_ARGS__; \
  }
const Option table[] = {
    {'h', "help", nullptr, "print this and end", SET(o.help = true)},
    {0, "version", nullptr, "print the versions of suite and library and end", SET(o.version = true)},
    {'l', "list", nullptr, "print modules and test cases, or those that -t chooses, and end",
     SET(o.list = true)},
    {'t', "testcase", "NAME,...",
     "run these test cases instead of the control part: names, patterns with * and ?, !pattern to leave out",
     set_testcases},
    {'T', "timeout", "SECONDS", "time for each of them, or for the whole control part", set_timeout},
    {0, "repeat", "N", "run all N times", SET(set_count(o.repeat, text))},
    {0, "until-fail", nullptr, "repeat, and end at the first verdict that is not pass or none",
     SET(o.until_fail = true)},
    {0, "shuffle", nullptr, "run the test cases in an order that the seed gives", SET(o.shuffle = true)},
    {0, "seed", "N", "what rnd, --shuffle and --explore begin with", set_seed},
    {0, "explore", "N", "run each test case with N schedules of its components, on a simulated clock",
     set_explore},
    {'j', "jobs", "N", "run test cases in N processes", SET(set_count(o.jobs, text, 4096))},
    {0, "shard", "K/N", "run the K-th of N parts of the test cases", set_shard},
    {'p', "param", "NAME=VALUE", "set a module parameter: [module.]name, value in TTCN-3",
     SET(add_parameter(text))},
    {'P', "params", "FILE", "set module parameters from the lines of a file", set_parameter_file},
    {'c', "config", "[FILE]",
     "take options from the lines of a file; without FILE from <suite>.cfg beside the suite",
     read_configuration},
    {0, "junit", "FILE", "results as JUnit XML", set_report<make_junit>},
    {0, "tap", "[FILE]", "results in the Test Anything Protocol; without FILE to standard output",
     set_report<make_tap>},
    {0, "json", "FILE", "all events, a line of JSON each", set_report<make_json>},
    {0, "html", "FILE", "a page with logs and message sequence charts", set_report<make_html>},
    {0, "pcap", "FILE", "messages at system ports as a capture", set_report<make_pcap>},
    {0, "coverage", "FILE", "reached lines and branches for lcov and genhtml", set_report<make_coverage>},
    {'L', "log", "FILE", "log to a file instead of standard error",
     SET(claim_place(text) && open_log_file(text))},
    {0, "log-dir", "FOLDER", "log to a file for each component in the folder", SET(open_log_folder(text))},
    {0, "log-size", "KILOBYTES", "begin a log file anew at this size; the old ones get numbers",
     SET(set_log_limit(text))},
    {0, "log-format", "FORMAT",
     "text; columns: with dates, and always the same columns; json: a line of JSON each",
     SET(set_log_form(text))},
    {'v', "verbose", "KINDS", "log these: info, ttcn3, warning, error, debug, event; all; none",
     SET(set_log_kinds(text))},
    {'n', "no-times", nullptr, "log without time stamps", SET(set_log_times(false), true)},
    {'s', "simulated-time", nullptr, "timers run on a clock that jumps to the next event",
     SET(set_simulated(true), true)},
    {'b', "loopback", nullptr, "what is sent to the system comes back to the sender",
     SET(set_loopback(true), true)},
    {'o', "port", "NAME=ADDRESS", "link a port of the system: udp:HOST:PORT, tcp:HOST:PORT and others",
     set_link},
    {'m', "all-mismatches", nullptr, "matching goes on behind the first mismatch, to log all",
     SET(match_continues_on_fail = true)},
    {'S', "stack", "KILOBYTES", "stack of each component, 128 to 1048576 (default 1024)", set_stack},
};
#undef SET

const Option* option_of_word(const std::string& word) {
  for (const Option& o : table)
    if (word == o.word) return &o;
  return nullptr;
}

std::string nearest_option(const std::string& word, const char* before) {
  std::vector<std::string> known;
  for (const Option& o : table) known.push_back(before + std::string(o.word));
  return did_you_mean(before + word, known);
}

const Option* find(const std::string& argument, std::string& value, bool& has_value) {
  has_value = false;
  if (argument.size() > 2 && argument.compare(0, 2, "--") == 0) {
    size_t equals = argument.find('=');
    has_value = equals != std::string::npos;
    if (has_value) value = argument.substr(equals + 1);
    return option_of_word(argument.substr(2, has_value ? equals - 2 : equals));
  }
  if (argument.size() < 2 || argument[0] != '-') return nullptr;
  has_value = argument.size() > 2;
  value = argument.substr(2);
  for (const Option& o : table)
    if (argument[1] == o.letter) return &o;
  return nullptr;
}

bool usage_fault(const std::string& message) {
  std::fprintf(stderr, "%s (--help tells the options)\n", message.c_str());
  return false;
}

bool set_value(const Option& option, SuiteOptions& options, const std::string& value) {
  current_option = &option;
  own_message.clear();
  errno = 0;
  return option.set(options, value);
}

// What was wrong with the value.
std::string refusal(const Option& option, const std::string& name, const std::string& value) {
  if (!own_message.empty()) return own_message;
  const std::string text = in_quotes(value) + " is no value for option " + in_quotes(name);
  if (errno) return text + ": " + std::strerror(errno);
  return option.help ? text + ", which takes " + option.argument + ": " + option.help : text;
}

// "word", "word = value" or "word value".
bool read_configuration_line(SuiteOptions& options, const std::string& line, std::string& error) {
  const size_t end = line.find_first_of(" \t=");
  const std::string word = line.substr(0, end);
  std::string value = end == std::string::npos ? "" : trimmed(line.substr(end));
  if (!value.empty() && value[0] == '=') value = trimmed(value.substr(1));
  const Option* option = option_of_word(word);
  if (option && option->set == read_configuration) {
    error = "option " + in_quotes(word) + " stands on the command line only";
  } else if (!option || !option->help) {
    error = "unknown option " + in_quotes(word) + nearest_option(word, "");
  } else if (!option->argument && !value.empty()) {
    error = "option " + in_quotes(word) + " takes no value";
  } else if (option->argument && !option->is_optional() && value.empty()) {
    error = "option " + in_quotes(word) + " needs a value";
  } else if (!set_value(*option, options, value)) {
    error = refusal(*option, word, value);
  }
  return error.empty();
}

// What was found on the search path has no folder in its name.
std::string path_of_program(const SuiteOptions& options) {
  std::error_code error;
  const auto found = std::filesystem::read_symlink("/proc/self/exe", error);
  const bool has_folder = options.program.find('/') != std::string::npos;
  return has_folder || error ? options.program : (found.parent_path() / options.program).string();
}

bool read_configuration(SuiteOptions& options, const std::string& given) {
  std::string error;
  const bool is_good = read_option_lines(
      given.empty() ? path_of_program(options) + ".cfg" : given,
      [&](const std::string& line, std::string& fault) {
        return read_configuration_line(options, line, fault);
      },
      error);
  own_message = error;
  return is_good;
}

// Whether the next argument is the value of an option: of one that may have none not if it looks like another
// option, else if it is none.
bool is_value(const Option& option, const char* next) {
  if (!next) return false;
  if (option.is_optional()) return next[0] != '-' || !next[1];
  const std::string argument = next, word = argument.substr(std::min<size_t>(2, argument.size()));
  return argument.compare(0, 2, "--") != 0 || !option_of_word(word.substr(0, word.find('=')));
}

}  // namespace

namespace {

struct GivenOption {
  const Option* option;
  std::string argument, value;
};

bool set_given(const GivenOption& given, SuiteOptions& options) {
  if (set_value(*given.option, options, given.value)) return true;
  const std::string message = refusal(*given.option, given.argument, given.value);
  if (own_message.empty()) return usage_fault(message);
  std::fprintf(stderr, "%s\n", message.c_str());
  return false;
}

}  // namespace

bool read_suite_options(int argc, char* argv[], SuiteOptions& options) {
  options.program = argc > 0 ? argv[0] : "suite";
  places_of_output().clear();
  std::vector<GivenOption> all;
  for (int i = 1; i < argc; ++i) {
    std::string argument = argv[i], value;
    bool has_value;
    const Option* option = find(argument, value, has_value);
    if (!option)
      return usage_fault(
          "unknown option " + in_quotes(argument) +
          (argument.size() > 2 ? nearest_option(argument.substr(2, argument.find('=') - 2), "--") : ""));
    if (!option->argument && has_value)
      return usage_fault("option " + in_quotes(argument) + " takes no value");
    if (option->argument && !has_value && is_value(*option, i + 1 < argc ? argv[i + 1] : nullptr))
      value = argv[++i];
    if (option->argument && !option->is_optional() && value.empty())
      return usage_fault("option " + in_quotes(argument) + " needs a value");
    all.push_back({option, argument, value});
  }
  // The command line has the last word, wherever the files stand in it.
  for (const bool is_file : {true, false})
    for (const GivenOption& given : all)
      if ((given.option->set == read_configuration) == is_file && !set_given(given, options)) return false;
  return true;
}

void print_suite_help(const char* program) {
  std::printf(
      "Usage: %s [options]\n\nRuns the control part of the root module, or where it has none all its test "
      "cases without "
      "parameters,\nor the test cases named.\n\n",
      program);
  for (const Option& o : table) {
    if (!o.help) continue;
    std::string names =
        o.letter ? std::string("-") + o.letter + ", --" + o.word : std::string("    --") + o.word;
    if (o.argument) names += std::string(" ") + o.argument;
    std::printf("  %-26s %s\n", names.c_str(), o.help);
  }
  std::printf(
      "\nA line \"<module>.<test case>: <verdict> <seconds> s <place> <reason>\" for each test case, and a "
      "summary, go to "
      "standard output.\n"
      "Exit status: 0 when all verdicts are pass or none, 1 otherwise and for a run that was cut short or "
      "whose output\n"
      "was lost, 2 for a usage or start fault.\n");
}

void describe_suite_options() {
  for (const Option& o : table)
    if (o.help)
      std::printf("%s\t%s\t%s\t%s\n", o.letter ? std::string(1, o.letter).c_str() : "", o.word,
                  o.argument ? o.argument : "", o.help);
}

}  // namespace lumos
