#include "ports/outside.h"

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstring>
#include <list>
#include <map>
#include <memory>
#include <mutex>

#include "text/codec.h"
#include "value/error.h"
#include "text/log.h"
#include "text/log_file.h"
#include "ports/addresses.h"
#include "ports/no_adapter.h"
#include "report/events.h"
#include "report/report_file.h"
#include "value/symbols.h"
#include "transport/channel.h"
#include "tri.h"
#include "value/types.h"

namespace lumos {

namespace {

bool loopback = false;
size_t mapped_outside = 0;  // mappings that a linked adapter knows

// --- what the adapter is told, in its own structures

std::string octets_of(const BinaryString* data) {
  if (!data || !data->data || data->bits <= 0) return {};
  return {reinterpret_cast<const char*>(data->data), static_cast<size_t>(data->bits + 7) / 8};
}

BinaryString binary(const std::string& octets) {
  return {reinterpret_cast<unsigned char*>(const_cast<char*>(octets.data())),
          static_cast<long>(octets.size()) * 8, nullptr};
}

QualifiedName qualified(lumo_type_t type) {
  auto text = [](const char* t) { return const_cast<char*>(t ? t : ""); };
  return {text(lumo_type_definition_module(type, nullptr)), text(lumo_type_definition_name(type, nullptr)),
          nullptr};
}

struct PortId {
  std::string number;
  TriPortId id;

  explicit PortId(const Port& port) : number(std::to_string(port.owner->number)) {
    id.compInst = {binary(number), const_cast<char*>(port.owner->name.c_str()), qualified(port.owner->type)};
    id.portName = const_cast<char*>(port.name);
    id.portIndex = port.index;
    id.portType = qualified(port.type);
    id.aux = nullptr;
  }
};

// Octets of a value; false leaves a line in the log.
bool encode_for(Value v, std::string& octets, std::string& error) {
  std::string why;
  if (encode_value(v, octets, why)) return true;
  error = std::string("a value of type '") + type_name(v->type) + "' cannot be encoded: " + why;
  return false;
}

bool encode_for(const char* port, Value v, std::string& octets) {
  std::string error;
  if (encode_for(v, octets, error)) return true;
  log_line(lumo_log_msg_error_c, std::string("port '") + port + "': " + error);
  return false;
}

// A value of octets; null leaves a line in the log.
Value decode_part(lumo_type_t type, const std::string& octets) {
  std::string fault;
  Value v = decode_value(plain_type(type), octets, nullptr, fault);
  if (!v) log_line(lumo_log_msg_warning_c, undecodable("", type, octets, fault));
  return v;
}

// Parameters of a call or reply, encoded each for itself.
struct Parameters {
  std::list<std::string> octets;
  std::list<TriParameter> parameters;
  std::vector<TriParameter*> pointers;
  TriParameterList list{nullptr, 0};

  void add(Value v, TriParameterPassingMode mode) {
    octets.emplace_back();
    if (v && v->form != Form::special && v->form != Form::unset) encode_for("", v, octets.back());
    parameters.push_back({binary(octets.back()), mode});
    pointers.push_back(&parameters.back());
    list = {pointers.data(), static_cast<long>(pointers.size())};
  }
};

TriParameterPassingMode mode_of(const lumo_field_info_t& formal) {
  if (formal.property & lumo_field_property_inout_value_c) return TRI_INOUT;
  return formal.property & lumo_field_property_out_value_c ? TRI_OUT : TRI_IN;
}

size_t formal_count(lumo_type_t signature) {
  const lumo_field_info_t* formals = field_info(signature);
  size_t count = formals ? field_count(signature) : 0;
  if (count && formals[count - 1].property & lumo_field_property_return_value_c) --count;
  return count;
}

bool travels(TriParameterPassingMode mode, bool is_call) {
  return mode == TRI_INOUT || (mode == TRI_IN) == is_call;
}

void add_parameters(Parameters& parameters, const Message& m) {
  const lumo_field_info_t* formals = field_info(m.signature);
  bool is_call = m.kind == MessageKind::call;
  for (size_t i = 0; i < formal_count(m.signature) && i < m.content->parts.size; ++i) {
    TriParameterPassingMode mode = mode_of(formals[i]);
    parameters.add(travels(mode, is_call) ? m.content->parts.data[i] : nullptr, mode);
  }
}

TriStatus hand_over(const PortId& from, const PortId& to, const TriAddress* address, const Message& m,
                    std::string& octets) {
  const TriComponentId* component = &from.id.compInst;
  TriSignatureId signature = qualified(m.signature);
  switch (m.kind) {
    case MessageKind::message: {
      if (!encode_for(to.id.portName, m.content, octets)) return TRI_ERROR;
      TriMessage message = binary(octets);
      return triSend(component, &to.id, address, &message);
    }
    case MessageKind::exception: {
      if (!encode_for(to.id.portName, m.content, octets)) return TRI_ERROR;
      TriException exception = binary(octets);
      return triRaise(component, &to.id, address, &signature, &exception);
    }
    case MessageKind::call: {
      Parameters parameters;
      add_parameters(parameters, m);
      return triCall(component, &to.id, address, &signature, &parameters.list);
    }
    default: {
      Parameters parameters;
      add_parameters(parameters, m);
      TriParameter result = {{nullptr, 0, nullptr}, TRI_OUT};
      if (m.result && encode_for(to.id.portName, m.result, octets)) result.par = binary(octets);
      return triReply(component, &to.id, address, &signature, &parameters.list, &result);
    }
  }
}

// --- what the adapter or a channel sends, kept until the scheduler looks

struct Arrival {
  MessageKind kind = MessageKind::message;
  std::string port;
  long port_index = -1;
  long component = 0;  // 0 for any
  bool has_address = false;
  std::string address;
  std::string octets;
  std::string module, signature;
  std::vector<std::string> parameters;
  std::string result;
  bool has_result = false;
  bool from_channel = false;  // the address is "host:port"
  bool is_trouble = false;    // of a channel: the octets are the text of it
  Trouble trouble = Trouble::none;
};

std::mutex arrivals_lock;
std::condition_variable arrived;
std::list<Arrival> arrivals;
std::atomic<bool> something_arrived{false};

Arrival new_arrival(MessageKind kind, const TriPortId* port, const TriAddress* address,
                    const TriComponentId* component) {
  Arrival a;
  a.kind = kind;
  a.port = port && port->portName ? port->portName : "";
  a.port_index = port ? port->portIndex : -1;
  a.component = component ? std::atol(octets_of(&component->compInst).c_str()) : 0;
  a.has_address = address && address->data && address->bits > 0;
  a.address = octets_of(address);
  return a;
}

void set_signature(Arrival& a, const TriSignatureId* signature, const TriParameterList* parameters) {
  a.module = signature && signature->moduleName ? signature->moduleName : "";
  a.signature = signature && signature->objectName ? signature->objectName : "";
  for (long i = 0; parameters && i < parameters->length; ++i)
    a.parameters.push_back(octets_of(&parameters->parList[i]->par));
}

// Channels are not read while so much waits to be taken.
constexpr size_t most_arrivals = 10000, most_queued = 10000, most_octets = size_t(1) << 26;
std::atomic<size_t> waiting_octets{0}, waiting_arrivals{0};
std::atomic<bool> queues_are_full{false};

void arrive(Arrival a) {
  std::lock_guard<std::mutex> hold(arrivals_lock);
  waiting_octets += a.octets.size();
  ++waiting_arrivals;
  arrivals.push_back(std::move(a));
  something_arrived = true;
  arrived.notify_one();
}

lumo_type_t address_type() {
  for (const Module& m : registered_modules())
    if (lumo_symbol_entry_t row = lumo_find_element(m.name, "address", nullptr))
      if (row->type_descriptor) return plain_type(row->type_descriptor);
  return lumo_octetstring_type;
}

// The parameters as a value of the signature; parts that did not travel stay empty.
Value signature_content(const Arrival& a, lumo_type_t signature) {
  Value content = make_root(plain_type(signature), lumo_perm_alloc_c);
  const lumo_field_info_t* formals = field_info(signature);
  for (size_t i = 0; i < formal_count(signature) && i < a.parameters.size() && i < content->parts.size; ++i) {
    if (!travels(mode_of(formals[i]), a.kind == MessageKind::call)) continue;
    if (Value v = decode_part(formals[i].type, a.parameters[i])) store_part(content, i, v);
  }
  return content;
}

lumo_type_t result_type(lumo_type_t signature) {
  size_t count = formal_count(signature);
  return field_count(signature) > count ? field_info(signature)[count].type : nullptr;
}

// False for a signature that no module has.
bool fill(Message& m, const Arrival& a) {
  if (a.kind == MessageKind::message || a.kind == MessageKind::exception) {
    m.raw = a.octets;
    m.encoded = true;
    encoded_octets += m.raw.size();
  }
  if (a.kind == MessageKind::message) return true;
  lumo_symbol_entry_t row = lumo_find_element(a.module.c_str(), a.signature.c_str(), nullptr);
  if (!row || !row->type_descriptor) return false;
  m.signature = row->type_descriptor;
  if (a.kind == MessageKind::exception) return true;
  m.content = signature_content(a, m.signature);
  lumo_type_t type = a.has_result ? result_type(m.signature) : nullptr;
  Value result = type ? decode_part(type, a.result) : nullptr;
  if (result) m.result = copy_value(result, lumo_perm_alloc_c);
  return true;
}

// None where it is not known what leaves or arrives: of calls and replies each parameter is encoded by
// itself.
std::string_view known_octets(const Message& m, const std::string& octets) {
  const bool is_whole = m.kind == MessageKind::message || m.kind == MessageKind::exception;
  return is_whole || !octets.empty() ? std::string_view(octets) : std::string_view();
}

void tell_arrival(const Port& port, const Port& system_port, Message& m, std::string_view octets) {
  if (!m.raw.empty() && log_enabled(lumo_log_msg_event_c))
    log_line(lumo_log_msg_event_c,
             port_name(system_port) + " got '" + hex_text(m.raw) + "'O for " + port_name(port));
  if (!events_wanted) return;
  Task* outer = current_task;
  current_task = &port.owner->task;
  tell(EventKind::arrive, port_name(port), port_name(system_port), shown_content(m), octets);
  current_task = outer;
}

void tell_departure(const Port& port, const Port& system_port, Message& m, std::string_view octets) {
  if (!octets.empty() && log_enabled(lumo_log_msg_event_c))
    log_line(lumo_log_msg_event_c, port_name(system_port) + " sends '" + hex_text(octets) + "'O");
  if (events_wanted) tell(EventKind::send, port_name(port), port_name(system_port), shown_content(m), octets);
}

// --- channels of the library

struct OpenChannel {
  std::unique_ptr<Channel> channel;
  size_t mappings = 0;
};
std::map<const Port*, OpenChannel> channels;  // by ports of the system
bool fullness_is_told = false;                // in this test case

bool has_full_queue(const Port& system_port) {
  for (size_t i = 0; i < system_port.mappings.places(); ++i)
    if (const Port* port = system_port.mappings.at(i); port && port->queues[0].length > most_queued)
      return true;
  return false;
}

void look_at_queues() {
  queues_are_full =
      encoded_octets > most_octets ||
      std::any_of(channels.begin(), channels.end(), [](const auto& c) { return has_full_queue(*c.first); });
  if (!queues_are_full || fullness_is_told) return;
  fullness_is_told = true;
  log_format(lumo_log_msg_warning_c,
             "more than %zu messages or %zu octets wait at ports: nothing more is read until "
             "they are taken",
             most_queued, most_octets);
}

ChannelEvents events_for(const Port& system_port) {
  Arrival pattern;
  pattern.kind = MessageKind::message;
  pattern.port = system_port.name;
  pattern.port_index = system_port.index;
  pattern.component = 0;
  pattern.from_channel = true;
  ChannelEvents events;
  events.message = [pattern](std::string message, std::string peer) {
    Arrival a = pattern;
    a.octets = std::move(message);
    a.has_address = !peer.empty();
    a.address = std::move(peer);
    arrive(std::move(a));
  };
  events.fault = [pattern](std::string text, Trouble trouble) {
    Arrival a = pattern;
    a.octets = std::move(text);
    a.is_trouble = true;
    a.trouble = trouble;
    arrive(std::move(a));
  };
  events.pause = [] {
    return queues_are_full || waiting_arrivals > most_arrivals || waiting_octets > most_octets;
  };
  return events;
}

// What goes into the text of a fault, from which nobody comes back.
std::string& error_kept = *new std::string;

// False leaves the reason in error.
bool map_channel(const LinkSpec& spec, const Port& system_port, std::string& error) {
  OpenChannel& open = channels[&system_port];
  if (!open.channel) open.channel = open_channel(spec, events_for(system_port), error);
  ++open.mappings;
  if (open.channel) return true;
  channels.erase(&system_port);
  return false;
}

Channel* channel_of(const Port& system_port) {
  const auto found = channels.find(&system_port);
  return found == channels.end() ? nullptr : found->second.channel.get();
}

// False leaves the reason in error.
bool send_by(Channel& channel, const Port& port, const Port& system_port, Message& message,
             std::string& error) {
  std::string octets, peer;
  if (message.kind != MessageKind::message) {
    error = "only messages go through the links of the library";
  } else if (!encode_for(message.content, octets, error)) {
    return false;
  } else if (message.address && !address_text(message.address, peer)) {
    error = "the address is neither \"host:port\" nor a record of host and port";
  } else if (channel.send(octets, peer, error)) {
    tell_departure(port, system_port, message, octets);
    return true;
  }
  return false;
}

void deliver_trouble(const Arrival& a) {
  const std::string text = "port " + a.port + ": " + a.octets;
  const bool is_lost = a.trouble == Trouble::lost;
  if (is_lost && !test_case->ended) return end_test_case(lumo_verdict_error_c, text.c_str());  // and tells it
  log_line(is_lost                      ? lumo_log_msg_error_c
           : a.trouble == Trouble::some ? lumo_log_msg_warning_c
                                        : lumo_log_msg_info_c,
           text);
}

Value sender_address(const Arrival& a) {
  if (!a.has_address) return nullptr;
  return a.from_channel ? address_value(address_type(), a.address) : decode_part(address_type(), a.address);
}

void deliver_arrival(const Arrival& a) {
  if (a.is_trouble) return deliver_trouble(a);
  if (!test_case || !test_case->system || !test_case->system->record) return;
  Component& system = *test_case->system;
  Port* system_port = find_port(system, field_index(system.record->type, a.port.c_str()), a.port_index);
  bool delivered = false;
  for (size_t i = 0; system_port && i < system_port->mappings.places(); ++i) {
    if (!system_port->mappings.at(i)) continue;
    Port& port = *system_port->mappings.at(i);
    if (a.component && a.component != port.owner->number) continue;
    TempScope scope;
    Message* m = new_message(a.kind);
    m->sender = test_case->system->number;
    if (!fill(*m, a)) {
      delete_message(m);
      break;
    }
    Value address = sender_address(a);
    if (address) m->address = copy_value(address, lumo_perm_alloc_c);
    tell_arrival(port, *system_port, *m, known_octets(*m, m->raw));
    deliver(port, m);
    delivered = true;
  }
  if (!delivered)
    log_format(lumo_log_msg_warning_c, "what arrived at system port %s has no receiver", a.port.c_str());
}

}  // namespace

void set_loopback(bool on) {
  loopback = on;
}

void outside_test_case_begins(const char* module, const char* name) {
  mapped_outside = 0;
  fullness_is_told = false;
  adapter_is_missing = false;
  triSAReset();
  TriTestCaseId id = {const_cast<char*>(module), const_cast<char*>(name), nullptr};
  TriPortIdList none = {nullptr, 0};
  triExecuteTestcase(&id, &none);
}

void outside_test_case_ends() {
  triEndTestCase();
  channels.clear();
  queues_are_full = false;
  std::lock_guard<std::mutex> hold(arrivals_lock);
  arrivals.clear();
  waiting_octets = waiting_arrivals = 0;
  something_arrived = false;
}

void outside_map(Port& component_port, Port& system_port) {
  if (const LinkSpec* spec = link_for(system_port.name, system_port.index)) {
    if (!map_channel(*spec, system_port, error_kept))
      fault("port %s: %s", system_port.name, error_kept.c_str());
    ++mapped_outside;
    return;
  }
  bool refused;
  {
    PortId from(component_port), to(system_port);
    adapter_is_missing = false;
    refused = triMap(&from.id, &to.id) != TRI_OK;
  }
  if (refused) fault("the adapter refuses to map port %s to %s", component_port.name, system_port.name);
  if (!adapter_is_missing) ++mapped_outside;
}

void outside_unmap(Port& component_port, Port& system_port) {
  if (const auto open = channels.find(&system_port); open != channels.end()) {
    if (--open->second.mappings == 0) channels.erase(open);
    return;
  }
  PortId from(component_port), to(system_port);
  triUnmap(&from.id, &to.id);
}

void outside_send(Port& component_port, Port& system_port, Message& message) {
  if (loopback) {
    tell_departure(component_port, system_port, message, {});
    Message* back = new_message(message.kind);
    back->content = copy_value(message.content, lumo_perm_alloc_c);
    if (message.result) back->result = copy_value(message.result, lumo_perm_alloc_c);
    if (message.address) back->address = copy_value(message.address, lumo_perm_alloc_c);
    back->signature = message.signature;
    back->shown = message.shown;
    back->sender = test_case->system->number;
    tell_arrival(component_port, system_port, *back, {});
    deliver(component_port, back);
    return;
  }
  bool refused;
  if (Channel* channel = channel_of(system_port)) {
    if (!send_by(*channel, component_port, system_port, message, error_kept))
      fault("port %s: %s", system_port.name, error_kept.c_str());
    refused = false;
  } else {
    PortId from(component_port), to(system_port);
    std::string octets, sent;
    TriAddress address;
    if (message.address) {
      encode_for(system_port.name, message.address, octets);
      address = binary(octets);
    }
    refused = hand_over(from, to, message.address ? &address : nullptr, message, sent) != TRI_OK;
    if (!refused) tell_departure(component_port, system_port, message, known_octets(message, sent));
  }
  if (refused) fault("what port %s sends cannot be encoded, or the adapter refuses it", component_port.name);
}

void outside_action(const std::string& text) {
  if (execute_instead) fault("it asks for an action");
  log_line(lumo_log_msg_info_c, "action: " + text);
  triSUTactionInformal(text.c_str());
}

void outside_external_function(lumo_type_t signature, lumo_value_t argv[]) {
  if (execute_instead) fault("it calls external function '%s'", type_name(signature));
  const lumo_field_info_t* formals = field_info(signature);
  size_t count = formal_count(signature);
  lumo_type_t type = result_type(signature);
  bool refused;
  Value* results = nullptr;
  Value holder = make_root(lumo_undefined_type, lumo_temp_alloc_c);
  reserve_text(holder, (count + 1) * sizeof(Value));
  results = reinterpret_cast<Value*>(holder->text.data);
  std::memset(static_cast<void*>(results), 0, (count + 1) * sizeof(Value));
  {
    Parameters parameters;
    for (size_t i = 0; i < count; ++i) {
      TriParameterPassingMode mode = mode_of(formals[i]);
      parameters.add(mode == TRI_OUT ? nullptr : argv[i], mode);
    }
    TriParameter result = {{nullptr, 0, nullptr}, TRI_OUT};
    TriFunctionId id = qualified(signature);
    refused = triExternalFunction(&id, &parameters.list, &result) != TRI_OK;
    for (size_t i = 0; i < count && !refused; ++i)
      if (parameters.pointers[i]->mode != TRI_IN)
        results[i] = decode_part(formals[i].type, octets_of(&parameters.pointers[i]->par));
    if (type && !refused) results[count] = decode_part(type, octets_of(&result.par));
  }
  if (refused)
    fault("external function '%s' has no C function and the adapter does not know it", type_name(signature));
  for (size_t i = 0; i < count; ++i)
    if (results[i]) lumo_value_assign(argv[i], results[i], current_task);
  // The caller takes a result out of the slot behind the arguments.
  if (type && !results[count])
    fault("external function '%s' returned nothing that can be decoded", type_name(signature));
  if (type) argv[count] = results[count];
}

void take_messages_from_outside() {
  if (queues_are_full) look_at_queues();
  if (!something_arrived) return;
  std::list<Arrival> taken;
  {
    std::lock_guard<std::mutex> hold(arrivals_lock);
    taken.swap(arrivals);
    waiting_octets = waiting_arrivals = 0;
    something_arrived = false;
  }
  for (const Arrival& a : taken) deliver_arrival(a);
  if (!channels.empty()) look_at_queues();
}

void wait_outside(Time until) {
  flush_log();
  flush_events();
  std::unique_lock<std::mutex> hold(arrivals_lock);
  auto wake_up = [] { return something_arrived.load(); };
  // The end of the run may be asked for meanwhile, and signals wake nobody here.
  constexpr Time longest = 100000000;
  Time left = until == never ? longest : std::min(until - now(), longest);
  if (left > 0) arrived.wait_for(hold, std::chrono::nanoseconds(left), wake_up);
}

bool outside_may_send() {
  return mapped_outside > 0 || something_arrived;
}

}  // namespace lumos

using namespace lumos;

void triEnqueueMsg(const TriPortId* tsiPortId, const TriAddress* sutAddress,
                   const TriComponentId* componentId, const TriMessage* receivedMessage) {
  Arrival a = new_arrival(MessageKind::message, tsiPortId, sutAddress, componentId);
  a.octets = octets_of(receivedMessage);
  arrive(std::move(a));
}

void triEnqueueCall(const TriPortId* tsiPortId, const TriAddress* sutAddress,
                    const TriComponentId* componentId, const TriSignatureId* signatureId,
                    const TriParameterList* parameterList) {
  Arrival a = new_arrival(MessageKind::call, tsiPortId, sutAddress, componentId);
  set_signature(a, signatureId, parameterList);
  arrive(std::move(a));
}

void triEnqueueReply(const TriPortId* tsiPortId, const TriAddress* sutAddress,
                     const TriComponentId* componentId, const TriSignatureId* signatureId,
                     const TriParameterList* parameterList, const TriParameter* returnValue) {
  Arrival a = new_arrival(MessageKind::reply, tsiPortId, sutAddress, componentId);
  set_signature(a, signatureId, parameterList);
  a.has_result = returnValue != nullptr;
  if (returnValue) a.result = octets_of(&returnValue->par);
  arrive(std::move(a));
}

void triEnqueueException(const TriPortId* tsiPortId, const TriAddress* sutAddress,
                         const TriComponentId* componentId, const TriSignatureId* signatureId,
                         const TriException* exc) {
  Arrival a = new_arrival(MessageKind::exception, tsiPortId, sutAddress, componentId);
  set_signature(a, signatureId, nullptr);
  a.octets = octets_of(exc);
  arrive(std::move(a));
}
