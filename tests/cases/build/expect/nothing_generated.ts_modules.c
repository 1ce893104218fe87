@@ tci.ts_modules.c
@ 4 4
 * generation options: -a -K -i -f %I/empty.mcfg -r Root -F %I/root.ttcn %I/other.ttcn 
@ 9 9
static lumo_module_entry_struct_t vexa_test_suite_modules_info[1];
@ 15 16
