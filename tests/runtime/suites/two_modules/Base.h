#ifndef __Base_h
#define __Base_h

#include <lumos.h>
#define vexa_Base_Small_local_type &(vexa_Base_Small_type_struct)
#define vexa_Base_Pair_local_type &(vexa_Base_Pair_type_struct)
extern const void *RTS_MAGIC_NUMBER_3_3_0_2_17499;
extern void vexa_Base_register(lumo_boolean_t is_root, lumo_context_t vexa_context);
extern void vexa_Base_initialize(lumo_context_t vexa_context);
extern void vexa_Base_params_initialize(lumo_context_t vexa_context);
extern void vexa_Base_finalize(lumo_context_t vexa_context);
extern lumo_type_struct_t vexa_Base_Small_type_struct;
extern lumo_type_struct_t vexa_Base_Pair_type_struct;
#endif
