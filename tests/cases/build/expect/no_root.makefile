@@ plain.makefile
@ 24 26
GENERATED_SRCS     = base.c main_driver.c 
GENERATED_HDRS     = base.h 
GENERATED_OBJS     = base.o main_driver.o 
@ 29 29
GENERATED_AUXILIARIES= base.t3a 
@ 34 34
all: clean_rts base
@ 39 40
base: $(USER_OBJS) $(USER_SRCS_OBJS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(GENERATED_OBJS)
	$(LD) -o base $(LDFLAGS) $(USER_LIBRARY_PATHS) $(RTS_LIBRARY_PATHS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(USER_OBJS) $(USER_SRCS_OBJS) $(GENERATED_OBJS) $(RTS_LIBS) $(USER_LIBS) 
@ 43 43
	rm -f main_driver.c
	rm -f base
@ 66 67
base.o: base.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c base.c -o base.o
@ 69 70
main_driver.o: main_driver.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c main_driver.c -o main_driver.o
