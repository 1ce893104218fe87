// Counting semaphores for main files that wait for the end of control.
#include <condition_variable>
#include <mutex>

#include "tci.h"

namespace {

struct Semaphore {
  std::mutex lock;
  std::condition_variable changed;
  int count;
};

}  // namespace

void* pavo_sem_create(int initial_count, lumo_context_t) {
  auto* made = new Semaphore;
  made->count = initial_count;
  return made;
}

void pavo_sem_post(void* semaphore, lumo_context_t) {
  auto* s = static_cast<Semaphore*>(semaphore);
  if (!s) return;
  std::lock_guard<std::mutex> hold(s->lock);
  ++s->count;
  s->changed.notify_one();
}

void pavo_sem_wait(void* semaphore, lumo_context_t) {
  auto* s = static_cast<Semaphore*>(semaphore);
  if (!s) return;
  std::unique_lock<std::mutex> hold(s->lock);
  s->changed.wait(hold, [s] { return s->count > 0; });
  --s->count;
}

void pavo_sem_destroy(void* semaphore, lumo_context_t) {
  delete static_cast<Semaphore*>(semaphore);
}
