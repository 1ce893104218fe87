@@ plain.makefile
@ 5 7
CFLAGS             = 
LD                 =  
LDFLAGS            = 
@ 10 23
USER_INCLUDE_PATHS = 
USER_LIBRARY_PATHS = 
USER_SRCS          = adapter.c 
USER_OBJS          = 
USER_SRCS_OBJS     = adapter.o 
USER_LIBS          = 
USER_CC_FLAGS      = 
RTS_INCLUDE_PATHS  = 
RTS_LIBRARY_PATHS  = 
RTS_SRCS           = 
RTS_OBJS           = 
RTS_SRCS_OBJS      = 
RTS_LIBS           = 
RTS_CC_FLAGS       = 
@ 27 28
GENERATED_CC_FLAGS = 
GENERATED_INCLUDE_PATHS= ./. 
@ 31 32
@ 34 34
all: clean_rts Root.a
@ 37 37
@ 39 40
Root.a: $(USER_OBJS) $(USER_SRCS_OBJS) $(GENERATED_OBJS)
	$(AR) $(ARFLAGS) -o Root.a $(USER_OBJS) $(USER_SRCS_OBJS) $(GENERATED_OBJS) 
@ 43 43
	rm -f Root.a
@ 45 45
@ 54 65
