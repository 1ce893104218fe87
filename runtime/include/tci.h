/*
 * tci.h - test control of a suite: what main files of suites with module registry call, and
 * the semaphores they wait with.
 *
 * The registry that the compiler writes beside a suite tells which modules the executable
 * holds. Control chooses a root module among them, runs its control part or test cases, and
 * is told the end through tciControlTerminated, which the main file defines.
 */
#ifndef TCI_H
#define TCI_H

#include "lumos.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Reads the command line, of the form that --help tells. False after a fault; --help and
   --list end the process. */
lumo_boolean_t tciInit(int argc, char* argv[]);
/* Chooses the root module by its name; a name that the registry does not have is a start
   fault, which ends the process with status 2. */
void tciRootModule(const char* module_name);
/* Runs the control part of the root module, or the test cases that the command line names,
   and calls tciControlTerminated. */
void tciStartControl(void);
/* Prints the summary. Where a verdict is neither pass nor none, it ends the process with
   status 1, and with 2 after a start fault. */
void tciFinalize(void);
/* Defined by the main file. */
void tciControlTerminated(void);

/* Serves commands on standard input until "quit" or its end; returns an exit status. The
   command "help" lists the commands. */
int tciStartTestsuiteServer(int argc, char* argv[]);

/* The registry: rows of name and register function, ended by a row of two NULLs. */
lumo_module_entry_t t3tci_get_modules_info(void);

void* pavo_sem_create(int initial_count, lumo_context_t context);
void pavo_sem_post(void* semaphore, lumo_context_t context);
void pavo_sem_wait(void* semaphore, lumo_context_t context);
void pavo_sem_destroy(void* semaphore, lumo_context_t context);

#ifdef __cplusplus
}
#endif

#endif
