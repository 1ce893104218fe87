#ifndef __Main_h
#define __Main_h

#include <lumos.h>
#include "Base.h"
extern const void *RTS_MAGIC_NUMBER_3_3_0_2_17499;
extern void vexa_Main_register(lumo_boolean_t is_root, lumo_context_t vexa_context);
extern void vexa_Main_initialize(lumo_context_t vexa_context);
extern void vexa_Main_params_initialize(lumo_context_t vexa_context);
extern void vexa_Main_finalize(lumo_context_t vexa_context);
#endif
