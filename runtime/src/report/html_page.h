// What stands around the results in a page: its style, and the program that shows them. A page needs nothing
// else.
#pragma once

namespace lumos {

extern const char html_head[];
extern const char html_tail[];

}  // namespace lumos
