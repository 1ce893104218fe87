#include "generator/CGFunction.h"

#include "generator/CGModule.h"
#include "generator/LUMOS.h"
#include "generator/T3CodeDefs.h"
#include "generator/T3Context.h"

namespace {
// Row, head and location of a control part.
std::unique_ptr<CFunction> BeginControlPart(T3Tree_Node* module, const tPosition& position) {
  const std::string name = VEXAControlPartFunctionName();
  CGSymTabAddEntry({Quote(std::string(VEXA_CONTROL_PART_NAME)), LUMO_SYMTAB_KIND_CONTROL_PART_FUNCTION,
                    C_NULL, C_NULL, CGFunctionPointer(name)});
  auto function = gT3Context.file().beginFunction(C_VOID, name, CGBehaviourParameters(), "", false);
  CGPushSourceLocation(*function, module, "control", C_NULL, LUMO_SCOPE_CONTROL_PART_C, position);
  return function;
}

void CGControlPart(T3ControlPart* decl) {
  auto function = BeginControlPart(CGCurrentModule(), decl->position);
  CGPopSourceLocation(*function);
  function->end();
}
}  // namespace

std::vector<std::string> CGBehaviourParameters() {
  return {FormalPar(C_UNSIGNED_LONG, VEXA_ARGC), FormalPar(LUMO_VALUE_T, std::string(VEXA_ARGV) + "[]"),
          FormalPar(LUMO_CONTEXT_T, VEXA_CONTEXT)};
}

void CGFunction(T3Tree_Node* decl) {
  if (auto* control = decl->try_as<T3ControlPart>()) CGControlPart(control);
}

void CGDummyControlPart(T3Tree_Node* module) {
  auto function = BeginControlPart(module, module->as<T3Module>()->position);
  CGLogInformation(*function, "module has no control part - exiting");
  CGPopSourceLocation(*function);
  function->end();
}
