/*
 * tri.h - the interface between a test suite and the adapter to the system under test, in
 * the C form that the TTCN-3 standard gives it.
 *
 * The adapter is C code of the user that is linked with the suite. It defines the functions
 * of the first group as far as it needs them; the library has a substitute for each, which
 * sends nowhere. It calls the functions of the second group, also from its own threads.
 * What a pointer points to belongs to the caller and is copied by the callee.
 */
#ifndef TRI_H
#define TRI_H

#ifdef __cplusplus
extern "C" {
#endif

/* bits tells the length of data in bits. */
typedef struct BinaryString {
  unsigned char* data;
  long int bits;
  void* aux;
} BinaryString;

typedef struct QualifiedName {
  char* moduleName;
  char* objectName;
  void* aux;
} QualifiedName;

typedef BinaryString TriAddress;
typedef BinaryString TriMessage;
typedef BinaryString TriException;
typedef QualifiedName TriSignatureId;
typedef QualifiedName TriTestCaseId;
typedef QualifiedName TriFunctionId;

typedef struct TriAddressList {
  TriAddress** addrList;
  long int length;
} TriAddressList;

/* compInst holds the number of the component in decimal digits. */
typedef struct TriComponentId {
  BinaryString compInst;
  char* compName;
  QualifiedName compType;
} TriComponentId;

/* portIndex is -1 for a port that stands in no array. */
typedef struct TriPortId {
  TriComponentId compInst;
  char* portName;
  long int portIndex;
  QualifiedName portType;
  void* aux;
} TriPortId;

typedef struct TriPortIdList {
  TriPortId** portIdList;
  long int length;
} TriPortIdList;

typedef enum { TRI_IN = 0, TRI_INOUT = 1, TRI_OUT = 2 } TriParameterPassingMode;

typedef struct TriParameter {
  BinaryString par;
  TriParameterPassingMode mode;
} TriParameter;

typedef struct TriParameterList {
  TriParameter** parList;
  long int length;
} TriParameterList;

typedef enum { TRI_ERROR = -1, TRI_OK = 0 } TriStatus;

/* ------------------------------------------------------- defined by the adapter */

TriStatus triSAReset(void);
TriStatus triExecuteTestcase(const TriTestCaseId* testCaseId, const TriPortIdList* tsiPortList);
TriStatus triEndTestCase(void);
TriStatus triMap(const TriPortId* compPortId, const TriPortId* tsiPortId);
TriStatus triUnmap(const TriPortId* compPortId, const TriPortId* tsiPortId);
TriStatus triSend(const TriComponentId* componentId, const TriPortId* tsiPortId, const TriAddress* sutAddress,
                  const TriMessage* sendMessage);
TriStatus triCall(const TriComponentId* componentId, const TriPortId* tsiPortId, const TriAddress* sutAddress,
                  const TriSignatureId* signatureId, const TriParameterList* parameterList);
TriStatus triReply(const TriComponentId* componentId, const TriPortId* tsiPortId,
                   const TriAddress* sutAddress, const TriSignatureId* signatureId,
                   const TriParameterList* parameterList, const TriParameter* returnValue);
TriStatus triRaise(const TriComponentId* componentId, const TriPortId* tsiPortId,
                   const TriAddress* sutAddress, const TriSignatureId* signatureId, const TriException* exc);
TriStatus triSUTactionInformal(const char* description);
/* An external function without a C function of its own: the adapter replaces the data of
   out and inout parameters and sets the return value; it keeps what it points to until
   the next call. */
TriStatus triExternalFunction(const TriFunctionId* functionId, TriParameterList* parameterList,
                              TriParameter* returnValue);

/* ------------------------------------------------------- called by the adapter */

/* componentId may be NULL: every port that is mapped to the port of the system gets it.
   sutAddress may be NULL. */
void triEnqueueMsg(const TriPortId* tsiPortId, const TriAddress* sutAddress,
                   const TriComponentId* componentId, const TriMessage* receivedMessage);
void triEnqueueCall(const TriPortId* tsiPortId, const TriAddress* sutAddress,
                    const TriComponentId* componentId, const TriSignatureId* signatureId,
                    const TriParameterList* parameterList);
void triEnqueueReply(const TriPortId* tsiPortId, const TriAddress* sutAddress,
                     const TriComponentId* componentId, const TriSignatureId* signatureId,
                     const TriParameterList* parameterList, const TriParameter* returnValue);
void triEnqueueException(const TriPortId* tsiPortId, const TriAddress* sutAddress,
                         const TriComponentId* componentId, const TriSignatureId* signatureId,
                         const TriException* exc);

#ifdef __cplusplus
}
#endif

#endif
