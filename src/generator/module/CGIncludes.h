// The headers that a module's header includes. Those of its imports in turn include nothing while they are
// included: a C compiler would read the headers of all modules below for each module, and limits how deep
// they may include each other. What the module names of modules further down is included by itself.
#pragma once

#include "frontend/T3Tree.h"

/// Opens the part of the header that holds only where no other module's header includes this one.
void BeginImportedHeaders();
/// Adds the headers of the modules that have been named and are not imported, and closes the part. All code
/// of the module has been made.
void EndImportedHeaders(T3Module* module);
