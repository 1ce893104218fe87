// Components, ports, timers, defaults and procedures.
#include <sys/resource.h>

#include "component_support.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

TEST_F(Components, ElementsComeFromTheTableAndThePostProcess) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              if (lumo_value_get_integer(element("n"), ctx) == 100) set_verdict(lumo_verdict_pass_c);
              element("nothing");
            }),
            "error: component mtc has no element 'nothing'");
}

TEST_F(Components, VerdictIsTheWorstOfAll) {
  behaviour("fails", [](unsigned long, lumo_value_t[], lumo_context_t) { set_verdict(lumo_verdict_fail_c); });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              set_verdict(lumo_verdict_inconc_c);
              set_verdict(lumo_verdict_pass_c);
              Value v = lumo_component_get_local_verdict(ctx);
              if (lumo_value_get_verdict(v, ctx) == lumo_verdict_inconc_c) trace += "kept";
              Value c = create();
              start(c, "fails");
              wait_done(c);
            }),
            "fail");
  EXPECT_EQ(trace, "kept");
}

TEST_F(Components, MessagesKeepTheirOrder) {
  behaviour("double", [](unsigned long, lumo_value_t argv[], lumo_context_t) {
    for (lumo_long_integer_t i = 0; i < lumo_value_get_integer(argv[0], ctx); ++i) {
      Value got = integer(0);
      alt([&](bool&) { return try_receive("p", any_integer(), got); });
      send("p", integer(2 * lumo_value_get_integer(got, ctx)));
    }
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Value c = create("doubler");
              connect(self_ref(), "p", c, "p");
              start(c, "double", 3);
              for (int i = 1; i <= 3; ++i) send("p", integer(i));
              for (int i = 1; i <= 3; ++i) {
                Value got = integer(0);
                alt([&](bool&) { return try_receive("p", lumo_no_value_c, got); });
                trace += std::to_string(lumo_value_get_integer(got, ctx)) + " ";
              }
              wait_done(c);
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "2 4 6 ");
}

TEST_F(Components, OnlyTheHeadOfAQueueIsLookedAt) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              connect(self_ref(), "p", self_ref(), "q");
              send("p", integer(1));
              send("p", integer(2));
              alt([&](bool&) {
                if (try_receive("q", integer(2))) trace += "wrong";
                if (try_receive("q", text("1"))) trace += "wrong type";
                return try_receive("q", integer(1));
              });
              lumo_component_snapshot(ctx);
              if (lumo_port_try_receive(element("q"), integer(2), lumo_no_value_c, true,
                                        lumo_value_no_return_c, lumo_value_no_return_c, ctx))
                trace += "checked ";
              if (try_receive("q", integer(2))) trace += "taken ";
              if (try_receive("q", lumo_no_value_c)) trace += "wrong: empty";
              send("p", integer(3));
              lumo_port_clear(element("q"), ctx);
              if (try_receive("q", lumo_no_value_c)) trace += "wrong: cleared";
              if (lumo_port_try_receive(lumo_value_any_c, lumo_no_value_c, lumo_no_value_c, false,
                                        lumo_value_no_return_c, lumo_value_no_return_c, ctx))
                trace += "wrong: any";
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "checked taken ");
}

TEST_F(Components, SendersAndReceiversAreNamed) {
  behaviour("hello", [](unsigned long, lumo_value_t argv[], lumo_context_t) {
    send("p", argv[0]);
    alt([&](bool&) { return try_receive("p", integer(9)); });
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Value a = lumo_value_copy(create("a"), lumo_perm_alloc_c, ctx), b = create("b");
              connect(self_ref(), "p", a, "p");
              connect(self_ref(), "p", b, "p");
              start(a, "hello", 1);
              start(b, "hello", 2);
              Value from = lumo_type_instantiate_value(suite->component, lumo_temp_alloc_c, ctx);
              alt([&](bool&) {
                return lumo_port_try_receive(element("p"), any_integer(), a, false, lumo_value_no_return_c,
                                             from, ctx);
              });
              trace += lumo_is_equal(from, a, ctx) ? "from a " : "wrong ";
              alt([&](bool&) { return try_receive("p", integer(2)); });
              lumo_port_send(element("p"), integer(9), b, ctx);
              lumo_port_send(element("p"), integer(9), lumo_value_all_c, ctx);
              alt([&](bool&) { return lumo_component_try_done(lumo_value_all_c, ctx); });
              lumo_value_delete(&a, ctx);
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "from a ");
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              connect(self_ref(), "p", create("a"), "p");
              connect(self_ref(), "p", create("b"), "p");
              send("p", integer(1));
            }),
            "error: port p has several connections, so a receiver has to be named");
}

TEST_F(Components, PortsInArraysAreApart) {
  EXPECT_EQ(
      run([](unsigned long, lumo_value_t[], lumo_context_t) {
        lumo_component_connect_port(self_ref(), "many", integer(1), self_ref(), "many", integer(3), ctx);
        Value many = element("many");
        lumo_port_send(lumo_value_field_by_index(many, 1, ctx), integer(7), lumo_no_value_c, ctx);
        if (!lumo_port_try_receive(lumo_value_field_by_index(many, 3, ctx), integer(7), lumo_no_value_c,
                                   false, lumo_value_no_return_c, lumo_value_no_return_c, ctx))
          trace += "lost";
        set_verdict(lumo_verdict_pass_c);
        lumo_component_connect_port(self_ref(), "many", integer(4), self_ref(), "p", lumo_no_value_c, ctx);
      }),
      "error: component mtc has no port 'many'");
  EXPECT_EQ(trace, "");
}

TEST_F(Components, TimersRunOnTheSimulatedClock) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              lumo_timer_start(element("t"), lumo_duration_default_c, ctx);
              lumo_timer_start(element("u"), 3.5, ctx);
              Time begin = now();
              alt([&](bool& repeat) {
                if (lumo_timer_try_timed_out(element("u"), ctx)) return true;
                if (!lumo_timer_try_timed_out(element("t"), ctx)) return false;
                trace += "t after " + std::to_string((now() - begin) / 1000000) + " ";
                if (!lumo_timer_is_running(element("t"), ctx)) trace += "off ";
                trace += std::to_string(static_cast<int>(lumo_timer_read(element("u"), ctx) * 10)) + " ";
                return repeat = true;
              });
              trace += "u after " + std::to_string((now() - begin) / 1000000);
              lumo_timer_start(element("t"), 1.0, ctx);
              lumo_timer_stop(lumo_value_all_c, ctx);
              if (lumo_timer_is_running(lumo_value_any_c, ctx)) trace += " wrong";
              set_verdict(lumo_verdict_pass_c);
              lumo_timer_start(element("u"), lumo_duration_default_c, ctx);
            }),
            "error: timer 'u' is started without a duration");
  EXPECT_EQ(trace, "t after 2000 off 20 u after 3500");
}

TEST_F(Components, StuckTestCasesEnd) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              alt([](bool&) { return try_receive("p", lumo_no_value_c); });
            }),
            "error: all components wait and nothing can happen any more");
}

TEST_F(Components, PollingTestCasesEndToo) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              alt([](bool&) { return try_receive("p", lumo_no_value_c); }, true);
            }),
            "error: all components wait and nothing can happen any more");
}

TEST_F(Components, TimeOfATestCaseIsLimited) {
  EXPECT_EQ(run(
                [](unsigned long, lumo_value_t[], lumo_context_t) {
                  lumo_timer_start(element("t"), 100.0, ctx);
                  alt([](bool&) { return lumo_timer_try_timed_out(element("t"), ctx); });
                },
                5.0),
            "error: the time given to the test case is over");
  EXPECT_EQ(run(
                [](unsigned long, lumo_value_t[], lumo_context_t) {
                  while (true) lumo_component_control(ctx);
                },
                0.001),
            "error: the time given to the test case is over");
}

TEST_F(Components, RealTimersTakeTheirTime) {
  set_simulated(false);
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Time begin = now();
              lumo_timer_start(element("t"), 0.05, ctx);
              alt([](bool&) { return lumo_timer_try_timed_out(element("t"), ctx); });
              Time taken = now() - begin;
              if (taken >= 50000000 && taken < 5000000000) set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
}

TEST_F(Components, VolatileGuardsAreTriedAgain) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Time begin = now();
              alt([&](bool&) { return now() - begin > 10000000; }, true);
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
}

TEST_F(Components, FaultOfAnyComponentEndsTheTestCase) {
  behaviour("divides", [](unsigned long, lumo_value_t argv[], lumo_context_t) {
    lumo_mod(1, lumo_value_get_integer(argv[0], ctx), ctx);
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Value c = create();
              start(c, "divides", 0);
              set_verdict(lumo_verdict_pass_c);
              wait_done(c);
              trace = "went on";
            }),
            "error: mod by zero");
  EXPECT_EQ(trace, "");
}

TEST_F(Components, EndlessRecursionEndsTheTestCase) {
  static lumo_function_t recurse = [](unsigned long argc, lumo_value_t argv[], lumo_context_t c) {
    lumo_source_location_push("Test", "recurse", argv, lumo_scope_function_c, "Test.ttcn", 1, c);
    lumo_call_function(recurse, suite->function, argc, argv, c);
    lumo_source_location_pop(c);
  };
  EXPECT_EQ(run([](unsigned long, lumo_value_t argv[], lumo_context_t c) {
              lumo_call_function(recurse, suite->function, 0, argv, c);
            }),
            "error: the calls or the value are nested too deeply");
}

TEST_F(Components, AliveComponentsStartAgain) {
  behaviour("count", [](unsigned long, lumo_value_t[], lumo_context_t) {
    Value n = element("n");
    lumo_value_set_integer(n, lumo_value_get_integer(n, ctx) + 1, ctx);
    trace += std::to_string(lumo_value_get_integer(n, ctx)) + " ";
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Value c = create("", true);
              for (int i = 0; i < 3; ++i) {
                start(c, "count");
                wait_done(c);
              }
              if (lumo_component_is_alive(c, ctx) && !lumo_component_is_running(c, ctx)) trace += "alive ";
              lumo_component_kill(c, ctx);
              if (lumo_component_try_killed(c, ctx) && !lumo_component_is_alive(lumo_value_any_c, ctx))
                trace += "killed";
              set_verdict(lumo_verdict_pass_c);
              start(c, "count");
            }),
            "error: component ptc3 has ended");
  EXPECT_EQ(trace, "101 102 103 alive killed");
}

TEST_F(Components, StoppedComponentsDoNotGoOn) {
  behaviour("waits", [](unsigned long, lumo_value_t[], lumo_context_t) {
    alt([](bool&) { return try_receive("p", lumo_no_value_c); });
    trace += "wrong";
  });
  behaviour("stops", [](unsigned long, lumo_value_t[], lumo_context_t) {
    set_verdict(lumo_verdict_pass_c);
    lumo_component_stop(lumo_no_value_c, ctx);
    trace += "wrong";
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Value a = create("a"), b = create("b"), c = create("c");
              start(a, "waits");
              start(b, "stops");
              start(c, "waits");
              wait_done(b);
              if (lumo_component_is_running(a, ctx)) trace += "a runs ";
              lumo_component_stop(a, ctx);
              if (lumo_component_try_done(a, ctx)) trace += "a done ";
              if (!lumo_component_try_done(lumo_value_all_c, ctx)) trace += "not all ";
              lumo_component_kill(lumo_value_all_c, ctx);
              if (lumo_component_try_done(lumo_value_all_c, ctx)) trace += "all";
            }),
            "pass");
  EXPECT_EQ(trace, "a runs a done not all all");
}

TEST_F(Components, MtcEndsAll) {
  behaviour("ends", [](unsigned long, lumo_value_t[], lumo_context_t) {
    lumo_component_stop(lumo_component_mtc(ctx), ctx);
    trace += "wrong";
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Value c = create();
              start(c, "ends");
              set_verdict(lumo_verdict_pass_c);
              alt([](bool&) { return false; });
            }),
            "pass");
  EXPECT_EQ(trace, "");
}

TEST_F(Components, DefaultsAreTriedYoungestFirst) {
  altstep("take", [](unsigned long, lumo_value_t argv[], lumo_context_t) {
    if (!try_receive("q", any_integer())) return lumo_test_step_unsuccessful_c;
    trace += std::to_string(lumo_value_get_integer(argv[0], ctx));
    return lumo_test_step_successful_repeat_c;
  });
  altstep("leave", [](unsigned long, lumo_value_t[], lumo_context_t) {
    return try_receive("q", text("end")) ? lumo_test_step_successful_proceed_c
                                         : lumo_test_step_unsuccessful_c;
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              connect(self_ref(), "p", self_ref(), "q");
              lumo_activate("Test", "leave", 0, nullptr, lumo_temp_alloc_c, ctx);
              Value one[] = {integer(1), nullptr}, two[] = {integer(2), nullptr};
              lumo_activate("Test", "take", 1, one, lumo_temp_alloc_c, ctx);
              Value second = lumo_activate("Test", "take", 1, two, lumo_temp_alloc_c, ctx);
              lumo_value_set_integer(two[0], 8, ctx);
              send("p", integer(0));
              send("p", text("end"));
              alt([](bool&) { return false; });
              lumo_deactivate(second, ctx);
              lumo_deactivate(second, ctx);
              send("p", integer(0));
              send("p", text("end"));
              alt([](bool&) { return false; });
              lumo_deactivate(lumo_value_all_c, ctx);
              if (lumo_activation_list_invoke(ctx) == lumo_activation_list_unsuccessful_c) trace += " none";
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "21 none");
}

Value procedure_value(const char* notation) {
  return value(suite->procedure, notation);
}

TEST_F(Components, ProceduresAreCalledAndAnswered) {
  behaviour("serve", [](unsigned long, lumo_value_t[], lumo_context_t) {
    Value a = integer(0), c = integer(0);
    Value redirects[] = {a, lumo_value_no_return_c, c};
    alt([&](bool&) {
      return lumo_port_try_getcall(element("p"), lumo_no_value_c, lumo_no_value_c, false, 3, redirects,
                                   lumo_value_no_return_c, ctx);
    });
    trace += render(a) + render(c) + " ";
    lumo_port_reply(element("p"), procedure_value("{ b := 20, c := 30 }"), integer(99), lumo_no_value_c, ctx);
    alt([&](bool&) {
      return lumo_port_try_getcall(element("p"), lumo_no_value_c, lumo_no_value_c, false, 0, nullptr,
                                   lumo_value_no_return_c, ctx);
    });
    lumo_port_raise(element("p"), suite->procedure, text("sorry"), lumo_no_value_c, ctx);
    alt([](bool&) { return false; });
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              Value server = create("server");
              connect(self_ref(), "p", server, "p");
              start(server, "serve");
              lumo_port_call(element("p"), procedure_value("{ a := 1, c := 3 }"), 5.0, lumo_no_value_c, ctx);
              Value result = integer(0), b = integer(0), c = integer(0);
              Value redirects[] = {lumo_value_no_return_c, b, c};
              alt([&](bool&) {
                if (lumo_port_try_getreply(element("p"), lumo_no_value_c, integer(98), lumo_no_value_c, false,
                                           result, 3, redirects, lumo_value_no_return_c, ctx))
                  trace += "wrong";
                return lumo_port_try_getreply(element("p"), lumo_no_value_c, integer(99), lumo_no_value_c,
                                              false, result, 3, redirects, lumo_value_no_return_c, ctx);
              });
              trace += render(result) + render(b) + render(c) + " ";
              lumo_port_call(element("p"), procedure_value("{ a := 1, c := 3 }"), lumo_duration_nowait_c,
                             lumo_no_value_c, ctx);
              Value why = text("");
              Value any_text = dynamic(lumo_charstring_type);
              lumo_value_assign(any_text, lumo_anyone_value_c, ctx);
              alt([&](bool&) {
                return lumo_port_try_catch(element("p"), suite->procedure, any_text, lumo_no_value_c, false,
                                           why, lumo_value_no_return_c, ctx);
              });
              trace += render(why);
              lumo_port_call(element("p"), procedure_value("{ a := 1, c := 3 }"), 5.0, lumo_no_value_c, ctx);
              alt([&](bool&) { return lumo_port_try_catch_timeout(element("p"), ctx); });
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "13 992030 \"sorry\"");
}

TEST_F(Components, PortsThatAreStoppedOrHalted) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              connect(self_ref(), "p", self_ref(), "q");
              send("p", integer(1));
              lumo_port_halt(element("q"), ctx);
              send("p", integer(2));
              if (try_receive("q", integer(1))) trace += "one ";
              if (try_receive("q", integer(2))) trace += "wrong";
              lumo_port_start(element("q"), ctx);
              send("p", integer(3));
              if (try_receive("q", integer(3))) trace += "three ";
              set_verdict(lumo_verdict_pass_c);
              lumo_port_stop(element("p"), ctx);
              send("p", integer(4));
            }),
            "error: port p is stopped");
  EXPECT_EQ(trace, "one three ");
}

TEST_F(Components, SystemAnswersInLoopback) {
  set_loopback(true);
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              lumo_component_set_system_component_type(suite->component, ctx);
              lumo_component_map_port(self_ref(), "p", lumo_no_value_c, lumo_component_system(ctx), "q",
                                      lumo_no_value_c, ctx);
              send("p", integer(5));
              alt([](bool&) { return try_receive("p", integer(5)); });
              set_verdict(lumo_verdict_pass_c);
              lumo_component_unmap_port(self_ref(), "p", lumo_no_value_c, lumo_component_system(ctx), "q",
                                        lumo_no_value_c, ctx);
              send("p", integer(5));
            }),
            "error: port p is neither connected nor mapped");
}

#ifdef __SANITIZE_ADDRESS__
constexpr long allowed_growth = 1000000;  // the sanitizer keeps what is freed for a while
#else
constexpr long allowed_growth = 2000;
#endif

TEST_F(Components, ManyMessagesTakeNoMoreMemory) {
  behaviour("take", [](unsigned long, lumo_value_t argv[], lumo_context_t) {
    Value got = integer(0);
    for (lumo_long_integer_t i = 0; i < lumo_value_get_integer(argv[0], ctx); ++i) {
      lumo_memory_scope_t block;
      lumo_memory_temp_begin(&block, ctx);
      alt([&](bool&) { return try_receive("p", any_integer(), got); });
      lumo_memory_temp_end(&block, ctx);
      lumo_component_control(ctx);
    }
  });
  // One side floods the other, which has to be given its turn.
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              rusage usage;
              long before = 0;
              Value c = create();
              connect(self_ref(), "p", c, "p");
              start(c, "take", 200000);
              for (int i = 0; i < 200000; ++i) {
                lumo_memory_scope_t block;
                lumo_memory_temp_begin(&block, ctx);
                send("p", integer(i));
                lumo_memory_temp_end(&block, ctx);
                lumo_component_control(ctx);
                if (i == 20000) {
                  getrusage(RUSAGE_SELF, &usage);
                  before = usage.ru_maxrss;
                }
              }
              wait_done(c);
              getrusage(RUSAGE_SELF, &usage);
              trace = usage.ru_maxrss - before < allowed_growth
                          ? "flat"
                          : "grew by " + std::to_string(usage.ru_maxrss - before);
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "flat");
}

TEST_F(Components, ManyComponentsRunInTheOrderOfTheirStart) {
  behaviour("tell", [](unsigned long, lumo_value_t argv[], lumo_context_t) {
    if (lumo_value_get_integer(argv[0], ctx) % 1000 == 0) trace += render(argv[0]) + " ";
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              for (int i = 0; i <= 3000; ++i) start(create(), "tell", i);
              alt([](bool&) { return lumo_component_try_done(lumo_value_all_c, ctx); });
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "0 1000 2000 3000 ");
}

TEST_F(Components, NamesAreFoundWhereABehaviourStands) {
  behaviour("callee", [](unsigned long, lumo_value_t argv[], lumo_context_t) {
    lumo_source_location_push("Test", "callee", argv, lumo_scope_function_c, "Test.ttcn", 9, ctx);
    trace += render(lumo_source_tracking_find_value("n", ctx)) + " ";
    lumo_source_location_pop(ctx);
  });
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              lumo_source_location_push("Test", "tc", nullptr, lumo_scope_testcase_c, "Test.ttcn", 1, ctx);
              trace += render(lumo_source_tracking_find_value("n", ctx)) + " ";
              lumo_source_location_push_block(ctx);
              Value x = lumo_type_instantiate_named_value(lumo_integer_type, "n", lumo_temp_alloc_c, ctx);
              lumo_value_set_integer(x, 5, ctx);
              trace += render(lumo_source_tracking_find_value("n", ctx)) + " ";
              Value argv[] = {integer(7), nullptr};
              lumo_symbol_entry_t row = lumo_find_element_with_check("Test", "callee", ctx);
              lumo_call_function(reinterpret_cast<lumo_function_t>(row->function_ptr), row->type_descriptor,
                                 1, argv, ctx);
              lumo_source_location_pop_block(ctx);
              trace += render(lumo_source_tracking_find_value("n", ctx));
              lumo_source_tracking_find_value("unknown", ctx);
            }),
            "error: 'unknown' is not known here");
  EXPECT_EQ(trace, "100 5 7 100");
}

}  // namespace
