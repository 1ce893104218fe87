@@ plain.makefile
@ 15 16
USER_LIBS          = -Wl,--start-group -lone -ltwo -Wl,--end-group -lthree.so 
USER_CC_FLAGS      = -DUSER -DNO_TRI 
