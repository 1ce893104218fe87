@@ tci.ts_modules.c
@ 4 4
 * generation options: -K -f %I/tools.mcfg -i -r Root -M -T -a Other -T Root -F %I/root.ttcn %I/other.ttcn 
@ 9 9
static lumo_module_entry_struct_t vexa_test_suite_modules_info[2];
@ 16 16
