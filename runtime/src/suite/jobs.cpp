#include "suite/jobs.h"

#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

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
    char block[1 << 16];
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
  int status = 0;
  Time begin = 0, duration = 0;
  Spool output{"output"}, errors{"errors"}, log{"log"}, wire{"wire"};
};

[[noreturn]] void run_here(const Job& job) {
  const bool with_events = events_wanted;
  dup2(job.output.descriptor(), STDOUT_FILENO);
  dup2(job.errors.descriptor(), STDERR_FILENO);
  redirect_log_file(job.log.descriptor());
  drop_reporters();
  tell_results(false);
  add_reporter(make_wire(job.wire.descriptor(), with_events));
  clear_counts();
  execute(*job.selected);
  end_watch();
  tell_run_ends(results());
  std::fflush(nullptr);
  _exit(0);
}

bool start(Job& job) {
  std::fflush(nullptr);
  job.begin = now();
  job.process = fork();
  if (job.process == 0) run_here(job);
  return job.process > 0;
}

std::string end_text(int status) {
  if (WIFSIGNALED(status))
    return std::string("the process of the test case ended with signal '") + strsignal(WTERMSIG(status)) +
           "'";
  return "the process of the test case ended with status " + std::to_string(WEXITSTATUS(status));
}

// Puts everything of the job where it would be without a process of its own.
void collect(const Job& job) {
  set_log_footer("");
  const std::string output = job.output.text(), errors = job.errors.text();
  std::fwrite(output.data(), 1, output.size(), stdout);
  std::fwrite(errors.data(), 1, errors.size(), stderr);
  append_to_log(job.log.text());
  Result result;
  if (!tell_from_wire(job.wire.text(), result)) {
    result = {
        job.selected->module, job.selected->name, lumo_verdict_error_c, end_text(job.status), {}, job.begin,
        job.duration};
    if (ending_reason()) result.reason = ending_reason();
  }
  results().push_back(result);
  if (result_listener) result_listener(results().back());
  tell_end(results().back());
}

class Jobs {
 public:
  Jobs(const std::vector<Selected>& list, size_t at_once, bool until_fail)
      : at_once_(at_once), until_fail_(until_fail) {
    for (const Selected& s : list) waiting_.push_back(&s);
  }
  bool run() {
    while ((!is_ending() && next_ < waiting_.size()) || !jobs_.empty()) {
      while (!is_ending() && next_ < waiting_.size() && running() < at_once_) start_next();
      look();
      if (is_ending()) stop_all();
    }
    return !ending_reason() && !failed_;
  }

 private:
  bool is_ending() const { return ending_reason() || failed_; }
  size_t running() const {
    size_t n = 0;
    for (auto& job : jobs_) n += !job->is_over;
    return n;
  }
  void start_next() {
    auto job = std::make_unique<Job>();
    job->selected = waiting_[next_++];
    if (!start(*job)) {
      job->is_over = true;
      job->status = 0xFF00;
    }
    jobs_.push_back(std::move(job));
  }
  void look() {
    bool is_new = false;
    for (auto& job : jobs_) {
      if (job->is_over || waitpid(job->process, &job->status, WNOHANG) != job->process) continue;
      job->is_over = is_new = true;
      job->duration = now() - job->begin;
    }
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
    const int signal = real_time() - stopped_ > time_to_end ? SIGKILL : SIGTERM;
    for (auto& job : jobs_)
      if (!job->is_over && (signal == SIGKILL || !told_)) kill(job->process, signal);
    told_ = true;
  }
  static Time real_time() {
    timespec time;
    clock_gettime(CLOCK_MONOTONIC, &time);
    return Time(time.tv_sec) * 1000000000 + time.tv_nsec;
  }

  std::vector<const Selected*> waiting_;
  size_t next_ = 0, at_once_;
  bool until_fail_, failed_ = false, told_ = false;
  Time stopped_ = never;
  std::vector<std::unique_ptr<Job>> jobs_;
};

}  // namespace

bool run_in_processes(const std::vector<Selected>& list, long at_once, bool until_fail) {
  return Jobs(list, static_cast<size_t>(at_once), until_fail).run();
}

}  // namespace lumos
