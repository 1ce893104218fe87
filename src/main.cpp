#include "driver/controller/T3Controller.h"

int main(int argc, char** argv) {
  return RunCompiler(argc, const_cast<const char**>(argv));
}
