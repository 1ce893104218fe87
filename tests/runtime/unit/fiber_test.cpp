#include "run/fiber.h"

#include <gtest/gtest.h>

#include <string>

using namespace lumos;

namespace {

struct Walk {
  Fiber* back;
  std::string trace;
};

void walk(void* argument) {
  auto* w = static_cast<Walk*>(argument);
  for (char c = 'a';; ++c) {
    w->trace += c;
    switch_fiber(w->back);
  }
}

TEST(Fiber, GoesOnWhereItWasLeft) {
  Walk first{main_fiber(), ""}, second{main_fiber(), ""};
  Fiber* a = new_fiber(walk, &first);
  Fiber* b = new_fiber(walk, &second);
  for (int i = 0; i < 3; ++i) {
    switch_fiber(a);
    if (i != 1) switch_fiber(b);
  }
  EXPECT_EQ(first.trace, "abc");
  EXPECT_EQ(second.trace, "ab");
  EXPECT_EQ(current_fiber(), main_fiber());
  delete_fiber(a);
  delete_fiber(b);
}

size_t left_inside;

void measure(void* argument) {
  left_inside = stack_left();
  switch_fiber(static_cast<Fiber*>(argument));
}

TEST(Fiber, KnowsItsStack) {
  EXPECT_GT(stack_left(), size_t(1) << 40);
  Fiber* f = new_fiber(measure, main_fiber());
  switch_fiber(f);
  delete_fiber(f);
  EXPECT_GT(left_inside, size_t(900) * 1024);
  EXPECT_LE(left_inside, size_t(1024) * 1024);
}

}  // namespace
