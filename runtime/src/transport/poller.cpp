#include "transport/poller.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace lumos {

namespace {

// Never freed: the thread may outlive what ends with the program.
std::vector<Polled*>& all = *new std::vector<Polled*>;
bool is_running = false;
int wake_pipe[2] = {-1, -1};
// The system keeps what is closed, and its address, as long as somebody polls it.
std::condition_variable_any& polled_once = *new std::condition_variable_any;
bool is_polling = false;
size_t polls = 0;
// While reading is put off, things are looked at again after that many milliseconds.
constexpr int look_again = 20;

void drain() {
  char octets[64];
  while (read(wake_pipe[0], octets, sizeof octets) > 0) continue;
}

void serve(const std::vector<pollfd>& fds, const std::vector<Polled*>& things) {
  for (size_t i = 0; i < things.size(); ++i) {
    // A thing may end others.
    const bool is_there = std::find(all.begin(), all.end(), things[i]) != all.end();
    if (fds[i + 1].revents && is_there && things[i]->descriptor() == fds[i + 1].fd)
      things[i]->ready(fds[i + 1].revents);
  }
}

void run() {
  std::unique_lock<std::mutex> hold(poller_lock());
  while (!all.empty()) {
    std::vector<pollfd> fds = {{wake_pipe[0], POLLIN, 0}};
    std::vector<Polled*> things;
    bool is_idle = false;
    for (Polled* polled : all) {
      if (polled->descriptor() < 0) continue;
      const short wanted = polled->wanted();
      is_idle = is_idle || wanted == 0;
      things.push_back(polled);
      fds.push_back({wanted ? polled->descriptor() : -1, wanted, 0});
    }
    is_polling = true;
    hold.unlock();
    poll(fds.data(), fds.size(), is_idle ? look_again : -1);
    hold.lock();
    is_polling = false;
    ++polls;
    polled_once.notify_all();
    drain();
    serve(fds, things);
  }
  is_running = false;
}

}  // namespace

std::mutex& poller_lock() {
  static auto* lock = new std::mutex;
  return *lock;
}

void wake_poller() {
  const char octet = 0;
  if (is_running && write(wake_pipe[1], &octet, 1) < 0) return;  // a full pipe wakes as well
}

void add_polled(Polled* polled) {
  all.push_back(polled);
  if (wake_pipe[0] < 0 && pipe2(wake_pipe, O_NONBLOCK | O_CLOEXEC) != 0) return;
  if (is_running) return wake_poller();
  is_running = true;
  std::thread(run).detach();
}

void remove_polled(Polled* polled) {
  all.erase(std::remove(all.begin(), all.end(), polled), all.end());
  wake_poller();
}

void await_poller() {
  const size_t before = polls;
  // The thread may be gone, in a copy of the process.
  polled_once.wait_for(poller_lock(), std::chrono::seconds(1),
                       [&] { return !is_polling || polls != before; });
}

}  // namespace lumos
