// The structures that describe one type to the run-time system, written member by member.
#pragma once

#include <string>

#include "FileAPI/CFile.h"
#include "frontend/T3Tree.h"

/// The thirteen members of a type's description; those that stay "NULL" need not be set. Names, kind and
/// parent are texts that are kept elsewhere.
struct CGTypeInfo {
  std::string_view name;
  std::string_view module;
  std::string_view kind;
  std::string_view parent_type = "NULL";
  bool resolved = true;
  std::string check_function = "NULL";
  std::string constraintof_function = "NULL";
  std::string number_of_fields = "0";
  std::string field_info = "NULL";
  std::string enum_or_array_info = "NULL";
  std::string reserved_last = "NULL";
  std::string template_info = "NULL";
};

/// Writes a static description. `name` and `module` are quoted texts.
void WriteTypeInfoStruct(std::string_view struct_name, const CGTypeInfo& info);

/// Writes the exported structure of a declared type with its attributes and codecs, and its define.
/// `type_info` is the text of its last member, "NULL" for an import. Returns the structure's name.
std::string_view GenTypeStruct(T3Tree_Node* decl, std::string_view type_info);
/// Writes a structure with eight members "NULL" and the address of its description.
void GenPlainTypeStruct(std::string_view struct_name, std::string_view info_name, bool is_static);

/// One row of a field table, an item on a line.
void WriteFieldInfo(CArray& array, std::string_view name, std::string_view property, std::string_view type);

/// One row of the symbol table for a type, of the given kind.
void GenSymbolTableEntry(T3Tree_Node* decl, std::string_view kind, std::string_view struct_name);
/// The member of a symbol's row: "type_descriptor" for a type or template, "value_descriptor" for a value.
std::string TypeOrValueDescriptor(T3Tree_Node* decl);
/// The call that finds the row of what an import means.
std::string FindOriginCall(T3Tree_Node* import);
/// The call that finds a row of a module.
std::string FindCall(std::string_view module, std::string_view name);
