// What all parts of the generator ask of a type: its names in generated C and in TTCN-3, where it is
// described at run time, which definitions there are. And the generator's warnings.
#pragma once

#include <functional>
#include <string>

#include "asn1/model/AsnModel.h"

namespace asn1 {

/// "t3asn_", the module of a type, and the name of a family of functions: t3asn_<m><family>.
std::string FunctionPrefix(const AsnType& type, const char* family);
/// The identifier of a type in names of functions and of its run-time description.
std::string getMetaTypeId(const AsnType& type);
/// The run-time description of a type: "vexa_<m>_<t>_type_struct"; of a built-in type without a definition
/// that of its place in TTCN-3.
std::string RunTimeType(const AsnType& type);
/// What a routine of the tools is called after for a type's kind: "BitString", "IA5String".
const char* cBuiltinStringTstCFunc(const AsnType& type);
/// Whether values of a type are character strings.
bool IsText(const AsnType& type);
/// Whether the user supplies a type's conversions.
bool isOwnFunction(const AsnType& type);
/// Calls for each definition, and for each component or element that is a type without a name, with its name
/// in TTCN-3.
void forEachNamedOrInlineType(ModRec& module,
                              const std::function<void(const AsnType&, const std::string&)>& call);
/// Calls for each definition that a home and conversions exist for.
void forEachHomeType(ModRec& module, const TypeCall& call);

/// Warnings, on standard output. The first one is of a number that does not fit in 32 bits, with its role.
void int64Warning(const ModRec& module, int line, const char* what);
void t3asn_warn(const char* format, ...) __attribute__((format(printf, 1, 2)));
void t3asn_warn_line_nr(const ModRec& module, int line, const char* format, ...)
    __attribute__((format(printf, 3, 4)));
}  // namespace asn1
