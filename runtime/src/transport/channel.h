// A channel carries the messages of one port of the system by a socket, file or pipe. Channels are served by
// a thread of the library, which exists while there are any.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "transport/link_spec.h"

namespace lumos {

// What became of a connection: it ended as it may, something is wrong, or something that was sent will not
// arrive.
enum class Trouble { none, some, lost };

// What a channel tells; called from the thread of the library, which waits while pause() holds.
struct ChannelEvents {
  // peer is "host:port", or empty.
  std::function<void(std::string message, std::string peer)> message;
  std::function<void(std::string text, Trouble trouble)> fault;
  // Whether there is so much to take that nothing more is to be read for now.
  std::function<bool()> pause;
};

class Channel {
 public:
  virtual ~Channel() = default;
  // An empty peer stands for the one that the channel is linked to, or that was heard from last. False leaves
  // the system's text in error.
  virtual bool send(std::string_view message, std::string_view peer, std::string& error) = 0;
};

// Null leaves the reason in error. The channel is closed when its pointer is released.
std::unique_ptr<Channel> open_channel(const LinkSpec& spec, ChannelEvents events, std::string& error);

}  // namespace lumos
