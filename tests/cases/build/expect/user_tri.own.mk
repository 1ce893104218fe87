@@ plain.makefile
@ 14 15
USER_SRCS_OBJS     = adapter.obj codec.obj ext\ fun.obj port.cpp.obj 
USER_LIBS          = -Wl,--start-group -lone -ltwo -Wl,--end-group -lthree.so 
@ 21 21
RTS_SRCS_OBJS      = boot.obj 
@ 23 24
RTS_CC_FLAGS       = -DRTS -DLUMO_MSC96_EVENT_LOG -DLUMO_XML_EVENT_LOG 
GENERATED_SRCS     = Root.c Other.c main_driver.c 
@ 26 26
GENERATED_OBJS     = Root.obj Other.obj main_driver.obj 
@ 34 34
all: clean_rts own
@ 39 40
own: $(USER_OBJS) $(USER_SRCS_OBJS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(GENERATED_OBJS)
	$(LD) -o own $(LDFLAGS) $(USER_LIBRARY_PATHS) $(RTS_LIBRARY_PATHS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(USER_OBJS) $(USER_SRCS_OBJS) $(GENERATED_OBJS) $(RTS_LIBS) $(USER_LIBS) 
@ 43 43
	rm -f main_driver.c
	rm -f own
@ 51 52
adapter.obj: adapter.c
	$(CC) $(CFLAGS) $(USER_CC_FLAGS) $(USER_INCLUDE_PATHS) -c adapter.c -o adapter.obj
@ 54 55
codec.obj: user/src/codec.c
	$(CC) $(CFLAGS) $(USER_CC_FLAGS) $(USER_INCLUDE_PATHS) -c user/src/codec.c -o codec.obj
@ 57 58
ext\ fun.obj: user\ code/ext\ fun.c
	$(CC) $(CFLAGS) $(USER_CC_FLAGS) $(USER_INCLUDE_PATHS) -c user\ code/ext\ fun.c -o ext\ fun.obj
@ 60 61
port.cpp.obj: user/port.cpp
	$(CC) $(CFLAGS) $(USER_CC_FLAGS) $(USER_INCLUDE_PATHS) -c user/port.cpp -o port.cpp.obj
@ 63 64
boot.obj: /opt/rts/src/boot.c
	$(CC) $(CFLAGS) $(RTS_CC_FLAGS) $(RTS_INCLUDE_PATHS) -c /opt/rts/src/boot.c -o boot.obj
@ 66 67
Root.obj: Root.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c Root.c -o Root.obj
@ 69 70
Other.obj: Other.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c Other.c -o Other.obj
@ 72 71
main_driver.obj: main_driver.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c main_driver.c -o main_driver.obj

