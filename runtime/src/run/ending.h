// Runs that end before their time: by a signal, by a crash or exit() in code of the user, or because the time
// that was given is over while a call into such code does not come back. What runs then ends like after a
// fault, so that its test case has the verdict error, the adapter hears of the end, and results and reports
// are whole. Where that does not work either, the process is left after telling what is known.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <string>

#include "value/clock.h"

namespace lumos {

// From here on the process is watched. At an end that cannot be met by ending what runs, `abandon` is called;
// it may be called again if it fails itself, and goes on behind what it was doing then.
// `on_copy` is called in a process that code of the user forks.
void watch_process(void (*abandon)(const char* reason), void (*on_copy)());
// What cannot be written because nobody reads it, or since a file may not be so large, fails and is told,
// unless that is ignored or met elsewhere.
void let_lost_output_be_told();
// The run is complete: the process may exit.
void end_watch();

// The deadline of what runs stands in the place too from now on, for another process; `never` for none.
void share_deadline(std::atomic<Time>* place);
// The run has ended because of this.
void note_end(const char* reason);
// In a process that code of the user forked from the watched one, and that came back: it tells nobody
// anything.
void leave_copy_of_run();
// In a process that was forked to go on with the run.
void go_on_here();

// Whether a process that was forked here has ended, and how. Where code of the user has waited for it, or ended
// processes leave nothing behind, that is not known: the status is 0.
bool has_ended(pid_t process, int& status);
// Why a process was killed.
inline const std::string lost_in_user_code = "user code did not come back, and let no signal through";
// How a process ended, by what waitpid() tells: "signal 'Killed'", "status 0".
std::string end_of_process(int status);

// Why the run is to end before its time; null while it is to go on. Its test case has ended then, or does so
// soon.
const char* ending_reason();
// The first signal that told the run to end; SIGTERM if there was none.
int ending_signal();
// As a fault of what runs in the control part if the run is to end.
void check_run_goes_on();

// What runs outside of test cases, such as the control part, has to be over by then; never for no limit.
void set_control_deadline(Time time, const char* what = "control part");
Time control_deadline();
// A test case is there from its beginning until it has been told.
void watch_test_case(bool is_there);
// A test case has to be over by then. Should user code not come back, it is ended a little later, also where
// the clock is simulated and stands still meanwhile.
void watch_deadline(Time time);

// Whether it had to be over by the real clock, beside one that is simulated: code that goes on, but not in time,
// is ended where it gives others their turn.
bool real_time_is_over();

// While it stands, what runs is not to be left in the middle.
struct Undisturbed {
  Undisturbed();
  ~Undisturbed();
};

}  // namespace lumos
