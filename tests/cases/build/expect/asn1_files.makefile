@@ plain.makefile
@ 24 23
ASN1_INCLUDE_PATHS = -I/opt/rts/asn1 
ASN1_LIBRARY_PATHS = -L/opt/rts/asn1/lib 
ASN1_SRCS          = /opt/rts/asn1/codec.c 
ASN1_OBJS          = /opt/rts/asn1/lib/bits.o 
ASN1_SRCS_OBJS     = codec.o 
ASN1_LIBS          = -lasn1 
ASN1_CC_FLAGS      = -DASN1 
@ 39 40
Root: $(USER_OBJS) $(USER_SRCS_OBJS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(ASN1_OBJS) $(ASN1_SRCS_OBJS) $(GENERATED_OBJS)
	$(LD) -o Root $(LDFLAGS) $(USER_LIBRARY_PATHS) $(ASN1_LIBRARY_PATHS) $(RTS_LIBRARY_PATHS) $(RTS_OBJS) $(RTS_SRCS_OBJS) $(ASN1_OBJS) $(ASN1_SRCS_OBJS) $(USER_OBJS) $(USER_SRCS_OBJS) $(GENERATED_OBJS) $(ASN1_LIBS) $(RTS_LIBS) $(USER_LIBS) 
@ 46 45
	rm -f $(ASN1_SRCS_OBJS)
@ 54 54
codec.o: user/src/codec.c /opt/rts/asn1/codec.c
@ 56 55
	$(CC) $(CFLAGS) $(ASN1_CC_FLAGS) $(ASN1_INCLUDE_PATHS) -c /opt/rts/asn1/codec.c -o codec.o
