// The thread that serves channels: it sleeps until something can be read or written.
#pragma once

#include <mutex>

namespace lumos {

// One thing that is polled. All functions are called with the poller's lock held.
class Polled {
 public:
  virtual ~Polled() = default;
  virtual int descriptor() const = 0;  // -1: nothing to poll now
  virtual short wanted() const = 0;    // POLLIN, POLLOUT
  virtual void ready(short events) = 0;
};

// Guards all that the thread looks at. Held by whoever changes a polled thing.
std::mutex& poller_lock();
// These with the lock held. The thread starts with the first and ends behind the last.
void add_polled(Polled* polled);
void remove_polled(Polled* polled);
// Gives the lock up until the thread does not look at what was removed any more, so that closing its
// descriptor frees its address.
void await_poller();
// Something wants other events than before.
void wake_poller();

}  // namespace lumos
