#include "suite/supervisor.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <vector>

#include "report/report_file.h"
#include "report/wire.h"
#include "run/component.h"
#include "run/ending.h"
#include "suite/results.h"
#include "text/log.h"
#include "text/log_file.h"
#include "value/hooks.h"
#include "value/value.h"

namespace lumos {

namespace {

constexpr int start_fault = 2;
// The process that runs ends by itself before, where it can.
constexpr Time second = 1000000000, patience = 12 * second;
constexpr int high_descriptor = 500;

// --- signals, which go to the process that runs

pid_t runner = 0;
volatile sig_atomic_t stops = 0;

bool is_stop(int signal) {
  return signal == SIGINT || signal == SIGTERM || signal == SIGHUP;
}

// What the terminal or the kernel sends to all processes of the group has arrived there already.
void hand_on(int signal, siginfo_t* info, void*) {
  const int error = errno;
  if (is_stop(signal)) stops = stops + 1;
  if (info->si_code <= 0) kill(runner, signal);
  errno = error;
}

bool is_handed_on(int signal) {
  for (int own : {SIGKILL, SIGSTOP, SIGCHLD, SIGTSTP, SIGTTIN, SIGTTOU, SIGCONT, SIGWINCH, SIGURG, SIGSEGV,
                  SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGPIPE, SIGSYS})
    if (signal == own) return false;
  return true;
}

// What is ignored on purpose stays so; what a shell ignores for the background is not (see ending.cpp).
void hand_on_signals() {
  for (int signal = 1; signal <= SIGRTMAX; ++signal) {
    struct sigaction old, action = {};
    if (!is_handed_on(signal) || sigaction(signal, nullptr, &old) != 0) continue;
    if (old.sa_handler == SIG_IGN && signal != SIGINT) continue;
    action.sa_sigaction = hand_on;
    action.sa_flags = SA_SIGINFO;
    sigaction(signal, &action, nullptr);
  }
  for (int signal : {SIGPIPE, SIGXFSZ}) ::signal(signal, SIG_IGN);
}

// What both processes have.
struct Common {
  struct Told {
    std::atomic<Time> deadline;
    std::atomic<bool> output_is_lost;
  };
  WireBox box;
  LogBox log;
  Shared<Told> told;
  int sockets[2];  // of the one that watches, and of the one that runs
};

// --- what the other process tells

class Supervision {
 public:
  explicit Supervision(const Common& common) : common_(common) {
    reader_.listener.run_begins = [this] { phase_ = Phase::runs; };
    reader_.listener.test_case_begins = [this](const Execution& execution) {
      running_ = Result{execution, lumo_verdict_error_c, {}, {}, 0};
      stands_at_ = nullptr;
      last_ = execution.begin - run_start().clock;
      tell_begin(execution);
    };
    reader_.listener.event = [this](const Event& e) {
      last_ = e.time;
      stands_at_ = e.spot;
      tell(e);
    };
    reader_.listener.test_case_ends = [this](const Result& r) {
      running_.reset();
      results().push_back(r);
      is_printing_ = is_printing_ || has_lost_output(r);
      if (is_printing_) print_result(results().back());
      tell_end(r);
    };
    reader_.listener.run_is_refused = [this] {
      phase_ = Phase::over;
      cancel_reporters();
    };
    reader_.listener.run_ends = [this](const Results& all) { take_leave(all); };
  }

  // The status to end with.
  int watch() {
    int status = 0;
    while (!has_ended(runner, status)) {
      receive(100);
      if (!is_late()) continue;
      is_killed_ = true;
      kill(runner, SIGKILL);
    }
    while (receive(0)) {
    }
    hear(common_.box.rest(received_));
    write_rest_of_log(common_.log);
    if (phase_ != Phase::over) return finish(status);
    if (common_.told->output_is_lost) print_summary();
    if (is_killed_) std::fprintf(stderr, "user code did not let the process end\n");
    if (is_killed_) return 1;
    if (WIFSIGNALED(status)) end_alike(WTERMSIG(status));
    return WEXITSTATUS(status) ? WEXITSTATUS(status) : is_bad_ || reports_failed();
  }

 private:
  enum class Phase { begins, runs, over };

  bool is_late() {
    const Time now = real_time(), deadline = common_.told->deadline;
    if (stops && stopped_ == never) stopped_ = now;
    return stops > 3 || (stopped_ != never && now > stopped_ + patience) ||
           (deadline != never && now > deadline + patience);
  }

  // False if nothing came. The other process may end while others still have its end of the socket.
  bool receive(int milliseconds) {
    const bool is_by_box = common_.box.is_way();
    pollfd waiting{common_.sockets[0], POLLIN, 0};
    if (poll(&waiting, 1, is_by_box ? 0 : milliseconds) <= 0 && !is_by_box) return false;
    const ssize_t n = recv(common_.sockets[0], heard_.data() + held_, heard_.size() - held_, MSG_DONTWAIT);
    if (n > 0) {
      take(static_cast<size_t>(n));
    } else {
      if (is_by_box) hear(common_.box.rest(received_));
      common_.box.note_read(received_);
      if (milliseconds) usleep(1000);
    }
    return n > 0;
  }
  void hear(std::string_view text) {
    heard_.resize(std::max(heard_.size(), held_ + text.size()));
    std::copy(text.begin(), text.end(), heard_.begin() + static_cast<std::ptrdiff_t>(held_));
    take(text.size());
  }
  // Tells what has come behind what was held; a part of something is held.
  void take(size_t size) {
    received_ += size;
    held_ += size;
    const size_t told = reader_.tell({heard_.data(), held_});
    held_ -= told;
    std::memmove(heard_.data(), heard_.data() + told, held_);
    if (held_ == heard_.size()) heard_.resize(2 * held_);
  }

  void take_leave(const Results& all) {
    phase_ = Phase::over;
    is_bad_ = all.bad() > 0;
    tell_run_ends(all);
  }

  // Nothing was said at the end.
  int finish(int status) {
    const std::string reason = is_killed_ ? "user code did not come back, and let no signal through"
                                          : "user code ended the process with " + end_of_process(status);
    note_end(reason.c_str());
    erase_progress();
    if (phase_ == Phase::begins) {
      std::fprintf(stderr, "the suite could not be started: %s\n", reason.c_str());
      cancel_reporters();
      return start_fault;
    }
    log_line(lumo_log_msg_error_c, reason);
    if (running_) {
      running_->reason = reason;
      if (stands_at_) running_->place = {stands_at_->file, stands_at_->line};
      running_->duration =
          std::max<Time>(is_simulated() ? last_ + run_start().clock : now(), running_->begin) -
          running_->begin;
      results().push_back(*running_);
      log_result(*running_);
      print_result(results().back());
      tell_end(results().back());
    }
    tell_run_ends(results());
    print_summary();
    close_log_files();
    return std::max(1, status_of_results());
  }

  // The process was complete before: its end is what it would be without this one.
  [[noreturn]] static void end_alike(int signal) {
    ::signal(signal, SIG_DFL);
    ::raise(signal);
    _exit(128 + signal);
  }

  const Common& common_;
  WireReader reader_;
  Phase phase_ = Phase::begins;
  std::optional<Result> running_;
  Time last_ = 0, stopped_ = never;
  const Spot* stands_at_ = nullptr;  // of the reader
  uint64_t received_ = 0;
  std::vector<char> heard_ = std::vector<char>(1 << 17);  // the stack may be a small one
  size_t held_ = 0;
  bool is_bad_ = false, is_killed_ = false;
  bool is_printing_ = false;  // in place of the other process
};

// --- the parting of the two

// Under a debugger, which would look at the wrong process, or with threads, which only one of the two would
// have.
bool is_alone() {
  std::ifstream in("/proc/self/status");
  bool is_alone = false;
  for (std::string word; in >> word;) {
    long number;
    if (word == "TracerPid:" && in >> number && number != 0) return false;
    if (word == "Threads:") return in >> number && number == 1;
  }
  return is_alone;
}

bool make_common(Common& common) {
  if (!common.told || !common.box.is_made()) return false;
  common.told->deadline = never;
  return socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, common.sockets) == 0;
}

const Common* with_runner = nullptr;

// A fault here, as where memory ends: the other process goes on, and is not listened to.
void leave_reports(const char* text) {
  std::fprintf(stderr, "reports cannot be completed: %s\n", text);
  cancel_reporters();
  close(with_runner->sockets[0]);
  with_runner->box.note_read(UINT64_MAX);
  int status;
  while (!has_ended(runner, status)) usleep(10000);
  _exit(1);
}

// Ignored, as the one that started this may have left it, it leaves nothing of how a process ends.
void heed_children() {
  struct sigaction old;
  if (sigaction(SIGCHLD, nullptr, &old) == 0 && old.sa_handler == SIG_IGN) ::signal(SIGCHLD, SIG_DFL);
}

[[noreturn]] void supervise(Common& common, const sigset_t& signals) {
  close(common.sockets[1]);
  with_runner = &common;
  hooks.end_faulty = leave_reports;
  hand_on_signals();
  sigprocmask(SIG_SETMASK, &signals, nullptr);
  const int status = Supervision(common).watch();
  std::fflush(nullptr);
  _exit(status);
}

// Adapters close what they know, and mostly low numbers.
int out_of_the_way(int descriptor) {
  const int high = fcntl(descriptor, F_DUPFD_CLOEXEC, high_descriptor);
  if (high < 0) return descriptor;
  close(descriptor);
  return high;
}

void run_supervised(Common& common, WireNeeds needs, pid_t supervisor) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != supervisor) _exit(1);
  close(common.sockets[0]);
  drop_reporters();
  share_deadline(&common.told->deadline);
  share_lost_output(&common.told->output_is_lost);
  let_log_wait(&common.log);
  add_reporter(make_wire(KeptFile(out_of_the_way(common.sockets[1])), common.box, needs));
}

}  // namespace

HeldSignals::HeldSignals() {
  sigset_t all;
  sigfillset(&all);
  sigprocmask(SIG_BLOCK, &all, &usual_);
  sigdelset(&usual_, SIGALRM);  // what limits the time of user code is not for who started this to block
}

HeldSignals::~HeldSignals() {
  sigprocmask(SIG_SETMASK, &usual_, nullptr);
}

void be_supervised(const HeldSignals& held) {
  static Common& common = *new Common;
  static bool is_done = false;
  if (is_done || !is_alone() || !make_common(common)) return;
  is_done = true;
  run_start();
  std::fflush(nullptr);
  heed_children();
  const WireNeeds needs;
  const pid_t supervisor = getpid();
  runner = fork();
  if (runner > 0) supervise(common, held.usual());
  if (runner == 0) run_supervised(common, needs, supervisor);
}

}  // namespace lumos
