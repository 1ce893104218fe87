// A run in two processes: one runs the suite, the other holds the reports and waits. Where the first is gone
// without having taken leave, because code of the user ended it in a way that nothing in it can hear of
// (_exit, a signal that cannot be caught, another program in its place), the second gives the test case that
// ran the verdict error, and completes reports, summary and status. Signals that it gets it hands on.
#pragma once

#include <signal.h>

namespace lumos {

// While it is there no signal arrives: where a run begins there would be nobody to clean up.
class HeldSignals {
 public:
  HeldSignals();
  ~HeldSignals();
  HeldSignals(const HeldSignals&) = delete;
  const sigset_t& usual() const { return usual_; }

 private:
  sigset_t usual_;
};

// From here on the process is watched by the one that it was before, which never returns: it ends with the
// status of this one. Reporters stay there. Nothing happens under a debugger, or where threads of the user
// run already.
void be_supervised(const HeldSignals& held);

}  // namespace lumos
