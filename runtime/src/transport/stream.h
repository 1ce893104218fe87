// A stream of octets over a descriptor, cut into messages; used by connections, files and pipes.
#pragma once

#include "transport/channels.h"

namespace lumos {

class Stream : public Polled {
 public:
  // Takes the descriptors over; output is the same one or another. A stream that is connecting sends later
  // what it gets until then.
  Stream(const ChannelEvents& events, Framing framing, int input, int output, std::string peer,
         bool connecting);
  ~Stream() override;
  Stream(const Stream&) = delete;

  // With the lock held. False leaves a reason in error: the message is too long, or so much waits to be sent
  // that the peer cannot be taking it.
  bool send(std::string_view message, std::string& error);
  bool is_open() const { return input_ >= 0; }
  const std::string& peer() const { return peer_; }

  int descriptor() const override { return input_; }
  short wanted() const override;
  void ready(short events) override;

 private:
  void finish_connecting();
  void read_some();
  void write_some();
  void deliver();
  void end(const std::string& fault);

  const ChannelEvents& events_;
  Framing framing_;
  int input_, output_;
  std::string peer_;
  bool connecting_;
  std::string arrived_, waiting_;
  // Where output is another descriptor, what waits is written before it is polled for input.
};

}  // namespace lumos
