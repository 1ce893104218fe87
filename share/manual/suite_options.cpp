// Prints the options of test suites for the manual page.
#include "suite/suite_options.h"

int main() {
  lumos::describe_suite_options();
}
