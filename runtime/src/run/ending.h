// Runs that end before their time: by a signal, by a crash or exit() in code of the user, or because the time
// that was given is over while a call into such code does not come back. What runs then ends like after a
// fault, so that its test case has the verdict error, the adapter hears of the end, and results and reports
// are whole. Where that does not work either, the process is left after telling what is known.
#pragma once

#include "value/clock.h"

namespace lumos {

// From here on the process is watched. At an end that cannot be met by ending what runs, `abandon` is called;
// it may be called again if it fails itself, and goes on behind what it was doing then.
void watch_process(void (*abandon)(const char* reason));
// The run is complete: the process may exit.
void end_watch();

// Why the run is to end before its time; null while it is to go on. Its test case has ended then, or does so
// soon.
const char* ending_reason();
// As a fault of what runs in the control part if the run is to end.
void check_run_goes_on();

// What runs in the control part has to be over by then; never for no limit.
void set_control_deadline(Time time);
Time control_deadline();
// A test case has to be over by then. Should user code not come back, it is ended a little later.
void watch_deadline(Time time);

// While it stands, what runs is not to be left in the middle.
struct Undisturbed {
  Undisturbed();
  ~Undisturbed();
};

}  // namespace lumos
