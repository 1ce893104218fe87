# Included by the makefiles that orvane writes. A full build compiles the sources of RTS_SRCS anew; this makes
# their objects wait until the old ones are gone, which matters when make runs several commands at once.
.DEFAULT_GOAL := all
$(RTS_SRCS_OBJS): clean_rts
