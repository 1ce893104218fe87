@@ plain.makefile
@ 24 26
GENERATED_SRCS     = ts_modules.c %t/b\ c/first.c second.c main_driver.c 
GENERATED_HDRS     = ts_modules.h %t/b\ c/first.h second.h 
TCI_LIBS           = -ltci 
GENERATED_OBJS     = ts_modules.o first.o second.o main_driver.o 
@ 28 29
GENERATED_INCLUDE_PATHS= -I/opt/rts/include -I%t/a -I%t/b\ c 
GENERATED_AUXILIARIES= %t/b\ c/first.t3a second.t3a 
@ 34 34
all: clean_rts second
@ 39 40
second: $(USER_OBJS) $(USER_SRCS_OBJS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(GENERATED_OBJS)
	$(LD) -o second $(LDFLAGS) $(USER_LIBRARY_PATHS) $(RTS_LIBRARY_PATHS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(USER_OBJS) $(USER_SRCS_OBJS) $(GENERATED_OBJS) $(TCI_LIBS) $(RTS_LIBS) $(USER_LIBS) 
@ 43 43
	rm -f main_driver.c
	rm -f second
@ 66 67
ts_modules.o: ts_modules.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c ts_modules.c -o ts_modules.o
@ 69 70
first.o: %t/b\ c/first.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c %t/b\ c/first.c -o first.o
@ 72 71
second.o: second.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c second.c -o second.o

main_driver.o: main_driver.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c main_driver.c -o main_driver.o

