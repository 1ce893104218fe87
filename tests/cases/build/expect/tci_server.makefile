@@ plain.makefile
@ 23 26
RTS_CC_FLAGS       = -DRTS -DLUMO_DEBUG 
GENERATED_SRCS     = ts_modules.c Root.c Other.c main_driver.c 
GENERATED_HDRS     = ts_modules.h Root.h Other.h 
TCI_REMOTE_LIBS    = -ltciremote 
GENERATED_OBJS     = ts_modules.o Root.o Other.o main_driver.o 
@ 30 29
DEBUGGER_LIBS      = -ldebugger 
@ 40 40
	$(LD) -o Root $(LDFLAGS) $(USER_LIBRARY_PATHS) $(RTS_LIBRARY_PATHS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(USER_OBJS) $(USER_SRCS_OBJS) $(GENERATED_OBJS) $(TCI_REMOTE_LIBS) $(DEBUGGER_LIBS) $(RTS_LIBS) $(USER_LIBS) 
@ 43 42
	rm -f main_driver.c
@ 66 65
ts_modules.o: ts_modules.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c ts_modules.c -o ts_modules.o

@ 72 71
main_driver.o: main_driver.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c main_driver.c -o main_driver.o

