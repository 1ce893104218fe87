// Links of ports that the user named: whether there are such ports.
#pragma once

namespace lumos {

// False, with a message, if a link is for a port that no component type of the suite has.
bool all_links_known();

}  // namespace lumos
