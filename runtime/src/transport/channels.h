// The kinds of channels, for open_channel.
#pragma once

#include "transport/channel.h"
#include "transport/poller.h"

namespace lumos {

std::unique_ptr<Channel> open_datagrams(const LinkSpec& spec, ChannelEvents events, std::string& error);
std::unique_ptr<Channel> open_client(const LinkSpec& spec, ChannelEvents events, std::string& error);
std::unique_ptr<Channel> open_server(const LinkSpec& spec, ChannelEvents events, std::string& error);
std::unique_ptr<Channel> open_file(const LinkSpec& spec, ChannelEvents events, std::string& error);

}  // namespace lumos
