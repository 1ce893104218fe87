// What happens in a run, told to whoever makes a report of it. The run tells its test cases always, and what
// happens inside of them only while somebody wants to know: callers ask `events_wanted` first, so that a run
// without a report pays for one test of a variable.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "lumos.h"
#include "report/repeated.h"
#include "value/clock.h"

namespace lumos {

// A place in the source; no file where it is not known.
struct Place {
  std::string file;
  unsigned long line = 0;
};
// Where the current task stands, or another one.
Place current_place();
Place place_of(const lumo_context_struct& task);
// "Suite.ttcn:17", without the folders; empty for no place.
std::string short_text(std::string_view file, unsigned long line);
inline std::string short_text(const Place& place) {
  return short_text(place.file, place.line);
}

// One execution of a test case.
struct Execution {
  std::string module, name;
  Time begin = 0;
  std::optional<uint64_t> seed;  // of its schedule, where that is explored
  std::string full_name() const { return module + "." + name; }
  // Explored schedules are told apart: "Suite.TC_a (seed 7)", for the module and for its name alone.
  std::string own_name() const { return name + (seed ? " (seed " + std::to_string(*seed) + ")" : ""); }
  std::string full_own_name() const { return module + "." + own_name(); }
};
// What came out of it.
struct Result : Execution {
  lumo_verdict_t verdict = lumo_verdict_none_c;
  std::string reason;
  Place place;  // where the verdict was decided
  Time duration = 0;
};
const char* verdict_name(lumo_verdict_t verdict);
// The entry of the log that tells it.
void log_result(const Result& result);
inline bool is_good(lumo_verdict_t verdict) {
  return verdict == lumo_verdict_pass_c || verdict == lumo_verdict_none_c;
}
// What came out of all of a run. Of good test cases only their number is kept, so that a run may go on for
// ever.
class Results {
 public:
  using Counts = std::array<size_t, lumo_verdict_error_c + 1>;
  Results() = default;
  explicit Results(const Counts& counts) : settled_(counts) {}
  void push_back(Result result);
  // The last one; it may still be changed, and taken back, behind which there is none until the next.
  bool has_last() const { return last_.has_value(); }
  Result& back() { return *last_; }
  void pop_back() { last_.reset(); }
  void clear() { *this = Results(); }
  Counts counts() const;
  size_t size() const;
  size_t bad() const;
  void each_bad(const std::function<void(const Result&)>& act) const;

 private:
  Counts settled_ = {};  // without the last
  std::vector<Result> bad_;
  std::optional<Result> last_;
};
inline double seconds_of(Time time) {
  return static_cast<double>(time) / 1e9;
}

enum class EventKind : uint8_t {
  log,      // text: an entry of the log, name: its kind
  create,   // name: the component
  start,    // name: the component, text: its behaviour
  end,      // of the component that the event belongs to
  send,     // name: port, peer: who gets it ("component:port"), text: value, octets: what left the system
  arrive,   // name: port, peer: who sent it ("system:port"), octets; where these are not known, text: value
  receive,  // name: port, text: value
  lost,     // name: port, text: value
  timer_start,
  timer_stop,
  timeout,  // name: timer, text: duration
  verdict   // name: verdict, text: reason
};
const char* event_name(EventKind kind);

// What events say again and again; its texts are those of who tells it, and last as long as the call.
struct Saying {
  EventKind kind = EventKind::log;
  std::string_view component, file, name, peer;
  unsigned long line = 0;
};
// The same, kept. What is made of a spot is kept by its slot for as long as the serial is the same.
struct Spot {
  size_t slot = 0;
  uint64_t serial = 0;  // no other spot had it
  EventKind kind = EventKind::log;
  std::string component, file, name, peer;
  const char* file_address = nullptr;  // as it was told, mostly always the same
  unsigned long line = 0;
  bool says(const Saying& said) const;
  void take(const Saying& said);
};
using Spots = Repeated<Spot>;
size_t hash_of(const Saying& said);

struct Event {
  const Spot* spot = nullptr;
  Time time = 0;  // since the run began
  std::string_view text, octets;  // of the octets no data where they are not known
  mutable const struct JsonText* json = nullptr;  // of the text, once somebody has asked for it
};
// The text as a string of JSON, which lasts as long as the event is told: made once for all who ask, and for
// events behind each other that say the same.
struct JsonText {
  size_t slot = 0;
  uint64_t serial = 0;
  std::string text, json;
  bool says(std::string_view said) const { return said == text; }
  void take(std::string_view said);
};
const JsonText& json_of(const Event& event);

class Reporter {
 public:
  virtual ~Reporter() = default;
  virtual bool wants_events() const { return false; }
  // Of these only entries of the log.
  virtual bool wants_log() const { return wants_events(); }
  // Nothing keeps the run from running any more.
  virtual void run_begins() {}
  virtual void test_case_begins(const Execution&) {}
  virtual void event(const Event&) {}
  virtual void test_case_ends(const Result&) {}
  // Nothing happens for a while: what waits to be told elsewhere is.
  virtual void flush() {}
  // The last that a reporter is told; it completes its file.
  virtual void run_ends(const Results& results) = 0;
};

extern bool events_wanted;
bool log_wanted();
void add_reporter(std::unique_ptr<Reporter> reporter);
// Forgets all reporters without ending them, in a process that reports by another road.
void drop_reporters();
// Ends all reporters without a report.
void cancel_reporters();

void tell_run_begins();
void tell_begin(const Execution& execution);
// An event of the current task, here and now.
void tell(EventKind kind, std::string_view name, std::string_view peer = {}, std::string_view text = {},
          std::string_view octets = {});
// An event that was told elsewhere.
void tell(const Event& event);
void tell_end(const Result& result);
void flush_events();
// Ends the run for all reporters, once.
void tell_run_ends(const Results& results);

// Wall clock at the beginning of the run, in nanoseconds since 1970, and the run's own clock there; the seed,
// where there is one.
struct RunStart {
  int64_t wall = 0;
  Time clock = 0;
  std::optional<uint64_t> seed;
};
RunStart& run_start();

}  // namespace lumos
