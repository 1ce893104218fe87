#include "lumos.h"
#include "tci.h"

static void *sem = NULL;

void tciControlTerminated () {

  pavo_sem_post(sem, lumo_no_context_c);
}

int main(int argc, char *argv[]) {

  if (tciInit(argc, argv)) {
    sem = pavo_sem_create(0, lumo_no_context_c);

    tciRootModule("Main");
    tciStartControl();

    pavo_sem_wait(sem, lumo_no_context_c);
    pavo_sem_destroy(sem, lumo_no_context_c);

    tciFinalize();

    return 0;
  } else {
    return 1;
  }
}
