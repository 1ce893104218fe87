// The start of everything that works on syntax files: it reads the command line, the syntax files that it
// names and those that they import, and evaluates each module's options.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "asn1/front/AsnOptions.h"
#include "asn1/front/SyntaxTree.h"

namespace asn1 {

struct BackendName {
  const char* name;
  int version, patch;  // 100 is 1.00
  std::vector<const char*> usage;
};

/// The modules of the run that is going on; the first one is the one that was named first.
extern SyntaxTrees gSyntaxTrees;
ModRec& firstModule();

/// Takes options that are not common to all back ends; false where the text is none.
using BackendOption = std::function<bool(ModRec& module, const std::string& text)>;

/// Starts over with the words behind the program's name. Faults are fatal; without a file prefix the usage is
/// printed and AsnExit{1} thrown.
void initBackend(const std::vector<std::string>& words, const BackendName& name, const BackendOption& take);
/// The options of the command line that was read last.
const AsnCommandLine& backendCommandLine();
/// 0 quiet, from 1 on with messages.
int backendVerbosity();
}  // namespace asn1
