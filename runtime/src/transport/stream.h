// A stream of octets over a descriptor, cut into messages; used by connections, files and pipes.
#pragma once

#include "transport/channels.h"

namespace lumos {

// What a peer does with its own direction when it sends no more: with `answers` it may still take something.
enum class StreamKind { connecting, answers, file };

class Stream : public Polled {
 public:
  // Takes the descriptors over; output is the same one or another. A stream that is connecting sends later
  // what it gets until then.
  Stream(const ChannelEvents& events, const FramingSpec& framing, int input, int output, std::string peer,
         StreamKind kind);
  // Where a connection is not made, asked for the descriptor of another one, whose peer it names; -1 for
  // none.
  std::function<int(std::string& peer)> reconnect;
  // What still waits is given a moment; what is not taken then is told in the log.
  ~Stream() override;
  Stream(const Stream&) = delete;

  // With the lock held. False leaves a reason in error: the message is too long, or so much waits to be sent
  // that the peer cannot be taking it.
  bool send(std::string_view message, std::string& error);
  bool is_open() const { return input_ >= 0; }
  // The peer sends no more.
  bool has_ended() const { return has_ended_; }
  const std::string& peer() const { return peer_; }

  // Where another one is written to, the end of what is read is only that.
  int descriptor() const override { return has_ended_ && output_ != input_ ? -1 : input_; }
  short wanted() const override;
  void ready(short events) override;

 private:
  // Where what is written goes elsewhere than what is read comes from, that is polled for itself.
  struct Output : public Polled {
    explicit Output(Stream& whole) : stream(whole) {}
    int descriptor() const override { return stream.waiting_.empty() ? -1 : stream.output_; }
    short wanted() const override;
    void ready(short) override { stream.write_some(); }
    Stream& stream;
  };

  void finish_connecting();
  void finish_reading(bool is_good);
  void send_rest();
  void read_some();
  void write_some();
  void deliver();
  void end(const std::string& fault);

  const ChannelEvents& events_;
  FramingSpec framing_;
  int input_, output_;
  std::string peer_;
  bool connecting_, answers_;
  bool has_ended_ = false;
  bool has_answered_ = false;  // behind the end of what the peer sends
  std::string arrived_, waiting_;
  size_t written_ = 0;  // of what waits
  Output output_side_{*this};
};

}  // namespace lumos
