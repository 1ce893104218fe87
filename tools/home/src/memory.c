/* Memory of homes and frames. */
#include "memory.ext"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "asnutils.ext"

typedef struct block {
  struct block* next;
  void* memory;
  int kind; /* MB_FRM: a frame, which has octets of its own */
} block;

struct asn_home {
  ASNHOME* next; /* all homes, for those that are asked for by their structure */
  void* structure;
  block* blocks;
};

static ASNHOME* all_homes;
static ASNHOME* current;

static void* zeroed(size_t size) {
  void* memory = calloc(1, size > 0 ? size : 1);
  if (memory == NULL) {
    fputs("ASN.1: out of memory\n", stderr);
    abort();
  }
  return memory;
}

void* createHandle(void* unused, ASNHOME** handle, size_t size) {
  (void)unused;
  ASNHOME* home = zeroed(sizeof *home);
  home->next = all_homes;
  all_homes = home;
  home->structure = allocAsn(home, MB_STG, size);
  *handle = home;
  return home->structure;
}

void insertMemBlock(ASNHOME* home, int kind, BYTE_TYPE* memory) {
  if (home == NULL) home = current;
  if (home == NULL) return;
  block* made = zeroed(sizeof *made);
  made->memory = memory;
  made->kind = kind;
  made->next = home->blocks;
  home->blocks = made;
}

void* allocAsn(ASNHOME* home, int kind, size_t size) {
  BYTE_TYPE* memory = zeroed(size);
  insertMemBlock(home, kind, memory);
  return memory;
}

void freeAsn(ASNHOME** handle, int what) {
  (void)what;
  ASNHOME* home = *handle;
  if (home == NULL) return;
  *handle = NULL;
  ASNHOME** link = &all_homes;
  while (*link != NULL && *link != home) link = &(*link)->next;
  if (*link == home) *link = home->next;
  if (current == home) current = NULL;
  for (block* at = home->blocks; at != NULL;) {
    block* next = at->next;
    if (at->kind == MB_FRM)
      deleteFrame(at->memory);
    else
      free(at->memory);
    free(at);
    at = next;
  }
  free(home);
}

void asnwfree(void* structure) {
  ASNHOME* home = all_homes;
  while (home != NULL && home->structure != structure) home = home->next;
  if (home != NULL) freeAsn(&home, FREE_STG);
}

void initStack(ASNUTIG* utig) {
  memset(utig, 0, sizeof *utig);
}

void pushHome(ASNUTIG* utig, ASNHOME* home) {
  if (utig->depth == 0) utig->around = current;
  if (utig->depth < ASN_HOME_DEPTH) utig->homes[utig->depth++] = home;
  current = home;
}

void popHome(ASNUTIG* utig) {
  if (utig->depth > 0) --utig->depth;
  current = utig->depth > 0 ? utig->homes[utig->depth - 1] : utig->around;
}

ASNHOME* getHomeG(ASNUTIG* utig) {
  return utig->depth > 0 ? utig->homes[utig->depth - 1] : current;
}

/* The octets of a frame are a block of their own, so that the frame itself can be given to a home. */
FRAME_PTR createFrame(size_t size) {
  FRAME_PTR frame = zeroed(sizeof *frame);
  frame->size = (uint32)size;
  frame->octets = zeroed(size);
  return frame;
}

void deleteFrame(FRAME_PTR frame) {
  if (frame == NULL) return;
  free(frame->octets);
  free(frame);
}

BOOLE appendToFrame(FRAME_PTR frame, const BYTE_TYPE* octets, size_t n) {
  if (n > UINT32_MAX - frame->n) return FALSE;
  if (frame->n + n > frame->size) {
    size_t size = frame->size < DB_SIZE ? DB_SIZE : frame->size;
    while (size < frame->n + n) size *= 2;
    BYTE_TYPE* larger = realloc(frame->octets, size);
    if (larger == NULL) return FALSE;
    frame->octets = larger;
    frame->size = size > UINT32_MAX ? UINT32_MAX : (uint32)size;
  }
  if (n > 0) memcpy(frame->octets + frame->n, octets, n);
  frame->n += (uint32)n;
  return TRUE;
}
