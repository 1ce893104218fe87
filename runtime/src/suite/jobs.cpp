#include "suite/jobs.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "report/coverage.h"
#include "report/wire.h"
#include "run/component.h"
#include "run/ending.h"
#include "suite/results.h"
#include "suite/suite.h"
#include "text/log.h"
#include "text/log_file.h"

namespace lumos {

namespace {

constexpr useconds_t pause_between_looks = 1000;
// For processes that were asked to end.
constexpr Time time_to_end = 7000000000;

// A file without a name.
class Spool {
 public:
  explicit Spool(const char* name) : descriptor_(memfd_create(name, MFD_CLOEXEC)) {}
  ~Spool() {
    if (descriptor_ >= 0) close(descriptor_);
  }
  Spool(const Spool&) = delete;
  int descriptor() const { return descriptor_; }
  std::string text() const {
    std::string text;
    char block[1 << 12];
    lseek(descriptor_, 0, SEEK_SET);
    for (ssize_t n; (n = read(descriptor_, block, sizeof block)) > 0;)
      text.append(block, static_cast<size_t>(n));
    return text;
  }

 private:
  int descriptor_;
};

struct Job {
  const Selected* selected;
  pid_t process = -1;
  bool is_over = false;
  int status = 0, failure = 0;  // to start, an error number
  Time begin = 0, duration = 0, real_begin = 0;
  Spool output{"output"}, errors{"errors"}, log{"log"}, wire{"wire"};
  WireBox box;
  LogBox log_box;
  std::unique_ptr<CountBox> counts{counts_lines() ? new CountBox : nullptr};

  Execution execution() const { return {selected->module, selected->name, begin, selected->seed}; }
  // Code of the user that lets nothing else happen is not waited for without end.
  bool is_late() const {
    return selected->timeout >= 0 && real_time() - real_begin > duration_of(selected->timeout) + time_to_end;
  }
};

// The time that all have together ends at a moment of the real clock.
[[noreturn]] void run_here(Job& job, pid_t owner, WireNeeds needs, Time end) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  go_on_here();
  share_deadline(nullptr);
  if (end != never) set_control_deadline(now() + std::max<Time>(end - real_time(), 0), "control part");
  dup2(job.output.descriptor(), STDOUT_FILENO);
  dup2(job.errors.descriptor(), STDERR_FILENO);
  spool_log({job.log.descriptor(), owner});
  let_log_wait(&job.log_box);
  drop_reporters();
  tell_results(false);
  add_reporter(make_wire({job.wire.descriptor(), owner}, job.box, needs));
  if (job.counts) count_into(*job.counts);
  results().clear();
  execute(*job.selected);
  end_watch();
  flush_log();
  tell_run_ends(results());
  std::fflush(nullptr);
  _exit(0);
}

bool start(Job& job, Time end) {
  if (!job.box.is_made() || (job.counts && !job.counts->is_made())) return false;
  set_log_footer("");  // the process would draw it again
  std::fflush(nullptr);
  job.begin = now();
  job.real_begin = real_time();
  const WireNeeds needs;
  const pid_t owner = getpid();
  job.process = fork();
  if (job.process == 0) run_here(job, owner, needs, end);
  return job.process > 0;
}

bool tell_events(const Job& job, Result& result) {
  bool has_begun = false, has_result = false;
  WireReader reader;
  reader.listener.test_case_begins = [&](const Execution& execution) {
    has_begun = true;
    tell_begin(execution);
  };
  const Spot* last = nullptr;
  reader.listener.event = [&](const Event& event) {
    last = event.spot;
    tell(event);
  };
  reader.listener.test_case_ends = [&](const Result& r) {
    result = r;
    has_result = true;
  };
  const std::string written = job.wire.text();
  reader.tell(written + job.box.rest(written.size()));
  if (!has_result && last) result.place = {last->file, last->line};
  if (!has_begun) tell_begin(job.execution());
  return has_result;
}

std::string reason_without_result(const Job& job) {
  const std::string process = "the process of the test case ";
  if (job.process < 0) return process + "could not be started: " + std::strerror(job.failure);
  if (const int loss = job.box.loss()) return process + "could not tell what it did: " + std::strerror(loss);
  return process + "ended with " + end_of_process(job.status);
}

// Puts everything of the job where it would be without a process of its own.
void collect(const Job& job) {
  set_log_footer("");
  const std::string output = job.output.text(), errors = job.errors.text();
  std::fwrite(output.data(), 1, output.size(), stdout);
  std::fwrite(errors.data(), 1, errors.size(), stderr);
  append_spooled_log(job.log.text());
  append_spooled_log(job.log_box.text());
  if (job.counts) add_counts(*job.counts);
  Result result;
  if (!tell_events(job, result)) {
    const std::string reason = reason_without_result(job);
    result = {job.execution(), lumo_verdict_error_c, reason, result.place, job.duration};
    if (ending_reason()) result.reason = ending_reason();
    log_line(lumo_log_msg_error_c, result.reason);
    log_result(result);
  }
  results().push_back(result);
  if (result_listener) result_listener(results().back());
  tell_end(results().back());
}

class Jobs {
 public:
  Jobs(const std::vector<Selected>& list, size_t at_once, bool until_fail, Time end)
      : at_once_(at_once), until_fail_(until_fail), end_(end) {
    for (const Selected& s : list) waiting_.push_back(&s);
  }
  bool run() {
    while (has_next() || !jobs_.empty()) {
      while (has_next() && running() < at_once_) start_next();
      if (is_changed_) tell_running(names_of_running());
      is_changed_ = false;
      look();
      if (is_ending()) stop_all();
    }
    const bool is_late = !is_ending() && next_ < waiting_.size();
    if (is_late) log_line(lumo_log_msg_error_c, "the time given to the control part is over");
    return !is_ending() && !is_late;
  }

 private:
  bool is_ending() const { return ending_reason() || failed_; }
  bool has_next() const { return !is_ending() && next_ < waiting_.size() && real_time() < end_; }
  size_t running() const {
    size_t n = 0;
    for (auto& job : jobs_) n += !job->is_over;
    return n;
  }
  std::string names_of_running() const {
    std::string names;
    for (auto& job : jobs_)
      if (!job->is_over) names += (names.empty() ? "" : ", ") + job->selected->full_name();
    return names;
  }
  void start_next() {
    is_changed_ = true;
    errno = 0;
    auto job = std::make_unique<Job>();
    job->selected = waiting_[next_++];
    if (!start(*job, end_)) job->failure = errno;
    job->is_over = job->process < 0;
    jobs_.push_back(std::move(job));
  }
  void look() {
    bool is_new = false;
    for (auto& job : jobs_) {
      if (job->is_over) continue;
      if (job->is_late() || (end_ != never && real_time() - time_to_end > end_)) kill(job->process, SIGKILL);
      if (!has_ended(job->process, job->status)) continue;
      job->is_over = is_new = true;
      job->duration = now() - job->begin;
    }
    is_changed_ = is_changed_ || is_new;
    if (!is_new && running()) usleep(pause_between_looks);
    while (!jobs_.empty() && jobs_.front()->is_over) {
      // What was begun behind the one that failed would not have run in one process.
      if (!failed_) collect(*jobs_.front());
      jobs_.erase(jobs_.begin());
      failed_ = failed_ || (until_fail_ && !is_good(results().back().verdict));
    }
  }
  void stop_all() {
    if (stopped_ == never) stopped_ = real_time();
    const int signal = real_time() - stopped_ > time_to_end ? SIGKILL : ending_signal();
    for (auto& job : jobs_)
      if (!job->is_over && (signal == SIGKILL || !told_)) kill(job->process, signal);
    told_ = true;
  }

  std::vector<const Selected*> waiting_;
  size_t next_ = 0, at_once_;
  bool until_fail_, failed_ = false, told_ = false, is_changed_ = true;
  Time stopped_ = never, end_;
  std::vector<std::unique_ptr<Job>> jobs_;
};

}  // namespace

bool run_in_processes(const std::vector<Selected>& list, long at_once, bool until_fail, double timeout) {
  const Time end = timeout < 0 ? never : real_time() + duration_of(timeout);
  return Jobs(list, static_cast<size_t>(at_once), until_fail, end).run();
}

}  // namespace lumos
