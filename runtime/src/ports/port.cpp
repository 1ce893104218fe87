#include "ports/port.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "text/codec.h"
#include "value/error.h"
#include "value/location.h"
#include "text/log.h"
#include "ports/attempts.h"
#include "ports/outside.h"
#include "report/events.h"
#include "template/templates.h"
#include "run/scheduler.h"
#include "run/timer.h"
#include "value/subtypes.h"
#include "value/types.h"

namespace lumos {

namespace {

Message* free_messages = nullptr;

// A sender yields when a receiver is so far behind.
constexpr size_t long_queue = 1024;

Port* port_of(Value v) {
  if (!v || v->form != Form::port) fault("a port is needed");
  return v->port;
}

}  // namespace

const std::string& port_name(const Port& port) {
  std::string& name = port.full_name;
  if (!name.empty()) return name;
  name = port.owner->name + ":" + port.name;
  if (port.index >= 0) name += "[" + std::to_string(port.index) + "]";
  return name;
}

namespace {

// As it stands in the operation that sends it.
void render_message(std::string& text, const Message& m) {
  if (m.kind != MessageKind::message && m.signature)
    (text += type_name(m.signature)) += m.kind == MessageKind::exception ? ", " : ":";
  render_to(text, m.content);
  if (m.result) render_to(text += " value ", m.result);
}

void log_port_event(const char* what, const Port& port, const Message& m) {
  std::string& text = log_text();
  ((text += what) += ' ') += port_name(port);
  if (m.content) render_message(text += ": ", m);
  log_line(lumo_log_msg_event_c, text);
}

inline void log_port(const char* what, const Port& port, const Message& m) {
  if (log_enabled(lumo_log_msg_event_c)) log_port_event(what, port, m);
}

inline void log_received(const char* what, const Port& port, Message& m) {
  log_port(what, port, m);
  if (events_wanted) tell(EventKind::receive, port_name(port), {}, shown_content(m));
}

Queue& queue_for(Port& port, MessageKind kind) {
  return port.queues[kind != MessageKind::message];
}

void drop_queue(Queue& queue) {
  while (Message* m = queue.first) {
    queue.first = m->next;
    delete_message(m);
  }
  queue = Queue();
}

void drop_queues(Port& port) {
  for (Queue& queue : port.queues) drop_queue(queue);
}

void unlink(Port& port) {
  // A port may be connected to itself.
  while (!port.connections.empty()) {
    Port* other = port.connections.last();
    port.connections.remove(other);
    other->connections.remove(&port);
  }
  while (!port.mappings.empty()) {
    Port* other = port.mappings.first();
    port.mappings.remove(other);
    other->mappings.remove(&port);
    if (other->owner == test_case->system) outside_unmap(port, *other);
  }
}

Port* make_port(Component& c, Value element, lumo_type_t type, const char* name, long index) {
  auto* port = new Port;
  port->owner = &c;
  port->name = name;
  port->index = index;
  port->type = record_type(type);
  port->place = c.ports.size();
  c.ports.push_back(port);
  clear_contents(element);
  element->form = Form::port;
  element->port = port;
  return port;
}

void make_port_array(Component& c, Value element, lumo_type_t type, const char* name, long& index) {
  shape(element);
  for (size_t i = 0; i < element->parts.size; ++i) {
    lumo_type_t inner = element_type(type);
    Value part = force_part(element, i);
    part->label = name;
    if (base_kind(inner) == lumo_type_kind_array) {
      make_port_array(c, part, inner, name, index);
    } else {
      make_port(c, part, inner, name, index++);
    }
  }
}

bool is_port_kind(lumo_type_kind_t kind) {
  return kind == lumo_type_kind_port || kind == lumo_type_kind_port_ref;
}

bool holds_ports(lumo_type_t type) {
  for (int i = 0; i < 100 && base_kind(type) == lumo_type_kind_array; ++i) type = element_type(type);
  return is_port_kind(base_kind(type));
}

// --- sending

void check_can_send(Port& port) {
  check_effect("send");
  if (port.state == PortState::stopped) fault("port %s is stopped", port.name);
  if (port.state == PortState::halted) fault("port %s is halted", port.name);
  if (port.connections.empty() && port.mappings.empty())
    fault("port %s is neither connected nor mapped", port.name);
}

Message* copy_message(const Message& m) {
  Message* copy = new_message(m.kind);
  if (m.content) copy->content = copy_value(m.content, lumo_perm_alloc_c);
  if (m.result) copy->result = copy_value(m.result, lumo_perm_alloc_c);
  copy->shown = m.shown;
  copy->signature = m.signature;
  copy->sender = m.sender;
  return copy;
}

void send_to_port(Port& from, Port& to, Message* message) {
  if (to.owner == test_case->system) {
    outside_send(from, to, *message);
    delete_message(message);
  } else {
    if (events_wanted) tell(EventKind::send, port_name(from), port_name(to), shown_content(*message));
    deliver(to, message);
  }
}

Port* connected_to(Port& port, Value recipient) {
  Component* c = component_of(recipient);
  for (const auto list : {&Port::connections, &Port::mappings})
    if (Port* other = c ? linked_port(port, list, *c) : nullptr) return other;
  fault("port %s has no connection to %s", port.name, c ? c->name.c_str() : "null");
}

void send_to_all(Port& port, Message* message) {
  self().unsent = nullptr;
  for (const auto list : {&Port::connections, &Port::mappings})
    for (size_t i = 0; i < (port.*list).places(); ++i)
      if (Port* to = (port.*list).at(i)) send_to_port(port, *to, copy_message(*message));
  delete_message(message);
}

// Where a message goes for one recipient: a component, or an address of the system under test, which it then
// carries.
Port* way_to(Port& port, Message& message, Value recipient) {
  recipient = settled(recipient);
  const bool is_null = is_special(recipient, Special::null_component);
  if (recipient->form == Form::component || is_null) return connected_to(port, recipient);
  if (port.mappings.empty()) fault("port %s is not mapped, so there is no address to send to", port.name);
  message.address = copy_value(recipient, lumo_perm_alloc_c);
  return port.mappings.first();
}

// A list of recipients has fields without a property, which no declared record has: those of an address have
// one.
bool are_several(Value recipient) {
  if (recipient->form == Form::vector) return true;
  return recipient->form == Form::fields && recipient->parts.size > 0 &&
         field_info(recipient->type)[0].property == lumo_field_no_property_c;
}

void send_to_several(Port& port, Message* message, Value list) {
  for (size_t i = 0; i < list->parts.size; ++i)
    if (Value recipient = list->parts.data[i]) {
      Message* copy = copy_message(*message);
      Port& to = *way_to(port, *copy, recipient);
      send_to_port(port, to, copy);
    }
  self().unsent = nullptr;
  delete_message(message);
}

void send_message(Port& port, Message* message, Value recipient) {
  message->sender = port.owner->number;
  // Freed with the component if it faults before the message is on its way.
  Component& sender = self();
  sender.unsent = message;
  Port* to = nullptr;
  if (!recipient || recipient == lumo_no_value_c) {
    if (port.connections.size() + port.mappings.size() > 1)
      fault("port %s has several connections, so a receiver has to be named", port.name);
    to = port.connections.empty() ? port.mappings.first() : port.connections.first();
  } else if (recipient == lumo_value_all_c) {
    return send_to_all(port, message);
  } else {
    if (recipient->form != Form::special && is_template(recipient))
      recipient = valueof_value(recipient, lumo_temp_alloc_c);
    if (are_several(recipient)) return send_to_several(port, message, recipient);
    to = way_to(port, *message, recipient);
  }
  sender.unsent = nullptr;
  bool behind = queue_for(*to, message->kind).length >= long_queue && to->owner != port.owner;
  send_to_port(port, *to, message);
  if (behind) yield();
  maybe_yield();
}

bool is_given(Value template_value) {
  return template_value && template_value != lumo_no_value_c;
}

Value content_of(Value template_value) {
  if (!template_value) fault("use of a value that is not initialized");
  Value v = template_value->form != Form::special && is_template(template_value)
                ? valueof_value(template_value, lumo_temp_alloc_c)
                : settled(template_value);
  if (v->form == Form::special || !is_complete(v))
    fault("a value that is sent is not completely initialized");
  check_belongs(v, v->type);
  return v;
}

// What is sent, for the message to own: a value that the statement made, or that was made just now from a
// template, is taken as it is.
Value owned_content_of(Value template_value) {
  const size_t mark = std::min(current_task->roots.size(), current_task->statement_roots);
  Value v = content_of(template_value);
  const bool is_new = v->life == Life::temp && v->root >= mark && !v->pinned && !v->pending;
  if (!is_new || v->form == Form::external) return copy_value(v, lumo_perm_alloc_c);
  current_task->roots[v->root] = nullptr;
  v->life = Life::perm;
  return v;
}

// --- receiving

// What a queue delivers next.
Message* head_of(const Port& port, const Queue& queue) {
  if (port.state == PortState::stopped || queue.allowed == 0) return nullptr;
  return queue.first;
}

Message* head_of(Port& port, MessageKind kind) {
  Message* m = head_of(port, queue_for(port, kind));
  return m && m->kind == kind ? m : nullptr;
}

void remove_head(Port& port, MessageKind kind) {
  Queue& queue = queue_for(port, kind);
  Message* m = queue.first;
  queue.first = m->next;
  if (!queue.first) queue.last = nullptr;
  --queue.length;
  if (port.state == PortState::halted) {
    --queue.allowed;
    if (port.queues[0].allowed + port.queues[1].allowed == 0) port.state = PortState::stopped;
  }
  delete_message(m);
}

Value sender_of(const Message& m) {
  if (m.address) return m.address;
  return reference_to(*test_case->components[static_cast<size_t>(m.sender) - 1]);
}

// The sender is only known as long as its message.
void note_sender(Value pattern, Value sender) {
  Value kept = copy_value(sender, lumo_perm_alloc_c);
  note_attempt(pattern, kept, Attempted::sender);
  release_content(kept);
}

bool sender_fits(const Message& m, Value sender) {
  if (!sender || sender == lumo_no_value_c) return true;
  TempScope scope;
  Value from = sender_of(m);
  bool address = from->kind != lumo_type_kind_component_ref;
  bool wants_component =
      sender->kind == lumo_type_kind_component_ref || sender->kind == lumo_type_kind_component;
  // A template of no type, such as a list that holds `mtc`, asks for no kind of sender.
  bool fits = sender->kind == lumo_type_kind_undefined || address != wants_component;
  if (fits) {
    Quiet quiet;
    fits = match_value(sender, from);
  }
  if (!fits) note_sender(sender, from);
  return fits;
}

// Types are told apart by name, not by structure. A template without a type takes any.
bool type_fits(Value pattern, Value content) {
  if (!pattern->type || pattern->form == Form::special) return true;
  const lumo_type_info_struct_t* wanted = root_of(pattern->type);
  return !wanted || wanted->kind == lumo_type_kind_undefined || wanted == root_of(content->type);
}

// Turns encoded content into a value of the type that the template asks for. What was found out about the
// octets once is kept.
bool decode_for(const Port& port, Message& m, Value pattern) {
  if (!m.encoded) return true;
  lumo_type_t type = pattern ? plain_type(pattern->type) : nullptr;
  if (!type) type = lumo_octetstring_type;
  if (m.decoded_as == type) return true;
  if (std::find(m.refused.begin(), m.refused.end(), type) != m.refused.end()) return false;
  std::string fault;
  Value decoded = decode_value(type, m.raw, nullptr, fault);
  if (!decoded) {
    m.refused.push_back(type);
    if (has_codec(type)) log_line(lumo_log_msg_warning_c, undecodable(port_name(port), type, m.raw, fault));
    return false;
  }
  m.decoded_as = type;
  if (m.content) release_content(m.content);
  m.content = copy_value(decoded, lumo_perm_alloc_c);
  m.shown.clear();
  return true;
}

bool content_fits(const Port& port, Message& m, Value pattern) {
  TempScope scope;
  bool any = !pattern || pattern == lumo_no_value_c;
  if (!decode_for(port, m, any ? nullptr : pattern)) {
    if (!any && (m.content || decode_for(port, m, nullptr)))
      note_attempt(pattern, m.content, Attempted::octets);
    return false;
  }
  if (any) return true;
  if (type_fits(pattern, m.content) && match_value(pattern, m.content)) return true;
  note_attempt(pattern, m.content);
  if (type_fits(pattern, m.content)) return false;
  lumo_log_template_mismatch_event("type mismatch", m.content, pattern, current_task);
  return false;
}

bool is_redirected(Value target) {
  return target && target != lumo_value_no_return_c;
}

void redirect(Value target, Value source) {
  if (is_redirected(target) && source) lumo_value_assign(target, source, current_task);
}

void redirect_sender(Value target, const Message& m) {
  if (is_redirected(target)) redirect(target, sender_of(m));
}

void redirect_parameters(const Message& m, unsigned long count, lumo_value_t redirects[]) {
  if (!redirects || m.content->form != Form::fields) return;
  for (unsigned long i = 0; i < count && i < m.content->parts.size; ++i)
    redirect(redirects[i], m.content->parts.data[i]);
}

// For each port that the statement names: calls the function with it until one takes.
template <class Try>
bool of_ports(Value port, Try try_port) {
  check_effect("receive");
  if (port != lumo_value_any_c) return takes(try_port(*port_of(port)));
  for (Port* p : self().ports)
    if (try_port(*p)) return takes(true);
  return false;
}

template <class Do>
void each_port(const char* operation, Value port, Do act) {
  check_effect(operation);
  if (port != lumo_value_all_c && port != lumo_value_any_c) return act(*port_of(port));
  for (Port* p : self().ports) act(*p);
}

// In the body of a call, what names no signature takes answers to that call.
bool answers_call(const Message& m, bool is_named) {
  lumo_type_t called = is_named ? nullptr : lumos::open_call(*current_task).signature;
  return !called || !m.signature || root_of(called) == root_of(m.signature);
}

constexpr size_t most_taken = 1000;

// The message has come to whom it was meant for, or to an alternative that takes any.
void take_head(Port& p, MessageKind kind, Value pattern) {
  if (!current_task->attempts.empty()) is_given(pattern) ? forget_past_attempts() : keep_attempts();
  remove_head(p, kind);
}

void take_call(Port& p, const Message& m, Value pattern) {
  if (!p.taken) p.taken = std::make_unique<std::deque<TakenCall>>();
  p.taken->push_back({m.signature, m.sender});
  if (p.taken->size() > most_taken) p.taken->pop_front();
  take_head(p, MessageKind::call, pattern);
}

// The signature of the call that is answered, the first one of the recipient's; of a given signature where
// the answer tells it. Null where no such call was taken.
lumo_type_t answer_call(Port& p, lumo_type_t signature, Value recipient) {
  const bool is_named = recipient && recipient->form == Form::component;
  if (!p.taken) return nullptr;
  for (auto call = p.taken->begin(); call != p.taken->end(); ++call) {
    if (is_named && call->caller != recipient->integer) continue;
    if (signature && (!call->signature || root_of(signature) != root_of(call->signature))) continue;
    signature = call->signature;
    p.taken->erase(call);
    return signature;
  }
  return nullptr;
}

// A check that names nothing takes whatever is next in one of the queues.
bool try_check(Port& p, Value sender, Value sender_redirect) {
  for (const Queue& queue : p.queues) {
    Message* m = head_of(p, queue);
    if (!m || !sender_fits(*m, sender)) continue;
    redirect_sender(sender_redirect, *m);
    log_received("check on", p, *m);
    return true;
  }
  return false;
}

Value signature_value(Value template_value, bool is_call) {
  if (!template_value) fault("use of a value that is not initialized");
  return lumo_valueof_signature(template_value, is_call, lumo_temp_alloc_c, current_task);
}

bool signature_fits(const Message& m, Value pattern, bool is_call) {
  if (!pattern || pattern == lumo_no_value_c) return true;
  TempScope scope;
  if (pattern->type && pattern->form != Form::special && root_of(pattern->type) != root_of(m.signature))
    return false;
  if (lumo_match_signature(pattern, m.content, is_call, current_task)) return true;
  note_attempt(pattern, m.content, is_call ? Attempted::call : Attempted::reply);
  return false;
}

// The result of a call.
bool result_fits(const Message& m, Value pattern) {
  if (!pattern || pattern == lumo_no_value_c) return true;
  if (m.result && match_value(pattern, m.result)) return true;
  note_attempt(pattern, m.result, Attempted::result);
  return false;
}

Message* procedure_message(MessageKind kind, Value content) {
  Value copy = copy_value(content, lumo_perm_alloc_c);
  Message* m = new_message(kind);
  m->content = copy;
  m->signature = content->type;
  return m;
}

// A call with a body, which comes next.
void open_call(lumo_type_t signature, double timeout) {
  OpenCall& call = current_task->called;
  end_call(call);
  if (timeout == lumo_duration_nowait_c) return;
  call.signature = signature;
  if (timeout == lumo_duration_forever_c) return;
  call.timer = make_root(lumo_timer_type, lumo_perm_alloc_c);
  call.timer->label = "call";
  call.timer->timer->of_call = true;
  lumo_timer_start(call.timer, timeout, current_task);
}

}  // namespace

namespace {
constexpr size_t few_links = 8;
}

size_t Links::place_of(const Port* port) const {
  if (table_) {
    const auto found = table_->find(port);
    return found == table_->end() ? SIZE_MAX : found->second;
  }
  for (size_t i = 0; i < places_.size(); ++i)
    if (places_[i] == port) return i;
  return SIZE_MAX;
}

void Links::add(Port* port) {
  if (has(port)) return;
  places_.push_back(port);
  ++count_;
  if (places_.size() > few_links && !table_) return close_up();
  if (table_) (*table_)[port] = places_.size() - 1;
}

void Links::remove(const Port* port) {
  const size_t place = place_of(port);
  if (place == SIZE_MAX) return;
  places_[place] = nullptr;
  --count_;
  if (table_) table_->erase(port);
  while (!places_.empty() && !places_.back()) places_.pop_back();
  while (first_ < places_.size() && !places_[first_]) ++first_;
  if (2 * count_ < places_.size() || places_.empty()) close_up();
}

void Links::close_up() {
  std::erase(places_, nullptr);
  first_ = 0;
  table_ = nullptr;
  if (places_.size() <= few_links) return;
  table_ = std::make_unique<std::unordered_map<const Port*, size_t>>(2 * places_.size());
  for (size_t i = 0; i < places_.size(); ++i) (*table_)[places_[i]] = i;
}

Port* linked_port(const Port& port, Links Port::*list, const Component& c) {
  const Links& links = port.*list;
  if (links.size() > few_links) {
    for (Port* other : c.ports)
      if ((other->*list).has(&port)) return other;
    return nullptr;
  }
  for (size_t i = 0; i < links.places(); ++i)
    if (Port* other = links.at(i); other && other->owner == &c) return other;
  return nullptr;
}

size_t encoded_octets = 0;

std::string_view shown_content(Message& m) {
  if (m.shown.empty() && m.content) render_message(m.shown, m);
  return m.shown;
}

Message* new_message(MessageKind kind) {
  Message* m = free_messages;
  if (m) {
    free_messages = m->next;
    m->next = nullptr;
  } else {
    m = new Message;
  }
  m->kind = kind;
  return m;
}

namespace {

// Keeps room for the next message of a usual size.
void empty(std::string& text) {
  if (text.capacity() > 4096) text = std::string();
  text.clear();
}

}  // namespace

void delete_message(Message* m) {
  if (m->content) release_content(m->content);
  if (m->result) release_content(m->result);
  if (m->address) destroy(m->address);
  m->content = m->result = m->address = nullptr;
  m->signature = nullptr;
  m->sender = 0;
  if (m->encoded) encoded_octets -= m->raw.size();
  m->encoded = false;
  m->decoded_as = nullptr;
  m->refused.clear();
  empty(m->raw);
  empty(m->shown);
  m->next = free_messages;
  free_messages = m;
}

void make_ports(Component& c, Value element, lumo_type_t type, const char* name) {
  if (!holds_ports(type)) return;
  if (base_kind(type) != lumo_type_kind_array) {
    make_port(c, element, type, name, -1);
    return;
  }
  long index = array_base(type);
  make_port_array(c, element, type, name, index);
}

void close_ports(Component& c) {
  for (Port* port : c.ports) {
    unlink(*port);
    drop_queues(*port);
    delete port;
  }
  c.ports.clear();
}

Port* find_port(Component& c, long field, long index) {
  if (!c.record || field < 0) return nullptr;
  Value element = force_part(c.record, static_cast<size_t>(field));
  while (element->form == Form::vector && element->parts.size > 0) element = force_part(element, 0);
  if (element->form != Form::port) return nullptr;
  // Those of an array lie one behind another.
  const Port* first = element->port;
  const size_t place = first->place + static_cast<size_t>(index - first->index);
  Port* port = place < c.ports.size() ? c.ports[place] : nullptr;
  return port && port->index == index && port->name == first->name ? port : nullptr;
}

void deliver(Port& port, Message* m) {
  bool gone = port.owner->state == State::ended || port.state == PortState::stopped;
  if (gone) {
    log_port("lost at stopped port", port, *m);
    if (events_wanted) tell(EventKind::lost, port_name(port), {}, shown_content(*m));
    delete_message(m);
    return;
  }
  Queue& queue = queue_for(port, m->kind);
  if (queue.last) {
    queue.last->next = m;
  } else {
    queue.first = m;
  }
  queue.last = m;
  ++queue.length;
  wake(*port.owner);
}

}  // namespace lumos

using namespace lumos;

void lumo_port_send(lumo_value_t port, lumo_value_t value, lumo_value_t recipient, lumo_context_t) {
  Port& p = *port_of(port);
  check_can_send(p);
  Value content = owned_content_of(value);
  Message* m = new_message(MessageKind::message);
  m->content = content;
  log_port("send on", p, *m);
  send_message(p, m, recipient);
}

void lumo_port_call(lumo_value_t port, lumo_value_t template_value, double timeout, lumo_value_t recipient,
                    lumo_context_t) {
  Port& p = *port_of(port);
  check_can_send(p);
  Message* m = procedure_message(MessageKind::call, signature_value(template_value, true));
  open_call(m->signature, timeout);
  log_port("call on", p, *m);
  send_message(p, m, recipient);
}

void lumo_port_reply(lumo_value_t port, lumo_value_t template_value, lumo_value_t result,
                     lumo_value_t recipient, lumo_context_t) {
  Port& p = *port_of(port);
  check_can_send(p);
  Value content = signature_value(template_value, false);
  Value returned = result && result != lumo_no_value_c ? content_of(result) : nullptr;
  Message* m = procedure_message(MessageKind::reply, content);
  if (returned) m->result = copy_value(returned, lumo_perm_alloc_c);
  answer_call(p, m->signature, recipient);
  log_port("reply on", p, *m);
  send_message(p, m, recipient);
}

void lumo_port_answers(lumo_type_t signature, lumo_context_t) {
  current_task->answered = signature;
}

void lumo_port_raise(lumo_value_t port, lumo_type_t, lumo_value_t exception, lumo_value_t recipient,
                     lumo_context_t) {
  Port& p = *port_of(port);
  check_can_send(p);
  Message* m = procedure_message(MessageKind::exception, content_of(exception));
  const lumo_type_t answered = std::exchange(current_task->answered, nullptr);
  m->signature = answer_call(p, answered, recipient);
  if (!m->signature) m->signature = answered;
  log_port("raise on", p, *m);
  send_message(p, m, recipient);
}

[[gnu::noinline]] static bool try_receive(lumo_value_t port, lumo_value_t template_value, lumo_value_t sender,
                                          bool check, lumo_value_t value_redirect,
                                          lumo_value_t sender_redirect) {
  const bool any = check && !is_given(template_value) && value_redirect == lumo_value_no_return_c;
  return of_ports(port, [&](Port& p) {
    if (any) return try_check(p, sender, sender_redirect);
    Message* m = head_of(p, MessageKind::message);
    if (!m || !sender_fits(*m, sender) || !content_fits(p, *m, template_value)) return false;
    redirect(value_redirect, m->content);
    redirect_sender(sender_redirect, *m);
    log_received(check ? "check on" : "receive on", p, *m);
    if (!check) take_head(p, MessageKind::message, template_value);
    return true;
  });
}

// Most often nothing is there yet.
lumo_boolean_t lumo_port_try_receive(lumo_value_t port, lumo_value_t template_value, lumo_value_t sender,
                                     lumo_boolean_t check, lumo_value_t value_redirect,
                                     lumo_value_t sender_redirect, lumo_context_t) {
  const bool is_plain = port && port->form == Form::port && !check && !current_task->defining;
  if (is_plain && !port->port->queues[0].first) return false;
  return try_receive(port, template_value, sender, check, value_redirect, sender_redirect);
}

lumo_boolean_t lumo_port_try_getcall(lumo_value_t port, lumo_value_t template_value, lumo_value_t sender,
                                     lumo_boolean_t check, unsigned long redirect_count,
                                     lumo_value_t redirects[], lumo_value_t sender_redirect, lumo_context_t) {
  return of_ports(port, [&](Port& p) {
    Message* m = head_of(p, MessageKind::call);
    if (!m || !sender_fits(*m, sender) || !signature_fits(*m, template_value, true)) return false;
    redirect_parameters(*m, redirect_count, redirects);
    redirect_sender(sender_redirect, *m);
    log_received("getcall on", p, *m);
    if (!check) take_call(p, *m, template_value);
    return true;
  });
}

lumo_boolean_t lumo_port_try_getreply(lumo_value_t port, lumo_value_t template_value,
                                      lumo_value_t result_template, lumo_value_t sender, lumo_boolean_t check,
                                      lumo_value_t value_redirect, unsigned long redirect_count,
                                      lumo_value_t redirects[], lumo_value_t sender_redirect,
                                      lumo_context_t) {
  return of_ports(port, [&](Port& p) {
    Message* m = head_of(p, MessageKind::reply);
    if (!m || !answers_call(*m, is_given(template_value)) || !sender_fits(*m, sender) ||
        !signature_fits(*m, template_value, false) || !result_fits(*m, result_template))
      return false;
    redirect(value_redirect, m->result);
    redirect_parameters(*m, redirect_count, redirects);
    redirect_sender(sender_redirect, *m);
    log_received("getreply on", p, *m);
    if (!check) take_head(p, MessageKind::reply, template_value);
    return true;
  });
}

lumo_boolean_t lumo_port_try_catch(lumo_value_t port, lumo_type_t signature, lumo_value_t template_value,
                                   lumo_value_t sender, lumo_boolean_t check, lumo_value_t value_redirect,
                                   lumo_value_t sender_redirect, lumo_context_t) {
  return of_ports(port, [&](Port& p) {
    Message* m = head_of(p, MessageKind::exception);
    bool named = signature && base_kind(signature) == lumo_type_kind_signature;
    if (!m || !answers_call(*m, named) || !sender_fits(*m, sender)) return false;
    if (named && m->signature && root_of(signature) != root_of(m->signature)) return false;
    if (!content_fits(p, *m, template_value)) return false;
    redirect(value_redirect, m->content);
    redirect_sender(sender_redirect, *m);
    log_received("catch on", p, *m);
    if (!check) take_head(p, MessageKind::exception, template_value);
    return true;
  });
}

lumo_boolean_t lumo_port_try_catch_timeout(lumo_value_t port, lumo_context_t context) {
  port_of(port);
  const OpenCall call = lumos::open_call(*current_task);
  return call.timer && lumo_timer_try_timed_out(call.timer, context);
}

void lumo_port_clear(lumo_value_t port, lumo_context_t) {
  maybe_yield();
  each_port("clear", port, [](Port& p) {
    drop_queues(p);
    if (p.state == PortState::halted) p.state = PortState::stopped;
  });
}

void lumo_port_halt(lumo_value_t port, lumo_context_t) {
  maybe_yield();
  each_port("halt", port, [](Port& p) {
    for (Queue& queue : p.queues) queue.allowed = queue.length;
    p.state = p.queues[0].length + p.queues[1].length ? PortState::halted : PortState::stopped;
  });
}

void lumo_port_start(lumo_value_t port, lumo_context_t) {
  maybe_yield();
  each_port("start", port, [](Port& p) {
    drop_queues(p);
    p.state = PortState::started;
  });
}

void lumo_port_stop(lumo_value_t port, lumo_context_t) {
  maybe_yield();
  each_port("stop", port, [](Port& p) { p.state = PortState::stopped; });
}

void lumo_port_sut_action(lumo_value_t action, lumo_context_t) {
  check_choice("action");
  Value v = content_of(action);
  outside_action(render_plain(v));
}
