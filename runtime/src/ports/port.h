// Ports: the queues of what arrived, and the connections to other ports.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "run/component.h"

namespace lumos {

enum class MessageKind : uint8_t { message, call, reply, exception };

struct Message {
  MessageKind kind = MessageKind::message;
  Value content = nullptr;  // owned; of a call or reply a value of the signature
  Value result = nullptr;   // owned; of a reply
  lumo_type_t signature = nullptr;
  long sender = 0;          // number of a component
  Value address = nullptr;  // owned; sender in the system under test
  std::string raw;          // encoded content, not decoded yet
  bool encoded = false;
  lumo_type_t decoded_as = nullptr;  // what the content is a value of, of an encoded message
  std::vector<lumo_type_t> refused;  // types that the octets are none of
  std::string shown;                 // the content as text, once somebody asked (shown_content)
  Message* next = nullptr;
};
// The octets of all messages that wait encoded.
extern size_t encoded_octets;
Message* new_message(MessageKind kind);
void delete_message(Message* message);
std::string_view shown_content(Message& message);

struct Queue {
  Message* first = nullptr;
  Message* last = nullptr;
  size_t length = 0;
  size_t allowed = SIZE_MAX;  // of a halted port: how many it still delivers
};

enum class PortState : uint8_t { started, stopped, halted };

// A call that was taken and not answered yet.
struct TakenCall {
  lumo_type_t signature;
  long caller;
};

struct Port;

// The ports on the other side of a port, each once, in the order in which they came. One is found and taken
// out in the same time however many there are.
class Links {
 public:
  bool empty() const { return count_ == 0; }
  size_t size() const { return count_; }
  bool has(const Port* port) const { return place_of(port) != SIZE_MAX; }
  void add(Port* port);
  void remove(const Port* port);
  Port* first() const { return places_[first_]; }
  Port* last() const { return places_.back(); }
  // Places, of which some are empty (null). Others may be added meanwhile.
  size_t places() const { return places_.size(); }
  Port* at(size_t place) const { return places_[place]; }

 private:
  size_t place_of(const Port* port) const;
  void close_up();

  std::vector<Port*> places_;  // the last one is not empty
  size_t first_ = 0;           // that is not empty
  size_t count_ = 0;
  std::unique_ptr<std::unordered_map<const Port*, size_t>> table_;  // of many
};

struct Port {
  Component* owner = nullptr;
  const char* name = "";
  long index = -1;   // in an array of ports
  size_t place = 0;  // among the ports of its owner
  lumo_type_t type = nullptr;
  PortState state = PortState::started;
  Queue queues[2];  // for messages; for calls and their answers
  Links connections;
  Links mappings;
  bool was_mapped = false;
  bool is_mapped_itself = false;  // by its test case, and nobody has asked for it since
  Time call_expiry = never;
  std::unique_ptr<std::deque<TakenCall>> taken;  // the latest of them; null before the first
  mutable std::string full_name;                 // once somebody asked (port_name)
};

// Gives the element the ports that its type asks for; nothing for other types.
void make_ports(Component& component, Value element, lumo_type_t type, const char* name);
// Ends all ports of the component.
void close_ports(Component& component);
// The port of the component among the connections or mappings of a port; null without one. Ports with many of
// them ask the other side, since both have each other in their lists.
Port* linked_port(const Port& port, Links Port::*list, const Component& component);
// Puts the message into the queue and wakes the owner; takes the message over.
void deliver(Port& port, Message* message);
// "component:port", with the index in an array.
const std::string& port_name(const Port& port);
// Null if there is none, or the component has ended.
Port* find_port(Component& component, long field, long index);

}  // namespace lumos
