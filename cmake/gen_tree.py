#!/usr/bin/env python3
"""Makes the C++ of the tree's node kinds from src/frontend/T3Tree.desc.

usage: gen_tree.py DESCRIPTION OUTPUT_FOLDER
writes T3TreeNodes.h (kind enumeration, structures, attribute records, constructors, shared nodes)
and T3TreeTables.cpp (kind ranges, sizes, names, field lists).
"""
import os
import sys

# word of the description -> (C++ type, neutral value, how the dump shows it)
FIELD_TYPES = {
    "child": ("T3Tree_Node*", "nullptr", "Node"),
    "node": ("T3Tree_Node*", "nullptr", "Reference"),
    "ident": ("tIdent", "NoIdent", "Ident"),
    "string": ("tStringRef", "gStringM.EmptyString()", "String"),
    "bool": ("bool", "false", "Bool"),
    "position": ("tPosition", "NoPosition", "Position"),
    "int": ("int", "0", "Bytes"),
    "byte": ("uint8_t", "0", "Bytes"),
    "uint32": ("uint32_t", "0", "Bytes"),
    "long": ("long", "0", "Bytes"),
    "int64": ("int64_t", "0", "Bytes"),
    "double": ("double", "0.0", "Bytes"),
    "time": ("long", "0", "Bytes"),
    "location": ("const char*", "vexa_location_not_allocated", "Text"),
    "text": ("const char*", '""', "Text"),
    "typeset": ("T3TypeSet*", "nullptr", "Reference"),
    "validset": ("T3ValidSet*", "nullptr", "Reference"),
    "nodeset": ("T3NodeSet*", "nullptr", "Reference"),
    "nodelist": ("T3NodeList*", "nullptr", "Reference"),
    "declmap": ("T3DeclMap*", "nullptr", "Reference"),
    "namecache": ("T3NameCache*", "nullptr", "Reference"),
    "bitset": ("DeclBitSet*", "nullptr", "Reference"),
    "ModuleOptions*": ("ModuleOptions*", "nullptr", "Reference"),
    "t3_import_restr_t": ("t3_import_restr_t", "t3_import_restr_t{}", "Bytes"),
    "t3_par_pass_t": ("t3_par_pass_t", "t3_par_pass_t{}", "Bytes"),
    "t3_permutation_kind_t": ("t3_permutation_kind_t", "t3_permutation_kind_t{}", "Bytes"),
    "t3_port_kind_t": ("t3_port_kind_t", "t3_port_kind_t{}", "Bytes"),
    "t3_template_restriction_t": ("t3_template_restriction_t", "t3_template_restriction_t{}", "Bytes"),
    "t3_verdict_t": ("t3_verdict_t", "t3_verdict_t{}", "Bytes"),
    "t3_with_attribute_t": ("t3_with_attribute_t", "t3_with_attribute_t{}", "Bytes"),
}

# The nodes that are shared: one object of each kind, made at its first use.
SHARED = """T3NoRepresentation T3NoExternal T3NoRefItem T3NoModule T3NoTemplateReference T3NoTemplateDef
T3NoType T3NoTypeItem T3NoDecl T3NoExpression T3NoWith T3NoStmt T3NoFieldValue T3NoFormalPar T3NoActualPar
T3NoFieldType T3NoEnumValue T3NoValueListItem T3NoTemplateListItem T3NoAddressListItem T3NoAlt T3NoObjIdItem
T3NoFieldSpec T3NoPortRedirect T3NoImportException T3ModuleType T3NoEnv T3NoMapEnv T3NotUsedSymbol T3AnyTimer
T3AllTimer T3AnyPort T3AllPort T3AnyComponent T3AllComponent T3Self T3MTC T3System T3TTCN_3""".split()
SHARED.remove("T3NoType")  # the type singletons belong to name analysis

# Kinds whose plain name is that of another class in C++.
RENAMED = {"T3CommandLine": "T3CommandLineNode"}

MAX_ATTRIBUTES = 80


def fail(text):
    sys.exit("gen_tree.py: " + text)


class Field:
    def __init__(self, name, word, child_class, role):
        if word not in FIELD_TYPES:
            fail(f"field {name}: no type {word}")
        self.name, self.word, self.child_class, self.role = name, word, child_class, role
        self.ctype, self.neutral, self.shape = FIELD_TYPES[word]


class Kind:
    def __init__(self, name, number, base):
        self.name, self.first, self.last, self.base = name, number, number, base
        # kinds whose names are plain words would hide fields of that name
        self.cname = RENAMED.get(name, name if name[0].isupper() or name[0] == "_" else "T3_" + name)
        self.fields = []

    def view(self, words, where):
        """Another name of an attribute of the kind that stands before it."""
        name, of = words
        field = next((f for f in self.own("attr") if f.name == of), None) or fail(where + "no attribute " + of)
        view = Field(name, field.word, None, "view")
        view.of = field
        return view

    def own(self, *roles):
        return [f for f in self.fields if f.role in roles]


def read(path):
    kinds, by_name = [], {}
    with open(path, encoding="ascii") as source:
        for number, line in enumerate(source, 1):
            words = line.split("#")[0].split()
            if not words:
                continue
            where = f"{path}:{number}: "
            if line.startswith("kind "):
                base = None
                if len(words) == 4:
                    base = by_name.get(words[3]) or fail(where + "unknown base " + words[3])
                kind = Kind(words[1], len(kinds), base)
                kinds.append(kind)
                by_name[kind.name] = kind
                continue
            role = "arg"
            if words[0] in ("attr", "cold", "late", "view"):
                role = words.pop(0)
            if role == "view":
                kinds[-1].fields.append(kinds[-1].view(words, where))
                continue
            child_class = words[2] if words[1] == "child" else None
            if len(words) != (3 if child_class else 2):
                fail(where + "malformed field")
            kinds[-1].fields.append(Field(words[0], words[1], child_class, role))
    for kind in kinds:
        for outer in chain(kind)[:-1]:
            if outer.last != kind.first - 1:
                fail(f"{kind.name} does not stand among the kinds of {outer.name}")
            outer.last = kind.first
        for field in kind.fields:
            if field.child_class not in (None, "any") and field.child_class not in by_name:
                fail(f"{kind.name}.{field.name}: no kind {field.child_class}")
    return kinds, by_name


def chain(kind):
    result = []
    while kind:
        result.insert(0, kind)
        kind = kind.base
    return result


def constructor_fields(kind):
    return [f for k in chain(kind) for f in k.own("arg")]


def concrete(kind):
    return not kind.name.startswith("_")


def is_class(kind):
    return not concrete(kind) or kind.last != kind.first


def write_bits(kind, w):
    """The number of each attribute's bit among the evaluated flags; inherited ones come first."""
    inherited = sum(len(k.own("attr", "cold")) for k in chain(kind)[:-1])
    own = kind.own("attr", "cold")
    if inherited + len(own) > MAX_ATTRIBUTES:
        fail(f"{kind.name} has more than {MAX_ATTRIBUTES} attributes")
    for index, field in enumerate(own):
        w(f"  static constexpr int {field.name}_bit = {inherited + index};\n")


def in_memory(fields):
    """Fields in the order in which they lie in memory: small ones fill what the base leaves of its last word."""

    def size(field):
        if field.ctype == "bool":
            return 1
        large = field.ctype.endswith("*") or field.ctype in ("tStringRef", "int64_t", "long", "double")
        return 8 if large else 4

    return sorted(fields, key=size)


def write_header(kinds, out):
    w = out.write
    w("// Made by gen_tree.py from T3Tree.desc; do not edit.\n#pragma once\n\n")
    w("enum class T3Kind : unsigned short {\n")
    for kind in kinds:
        w(f"  {kind.cname} = {kind.first},\n")
    w("};\n\ninline constexpr int kT3KindCount = %d;\n\n" % len(kinds))
    w("/// Whether a kind is a class only: no node is of it.\n")
    w("inline constexpr bool kT3IsClass[kT3KindCount] = {%s};\n\n" %
      ", ".join("true" if is_class(kind) else "false" for kind in kinds))
    for kind in kinds:
        base = kind.base.cname if kind.base else "T3Tree_Node"
        for role, record in (("attr", "Attributes"), ("cold", "Cold")):
            record_base = f"{kind.base.cname}_{record}" if kind.base else f"T3{record}"
            w(f"struct {kind.cname}_{record} : {record_base} {{\n")
            for field in in_memory(kind.own(role)):
                views = "".join(f" {v.ctype} {v.name};" for v in kind.own("view") if v.of is field)
                member = f"{field.ctype} {field.name} = {field.neutral};"
                w(f"  union {{ {member}{views} }};\n" if views else f"  {member}\n")
            if role == "attr":
                write_bits(kind, w)
            w("};\n")
        w(f"struct {kind.cname} : {base} {{\n")
        w(f"  static constexpr unsigned short kFirst = {kind.first};\n")
        w(f"  static constexpr unsigned short kLast = {kind.last};\n")
        for field in in_memory(kind.own("arg", "late")):
            w(f"  {field.ctype} {field.name} = {field.neutral};\n")
        w(f"  {kind.cname}_Attributes& attr() {{ return static_cast<{kind.cname}_Attributes&>(AttributeRecord()); }}\n")
        w(f"  {kind.cname}_Cold& cold() {{ return static_cast<{kind.cname}_Cold&>(ColdRecord()); }}\n")
        w("};\n\n")


def write_constructors(kinds, out):
    w = out.write
    w("// Constructors: the position first, then the syntactic fields from the base classes down.\n")
    for kind in kinds:
        if not concrete(kind):
            continue
        fields = constructor_fields(kind)
        args = ", ".join(f"{f.ctype} {f.name}" for f in fields)
        w(f"  {kind.cname}* m{kind.cname}({args}) {{\n")
        w(f"    auto* node = Make<{kind.cname}>(T3Kind::{kind.cname});\n")
        for f in fields:
            w(f"    node->{f.name} = {f.name};\n")
        w("    return node;\n  }\n")


def write_tables(kinds, by_name, out):
    w = out.write
    w("// Made by gen_tree.py from T3Tree.desc; do not edit.\n")
    w('#include <cstddef>\n#include <new>\n\n#include "frontend/T3GlobalASTNodes.h"\n#include "frontend/T3TreeFields.h"\n\n')
    w('#pragma GCC diagnostic ignored "-Winvalid-offsetof"\n\n')
    w("const unsigned short T3Tree_TypeRange[kT3KindCount] = {\n")
    w("".join(f"  {k.last},\n" for k in kinds))
    w("};\n\nconst unsigned short T3Tree_NodeSize[kT3KindCount] = {\n")
    w("".join(f"  sizeof({k.cname}),\n" for k in kinds))
    w("};\n\nconst char* const T3Tree_NodeName[kT3KindCount] = {\n")
    w("".join(f'  "{k.name}",\n' for k in kinds))
    w("};\n\nnamespace {\n")
    for kind in kinds:
        rows, kind.children, kind.next = [], [], "{nullptr, 0, 0, 0, 0}"
        for k in chain(kind):
            for f in k.own("arg", "late"):
                child, kinds_of_child = "0xffff", "0, kT3KindCount"
                if f.child_class == "any":
                    child = "0xfffe"
                elif f.child_class:
                    child = str(by_name[f.child_class].first)
                    kinds_of_child = f"{child}, {by_name[f.child_class].last}"
                edge = (f"{{&fields_{kind.first}[{len(rows)}], {len(rows)}, "
                        f"offsetof({kind.cname}, {f.name}), {kinds_of_child}}}")
                if child != "0xffff" and f.name == "next":
                    kind.next = edge
                elif child != "0xffff":
                    kind.children.append(edge)
                rows.append(f'  {{"{f.name}", T3FieldShape::{f.shape}, {child}, offsetof({kind.cname}, {f.name}), '
                            f"sizeof({f.ctype}), T3FieldRecord::Node}},\n")
        for roles, record in ((("attr", "view"), "Attributes"), (("cold",), "Cold")):
            for k in chain(kind):
                for f in k.own(*roles):
                    rows.append(f'  {{"{f.name}", T3FieldShape::{f.shape}, 0xffff, offsetof({kind.cname}_{record}, '
                                f"{f.name}), sizeof({f.ctype}), T3FieldRecord::{record}}},\n")
        if rows:
            w(f"const T3FieldInfo fields_{kind.first}[] = {{\n{''.join(rows)}}};\n")
        kind.row_count = len(rows)
        if kind.children:
            w(f"const T3ChildFields::Child children_{kind.first}[] = {{{', '.join(kind.children)}}};\n")
    w("\ntemplate <class A>\nvoid Build(void* memory) {\n  new (memory) A;\n}\n}  // namespace\n\n")
    w("const T3KindInfo T3Tree_KindInfo[kT3KindCount] = {\n")
    for kind in kinds:
        fields = f"{{fields_{kind.first}, {kind.row_count}}}" if kind.row_count else "{}"
        w(f"  {{{fields}, sizeof({kind.cname}_Attributes), sizeof({kind.cname}_Cold), "
          f"&Build<{kind.cname}_Attributes>, &Build<{kind.cname}_Cold>}},\n")
    w("};\n\n")
    w("const T3ChildFields T3Tree_ChildFields[kT3KindCount] = {\n")
    for kind in kinds:
        children = f"children_{kind.first}" if kind.children else ""
        w(f"  {{{{{children}}}, {kind.next}}},\n")
    w("};\n\n")
    w("namespace {\ntemplate <class T>\nT* NewBare(T3Kind kind) {\n")
    w("  return static_cast<T*>(gT3AST.MakeT3Tree(kind));\n}\n}  // namespace\n\n")
    for name in SHARED:
        w(f"T3Tree_Node* _sg{name}(bool shared) {{\n  static {name}* const node = NewBare<{name}>(T3Kind::{name});\n"
          f"  return shared ? node : NewBare<{name}>(T3Kind::{name});\n}}\n\n")
    w("T3Tree_Node* T3Tree::MakeT3Tree(T3Kind kind) {\n  switch (kind) {\n")
    for kind in kinds:
        w(f"    case T3Kind::{kind.cname}: return Make<{kind.cname}>(kind);\n")
    w("  }\n  return nullptr;\n}\n")


def write_if_changed(path, text):
    if os.path.exists(path):
        with open(path, encoding="ascii") as old:
            if old.read() == text:
                os.utime(path)
                return
    with open(path, "w", encoding="ascii") as new:
        new.write(text)


def main():
    if len(sys.argv) != 3:
        fail("usage: gen_tree.py DESCRIPTION OUTPUT_FOLDER")
    import io
    kinds, by_name = read(sys.argv[1])
    nodes, makers, shared, tables = io.StringIO(), io.StringIO(), io.StringIO(), io.StringIO()
    write_header(kinds, nodes)
    write_constructors(kinds, makers)
    shared.write("// Made by gen_tree.py; do not edit.\n")
    for name in SHARED:
        shared.write(f"T3Tree_Node* _sg{name}(bool shared = true);\n")
    write_tables(kinds, by_name, tables)
    folder = sys.argv[2]
    write_if_changed(os.path.join(folder, "T3TreeNodes.h"), nodes.getvalue())
    write_if_changed(os.path.join(folder, "T3TreeConstructors.inc"), makers.getvalue())
    write_if_changed(os.path.join(folder, "T3TreeShared.inc"), shared.getvalue())
    write_if_changed(os.path.join(folder, "T3TreeTables.cpp"), tables.getvalue())


main()
