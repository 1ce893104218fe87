#include "lumos.h"
#include "Base.h"
#include "Main.h"
extern const void *RTS_MAGIC_NUMBER_3_3_0_2_17499;
lumo_module_entry_t t3tci_get_modules_info();
const void *RTS_MAGIC_NUMBER_CHECK = &(RTS_MAGIC_NUMBER_3_3_0_2_17499);

lumo_module_entry_struct_t vexa_test_suite_modules_info[] = {
    {"Base", ((void *)vexa_Base_register)}, {"Main", ((void *)vexa_Main_register)}, {NULL, NULL}};

lumo_module_entry_t t3tci_get_modules_info() { return vexa_test_suite_modules_info; }
