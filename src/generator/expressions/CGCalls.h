// Calls of behaviours: argument vectors, and the names by which the run-time system knows what is called.
#pragma once

#include <string>

#include "FileAPI/CFunction.h"
#include "generator/expressions/CGModes.h"
#include "generator/expressions/CGReads.h"
#include "frontend/T3Tree.h"

/// The number of formal parameters.
unsigned GetParNumber(T3Tree_Node* formals);
/// Name and module of a behaviour behind imports.
tIdent GetRealFunctionName(T3Tree_Node* decl);
tIdent GetRealFunctionModule(T3Tree_Node* decl);

/// Evaluates the arguments of a call, and returns the text of their array: "NULL" where there is nothing to
/// pass. `has_result`: the vector has a slot for the result behind the formals.
std::string CGActualParameterList(T3Tree_Node* actuals, T3Tree_Node* formals, bool has_result,
                                  CFunction& function);
/// The same with copies of the values, for a test case.
std::string CGActualParameterListForTestcase(T3Tree_Node* actuals, T3Tree_Node* formals, CFunction& function);
/// What is given in a list of actual parameters.
cg::Operands GivenActuals(T3Tree_Node* actuals);
/// The location of what is given for one parameter; "lumo_value_default_c" for `-`.
std::string CGArgument(const cg::Operands& given, size_t at, T3Tree_Node* formal, CFunction& function);

/// A callee needs a value to write into where the field that is passed was omitted.
void CGInstantiateOutOmittedParameters(T3Tree_Node* actuals, T3Tree_Node* formals, std::string_view array,
                                       CFunction& function);

/// The values of the parameters that a caller has left to their defaults, where there are any: at the head of
/// what is called.
void GenDefaultFormalPars(T3Tree_Node* formals, CFunction& function);

/// The statements of a call of a function; its result is the location of the node.
void CGFunctionCall(T3Parameterization* call, CGMode mode, CFunction& function);
