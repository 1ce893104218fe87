#include "run/ending.h"

#include <pthread.h>
#include <signal.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "value/task.h"
#include "value/error.h"
#include "value/hooks.h"

namespace lumos {

namespace {

constexpr Time millisecond = 1000000;
constexpr Time grace = 500 * millisecond;         // for what looks after the end by itself
constexpr Time retry = 100 * millisecond;         // where the moment was a bad one
constexpr Time time_to_end = 5000 * millisecond;  // from leaving user code to the end of the run
// What a simulated clock is asked for does not depend on how fast the machine is.
constexpr Time grace_of_simulated = 2000 * millisecond;
constexpr Time longest = 1000000000 * (1000 * millisecond);
constexpr int most_retries = 30;
constexpr Time twice = 100 * millisecond;  // one signal that arrives by two roads

void (*abandon_run)(const char*) = nullptr;
bool is_watched = false;
pthread_t main_thread;

char reason_text[128];
std::atomic<const char*> reason{nullptr};
volatile sig_atomic_t undisturbed = 0;
volatile sig_atomic_t has_test_case = 0;
volatile sig_atomic_t left = 0;     // user code was left once
volatile sig_atomic_t retries = 0;  // since a moment was asked for
volatile sig_atomic_t late = 0;     // the real time is over
volatile sig_atomic_t stops = 0;    // signals that asked for the end
volatile sig_atomic_t first_stop = 0;
Time deadline = never, deadline_of_control = never;
Time real_deadline = never, real_deadline_of_control = never;  // on the real clock
const char* limited = "control part";
std::atomic<Time>* shared_deadline = nullptr;
Time last_stop = 0;
bool is_copy = false;  // of the process that is watched
void (*tell_copy)() = nullptr;

const int stop_signals[] = {SIGINT, SIGTERM, SIGHUP, SIGXCPU};
const int crash_signals[] = {SIGSEGV, SIGBUS, SIGILL, SIGABRT, SIGSYS};

void set_alarm(Time after) {
  const Time microseconds = after == never ? 0 : after / 1000 + 1;
  itimerval timer = {};
  timer.it_value.tv_sec = microseconds / 1000000;
  timer.it_value.tv_usec = microseconds % 1000000;
  setitimer(ITIMER_REAL, &timer, nullptr);
}

[[noreturn]] void give_up(const char* why) {
  set_alarm(time_to_end);
  abandon_run(why);
  _exit(1);
}

void set_reason(const char* format, int signal) {
  if (reason) return;
  std::snprintf(reason_text, sizeof reason_text, format, strsignal(signal), signal);
  reason = reason_text;
}

// A component or a control part runs, and not the scheduler or what is around a test case.
bool is_in_behaviour() {
  return !undisturbed && (current_task->component || (!has_test_case && current_task->fiber));
}

// Leaves what runs; returns where that is not possible.
void leave(const char* why) {
  if (!is_in_behaviour()) return;
  left = 1;
  set_alarm(time_to_end);
  fault("%s", why);
}

// Between runs a signal means what it does elsewhere.
void act_as_usual(int signal) {
  std::signal(signal, SIG_DFL);
  raise(signal);
}

void on_stop(int signal) {
  if (!is_watched || is_copy) return act_as_usual(signal);
  if (!pthread_equal(pthread_self(), main_thread)) {
    pthread_kill(main_thread, signal);
    return;
  }
  set_reason("the run was ended by signal '%s'", signal);
  if (!first_stop) first_stop = signal;
  const Time time = real_time();
  if (stops && time - last_stop < twice) return;
  last_stop = time;
  stops = stops + 1;
  if (stops > 2) _exit(1);
  if (stops == 2) leave(reason);
  retries = 0;
  set_alarm(grace);
}

void on_crash(int signal) {
  if (!is_watched || is_copy) return act_as_usual(signal);
  set_reason("user code ended with signal '%s'", signal);
  if (!pthread_equal(pthread_self(), main_thread)) {
    pthread_kill(main_thread, SIGALRM);
    for (;;) pause();
  }
  if (!left) leave(reason);
  give_up(reason);
}

const bool crash_hook_is_set = (hooks.crash = on_crash, true);

const char* time_is_over() {
  static char text[80];
  std::snprintf(text, sizeof text, "the time given to the %s is over", has_test_case ? "test case" : limited);
  return text;
}

void on_alarm(int signal) {
  if (!pthread_equal(pthread_self(), main_thread)) {
    pthread_kill(main_thread, signal);
    return;
  }
  if (!is_watched) return;
  const char* why = reason;
  if (!why && real_deadline == never) return;
  if (!why) {
    const Time rest = real_deadline - real_time();
    if (rest > 0 || !late) {
      late = rest <= 0;
      return set_alarm(late ? grace : rest);
    }
    why = time_is_over();
  }
  if (left && reason) give_up(why);
  leave(why);
  retries = retries + 1;
  if (retries > most_retries) give_up(why);
  set_alarm(retry);
}

// The call that caused it fails, and tells why.
void leave_to_the_call(int) {}

void on_exit() {
  if (!is_watched || is_copy) return;
  std::atexit(on_exit);  // the adapter may do it once more when it hears of the end
  std::at_quick_exit(on_exit);
  note_end("user code ended the process");
  give_up(reason);
}

// A shell ignores interrupts for what it runs in the background, which is no purpose; nor does anybody mean the
// alarms of this process.
bool is_ignored_on_purpose(int signal) {
  return signal != SIGINT && signal != SIGALRM;
}

// Handlers of others stay, and what is ignored on purpose.
void handle(int signal, void (*function)(int), int flags) {
  struct sigaction old, action = {};
  const bool is_known = sigaction(signal, nullptr, &old) == 0;
  if (!is_known || (old.sa_handler == SIG_IGN ? is_ignored_on_purpose(signal) : old.sa_handler != SIG_DFL)) return;
  action.sa_handler = function;
  action.sa_flags = flags;
  sigaction(signal, &action, nullptr);
}

// A crash may be that of a stack that is used up.
void set_signal_stack() {
  static char memory[64 * 1024];
  stack_t old, stack = {};
  if (sigaltstack(nullptr, &old) == 0 && !(old.ss_flags & SS_DISABLE)) return;
  stack.ss_sp = memory;
  stack.ss_size = sizeof memory;
  sigaltstack(&stack, nullptr);
}

void become_copy() {
  is_copy = true;
  tell_copy();
}

Time on_real_clock(Time time) {
  if (time == never) return never;
  const Time rest = std::clamp<Time>(time - now(), 0, longest);
  return real_time() + rest + (is_simulated() ? grace_of_simulated : 0);
}

void arm() {
  if (shared_deadline) *shared_deadline = real_deadline;
  if (reason) return;
  retries = 0;
  left = 0;
  late = 0;
  set_alarm(real_deadline == never ? never : std::max<Time>(real_deadline - real_time(), 0));
}

}  // namespace

void watch_process(void (*abandon)(const char*), void (*on_copy)()) {
  tell_copy = on_copy;
  abandon_run = abandon;
  is_watched = true;
  static bool is_done = false;
  if (is_done) return;
  is_done = true;
  main_thread = pthread_self();
  pthread_atfork(nullptr, nullptr, become_copy);
  std::atexit(on_exit);
  std::at_quick_exit(on_exit);
  set_signal_stack();
  for (int signal : stop_signals) handle(signal, on_stop, SA_RESTART | SA_NODEFER);
  for (int signal : crash_signals) handle(signal, on_crash, SA_ONSTACK | SA_NODEFER);
  handle(SIGALRM, on_alarm, SA_RESTART | SA_NODEFER);
}

void let_lost_output_be_told() {
  for (int signal : {SIGPIPE, SIGXFSZ}) handle(signal, leave_to_the_call, SA_RESTART);
}

void end_watch() {
  is_watched = false;
  set_alarm(never);
}

void share_deadline(std::atomic<Time>* place) {
  shared_deadline = place;
  if (place) *place = never;
}

void note_end(const char* text) {
  std::snprintf(reason_text, sizeof reason_text, "%s", text);
  reason = reason_text;
}

void leave_copy_of_run() {
  if (is_copy) _exit(1);
}

void go_on_here() {
  is_copy = false;
}

bool has_ended(pid_t process, int& status) {
  const pid_t ended = waitpid(process, &status, WNOHANG);
  if (ended < 0 && errno == ECHILD) status = 0;
  return ended == process || (ended < 0 && errno == ECHILD);
}

std::string end_of_process(int status) {
  if (WIFSIGNALED(status)) return std::string("signal '") + strsignal(WTERMSIG(status)) + "'";
  return "status " + std::to_string(WEXITSTATUS(status));
}

const char* ending_reason() {
  return reason;
}

int ending_signal() {
  return first_stop ? static_cast<int>(first_stop) : SIGTERM;
}

bool real_time_is_over() {
  return late;
}

void check_run_goes_on() {
  leave_copy_of_run();
  if (const char* why = reason) fault("%s", why);
  if (deadline_of_control != never &&
      (now() >= deadline_of_control || real_time() >= real_deadline_of_control))
    fault("the time given to the %s is over", limited);
}

void watch_test_case(bool is_there) {
  has_test_case = is_there;
}

void set_control_deadline(Time time, const char* what) {
  limited = what;
  deadline = deadline_of_control = time;
  real_deadline = real_deadline_of_control = on_real_clock(time);
  arm();
}

Time control_deadline() {
  return deadline_of_control;
}

void watch_deadline(Time time) {
  if (time == deadline) return;
  deadline = time;
  real_deadline = std::min(on_real_clock(time), real_deadline_of_control);
  arm();
}

Undisturbed::Undisturbed() {
  undisturbed = undisturbed + 1;
}
Undisturbed::~Undisturbed() {
  undisturbed = undisturbed - 1;
}

}  // namespace lumos
