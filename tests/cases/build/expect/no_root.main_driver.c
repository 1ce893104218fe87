#include <stdio.h>
#include "lumos.h"
#include "base.h"

int main(int argc, char *argv[])
{
  lumo_run_test_suite(argc, argv, vexa_Alone_register, lumo_root_control_part_c);
  return true;
}
