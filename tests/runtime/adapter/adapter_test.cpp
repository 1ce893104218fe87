// Runs with an adapter: this program defines the functions of tri.h that the library otherwise
// substitutes.
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "component_support.h"
#include "tri.h"

using namespace lumos;
using namespace lumos::testing;

namespace {

std::vector<std::thread> threads;
std::string told;  // what the adapter was asked to do
std::atomic<bool> refuse_map{false};

std::string text_of(const BinaryString& data) {
  return {reinterpret_cast<const char*>(data.data), static_cast<size_t>(data.bits / 8)};
}

BinaryString binary(std::string& octets) {
  return {reinterpret_cast<unsigned char*>(octets.data()), static_cast<long>(octets.size() * 8), nullptr};
}

// Answers from a thread of its own, after a while.
void answer_later(std::string port, std::string octets) {
  threads.emplace_back([port, octets]() mutable {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    TriPortId id = {};
    id.portName = port.data();
    id.portIndex = -1;
    std::string from = "host:9";
    TriAddress address = binary(from);
    TriMessage message = binary(octets);
    triEnqueueMsg(&id, &address, nullptr, &message);
  });
}

}  // namespace

TriStatus triMap(const TriPortId* port, const TriPortId* system) {
  told +=
      std::string("map ") + port->compInst.compName + ":" + port->portName + " " + system->portName + "; ";
  return refuse_map ? TRI_ERROR : TRI_OK;
}

TriStatus triUnmap(const TriPortId* port, const TriPortId*) {
  told += std::string("unmap ") + port->portName + "; ";
  return TRI_OK;
}

TriStatus triSend(const TriComponentId* component, const TriPortId* system, const TriAddress* address,
                  const TriMessage* message) {
  told += "send " + text_of(*message) + " from " + text_of(component->compInst);
  if (address) told += " to " + text_of(*address);
  told += "; ";
  if (text_of(*message) == "garbage") {
    answer_later(system->portName, "no integer");
  } else if (text_of(*message) != "quiet") {
    answer_later(system->portName, text_of(*message) + "0");
  }
  return TRI_OK;
}

TriStatus triSUTactionInformal(const char* description) {
  told += std::string("action ") + description + "; ";
  return TRI_OK;
}

// Gives each inout parameter a digit more, and returns how many parameters there were.
TriStatus triExternalFunction(const TriFunctionId* function, TriParameterList* parameters,
                              TriParameter* result) {
  if (std::string(function->objectName) != "Proc") return TRI_ERROR;
  static std::string octets[4];
  for (long i = 0; i < parameters->length; ++i) {
    TriParameter& p = *parameters->parList[i];
    octets[i] = text_of(p.par) + std::to_string(i);
    if (p.mode != TRI_IN) p.par = binary(octets[i]);
  }
  octets[3] = std::to_string(parameters->length);
  result->par = binary(octets[3]);
  return TRI_OK;
}

namespace {

struct Adapter : Components {
  void SetUp() override {
    Components::SetUp();
    set_simulated(false);
    told.clear();
    refuse_map = false;
  }
  void TearDown() override {
    for (std::thread& t : threads) t.join();
    threads.clear();
    Components::TearDown();
  }
};

void map_p() {
  lumo_component_set_system_component_type(suite->component, ctx);
  lumo_component_map_port(self_ref(), "p", lumo_no_value_c, lumo_component_system(ctx), "q", lumo_no_value_c,
                          ctx);
}

TEST_F(Adapter, AnswersFromItsThread) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              map_p();
              send("p", integer(4));
              Value got = integer(0);
              alt([&](bool&) {
                return lumo_port_try_receive(element("p"), any_integer(), lumo_no_value_c, false, got,
                                             lumo_value_no_return_c, ctx);
              });
              trace += render(got);
              lumo_port_send(element("p"), integer(5), text("host:7"), ctx);
              alt([&](bool&) {
                return lumo_port_try_receive(element("p"), integer(50), lumo_no_value_c, false,
                                             lumo_value_no_return_c, lumo_value_no_return_c, ctx);
              });
              lumo_component_unmap_port(self_ref(), "p", lumo_no_value_c, lumo_component_system(ctx), "q",
                                        lumo_no_value_c, ctx);
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "40");
  EXPECT_EQ(told, "map mtc:p q; send 4 from 1; send 5 from 1 to host:7; unmap p; ");
}

TEST_F(Adapter, OctetsThatAreNoValueOfTheTypeDoNotMatch) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              map_p();
              send("p", text("garbage"));
              Value any_text = dynamic(lumo_charstring_type);
              lumo_value_assign(any_text, lumo_anyone_value_c, ctx);
              Value got = text("");
              alt([&](bool&) {
                if (try_receive("p", any_integer())) trace += "wrong";
                return try_receive("p", any_text, got);
              });
              trace += render(got);
              set_verdict(lumo_verdict_pass_c);
            }),
            "pass");
  EXPECT_EQ(trace, "\"no integer\"");
}

TEST_F(Adapter, IsWaitedFor) {
  EXPECT_EQ(run(
                [](unsigned long, lumo_value_t[], lumo_context_t) {
                  map_p();
                  send("p", text("quiet"));
                  alt([](bool&) { return try_receive("p", lumo_no_value_c); });
                },
                0.1),
            "error: the time given to the test case is over");
}

TEST_F(Adapter, MayRefuse) {
  refuse_map = true;
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) { map_p(); }),
            "error: the adapter refuses to map port p to q");
}

TEST_F(Adapter, RunsExternalFunctionsAndActions) {
  EXPECT_EQ(run([](unsigned long, lumo_value_t[], lumo_context_t) {
              lumo_port_sut_action(text("press"), ctx);
              Value a = integer(1), b = integer(2), c = integer(3);
              Value argv[] = {a, b, c, nullptr, nullptr};
              lumo_call_external_function(suite->procedure, argv, ctx);
              trace += render(a) + " " + render(b) + " " + render(c) + " " + render(argv[3]);
              set_verdict(lumo_verdict_pass_c);
              Value none[] = {nullptr, nullptr};
              lumo_call_external_function(suite->returning, none, ctx);
            }),
            "error: external function 'r' has no C function and the adapter does not know it");
  EXPECT_EQ(trace, "1 1 32 3");
  EXPECT_EQ(told, "action press; ");
}

}  // namespace
