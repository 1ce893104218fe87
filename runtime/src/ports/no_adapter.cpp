// Substitutes for what an adapter does not define.
#include "ports/no_adapter.h"

#include "text/log.h"
#include "tri.h"

namespace lumos {
bool adapter_is_missing = false;
}

#define SUBSTITUTE extern "C" __attribute__((weak)) TriStatus

SUBSTITUTE triSAReset() {
  return TRI_OK;
}
SUBSTITUTE triExecuteTestcase(const TriTestCaseId*, const TriPortIdList*) {
  return TRI_OK;
}
SUBSTITUTE triEndTestCase() {
  return TRI_OK;
}
SUBSTITUTE triMap(const TriPortId*, const TriPortId*) {
  lumos::adapter_is_missing = true;
  return TRI_OK;
}
SUBSTITUTE triUnmap(const TriPortId*, const TriPortId*) {
  return TRI_OK;
}

extern "C" TriStatus lumo_no_send(const TriComponentId*, const TriPortId* port, const TriAddress*,
                                  const TriMessage*) {
  lumos::log_format(lumo_log_msg_warning_c, "nothing is linked to take the message to system port %s",
                    port->portName);
  return TRI_OK;
}

extern "C" __attribute__((weak, alias("lumo_no_send"))) TriStatus triSend(const TriComponentId*,
                                                                          const TriPortId*, const TriAddress*,
                                                                          const TriMessage*);

bool lumos::has_adapter() {
  return &triSend != &lumo_no_send;
}

SUBSTITUTE triCall(const TriComponentId*, const TriPortId* port, const TriAddress*, const TriSignatureId*,
                   const TriParameterList*) {
  lumos::log_format(lumo_log_msg_warning_c, "nothing is linked to take the call to system port %s",
                    port->portName);
  return TRI_OK;
}

SUBSTITUTE triReply(const TriComponentId*, const TriPortId* port, const TriAddress*, const TriSignatureId*,
                    const TriParameterList*, const TriParameter*) {
  lumos::log_format(lumo_log_msg_warning_c, "nothing is linked to take the reply to system port %s",
                    port->portName);
  return TRI_OK;
}

SUBSTITUTE triRaise(const TriComponentId*, const TriPortId* port, const TriAddress*, const TriSignatureId*,
                    const TriException*) {
  lumos::log_format(lumo_log_msg_warning_c, "nothing is linked to take the exception to system port %s",
                    port->portName);
  return TRI_OK;
}

SUBSTITUTE triSUTactionInformal(const char*) {
  return TRI_OK;
}
SUBSTITUTE triExternalFunction(const TriFunctionId*, TriParameterList*, TriParameter*) {
  return TRI_ERROR;
}
