// The symbol by which a suite proves at link time that library and compiler belong together.
#include "lumos.h"

extern "C" {
const void* RTS_MAGIC_NUMBER_3_3_0_2_17499 = "3.3.0.2.17499";
}
