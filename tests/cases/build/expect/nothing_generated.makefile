@@ plain.makefile
@ 4 28
CC                 =  
CFLAGS             = 
LD                 =  
LDFLAGS            = 
AR                 =  
ARFLAGS            = 
USER_INCLUDE_PATHS = 
USER_LIBRARY_PATHS = 
USER_SRCS          = 
USER_OBJS          = 
USER_SRCS_OBJS     = 
USER_LIBS          = 
USER_CC_FLAGS      = 
RTS_INCLUDE_PATHS  = 
RTS_LIBRARY_PATHS  = 
RTS_SRCS           = 
RTS_OBJS           = 
RTS_SRCS_OBJS      = 
RTS_LIBS           = 
RTS_CC_FLAGS       = 
GENERATED_SRCS     = ts_modules.c 
GENERATED_HDRS     = ts_modules.h 
TCI_LIBS           = 
GENERATED_OBJS     = ts_modules.o 
GENERATED_CC_FLAGS = 
GENERATED_INCLUDE_PATHS= ./. 
@ 31 32
@ 37 37
@ 40 40
	$(LD) Root $(LDFLAGS) $(USER_LIBRARY_PATHS) $(RTS_LIBRARY_PATHS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(USER_OBJS) $(USER_SRCS_OBJS) $(GENERATED_OBJS) $(TCI_LIBS) $(RTS_LIBS) $(USER_LIBS) 
@ 44 45
@ 51 52
ts_modules.o: ts_modules.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) ts_modules.c ts_modules.o
@ 54 71
