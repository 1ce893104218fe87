@@ plain.makefile
@ 24 24
GENERATED_SRCS     = Root.c Other.c main_driver.c 
@ 26 26
GENERATED_OBJS     = Root.o Other.o main_driver.o 
@ 43 42
	rm -f main_driver.c
@ 72 71
main_driver.o: main_driver.c
	$(CC) $(CFLAGS) $(GENERATED_CC_FLAGS) $(GENERATED_INCLUDE_PATHS) -c main_driver.c -o main_driver.o

