#include <stdio.h>
#include "lumos.h"
#include "tci.h"

void tciControlTerminated () {}

int main(int argc, char *argv[])
{
  return tciStartTestsuiteServer(argc, argv);
}
