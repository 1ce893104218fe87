// The events of test cases on their way from the process that runs them to the one that reports. What is not
// yet written lies in memory that both processes have, so that nothing is lost where the one that runs ends
// at once.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "report/events.h"
#include "value/kept_file.h"
#include "value/shared.h"

namespace lumos {

// What a writer has not given to its descriptor yet: the octets of the stream from `begin` on. To be made
// before the processes part.
class WireBox {
 public:
  WireBox();
  ~WireBox();
  WireBox(const WireBox&) = delete;
  bool is_made() const { return static_cast<bool>(shared_); }
  // Why a writer to a file has lost some of it, an error number; 0 for nothing.
  int loss() const;
  // The stream's octets behind the first `received`; none where some before them are lost.
  std::string rest(uint64_t received) const;
  // Whether a writer to a socket has lost it, perhaps to code of the user, and waits at each full box until
  // the reader, who has received all that went through the socket, says how far it has read the rest.
  bool is_way() const;
  void note_read(uint64_t received) const;

 private:
  friend class WireStream;
  struct Contents;
  Shared<Contents> shared_;
};

// What those want to know who hear of it: what reporters of this process want, before they are dropped.
struct WireNeeds {
  bool events = events_wanted, log = log_wanted();
};

// Writes all that it is told to a file or a socket, which it does not close. Destroyed before
// the run has ended it tells that this is refused.
std::unique_ptr<Reporter> make_wire(const KeptFile& file, WireBox& box, WireNeeds needs);

// Hears what comes from such a stream, in its order.
struct WireListener {
  std::function<void()> run_begins = [] {};
  std::function<void(const Execution&)> test_case_begins = tell_begin;
  std::function<void(const Event&)> event = [](const Event& e) { tell(e); };
  std::function<void(const Result&)> test_case_ends = [](const Result&) {};
  std::function<void()> run_is_refused = [] {};
  std::function<void(const Results&)> run_ends = [](const Results&) {};
};
class WireReader {
 public:
  WireListener listener;
  // Tells what the text holds, which goes on where the last one was used to; the number of its octets that
  // were used: what is behind them is a part of something.
  size_t tell(std::string_view text);

 private:
  Spots spots_;
};

}  // namespace lumos
