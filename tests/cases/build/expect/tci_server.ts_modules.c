@@ tci.ts_modules.c
@ 4 4
 * generation options: -K -E -i -R -G -f %I/tools.mcfg -F %I/root.ttcn %I/other.ttcn 
