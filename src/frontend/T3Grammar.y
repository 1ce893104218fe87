/* The grammar of TTCN-3, with the action of each rule beside it.

   Tables and actions are made from this file by Bison with the skeleton cmake/t3parser.m4; T3Parser.cpp
   walks them. A value's position is that of its first token. Rules whose action is missing pass on the
   value of their only symbol; one without symbols gives zero. A result lies in the place of $1, so that an
   action reads $1 before it sets $$. List rules put elements in front, and the rule that completes a list turns
   it round. All conflicts are met by shifting or by the driver's conditions. */
%define lr.default-reduction consistent
%expect 29
%code {
#include "driver/diagnostics/T3Error.h"
#include "frontend/T3GlobalASTNodes.h"
#include "frontend/T3ParserActions.h"
#include "frontend/T3ParserDefs.h"
#include "frontend/T3SignedOperands.h"

using namespace t3_actions;
}

%define api.value.type {T3Value}
%token @TOKENS@

%left kw_or kw_xor kw_and
%right kw_not
%left Equal NotEqual Less Greater GreaterOrEqual LessOrEqual
%left ShiftLeft ShiftRight RotateLeft RotateRight
%left kw_or4b kw_xor4b kw_and4b
%right kw_not4b
%left Plus Minus Ampersand
%left Star Slash kw_mod kw_rem

%start goal
%%

goal:
    source_file
  | field_probe
  | address_list
  | objid_value
  ;

source_file:
    module_list module_def
  ;

module_list:
    %empty
  | module_list module_def
  ;

module_def:
    kw_module identifier Dot module_objid opt_language LeftBrace definition_list opt_control RightBrace with_or_semi
      {
        FinishModule(@1, $2.ident, $4.node, $5, $7.node, $8.node, $10.node, @9, state);
      }
  | kw_module identifier opt_language LeftBrace definition_list opt_control RightBrace with_or_semi
      {
        FinishModule(@1, $2.ident, nullptr, $3, $5.node, $6.node, $8.node, @7, state);
      }
  ;

modulepar_def:
    kw_modulepar LeftBrace modulepar_list modulepar_group opt_semi RightBrace
      { $$.node = Reverse(PrependDecls($3.node, $4.node)); }
  | kw_modulepar modulepar_group
      { $$.node = $2.node; }
  ;

modulepar_list:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | modulepar_list modulepar_group opt_semi
      { $$.node = PrependDecls($1.node, $2.node); }
  ;

modulepar_group:
    reference modulepar_items
      { $$.node = TypeItems(Reverse($2.node), TypeReference($1.node)); }
  ;

modulepar_items:
    modulepar_item
  | modulepar_items Comma modulepar_item
      { $$.node = PrependDecls($1.node, $3.node); }
  ;

modulepar_item:
    identifier
      {
        $$.node = t.mT3ModuleParDecl(@1, _sgT3NoDecl(), $1.ident, _sgT3NoWith(), nullptr, _sgT3NoExpression());
      }
  | identifier Assign template_body
      {
        $$.node = t.mT3ModuleParDecl(@1, _sgT3NoDecl(), $1.ident, _sgT3NoWith(), nullptr, $3.node);
      }
  ;

definition_list:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | definition_list definition with_or_semi
      {
        state.macroScopeIdent = -1;
        GiveWith($2.node, $3.node);
        $$.node = PrependDecls($1.node, $2.node);
      }
  ;

opt_semi:
    %empty
  | Semicolon
  ;

definition:
    modulepar_def
  | type_def
  | const_def
  | template_def
  | function_def
  | signature_def
  | testcase_def
  | altstep_def
  | import_def
  | group_def
  | ext_function_def
  | ext_const_def
  ;

type_def:
    kw_type subtype_def
      {
        $$.node = $2.node;
        $$.node->as<_T3DeclList>()->position = @1;
      }
  | kw_type type_def_body
      {
        $$.node = $2.node;
        $$.node->as<_T3DeclList>()->position = @1;
      }
  ;

type_def_body:
    record_def
  | union_def
  | set_def
  | record_of_def
  | set_of_def
  | enum_def
  | port_def
  | component_def
  ;

record_def:
    kw_record struct_name struct_body
      { $$.node = TypeDecl(@1, $2.ident, t.mT3RecordType(@1, $3.node)); }
  ;

struct_body:
    LeftBrace RightBrace
      { $$.node = _sgT3NoFieldType(); }
  | LeftBrace field_list reference identifier array_dims sub_type_spec opt_optional RightBrace
      {
        $$.node = Reverse(t.mT3FieldType(@3, $2.node, $4.ident, FieldType(TypeReference($3.node), $5.node, $6.node), $7.flag, _sgT3NoExpression()));
      }
  | LeftBrace field_list nested_type identifier array_dims sub_type_spec opt_optional RightBrace
      {
        $$.node = Reverse(t.mT3FieldType(@3, $2.node, $4.ident, FieldType($3.node, $5.node, $6.node), $7.flag, _sgT3NoExpression()));
      }
  ;

struct_name:
    type_name
  | identifier formal_pars
  ;

field_list:
    %empty
      { $$.node = _sgT3NoFieldType(); }
  | field_list reference identifier array_dims sub_type_spec opt_optional Comma
      {
        $$.node = t.mT3FieldType(@2, $1.node, $3.ident, FieldType(TypeReference($2.node), $4.node, $5.node), $6.flag, _sgT3NoExpression());
      }
  | field_list nested_type identifier array_dims sub_type_spec opt_optional Comma
      {
        $$.node = t.mT3FieldType(@2, $1.node, $3.ident, FieldType($2.node, $4.node, $5.node), $6.flag, _sgT3NoExpression());
      }
  ;

opt_optional:
    %empty
  | kw_optional
      { $$.flag = true; }
  ;

union_def:
    kw_union struct_name union_body
      { $$.node = TypeDecl(@1, $2.ident, t.mT3UnionType(@1, $3.node)); }
  ;

union_body:
    LeftBrace union_field_list reference identifier array_dims sub_type_spec RightBrace
      {
        $$.node = Reverse(t.mT3FieldType(@3, $2.node, $4.ident, FieldType(TypeReference($3.node), $5.node, $6.node), false, _sgT3NoExpression()));
      }
  | LeftBrace union_field_list nested_type identifier array_dims sub_type_spec RightBrace
      {
        $$.node = Reverse(t.mT3FieldType(@3, $2.node, $4.ident, FieldType($3.node, $5.node, $6.node), false, _sgT3NoExpression()));
      }
  ;

union_field_list:
    %empty
      { $$.node = _sgT3NoFieldType(); }
  | union_field_list reference identifier array_dims sub_type_spec Comma
      {
        $$.node = t.mT3FieldType(@2, $1.node, $3.ident, FieldType(TypeReference($2.node), $4.node, $5.node), false, _sgT3NoExpression());
      }
  | union_field_list nested_type identifier array_dims sub_type_spec Comma
      {
        $$.node = t.mT3FieldType(@2, $1.node, $3.ident, FieldType($2.node, $4.node, $5.node), false, _sgT3NoExpression());
      }
  ;

set_def:
    kw_set struct_name struct_body
      { $$.node = TypeDecl(@1, $2.ident, t.mT3SetType(@1, $3.node)); }
  ;

record_of_def:
    kw_record length_spec kw_of reference type_name sub_type_spec
      {
        $$.node = TypeDecl(@1, $5.ident, Limited(t.mT3RecordOfType(@1, SubTypeOf(TypeReference($4.node), $6.node)), $2.node));
      }
  | kw_record kw_of reference type_name sub_type_spec
      {
        $$.node = TypeDecl(@1, $4.ident, t.mT3RecordOfType(@1, SubTypeOf(TypeReference($3.node), $5.node)));
      }
  | kw_record length_spec kw_of nested_type type_name sub_type_spec
      {
        $$.node = TypeDecl(@1, $5.ident, Limited(t.mT3RecordOfType(@1, SubTypeOf($4.node, $6.node)), $2.node));
      }
  | kw_record kw_of nested_type type_name sub_type_spec
      {
        $$.node = TypeDecl(@1, $4.ident, t.mT3RecordOfType(@1, SubTypeOf($3.node, $5.node)));
      }
  ;

set_of_def:
    kw_set length_spec kw_of reference type_name sub_type_spec
      {
        $$.node = TypeDecl(@1, $5.ident, Limited(t.mT3SetOfType(@1, SubTypeOf(TypeReference($4.node), $6.node)), $2.node));
      }
  | kw_set kw_of reference type_name sub_type_spec
      {
        $$.node = TypeDecl(@1, $4.ident, t.mT3SetOfType(@1, SubTypeOf(TypeReference($3.node), $5.node)));
      }
  | kw_set length_spec kw_of nested_type type_name sub_type_spec
      {
        $$.node = TypeDecl(@1, $5.ident, Limited(t.mT3SetOfType(@1, SubTypeOf($4.node, $6.node)), $2.node));
      }
  | kw_set kw_of nested_type type_name sub_type_spec
      {
        $$.node = TypeDecl(@1, $4.ident, t.mT3SetOfType(@1, SubTypeOf($3.node, $5.node)));
      }
  ;

enum_def:
    kw_enumerated type_name enum_body
      { $$.node = TypeDecl(@1, $2.ident, t.mT3EnumType(@1, $3.node)); }
  ;

enum_body:
    LeftBrace enum_list enum_item RightBrace
      {
        $3.node->as<T3EnumValue>()->next = $2.node;
        $$.node = Reverse($3.node);
      }
  ;

enum_list:
    %empty
      { $$.node = _sgT3NoEnumValue(); }
  | enum_list enum_item Comma
      {
        $2.node->as<T3EnumValue>()->next = $1.node;
        $$.node = $2.node;
      }
  ;

enum_item:
    identifier
      { $$.node = t.mT3EnumValue(@1, nullptr, $1.ident, _sgT3NoExpression()); }
  | identifier LeftParen integer_value RightParen
      {
        $$.node = t.mT3EnumValue(@1, nullptr, $1.ident, t.mT3IntLiteral(@3, $3.string));
      }
  | identifier LeftParen Minus integer_value RightParen
      {
        $$.node = t.mT3EnumValue(@1, nullptr, $1.ident, t.mT3UnaryMinus(@3, t.mT3IntLiteral(@4, $4.string)));
      }
  ;

nested_type:
    kw_record struct_body
      { $$.node = t.mT3RecordType(@1, $2.node); }
  | kw_union union_body
      { $$.node = t.mT3UnionType(@1, $2.node); }
  | kw_set struct_body
      { $$.node = t.mT3SetType(@1, $2.node); }
  | kw_enumerated enum_body
      { $$.node = t.mT3EnumType(@1, $2.node); }
  | kw_record kw_of reference
      { $$.node = t.mT3RecordOfType(@1, TypeReference($3.node)); }
  | kw_record length_spec kw_of reference
      {
        $$.node = Limited(t.mT3RecordOfType(@1, TypeReference($4.node)), $2.node);
      }
  | kw_record kw_of nested_type
      { $$.node = t.mT3RecordOfType(@1, $3.node); }
  | kw_record length_spec kw_of nested_type
      { $$.node = Limited(t.mT3RecordOfType(@1, $4.node), $2.node); }
  | kw_set kw_of reference
      { $$.node = t.mT3SetOfType(@1, TypeReference($3.node)); }
  | kw_set length_spec kw_of reference
      {
        $$.node = Limited(t.mT3SetOfType(@1, TypeReference($4.node)), $2.node);
      }
  | kw_set kw_of nested_type
      { $$.node = t.mT3SetOfType(@1, $3.node); }
  | kw_set length_spec kw_of nested_type
      { $$.node = Limited(t.mT3SetOfType(@1, $4.node), $2.node); }
  ;

subtype_def:
    reference type_name array_dims sub_type_spec
      {
        $$.node = TypeDecl(@1, $2.ident, DefinedSubType(TypeReference($1.node), $3.node, $4.node));
      }
  ;

type_name:
    identifier
  | kw_address
      { $$.ident = gIdents.MakeIdent("address"); }
  ;

array_dims:
    %empty
  | array_dims LeftBracket bound_expr RightBracket
      {
        $$.node = t.mT3ArrayType(@2, $1.node, nullptr, t.mT3SingleBound(@3, $3.node));
      }
  | array_dims LeftBracket bound_expr DotDot bound_expr RightBracket
      {
        $$.node = t.mT3ArrayType(@2, $1.node, nullptr, t.mT3RangeBound(@3, $3.node, $5.node));
      }
  ;

sub_type_spec:
    %empty
  | allowed_values
      { $$.node = Constraint($1.node, nullptr); }
  | length_spec
      { $$.node = Constraint(nullptr, $1.node); }
  | allowed_values length_spec
      { $$.node = Constraint($1.node, $2.node); }
  ;

allowed_values:
    value_or_range_list
      { $$.node = t.mT3ValueList(@1, $1.node); }
  | LeftParen kw_pattern pattern_text RightParen
      {
        $$.node = t.mT3CharStringMatch(@2, t.mT3CharStringLiteral(@3, $3.string));
      }
  ;

value_or_range_list:
    LeftParen value_or_range_prefix value_or_range RightParen
      { $$.node = Reverse(t.mT3ValueListItem(@3, $2.node, $3.node)); }
  ;

value_or_range_prefix:
    %empty
      { $$.node = _sgT3NoValueListItem(); }
  | value_or_range_prefix value_or_range Comma
      { $$.node = t.mT3ValueListItem(@2, $1.node, $2.node); }
  ;

value_or_range:
    subtype_value
  | lower_bound DotDot upper_bound
      { $$.node = t.mT3ValueRange(@1, $1.node, $3.node); }
  ;

length_spec:
    kw_length LeftParen bound_expr RightParen
      { $$.node = t.mT3LengthRange(@1, $3.node, $3.node); }
  | kw_length LeftParen bound_expr DotDot upper_bound RightParen
      { $$.node = t.mT3LengthRange(@1, $3.node, $5.node); }
  ;

bound_expr:
    expr
  ;

subtype_value:
    constant_value
  ;

port_def:
    kw_port identifier port_kind port_body
      { $$.node = TypeDecl(@1, $2.ident, PortType(@1, $3.number, $4.node)); }
  ;

port_kind:
    kw_message
      { $$.number = 0; }
  | kw_procedure
      { $$.number = 1; }
  | kw_mixed
      { $$.number = 2; }
  ;

port_body:
    LeftBrace port_attr_list port_attr opt_semi RightBrace
      { $$.node = MergePortLists($2.node, $3.node); }
  ;

port_attr_list:
    %empty
  | port_attr_list port_attr opt_semi
      { $$.node = MergePortLists($1.node, $2.node); }
  ;

port_attr:
    kw_in port_type_list
      { $$.node = PortLists(@1, $2.node, true, false); }
  | kw_out port_type_list
      { $$.node = PortLists(@1, $2.node, false, true); }
  | kw_inout port_type_list
      { $$.node = PortLists(@1, $2.node, true, true); }
  ;

port_type_list:
    kw_all
      {
        gT3IsPortAllTypes = true;
        $$.node = t.mT3TypeItem(@1, _sgT3NoTypeItem(), t.mT3AllTypes(@1));
      }
  | port_type_prefix reference
      {
        $$.node = Reverse(t.mT3TypeItem(@2, $1.node, TypeReference($2.node)));
      }
  ;

port_type_prefix:
    %empty
      { $$.node = _sgT3NoTypeItem(); }
  | port_type_prefix reference Comma
      { $$.node = t.mT3TypeItem(@2, $1.node, TypeReference($2.node)); }
  ;

component_def:
    kw_component identifier opt_extends LeftBrace component_items RightBrace
      {
        $$.node = TypeDecl(@1, $2.ident, t.mT3ComponentType(@1, $3.node, Reverse($5.node)));
      }
  ;

opt_extends:
    %empty
      { $$.node = _sgT3NoTypeItem(); }
  | kw_extends extends_prefix extended_component
      {
        $$.node = Reverse(t.mT3TypeItem(@3, $2.node, TypeReference($3.node)));
      }
  ;

extends_prefix:
    %empty
      { $$.node = _sgT3NoTypeItem(); }
  | extends_prefix extended_component Comma
      { $$.node = t.mT3TypeItem(@2, $1.node, TypeReference($2.node)); }
  ;

extended_component:
    identifier
      { $$.node = t.mT3Identifier(@1, $1.ident); }
  | identifier Dot identifier
      {
        $$.node = t.mT3Qualifier(@1, t.mT3Identifier(@1, $1.ident), $3.ident);
      }
  ;

component_items:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | component_items component_item opt_semi
      { $$.node = PrependDecls($1.node, $2.node); }
  ;

component_item:
    port_instance
  | var_def
  | timer_def
  | const_def
  ;

port_instance:
    kw_port declared_type port_names identifier array_dims
      {
        $$.node = TypeItems(Reverse(PrependDecls($3.node, t.mT3PortDecl(@4, _sgT3NoDecl(), $4.ident, _sgT3NoWith(), $5.node))), $2.node);
      }
  ;

declared_type:
    reference
      { $$.node = TypeReference($1.node); }
  ;

port_names:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | port_names identifier array_dims Comma
      {
        $$.node = PrependDecls($1.node, t.mT3PortDecl(@2, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), $3.node));
      }
  ;

const_def:
    kw_const declared_type const_items identifier array_dims Assign template_body
      {
        $$.node = TypeItems(Reverse(PrependDecls($3.node, t.mT3ConstDecl(@4, _sgT3NoDecl(), $4.ident, _sgT3NoWith(), $5.node, $7.node))), $2.node);
      }
  ;

const_items:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | const_items identifier array_dims Assign template_body Comma
      {
        $$.node = PrependDecls($1.node, t.mT3ConstDecl(@2, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), $3.node, $5.node));
      }
  ;

template_def:
    kw_template template_restriction template_header opt_modifies Assign template_body
      { $$.node = TemplateDecl(@1, $2.number, $3.node, $4.node, $6.node); }
  ;

template_restriction:
    LeftParen kw_omit RightParen
      { $$.number = 1; }
  | LeftParen kw_value RightParen
      { $$.number = 2; }
  | LeftParen kw_present RightParen
      { $$.number = 3; }
  | %empty
  ;

restricted_template:
    kw_omit
      { $$.number = 1; }
  | kw_template template_restriction
      { $$.number = $2.number; }
  ;

template_keyword:
    restricted_template
  ;

template_header:
    reference identifier
      {
        $$.node = t.mT3TemplateDecl(@1, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), _sgT3NoFormalPar(), TypeReference($1.node));
      }
  | reference identifier template_formal_pars
      {
        $$.node = t.mT3TemplateDecl(@1, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), $3.node, TypeReference($1.node));
      }
  ;

opt_modifies:
    %empty
      { $$.node = _sgT3NoTemplateReference(); }
  | kw_modifies reference
      { $$.node = t.mT3TemplateReference(@2, $2.node); }
  ;

template_instance:
    template_body
      {
        $$.node = InlineTemplate(@1, NoType(), $1.node, _sgT3NoTemplateReference());
      }
  | reference Colon template_body
      {
        $$.node = InlineTemplate(@1, TypeReference($1.node), $3.node, _sgT3NoTemplateReference());
      }
  | kw_modifies reference Assign template_body
      {
        $$.node = InlineTemplate(@1, NoType(), $4.node, t.mT3TemplateReference(@2, $2.node));
      }
  | reference Colon kw_modifies reference Assign template_body
      {
        $$.node = InlineTemplate(@1, TypeReference($1.node), $6.node, t.mT3TemplateReference(@4, $4.node));
      }
  ;

function_def:
    kw_function identifier formal_pars opt_runs_on kw_return template_keyword reference block
      {
        $$.node = t.mT3Function(@1, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), $3.node, $4.node, $8.node, TypeReference($7.node), true, Restriction($6.number));
      }
  | kw_function identifier formal_pars opt_runs_on opt_return block
      {
        $$.node = t.mT3Function(@1, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), $3.node, $4.node, $6.node, $5.node, false, Restriction(0));
      }
  ;

opt_runs_on:
    %empty
      { $$.node = NoType(); }
  | kw_runs kw_on reference
      { $$.node = TypeReference($3.node); }
  ;

opt_return:
    %empty
      { $$.node = NoType(); }
  | kw_return reference
      { $$.node = TypeReference($2.node); }
  ;

block:
    LeftBrace block_items RightBrace
      { $$.node = Block(@1, $2.node, @3); }
  ;

block_items:
    %empty
      { $$.node = _sgT3NoStmt(); }
  | block_items block_item opt_semi
      { $$.node = PrependStatements($1.node, $2.node); }
  ;

block_item:
    const_def
      { $$.node = DeclStatements($1.node, @1); }
  | template_def
      { $$.node = DeclStatements($1.node, @1); }
  | var_def
      { $$.node = DeclStatements($1.node, @1); }
  | timer_def
      { $$.node = DeclStatements($1.node, @1); }
  | config_stmt
  | basic_stmt
  | behaviour_stmt
  ;

signature_def:
    kw_signature identifier formal_pars signature_result opt_exceptions
      { $$.node = SignatureDecl(@1, $2.ident, $3.node, $4, $5.node); }
  ;

signature_result:
    kw_noblock
      { $$.node = nullptr; }
  | opt_return
  ;

opt_exceptions:
    %empty
      { $$.node = _sgT3NoTypeItem(); }
  | kw_exception LeftParen exception_prefix reference RightParen
      {
        $$.node = Reverse(t.mT3TypeItem(@4, $3.node, TypeReference($4.node)));
      }
  ;

exception_prefix:
    %empty
      { $$.node = _sgT3NoTypeItem(); }
  | exception_prefix reference Comma
      { $$.node = t.mT3TypeItem(@2, $1.node, TypeReference($2.node)); }
  ;

testcase_def:
    kw_testcase identifier formal_pars kw_runs kw_on reference opt_system block
      {
        $$.node = t.mT3Testcase(@1, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), $3.node, TypeReference($6.node), $8.node, $7.node);
      }
  ;

opt_system:
    %empty
      { $$.node = NoType(); }
  | kw_system reference
      { $$.node = TypeReference($2.node); }
  ;

altstep_def:
    kw_altstep identifier formal_pars opt_runs_on LeftBrace altstep_locals alt_branches RightBrace
      {
        $$.node = t.mT3TestStep(@1, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), $3.node, $4.node, AltStatement(@7, $7.node, @8), Reverse($6.node));
      }
  ;

altstep_locals:
    altstep_local_list
  ;

altstep_local_list:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | altstep_local_list altstep_local Semicolon
      { $$.node = PrependDecls($1.node, $2.node); }
  ;

altstep_local:
    var_def
  | timer_def
  | const_def
  | template_def
  ;

import_def:
    kw_import import_from import_spec
      {
        // The name of an imported function begins no scope.
        state.macroScopeIdent = -1;
        $$.node = $3.node;
      }
  ;

import_spec:
    kw_all opt_import_except
      { $$.node = ImportAll(@1, t3_import_restr_t::All, $2.node, state); }
  | LeftBrace import_items RightBrace
      { $$.node = Reverse($2.node); }
  ;

opt_import_except:
    %empty
      { $$.node = _sgT3NoImportException(); }
  | kw_except LeftBrace import_items RightBrace
      { $$.node = Exceptions(Reverse($3.node)); }
  ;

import_items:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | import_items import_item opt_semi
      { $$.node = PrependDecls($1.node, $2.node); }
  ;

import_item:
    import_kind id_list
      { $$.node = ImportNames($2.node, $1.number, state); }
  | import_kind kw_all opt_item_except
      {
        $$.node = ImportAll(@1, static_cast<t3_import_restr_t>($1.number), OfKind($3.node, $1.number), state);
      }
  | kw_group group_ref_list
      { $$.node = ImportGroups($2.node, state); }
  | kw_group kw_all opt_group_except
      { $$.node = ImportAll(@1, t3_import_restr_t::Group, $3.node, state); }
  ;

opt_item_except:
    %empty
      { $$.node = _sgT3NoImportException(); }
  | kw_except id_list
      { $$.node = NameExceptions($2.node); }
  ;

id_list:
    identifier id_list_tail
      {
        $$.node = t.mT3RefItem(@1, Reverse($2.node), t.mT3AttrRefIdentifier(@1, $1.ident));
      }
  ;

id_list_tail:
    %empty
      { $$.node = _sgT3NoRefItem(); }
  | id_list_tail Comma identifier
      {
        $$.node = t.mT3RefItem(@3, $1.node, t.mT3AttrRefIdentifier(@3, $3.ident));
      }
  ;

opt_group_except:
    %empty
      { $$.node = _sgT3NoImportException(); }
  | kw_except group_ref_list
      { $$.node = $2.node; }
  ;

group_ref_list:
    group_ref group_ref_tail
      {
        $$.node = t.mT3ImportException(Reverse($2.node), t3_import_restr_t::Group, $1.node);
      }
  ;

group_ref_tail:
    %empty
      { $$.node = _sgT3NoImportException(); }
  | group_ref_tail Comma group_ref
      {
        $$.node = t.mT3ImportException($1.node, t3_import_restr_t::Group, $3.node);
      }
  ;

group_ref:
    group_prefix identifier
      { $$.node = t.mT3ImportQualified(@2, $1.node, $2.ident); }
  ;

group_prefix:
    %empty
      { $$.node = t.mT3ImportTerminator(@$); }
  | group_prefix identifier Dot
      { $$.node = t.mT3ImportQualified(@2, $1.node, $2.ident); }
  ;

import_kind:
    kw_type
      { $$.number = 1; }
  | kw_const
      { $$.number = 3; }
  | kw_template
      { $$.number = 2; }
  | kw_testcase
      { $$.number = 4; }
  | kw_function
      { $$.number = 6; }
  | kw_signature
      { $$.number = 7; }
  | kw_altstep
      { $$.number = 5; }
  | kw_modulepar
      { $$.number = 8; }
  ;

import_from:
    kw_from identifier opt_language opt_recursive
      {
        state.gModuleId = $2.ident;
        state.module_position = @2;
        state.gLangSpec = $3.string;
        state.gRecursiveSa = $4.flag;
      }
  ;

opt_recursive:
    %empty
  | kw_recursive
      { $$.flag = true; }
  ;

group_def:
    kw_group identifier LeftBrace definition_list RightBrace
      {
        $$.node = t.mT3GroupDecl(@1, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), Reverse($4.node));
      }
  ;

ext_function_def:
    kw_external kw_function identifier formal_pars opt_return
      {
        $$.node = t.mT3ExtFunction(@1, _sgT3NoDecl(), $3.ident, _sgT3NoWith(), $4.node, NoType(), $5.node);
      }
  ;

ext_const_def:
    kw_external kw_const declared_type ext_const_names identifier
      {
        $$.node = TypeItems(Reverse(PrependDecls($4.node, t.mT3ExtConstDecl(@5, _sgT3NoDecl(), $5.ident, _sgT3NoWith(), nullptr))), $3.node);
      }
  ;

ext_const_names:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | ext_const_names identifier Comma
      {
        $$.node = PrependDecls($1.node, t.mT3ExtConstDecl(@2, _sgT3NoDecl(), $2.ident, _sgT3NoWith(), nullptr));
      }
  ;

opt_control:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | kw_control block with_or_semi
      {
        state.macroScopeIdent = -1;
        $$.node = t.mT3ControlPart(@1, _sgT3NoDecl(), gIdents.MakeIdent("control"), $3.node, $2.node);
      }
  ;

var_keyword:
    %empty
      { $$.number = -1; }
  | restricted_template
  ;

var_def:
    kw_var var_keyword declared_type var_items identifier array_dims opt_init
      {
        $$.node = VarItems(Reverse(PrependDecls($4.node, VarDecl(@5, $5.ident, $6.node, $7.node))), $3.node, $2.number);
      }
  ;

var_items:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | var_items identifier array_dims opt_init Comma
      {
        $$.node = PrependDecls($1.node, VarDecl(@2, $2.ident, $3.node, $4.node));
      }
  ;

opt_init:
    %empty
      { $$.node = _sgT3NoExpression(); }
  | Assign template_body
      { $$.node = $2.node; }
  ;

timer_def:
    kw_timer timer_items identifier array_dims timer_init
      {
        $$.node = VarItems(Reverse(PrependDecls($2.node, VarDecl(@3, $3.ident, $4.node, $5.node))), TimerType(@1), -1);
      }
  ;

timer_items:
    %empty
      { $$.node = _sgT3NoDecl(); }
  | timer_items identifier array_dims timer_init Comma
      {
        $$.node = PrependDecls($1.node, VarDecl(@2, $2.ident, $3.node, $4.node));
      }
  ;

timer_init:
    %empty
      { $$.node = _sgT3NoExpression(); }
  | Assign expr
      { $$.node = $2.node; }
  | Assign array_value
      { $$.node = $2.node; }
  ;

config_stmt:
    kw_connect connect_args
      { $$.node = ConfigStatement(T3Kind::T3ConnectStmt, @1, $2.node); }
  | kw_map connect_args
      { $$.node = ConfigStatement(T3Kind::T3MapStmt, @1, $2.node); }
  | kw_disconnect disconnect_args
      { $$.node = ConfigStatement(T3Kind::T3DisconnectStmt, @1, $2.node); }
  | kw_unmap disconnect_args
      { $$.node = ConfigStatement(T3Kind::T3UnmapStmt, @1, $2.node); }
  ;

connect_args:
    LeftParen port_ref Comma port_ref RightParen
      { $$.node = PortPair(@1, $2.node, $4.node); }
  ;

disconnect_args:
    LeftParen port_ref Comma port_ref RightParen
      { $$.node = PortPair(@1, $2.node, $4.node); }
  | LeftParen port_ref RightParen
      { $$.node = PortPair(@1, $2.node, AllPorts(@2)); }
  | LeftParen reference Colon kw_all kw_port RightParen
      {
        $$.node = PortPair(@1, PortEnd(@2, $2.node, t.mT3PortAll(@4)), AllPorts(@4));
      }
  | LeftParen kw_all kw_component Colon kw_all kw_port RightParen
      { $$.node = PortPair(@1, AllPorts(@2), AllPorts(@2)); }
  | %empty
      {
        const tPosition& keyword = state.last_token;
        $$.node = PortPair(keyword, PortEnd(keyword, t.mT3Self(keyword), t.mT3PortAll(keyword)), AllPorts(keyword));
      }
  ;

port_ref:
    reference Colon port_spec
      {
        $$.node = PortEnd(@1, $1.node, $3.node);
      }
  ;

port_spec:
    identifier
      { $$.node = t.mT3PortIdentifier(@1, $1.ident); }
  | port_spec LeftBracket expr RightBracket
      { $$.node = t.mT3PortArrayElement(@1, $1.node, $3.node); }
  ;

formal_pars:
    LeftParen RightParen
      { $$.node = _sgT3NoFormalPar(); }
  | LeftParen formal_par_prefix formal_par RightParen
      { $$.node = Reverse(PrependPar($2.node, $3.node)); }
  ;

template_formal_pars:
    LeftParen formal_par_prefix formal_par RightParen
      { $$.node = Reverse(PrependPar($2.node, $3.node)); }
  ;

formal_par_prefix:
    %empty
      { $$.node = _sgT3NoFormalPar(); }
  | formal_par_prefix formal_par Comma
      { $$.node = PrependPar($1.node, $2.node); }
  ;

formal_par:
    opt_in reference identifier opt_default
      {
        $$.node = t.mT3FormalPar(@2, nullptr, $3.ident, TypeReference($2.node), t3_par_pass_t::In, $4.node);
        $$.node->as<T3FormalPar>()->position = @1;
      }
  | out_or_inout reference identifier
      {
        $$.node = t.mT3FormalPar(@1, nullptr, $3.ident, TypeReference($2.node), Pass($1.number), _sgT3NoExpression());
      }
  | opt_inout kw_timer identifier
      {
        $$.node = t.mT3FormalPar(@1, nullptr, $3.ident, TimerType(@2), Pass($1.number), _sgT3NoExpression());
      }
  | opt_in template_keyword reference identifier opt_default
      {
        $$.node = t.mT3FormalTemplatePar(@1, nullptr, $4.ident, TypeReference($3.node), t3_par_pass_t::In, $5.node, Restriction($2.number));
      }
  | out_or_inout template_keyword reference identifier
      {
        $$.node = t.mT3FormalTemplatePar(@1, nullptr, $4.ident, TypeReference($3.node), Pass($1.number), _sgT3NoExpression(), Restriction($2.number));
      }
  ;

opt_in:
    %empty
  | kw_in
      { $$.node = nullptr; }
  ;

opt_inout:
    %empty
  | kw_inout
      { $$.number = 2; }
  ;

out_or_inout:
    kw_inout
      { $$.number = 2; }
  | kw_out
      { $$.number = 1; }
  ;

opt_default:
    %empty
      { $$.node = _sgT3NoExpression(); }
  | Assign template_body
      { $$.node = $2.node; }
  ;

with_or_semi:
    opt_semi
      { $$.node = _sgT3NoWith(); }
  | kw_with LeftBrace attr opt_semi attr_tail RightBrace opt_semi
      {
        $3.node->as<T3With>()->next = Reverse($5.node);
        $$.node = $3.node;
      }
  ;

attr_tail:
    %empty
      { $$.node = _sgT3NoWith(); }
  | attr_tail attr opt_semi
      {
        $2.node->as<T3With>()->next = $1.node;
        $$.node = $2.node;
      }
  ;

attr:
    attr_kind opt_override opt_attr_refs string_value
      {
        $$.node = t.mT3With(@1, _sgT3NoWith(), static_cast<t3_with_attribute_t>($1.number), $2.flag, $3.node, $4.string);
      }
  ;

attr_kind:
    kw_encode
      { $$.number = 0; }
  | kw_display
      { $$.number = 1; }
  | kw_variant
      { $$.number = 2; }
  | kw_extension
      { $$.number = 3; }
  ;

opt_override:
    %empty
  | kw_override
      { $$.flag = true; }
  ;

opt_attr_refs:
    %empty
      { $$.node = _sgT3NoRefItem(); }
  | LeftParen attr_ref_prefix attr_ref RightParen
      { $$.node = Reverse(t.mT3RefItem(@3, $2.node, $3.node)); }
  ;

attr_ref_prefix:
    %empty
      { $$.node = _sgT3NoRefItem(); }
  | attr_ref_prefix attr_ref Comma
      { $$.node = t.mT3RefItem(@2, $1.node, $2.node); }
  ;

attr_ref:
    identifier
      { $$.node = t.mT3AttrRefIdentifier(@1, $1.ident); }
  ;

behaviour_stmt:
    return_stmt
  | alt_stmt
  | interleave_stmt
  | kw_label identifier
      { $$.node = t.mT3LabelStmt(@1, _sgT3NoStmt(), $2.ident); }
  | kw_goto identifier
      { $$.node = t.mT3GotoStmt(@1, _sgT3NoStmt(), $2.ident); }
  | kw_repeat
      { $$.node = t.mT3RepeatStmt(@1, _sgT3NoStmt()); }
  | kw_break
      { $$.node = t.mT3BreakStmt(@1, _sgT3NoStmt()); }
  | kw_continue
      { $$.node = t.mT3ContinueStmt(@1, _sgT3NoStmt()); }
  | deactivate_stmt
  | invocation
      { $$.node = InvocationStatement(@1, $1.node); }
  ;

return_stmt:
    kw_return
      { $$.node = t.mT3RetStmt(@1, _sgT3NoStmt(), _sgT3NoExpression()); }
  | kw_return template_body
      { $$.node = t.mT3RetStmt(@1, _sgT3NoStmt(), $2.node); }
  ;

alt_stmt:
    kw_alt LeftBrace alt_branches RightBrace
      { $$.node = AltStatement(@1, $3.node, @4); }
  ;

alt_branches:
    alt_branch_prefix alt_branch opt_semi
      { $$.node = Reverse(PrependAlt($1.node, $2.node)); }
  ;

alt_branch_prefix:
    %empty
      { $$.node = _sgT3NoAlt(); }
  | alt_branch_prefix alt_branch opt_semi
      { $$.node = PrependAlt($1.node, $2.node); }
  ;

alt_branch:
    guard any_guard_op block
      { $$.node = t.mT3GuardedAlt(@1, nullptr, $1.node, $3.node, $2.node); }
  | guard variable_ref Dot guard_op block
      {
        $$.node = t.mT3GuardedAlt(@1, nullptr, $1.node, $5.node, GiveObject($4.node, $2.node));
      }
  | guard variable_ref opt_block
      { $$.node = AltstepBranch(@1, $1.node, $2.node, $3.node); }
  | LeftBracket kw_else RightBracket block
      {
        $$.node = t.mT3GuardedAlt(@1, nullptr, _sgT3NoExpression(), $4.node, _sgT3NoStmt());
      }
  ;

opt_block:
    %empty
      { $$.node = Block(state.last_token, _sgT3NoStmt(), state.last_token); }
  | block
  ;

guard:
    LeftBracket RightBracket
      { $$.node = _sgT3NoExpression(); }
  | LeftBracket expr RightBracket
      { $$.node = $2.node; }
  ;

any_guard_op:
    kw_any kw_timer Dot kw_timeout
      { $$.node = t.mT3TimeoutStmt(@1, _sgT3NoStmt(), t.mT3AnyTimer(@1)); }
  | kw_any kw_port Dot receive_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot trigger_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot getcall_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot catch_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot check_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot getreply_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_component Dot kw_done
      { $$.node = t.mT3DoneStmt(@1, _sgT3NoStmt(), t.mT3AnyComponent(@1)); }
  | kw_any kw_component Dot kw_killed
      { $$.node = t.mT3KilledStmt(@1, _sgT3NoStmt(), t.mT3AnyComponent(@1)); }
  | kw_all kw_component Dot kw_done
      { $$.node = t.mT3DoneStmt(@1, _sgT3NoStmt(), t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_killed
      { $$.node = t.mT3KilledStmt(@1, _sgT3NoStmt(), t.mT3AllComponent(@1)); }
  ;

guard_op:
    kw_timeout
      { $$.node = t.mT3TimeoutStmt(@1, _sgT3NoStmt(), nullptr); }
  | receive_op
  | trigger_op
  | getcall_op
  | catch_op
  | check_op
  | getreply_op
  | kw_done
      { $$.node = t.mT3DoneStmt(@1, _sgT3NoStmt(), nullptr); }
  | kw_killed
      { $$.node = t.mT3KilledStmt(@1, _sgT3NoStmt(), nullptr); }
  ;

interleave_stmt:
    kw_interleave LeftBrace interleave_branch opt_semi interleave_tail RightBrace
      { $$.node = InterleaveStatement(@1, $3.node, $5.node, @6); }
  ;

interleave_tail:
    %empty
      { $$.node = _sgT3NoAlt(); }
  | interleave_tail interleave_branch opt_semi
      { $$.node = PrependAlt($1.node, $2.node); }
  ;

interleave_branch:
    LeftBracket RightBracket any_guard_op block
      {
        $$.node = t.mT3GuardedAlt(@1, nullptr, _sgT3NoExpression(), $4.node, $3.node);
      }
  | LeftBracket RightBracket variable_ref Dot guard_op block
      {
        $$.node = t.mT3GuardedAlt(@1, nullptr, _sgT3NoExpression(), $6.node, GiveObject($5.node, $3.node));
      }
  ;

deactivate_stmt:
    kw_deactivate
      {
        $$.node = t.mT3DeactivateStmt(@1, _sgT3NoStmt(), _sgT3NoExpression());
      }
  | kw_deactivate LeftParen template_body RightParen
      { $$.node = t.mT3DeactivateStmt(@1, _sgT3NoStmt(), $3.node); }
  ;

basic_stmt:
    assignment
  | log_stmt
  | setverdict_stmt
  | loop_stmt
  | if_stmt
  | select_stmt
  | block
  ;

assignment:
    variable_ref Assign template_body
      { $$.node = t.mT3AssignStmt(@1, _sgT3NoStmt(), $1.node, $3.node); }
  ;

log_stmt:
    kw_log LeftParen string_value RightParen
      {
        $$.node = t.mT3LogStmt(@1, _sgT3NoStmt(), $3.string, _sgT3NoTemplateListItem());
      }
  | kw_log LeftParen RightParen
      {
        $$.node = t.mT3LogStmt(@1, _sgT3NoStmt(), gStringM.PutString("\"empty log message\""), _sgT3NoTemplateListItem());
      }
  | kw_log template_instance_list
      {
        $$.node = t.mT3LogStmt(@1, _sgT3NoStmt(), gStringM.EmptyString(), $2.node);
      }
  ;

setverdict_stmt:
    kw_setverdict LeftParen expr RightParen
      {
        $$.node = t.mT3SetVerdictStmt(@1, _sgT3NoStmt(), $3.node, _sgT3NoTemplateListItem());
      }
  | kw_setverdict LeftParen expr Comma template_instance template_instance_tail RightParen
      {
        $$.node = t.mT3SetVerdictStmt(@1, _sgT3NoStmt(), $3.node, t.mT3TemplateListItem(@5, Reverse($6.node), $5.node));
      }
  ;

loop_stmt:
    for_stmt
  | while_stmt
  | do_stmt
  ;

for_stmt:
    kw_for LeftParen for_init Semicolon expr Semicolon assignment RightParen block
      {
        $$.node = t.mT3ForStmt(@1, _sgT3NoStmt(), $5.node, $9.node, $3.node, $7.node);
      }
  ;

for_init:
    assignment
  | var_def
      { $$.node = DeclStatements($1.node, @1); }
  ;

while_stmt:
    kw_while LeftParen expr RightParen block
      { $$.node = t.mT3WhileStmt(@1, _sgT3NoStmt(), $3.node, $5.node); }
  ;

do_stmt:
    kw_do block kw_while LeftParen expr RightParen
      { $$.node = t.mT3DoWhileStmt(@1, _sgT3NoStmt(), $5.node, $2.node); }
  ;

if_stmt:
    kw_if LeftParen expr RightParen block elseif_list opt_else
      { $$.node = IfStatement(@1, $3.node, $5.node, $6.node, $7.node); }
  ;

elseif_list:
    %empty
      { $$.node = _sgT3NoStmt(); }
  | elseif_list kw_else kw_if LeftParen expr RightParen block
      { $$.node = t.mT3IfStmt(@3, $1.node, $5.node, $7.node, _sgT3NoStmt()); }
  ;

opt_else:
    %empty
      { $$.node = _sgT3NoStmt(); }
  | kw_else block
      { $$.node = $2.node; }
  ;

select_stmt:
    kw_select LeftParen expr RightParen LeftBrace case_list opt_case_else RightBrace
      {
        $$.node = TranslateSelectCaseConstruct($3.node, Reverse($6.node), $7.node);
      }
  ;

case_list:
    case_item
  | case_list case_item
      {
        $2.node->as<T3IfStmt>()->next = $1.node;
        $$.node = $2.node;
      }
  ;

case_item:
    kw_case template_instance_list block
      {
        $$.node = t.mT3IfStmt(@1, _sgT3NoStmt(), _sgT3NoExpression(), $3.node, $2.node);
      }
  ;

opt_case_else:
    %empty
      { $$.node = _sgT3NoStmt(); }
  | kw_case kw_else block
      { $$.node = $3.node; }
  ;

plain_id:
    identifier
      { $$.node = t.mT3Identifier(@1, $1.ident); }
  ;

reference:
    plain_id ref_tail
      { $$.node = ApplyTail($1.node, $2.node); }
  | parameterized_id ref_tail
      { $$.node = ApplyTail($1.node, $2.node); }
  | kw_system
      { $$.node = t.mT3System(@1); }
  | kw_self
      { $$.node = t.mT3Self(@1); }
  | kw_mtc
      { $$.node = t.mT3MTC(@1); }
  | builtin_type
  ;

variable_ref:
    plain_id ref_tail
      { $$.node = ApplyTail($1.node, $2.node); }
  | parameterized_id ref_tail
      { $$.node = ApplyTail($1.node, $2.node); }
  | kw_system
      { $$.node = t.mT3System(@1); }
  | kw_self
      { $$.node = t.mT3Self(@1); }
  | kw_mtc
      { $$.node = t.mT3MTC(@1); }
  ;

general_invocation:
    plain_id ref_tail op_tail
      { $$.node = ApplyOperation(ApplyTail($1.node, $2.node), $3.node); }
  | parameterized_id ref_tail op_tail
      { $$.node = ApplyOperation(ApplyTail($1.node, $2.node), $3.node); }
  | kw_all kw_port Dot kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), t.mT3AllPort(@1)); }
  | kw_all kw_port Dot kw_start
      {
        $$.node = t.mT3StartStmt(@1, _sgT3NoStmt(), t.mT3AllPort(@1), _sgT3NoExpression());
      }
  | kw_all kw_port Dot kw_clear
      { $$.node = t.mT3ClearStmt(@1, _sgT3NoStmt(), t.mT3AllPort(@1)); }
  | kw_all kw_port Dot kw_halt
      { $$.node = t.mT3HaltStmt(@1, _sgT3NoStmt(), t.mT3AllPort(@1)); }
  | kw_any kw_port Dot receive_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot trigger_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot getcall_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot getreply_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot catch_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot check_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_timer Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AnyTimer(@1)); }
  | kw_any kw_timer Dot kw_timeout
      { $$.node = t.mT3TimeoutStmt(@1, _sgT3NoStmt(), t.mT3AnyTimer(@1)); }
  | kw_all kw_timer Dot kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), t.mT3AllTimer(@1)); }
  | kw_any kw_component Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AnyComponent(@1)); }
  | kw_any kw_component Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3AnyComponent(@1)); }
  | kw_any kw_component Dot kw_done
      { $$.node = t.mT3DoneStmt(@1, _sgT3NoStmt(), t.mT3AnyComponent(@1)); }
  | kw_any kw_component Dot kw_killed
      { $$.node = t.mT3KilledStmt(@1, _sgT3NoStmt(), t.mT3AnyComponent(@1)); }
  | kw_all kw_component Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_done
      { $$.node = t.mT3DoneStmt(@1, _sgT3NoStmt(), t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_killed
      { $$.node = t.mT3KilledStmt(@1, _sgT3NoStmt(), t.mT3AllComponent(@1)); }
  | kw_execute LeftParen reference RightParen
      { $$.node = t.mT3Execute(@1, $3.node, _sgT3NoExpression()); }
  | kw_execute LeftParen reference Comma expr RightParen
      { $$.node = t.mT3Execute(@1, $3.node, $5.node); }
  | kw_getverdict
      { $$.node = t.mT3GetVerdict(@1); }
  | kw_action LeftParen template_body RightParen
      { $$.node = t.mT3SUTStmt(@1, _sgT3NoStmt(), $3.node); }
  | kw_activate LeftParen invocation RightParen
      { $$.node = t.mT3Activate(@1, InvocationArgument($3.node)); }
  | kw_match LeftParen template_body Comma template_instance RightParen
      { $$.node = t.mT3Match(@1, $3.node, $5.node); }
  | kw_valueof LeftParen template_instance RightParen
      { $$.node = t.mT3ValueOf(@1, $3.node); }
  | kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), _sgT3NoExpression()); }
  | kw_kill
      { $$.node = t.mT3KillStmt(@1, _sgT3NoStmt(), _sgT3NoExpression()); }
  | kw_ispresent LeftParen template_instance RightParen
      { $$.node = t.mT3IsPresent(@1, $3.node); }
  | kw_ischosen LeftParen template_instance RightParen
      { $$.node = t.mT3IsChosen(@1, $3.node); }
  | kw_isvalue LeftParen template_instance RightParen
      { $$.node = t.mT3IsValue(@1, $3.node); }
  | kw_sizeof LeftParen template_instance RightParen
      { $$.node = t.mT3SizeOf(@1, $3.node); }
  | kw_sizeoftype LeftParen template_instance RightParen
      { $$.node = t.mT3SizeOfType(@1, $3.node); }
  | kw_int2char LeftParen expr RightParen
      { $$.node = t.mT3Int2Char(@1, $3.node); }
  | kw_char2int LeftParen expr RightParen
      { $$.node = t.mT3Char2Int(@1, $3.node); }
  | kw_int2unichar LeftParen expr RightParen
      { $$.node = t.mT3Int2UniChar(@1, $3.node); }
  | kw_unichar2int LeftParen expr RightParen
      { $$.node = t.mT3UniChar2Int(@1, $3.node); }
  | kw_bit2int LeftParen expr RightParen
      { $$.node = t.mT3Bit2Int(@1, $3.node); }
  | kw_hex2int LeftParen expr RightParen
      { $$.node = t.mT3Hex2Int(@1, $3.node); }
  | kw_oct2int LeftParen expr RightParen
      { $$.node = t.mT3Oct2Int(@1, $3.node); }
  | kw_str2int LeftParen expr RightParen
      { $$.node = t.mT3Str2Int(@1, $3.node); }
  | kw_int2str LeftParen expr RightParen
      { $$.node = t.mT3Int2Str(@1, $3.node); }
  | kw_lengthof LeftParen template_instance RightParen
      { $$.node = t.mT3LengthOf(@1, $3.node); }
  | kw_encvalue LeftParen template_instance RightParen
      { $$.node = t.mT3EncValue(@1, $3.node); }
  | kw_decvalue LeftParen expr Comma general_invocation RightParen
      { $$.node = t.mT3DecValue(@1, $3.node, InvocationArgument($5.node)); }
  | kw_int2bit LeftParen expr Comma expr RightParen
      { $$.node = t.mT3Int2Bit(@1, $3.node, $5.node); }
  | kw_int2oct LeftParen expr Comma expr RightParen
      { $$.node = t.mT3Int2Oct(@1, $3.node, $5.node); }
  | kw_int2hex LeftParen expr Comma expr RightParen
      { $$.node = t.mT3Int2Hex(@1, $3.node, $5.node); }
  | kw_bit2str LeftParen expr RightParen
      { $$.node = t.mT3Bit2Str(@1, $3.node); }
  | kw_hex2str LeftParen expr RightParen
      { $$.node = t.mT3Hex2Str(@1, $3.node); }
  | kw_oct2str LeftParen expr RightParen
      { $$.node = t.mT3Oct2Str(@1, $3.node); }
  | kw_str2oct LeftParen expr RightParen
      { $$.node = t.mT3Str2Oct(@1, $3.node); }
  | kw_oct2char LeftParen expr RightParen
      { $$.node = t.mT3Oct2Char(@1, $3.node); }
  | kw_char2oct LeftParen expr RightParen
      { $$.node = t.mT3Char2Oct(@1, $3.node); }
  | kw_bit2hex LeftParen expr RightParen
      { $$.node = t.mT3Bit2Hex(@1, $3.node); }
  | kw_hex2oct LeftParen expr RightParen
      { $$.node = t.mT3Hex2Oct(@1, $3.node); }
  | kw_bit2oct LeftParen expr RightParen
      { $$.node = t.mT3Bit2Oct(@1, $3.node); }
  | kw_hex2bit LeftParen expr RightParen
      { $$.node = t.mT3Hex2Bit(@1, $3.node); }
  | kw_oct2hex LeftParen expr RightParen
      { $$.node = t.mT3Oct2Hex(@1, $3.node); }
  | kw_oct2bit LeftParen expr RightParen
      { $$.node = t.mT3Oct2Bit(@1, $3.node); }
  | kw_int2float LeftParen expr RightParen
      { $$.node = t.mT3Int2Float(@1, $3.node); }
  | kw_float2int LeftParen expr RightParen
      { $$.node = t.mT3Float2Int(@1, $3.node); }
  | kw_str2float LeftParen expr RightParen
      { $$.node = t.mT3Str2Float(@1, $3.node); }
  | kw_enum2int LeftParen expr RightParen
      { $$.node = t.mT3Enum2Int(@1, $3.node); }
  | kw_rnd LeftParen expr RightParen
      { $$.node = t.mT3Rnd(@1, $3.node); }
  | kw_rnd LeftParen RightParen
      { $$.node = t.mT3Rnd(@1, _sgT3NoExpression()); }
  | kw_substr LeftParen template_instance Comma expr Comma expr RightParen
      { $$.node = t.mT3Substring(@1, $3.node, $5.node, $7.node); }
  | kw_replace LeftParen expr Comma expr Comma expr Comma expr RightParen
      { $$.node = t.mT3Replace(@1, $3.node, $5.node, $7.node, $9.node); }
  | kw_decomp LeftParen template_instance Comma expr Comma expr RightParen
      { $$.node = t.mT3Decompose(@1, $3.node, $5.node, $7.node); }
  | kw_regexp LeftParen expr Comma expr Comma expr RightParen
      { $$.node = t.mT3Regexp(@1, $3.node, $5.node, $7.node); }
  | kw_mtc Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3MTC(@1)); }
  | kw_mtc Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3MTC(@1)); }
  | kw_system Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3System(@1)); }
  | kw_system Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3System(@1)); }
  | kw_self Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3Self(@1)); }
  | kw_self Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3Self(@1)); }
  | builtin_type
  | kw_system
      { $$.node = t.mT3System(@1); }
  | kw_self
      { $$.node = t.mT3Self(@1); }
  | kw_mtc
      { $$.node = t.mT3MTC(@1); }
  ;

invocation:
    plain_id ref_tail op_tail
      { $$.node = ApplyOperation(ApplyTail($1.node, $2.node), $3.node); }
  | parameterized_id ref_tail op_tail
      { $$.node = ApplyOperation(ApplyTail($1.node, $2.node), $3.node); }
  | kw_mtc Dot kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), t.mT3MTC(@1)); }
  | kw_mtc Dot kw_kill
      { $$.node = t.mT3KillStmt(@1, _sgT3NoStmt(), t.mT3MTC(@1)); }
  | kw_self Dot kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), t.mT3Self(@1)); }
  | kw_self Dot kw_kill
      { $$.node = t.mT3KillStmt(@1, _sgT3NoStmt(), t.mT3Self(@1)); }
  | kw_all kw_port Dot kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), t.mT3AllPort(@1)); }
  | kw_all kw_port Dot kw_start
      {
        $$.node = t.mT3StartStmt(@1, _sgT3NoStmt(), t.mT3AllPort(@1), _sgT3NoExpression());
      }
  | kw_all kw_port Dot kw_clear
      { $$.node = t.mT3ClearStmt(@1, _sgT3NoStmt(), t.mT3AllPort(@1)); }
  | kw_all kw_port Dot kw_halt
      { $$.node = t.mT3HaltStmt(@1, _sgT3NoStmt(), t.mT3AllPort(@1)); }
  | kw_any kw_port Dot receive_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot trigger_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot getcall_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot getreply_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot catch_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_port Dot check_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  | kw_any kw_timer Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AnyTimer(@1)); }
  | kw_any kw_timer Dot kw_timeout
      { $$.node = t.mT3TimeoutStmt(@1, _sgT3NoStmt(), t.mT3AnyTimer(@1)); }
  | kw_all kw_timer Dot kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), t.mT3AllTimer(@1)); }
  | kw_any kw_component Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AnyComponent(@1)); }
  | kw_any kw_component Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3AnyComponent(@1)); }
  | kw_any kw_component Dot kw_done
      { $$.node = t.mT3DoneStmt(@1, _sgT3NoStmt(), t.mT3AnyComponent(@1)); }
  | kw_any kw_component Dot kw_killed
      { $$.node = t.mT3KilledStmt(@1, _sgT3NoStmt(), t.mT3AnyComponent(@1)); }
  | kw_all kw_component Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_done
      { $$.node = t.mT3DoneStmt(@1, _sgT3NoStmt(), t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_killed
      { $$.node = t.mT3KilledStmt(@1, _sgT3NoStmt(), t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_kill
      { $$.node = t.mT3KillStmt(@1, _sgT3NoStmt(), t.mT3AllComponent(@1)); }
  | kw_execute LeftParen reference RightParen
      { $$.node = t.mT3Execute(@1, $3.node, _sgT3NoExpression()); }
  | kw_execute LeftParen reference Comma expr RightParen
      { $$.node = t.mT3Execute(@1, $3.node, $5.node); }
  | kw_getverdict
      { $$.node = t.mT3GetVerdict(@1); }
  | kw_action LeftParen template_body RightParen
      { $$.node = t.mT3SUTStmt(@1, _sgT3NoStmt(), $3.node); }
  | kw_activate LeftParen invocation RightParen
      { $$.node = t.mT3Activate(@1, InvocationArgument($3.node)); }
  | kw_match LeftParen template_body Comma template_instance RightParen
      { $$.node = t.mT3Match(@1, $3.node, $5.node); }
  | kw_valueof LeftParen template_instance RightParen
      { $$.node = t.mT3ValueOf(@1, $3.node); }
  | kw_stop
      { $$.node = t.mT3StopStmt(@1, _sgT3NoStmt(), _sgT3NoExpression()); }
  | kw_kill
      { $$.node = t.mT3KillStmt(@1, _sgT3NoStmt(), _sgT3NoExpression()); }
  | kw_mtc Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3MTC(@1)); }
  | kw_mtc Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3MTC(@1)); }
  | kw_system Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3System(@1)); }
  | kw_system Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3System(@1)); }
  | kw_self Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3Self(@1)); }
  | kw_self Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3Self(@1)); }
  ;

primary_invocation:
    plain_id ref_tail expr_op_tail
      { $$.node = ApplyOperation(ApplyTail($1.node, $2.node), $3.node); }
  | parameterized_id ref_tail expr_op_tail
      { $$.node = ApplyOperation(ApplyTail($1.node, $2.node), $3.node); }
  | kw_any kw_timer Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AnyTimer(@1)); }
  | kw_any kw_component Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AnyComponent(@1)); }
  | kw_any kw_component Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3AnyComponent(@1)); }
  | kw_all kw_component Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3AllComponent(@1)); }
  | kw_all kw_component Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3AllComponent(@1)); }
  | kw_execute LeftParen reference RightParen
      { $$.node = t.mT3Execute(@1, $3.node, _sgT3NoExpression()); }
  | kw_execute LeftParen reference Comma expr RightParen
      { $$.node = t.mT3Execute(@1, $3.node, $5.node); }
  | kw_getverdict
      { $$.node = t.mT3GetVerdict(@1); }
  | kw_activate LeftParen invocation RightParen
      { $$.node = t.mT3Activate(@1, InvocationArgument($3.node)); }
  | kw_match LeftParen template_body Comma template_instance RightParen
      { $$.node = t.mT3Match(@1, $3.node, $5.node); }
  | kw_valueof LeftParen template_instance RightParen
      { $$.node = t.mT3ValueOf(@1, $3.node); }
  | kw_ispresent LeftParen template_instance RightParen
      { $$.node = t.mT3IsPresent(@1, $3.node); }
  | kw_ischosen LeftParen template_instance RightParen
      { $$.node = t.mT3IsChosen(@1, $3.node); }
  | kw_isvalue LeftParen template_instance RightParen
      { $$.node = t.mT3IsValue(@1, $3.node); }
  | kw_lengthof LeftParen template_instance RightParen
      { $$.node = t.mT3LengthOf(@1, $3.node); }
  | kw_encvalue LeftParen template_instance RightParen
      { $$.node = t.mT3EncValue(@1, $3.node); }
  | kw_decvalue LeftParen expr Comma general_invocation RightParen
      { $$.node = t.mT3DecValue(@1, $3.node, InvocationArgument($5.node)); }
  | kw_sizeof LeftParen template_instance RightParen
      { $$.node = t.mT3SizeOf(@1, $3.node); }
  | kw_sizeoftype LeftParen template_instance RightParen
      { $$.node = t.mT3SizeOfType(@1, $3.node); }
  | kw_int2char LeftParen expr RightParen
      { $$.node = t.mT3Int2Char(@1, $3.node); }
  | kw_char2int LeftParen expr RightParen
      { $$.node = t.mT3Char2Int(@1, $3.node); }
  | kw_int2unichar LeftParen expr RightParen
      { $$.node = t.mT3Int2UniChar(@1, $3.node); }
  | kw_unichar2int LeftParen expr RightParen
      { $$.node = t.mT3UniChar2Int(@1, $3.node); }
  | kw_bit2int LeftParen expr RightParen
      { $$.node = t.mT3Bit2Int(@1, $3.node); }
  | kw_hex2int LeftParen expr RightParen
      { $$.node = t.mT3Hex2Int(@1, $3.node); }
  | kw_oct2int LeftParen expr RightParen
      { $$.node = t.mT3Oct2Int(@1, $3.node); }
  | kw_str2int LeftParen expr RightParen
      { $$.node = t.mT3Str2Int(@1, $3.node); }
  | kw_int2str LeftParen expr RightParen
      { $$.node = t.mT3Int2Str(@1, $3.node); }
  | kw_int2bit LeftParen expr Comma expr RightParen
      { $$.node = t.mT3Int2Bit(@1, $3.node, $5.node); }
  | kw_int2oct LeftParen expr Comma expr RightParen
      { $$.node = t.mT3Int2Oct(@1, $3.node, $5.node); }
  | kw_int2hex LeftParen expr Comma expr RightParen
      { $$.node = t.mT3Int2Hex(@1, $3.node, $5.node); }
  | kw_bit2str LeftParen expr RightParen
      { $$.node = t.mT3Bit2Str(@1, $3.node); }
  | kw_hex2str LeftParen expr RightParen
      { $$.node = t.mT3Hex2Str(@1, $3.node); }
  | kw_oct2str LeftParen expr RightParen
      { $$.node = t.mT3Oct2Str(@1, $3.node); }
  | kw_str2oct LeftParen expr RightParen
      { $$.node = t.mT3Str2Oct(@1, $3.node); }
  | kw_oct2char LeftParen expr RightParen
      { $$.node = t.mT3Oct2Char(@1, $3.node); }
  | kw_char2oct LeftParen expr RightParen
      { $$.node = t.mT3Char2Oct(@1, $3.node); }
  | kw_bit2hex LeftParen expr RightParen
      { $$.node = t.mT3Bit2Hex(@1, $3.node); }
  | kw_hex2oct LeftParen expr RightParen
      { $$.node = t.mT3Hex2Oct(@1, $3.node); }
  | kw_bit2oct LeftParen expr RightParen
      { $$.node = t.mT3Bit2Oct(@1, $3.node); }
  | kw_hex2bit LeftParen expr RightParen
      { $$.node = t.mT3Hex2Bit(@1, $3.node); }
  | kw_oct2hex LeftParen expr RightParen
      { $$.node = t.mT3Oct2Hex(@1, $3.node); }
  | kw_oct2bit LeftParen expr RightParen
      { $$.node = t.mT3Oct2Bit(@1, $3.node); }
  | kw_int2float LeftParen expr RightParen
      { $$.node = t.mT3Int2Float(@1, $3.node); }
  | kw_float2int LeftParen expr RightParen
      { $$.node = t.mT3Float2Int(@1, $3.node); }
  | kw_str2float LeftParen expr RightParen
      { $$.node = t.mT3Str2Float(@1, $3.node); }
  | kw_enum2int LeftParen expr RightParen
      { $$.node = t.mT3Enum2Int(@1, $3.node); }
  | kw_rnd LeftParen expr RightParen
      { $$.node = t.mT3Rnd(@1, $3.node); }
  | kw_rnd LeftParen RightParen
      { $$.node = t.mT3Rnd(@1, _sgT3NoExpression()); }
  | kw_substr LeftParen template_instance Comma expr Comma expr RightParen
      { $$.node = t.mT3Substring(@1, $3.node, $5.node, $7.node); }
  | kw_replace LeftParen expr Comma expr Comma expr Comma expr RightParen
      { $$.node = t.mT3Replace(@1, $3.node, $5.node, $7.node, $9.node); }
  | kw_decomp LeftParen template_instance Comma expr Comma expr RightParen
      { $$.node = t.mT3Decompose(@1, $3.node, $5.node, $7.node); }
  | kw_regexp LeftParen expr Comma expr Comma expr RightParen
      { $$.node = t.mT3Regexp(@1, $3.node, $5.node, $7.node); }
  | kw_mtc Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3MTC(@1)); }
  | kw_mtc Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3MTC(@1)); }
  | kw_system Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3System(@1)); }
  | kw_system Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3System(@1)); }
  | kw_self Dot kw_running
      { $$.node = t.mT3Running(@1, t.mT3Self(@1)); }
  | kw_self Dot kw_alive
      { $$.node = t.mT3Alive(@1, t.mT3Self(@1)); }
  | kw_system
      { $$.node = t.mT3System(@1); }
  | kw_self
      { $$.node = t.mT3Self(@1); }
  | kw_mtc
      { $$.node = t.mT3MTC(@1); }
  ;

opt_language:
    %empty
      { $$.string = gStringM.EmptyString(); }
  | kw_language cstring_freetext
      {
        $$.string = $2.string;
        $$.position = @2;
      }
  ;

parameterized_id:
    identifier actual_pars index_list
      {
        $$.node = SubscriptsOn(t.mT3Parameterization(@1, t.mT3Identifier(@1, $1.ident), $2.node), $3.node);
      }
  | identifier index_list
      { $$.node = SubscriptsOn(t.mT3Identifier(@1, $1.ident), $2.node); }
  | identifier actual_pars
      {
        $$.node = t.mT3Parameterization(@1, t.mT3Identifier(@1, $1.ident), $2.node);
      }
  ;

ref_tail:
    %empty
  | ref_tail Dot identifier actual_pars index_list
      {
        $$.node = SubscriptsOn(t.mT3Parameterization(@2, t.mT3Qualifier(@2, $1.node, $3.ident), $4.node), $5.node);
      }
  | ref_tail Dot identifier actual_pars
      {
        $$.node = t.mT3Parameterization(@2, t.mT3Qualifier(@2, $1.node, $3.ident), $4.node);
      }
  | ref_tail Dot identifier index_list
      {
        $$.node = SubscriptsOn(t.mT3Qualifier(@2, $1.node, $3.ident), $4.node);
      }
  | ref_tail Dot identifier
      { $$.node = t.mT3Qualifier(@2, $1.node, $3.ident); }
  | ref_tail Dot objid_value
      {
        $$.node = t.mT3ObjIdQualifier(@2, $1.node, t.mT3ObjectIdentifierLiteral(@3, $3.node));
      }
  | ref_tail Dot builtin_type
      {
        $$.node = t.mT3Qualifier(@2, $1.node, $3.node->as<T3Identifier>()->id);
      }
  ;

op_tail:
    %empty
  | Dot kw_stop
      { $$.node = t.mT3StopStmt(@2, _sgT3NoStmt(), nullptr); }
  | Dot kw_kill
      { $$.node = t.mT3KillStmt(@2, _sgT3NoStmt(), nullptr); }
  | Dot kw_start
      {
        $$.node = t.mT3StartStmt(@2, _sgT3NoStmt(), nullptr, _sgT3NoExpression());
      }
  | Dot kw_start LeftParen expr RightParen
      { $$.node = t.mT3StartStmt(@2, _sgT3NoStmt(), nullptr, $4.node); }
  | Dot kw_running
      { $$.node = t.mT3Running(@2, nullptr); }
  | Dot kw_alive
      { $$.node = t.mT3Alive(@2, nullptr); }
  | Dot component_op
      { $$.node = $2.node; }
  | Dot port_op
      { $$.node = $2.node; }
  | Dot timer_op
      { $$.node = $2.node; }
  ;

expr_op_tail:
    %empty
  | Dot kw_running
      { $$.node = t.mT3Running(@2, nullptr); }
  | Dot kw_alive
      { $$.node = t.mT3Alive(@2, nullptr); }
  | Dot kw_read
      { $$.node = t.mT3Read(@2, nullptr); }
  | Dot kw_create opt_create_arg
      { $$.node = t.mT3Create(@2, nullptr, $3.node, false); }
  | Dot kw_create opt_create_arg kw_alive
      { $$.node = t.mT3Create(@2, nullptr, $3.node, true); }
  ;

opt_create_arg:
    %empty
      { $$.node = _sgT3NoExpression(); }
  | LeftParen expr RightParen
      { $$.node = $2.node; }
  ;

template_instance_list:
    LeftParen template_instance template_instance_tail RightParen
      { $$.node = t.mT3TemplateListItem(@2, Reverse($3.node), $2.node); }
  ;

template_instance_tail:
    %empty
      { $$.node = _sgT3NoTemplateListItem(); }
  | template_instance_tail Comma template_instance
      { $$.node = t.mT3TemplateListItem(@3, $1.node, $3.node); }
  ;

actual_pars:
    LeftParen RightParen
      { $$.node = _sgT3NoActualPar(); }
  | LeftParen actual_par_prefix template_instance RightParen
      { $$.node = Reverse(t.mT3ActualPar(@3, $2.node, $3.node)); }
  ;

actual_par_prefix:
    %empty
      { $$.node = _sgT3NoActualPar(); }
  | actual_par_prefix template_instance Comma
      { $$.node = t.mT3ActualPar(@2, $1.node, $2.node); }
  ;

index_list:
    LeftBracket expr RightBracket
      { $$.node = t.mT3Subscription(@1, nullptr, $2.node); }
  | index_list LeftBracket expr RightBracket
      { $$.node = t.mT3Subscription(@2, $1.node, $3.node); }
  ;

builtin_type:
    kw_bitstring
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("bitstring")); }
  | kw_boolean
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("boolean")); }
  | kw_charstring
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("charstring")); }
  | kw_universal kw_charstring
      {
        $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("universal_charstring"));
      }
  | kw_char
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("char")); }
  | kw_universal kw_char
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("universal_char")); }
  | kw_integer
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("integer")); }
  | kw_octetstring
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("octetstring")); }
  | kw_objid
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("objid")); }
  | kw_hexstring
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("hexstring")); }
  | kw_verdicttype
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("verdicttype")); }
  | kw_float
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("float")); }
  | kw_address
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("address")); }
  | kw_default
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("default")); }
  | kw_anytype
      { $$.node = t.mT3Identifier(@1, gIdents.MakeIdent("anytype")); }
  ;

component_op:
    kw_create opt_create_arg
      { $$.node = t.mT3Create(@1, nullptr, $2.node, false); }
  | kw_create opt_create_arg kw_alive
      { $$.node = t.mT3Create(@1, nullptr, $2.node, true); }
  | kw_done
      { $$.node = t.mT3DoneStmt(@1, _sgT3NoStmt(), nullptr); }
  | kw_killed
      { $$.node = t.mT3KilledStmt(@1, _sgT3NoStmt(), nullptr); }
  ;

timer_op:
    kw_read
      { $$.node = t.mT3Read(@1, nullptr); }
  | kw_timeout
      { $$.node = t.mT3TimeoutStmt(@1, _sgT3NoStmt(), nullptr); }
  ;

port_op:
    send_op
  | call_op
  | reply_op
  | raise_op
  | receive_op
  | trigger_op
  | getcall_op
  | check_op
  | catch_op
  | getreply_op
  | kw_clear
      { $$.node = t.mT3ClearStmt(@1, _sgT3NoStmt(), nullptr); }
  | kw_halt
      { $$.node = t.mT3HaltStmt(@1, _sgT3NoStmt(), nullptr); }
  ;

send_op:
    kw_send LeftParen template_instance RightParen opt_to
      {
        $$.node = t.mT3SendStmt(@1, _sgT3NoStmt(), nullptr, $3.node, $5.node);
      }
  ;

call_op:
    kw_call LeftParen template_instance call_timer RightParen opt_to call_body
      {
        $$.node = CallStatement(@1, $3.node, $4.node, $6.node, $7.node, state.last_token);
      }
  | kw_call LeftParen template_instance call_timer RightParen opt_to
      {
        $$.node = CallStatement(@1, $3.node, $4.node, $6.node, _sgT3NoAlt(), NoPosition);
      }
  ;

call_timer:
    %empty
      { $$.node = _sgT3NoExpression(); }
  | Comma expr
      { $$.node = $2.node; }
  | Comma kw_nowait
      { $$.node = t.mT3NoWait(@2); }
  ;

call_body:
    LeftBrace call_alt opt_semi call_alt_tail RightBrace
      { $$.node = PrependAlt(Reverse($4.node), $2.node); }
  ;

call_alt_tail:
    %empty
      { $$.node = _sgT3NoAlt(); }
  | call_alt_tail call_alt opt_semi
      { $$.node = PrependAlt($1.node, $2.node); }
  ;

call_alt:
    guard call_reply_guard block
      { $$.node = t.mT3GuardedAlt(@1, nullptr, $1.node, $3.node, $2.node); }
  | guard call_catch_guard block
      { $$.node = t.mT3GuardedAlt(@1, nullptr, $1.node, $3.node, $2.node); }
  ;

call_reply_guard:
    port_or_element Dot getreply_op
      { $$.node = GiveObject($3.node, $1.node); }
  | kw_any kw_port Dot getreply_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  ;

call_catch_guard:
    port_or_element Dot catch_op
      { $$.node = GiveObject($3.node, $1.node); }
  | kw_any kw_port Dot catch_op
      { $$.node = GiveObject($4.node, t.mT3AnyPort(@1)); }
  ;

reply_op:
    kw_reply LeftParen template_instance kw_value template_body RightParen opt_to
      {
        $$.node = t.mT3ReplyStmt(@1, _sgT3NoStmt(), nullptr, $3.node, $7.node, $5.node);
      }
  | kw_reply LeftParen template_instance RightParen opt_to
      {
        $$.node = t.mT3ReplyStmt(@1, _sgT3NoStmt(), nullptr, $3.node, $5.node, _sgT3NoExpression());
      }
  ;

raise_op:
    kw_raise LeftParen reference Comma template_instance RightParen opt_to
      {
        $$.node = t.mT3RaiseStmt(@1, _sgT3NoStmt(), nullptr, $5.node, $7.node, TypeReference($3.node));
      }
  ;

receive_op:
    kw_receive LeftParen template_instance RightParen opt_from opt_redirect
      {
        $$.node = t.mT3ReceiveStmt(@1, _sgT3NoStmt(), nullptr, $3.node, $5.node, $6.node);
      }
  | kw_receive opt_from opt_redirect
      {
        $$.node = t.mT3ReceiveStmt(@1, _sgT3NoStmt(), nullptr, _sgT3NoTemplateDef(), $2.node, $3.node);
      }
  ;

trigger_op:
    kw_trigger LeftParen template_instance RightParen opt_from opt_redirect
      {
        $$.node = t.mT3TriggerStmt(@1, _sgT3NoStmt(), nullptr, $3.node, $5.node, $6.node);
      }
  | kw_trigger opt_from opt_redirect
      {
        $$.node = t.mT3TriggerStmt(@1, _sgT3NoStmt(), nullptr, _sgT3NoTemplateDef(), $2.node, $3.node);
      }
  ;

getcall_op:
    kw_getcall opt_from opt_param_redirect
      {
        $$.node = t.mT3GetCallStmt(@1, _sgT3NoStmt(), nullptr, _sgT3NoTemplateDef(), $2.node, $3.node);
      }
  | kw_getcall LeftParen template_instance RightParen opt_from opt_param_redirect
      {
        $$.node = t.mT3GetCallStmt(@1, _sgT3NoStmt(), nullptr, $3.node, $5.node, $6.node);
      }
  ;

getreply_op:
    kw_getreply opt_from opt_param_redirect
      {
        $$.node = t.mT3GetReplyStmt(@1, _sgT3NoStmt(), nullptr, _sgT3NoTemplateDef(), $2.node, $3.node, _sgT3NoTemplateDef());
      }
  | kw_getreply getreply_args opt_from opt_param_redirect
      { $$.node = FinishGetReply(@1, $2.node, $3.node, $4.node); }
  ;

getreply_args:
    LeftParen template_instance RightParen
      {
        $$.node = t.mT3GetReplyStmt(@1, _sgT3NoStmt(), nullptr, $2.node, nullptr, nullptr, _sgT3NoTemplateDef());
      }
  | LeftParen template_instance kw_value template_instance RightParen
      {
        $$.node = t.mT3GetReplyStmt(@1, _sgT3NoStmt(), nullptr, $2.node, nullptr, nullptr, $4.node);
      }
  ;

catch_op:
    kw_catch opt_from opt_redirect
      {
        $$.node = t.mT3CatchStmt(@1, _sgT3NoStmt(), nullptr, _sgT3NoTemplateDef(), $2.node, $3.node, NoType());
      }
  | kw_catch catch_args opt_from opt_redirect
      { $$.node = FinishCatch(@1, $2.node, $3.node, $4.node); }
  ;

catch_args:
    LeftParen reference Comma template_instance RightParen
      {
        $$.node = t.mT3CatchStmt(@1, _sgT3NoStmt(), nullptr, $4.node, nullptr, nullptr, TypeReference($2.node));
      }
  | LeftParen kw_timeout RightParen
      { $$.node = nullptr; }
  ;

check_op:
    kw_check
      {
        $$.node = t.mT3CheckRedirect(@1, _sgT3NoStmt(), nullptr, _sgT3NoTemplateDef(), _sgT3NoPortRedirect());
      }
  | kw_check LeftParen check_arg RightParen
      {
        $$.node = $3.node;
        $$.node->as<_T3StmtList>()->position = @1;
      }
  ;

check_arg:
    receive_op
      { $$.node = t.mT3CheckReceive(@1, _sgT3NoStmt(), nullptr, $1.node); }
  | getcall_op
      { $$.node = t.mT3CheckReceive(@1, _sgT3NoStmt(), nullptr, $1.node); }
  | getreply_op
      { $$.node = t.mT3CheckReceive(@1, _sgT3NoStmt(), nullptr, $1.node); }
  | catch_op
      { $$.node = t.mT3CheckReceive(@1, _sgT3NoStmt(), nullptr, $1.node); }
  | opt_from
      {
        $$.node = t.mT3CheckRedirect(@1, _sgT3NoStmt(), nullptr, $1.node, _sgT3NoPortRedirect());
      }
  | opt_from Arrow kw_sender reference
      {
        $$.node = t.mT3CheckRedirect(@1, _sgT3NoStmt(), nullptr, $1.node, t.mT3PortRedirect(@2, _sgT3NoExpression(), $4.node, _sgT3NoFieldValue()));
      }
  ;

opt_from:
    %empty
      { $$.node = _sgT3NoTemplateDef(); }
  | kw_from address_ref
      { $$.node = $2.node; }
  ;

opt_to:
    %empty
      { $$.node = _sgT3NoExpression(); }
  | kw_to address_ref
      { $$.node = t.mT3RecipientSingle(@2, $2.node); }
  | kw_to address_list
      { $$.node = t.mT3RecipientMulti(@2, $2.node); }
  | kw_to kw_all kw_component
      { $$.node = t.mT3RecipientAll(@2); }
  ;

address_ref:
    template_instance
  ;

address_list:
    LeftParen address_ref address_list_tail RightParen
      { $$.node = t.mT3AddressListItem(@2, Reverse($3.node), $2.node); }
  ;

address_list_tail:
    %empty
      { $$.node = _sgT3NoAddressListItem(); }
  | address_list_tail Comma address_ref
      { $$.node = t.mT3AddressListItem(@3, $1.node, $3.node); }
  ;

port_or_element:
    identifier
      { $$.node = t.mT3Identifier(@1, $1.ident); }
  | identifier LeftBracket expr RightBracket
      {
        $$.node = t.mT3Subscription(@1, t.mT3Identifier(@1, $1.ident), $3.node);
      }
  ;

opt_redirect:
    %empty
      { $$.node = _sgT3NoPortRedirect(); }
  | Arrow kw_value reference kw_sender reference
      {
        $$.node = t.mT3PortRedirect(@1, $3.node, $5.node, _sgT3NoFieldValue());
      }
  | Arrow kw_sender reference
      {
        $$.node = t.mT3PortRedirect(@1, _sgT3NoExpression(), $3.node, _sgT3NoFieldValue());
      }
  | Arrow kw_value reference
      {
        $$.node = t.mT3PortRedirect(@1, $3.node, _sgT3NoExpression(), _sgT3NoFieldValue());
      }
  ;

opt_param_redirect:
    %empty
      { $$.node = _sgT3NoPortRedirect(); }
  | Arrow kw_value reference param_spec kw_sender reference
      { $$.node = t.mT3PortRedirect(@1, $3.node, $6.node, $4.node); }
  | Arrow kw_value reference kw_sender reference
      {
        $$.node = t.mT3PortRedirect(@1, $3.node, $5.node, _sgT3NoFieldValue());
      }
  | Arrow kw_value reference param_spec
      {
        $$.node = t.mT3PortRedirect(@1, $3.node, _sgT3NoExpression(), $4.node);
      }
  | Arrow kw_value reference
      {
        $$.node = t.mT3PortRedirect(@1, $3.node, _sgT3NoExpression(), _sgT3NoFieldValue());
      }
  | Arrow param_spec kw_sender reference
      {
        $$.node = t.mT3PortRedirect(@1, _sgT3NoExpression(), $4.node, $2.node);
      }
  | Arrow param_spec
      {
        $$.node = t.mT3PortRedirect(@1, _sgT3NoExpression(), _sgT3NoExpression(), $2.node);
      }
  | Arrow kw_sender reference
      {
        $$.node = t.mT3PortRedirect(@1, _sgT3NoExpression(), $3.node, _sgT3NoFieldValue());
      }
  ;

param_spec:
    kw_param LeftParen param_assign_list RightParen
      { $$.node = $3.node; }
  | kw_param LeftParen param_var_list RightParen
      { $$.node = $3.node; }
  ;

param_assign_list:
    reference Assign identifier param_assign_tail
      {
        $$.node = t.mT3FieldValue(@1, Reverse($4.node), t.mT3FieldName(@3, $3.ident, _sgT3NoExpression()), $1.node, t3_permutation_kind_t::No);
      }
  ;

param_assign_tail:
    %empty
      { $$.node = _sgT3NoFieldValue(); }
  | param_assign_tail Comma reference Assign identifier
      {
        $$.node = t.mT3FieldValue(@3, $1.node, t.mT3FieldName(@5, $5.ident, _sgT3NoExpression()), $3.node, t3_permutation_kind_t::No);
      }
  ;

param_var_list:
    param_var param_var_tail
      {
        $$.node = t.mT3FieldValue(@1, Reverse($2.node), _sgT3NoFieldSpec(), $1.node, t3_permutation_kind_t::No);
      }
  ;

param_var_tail:
    %empty
      { $$.node = _sgT3NoFieldValue(); }
  | param_var_tail Comma param_var
      {
        $$.node = t.mT3FieldValue(@3, $1.node, _sgT3NoFieldSpec(), $3.node, t3_permutation_kind_t::No);
      }
  ;

param_var:
    reference
  | Minus
      { $$.node = t.mT3NotUsedSymbol(@1); }
  ;

expr:
    signed_operand
  | expr kw_and expr
      { $$.node = t.mT3And(@1, $1.node, $3.node); }
  | expr kw_or expr
      { $$.node = t.mT3Or(@1, $1.node, $3.node); }
  | expr kw_xor expr
      { $$.node = t.mT3Xor(@1, $1.node, $3.node); }
  | kw_not expr
      { $$.node = t.mT3UnaryNot(@1, $2.node); }
  | expr Equal expr
      { $$.node = t.mT3Equal(@1, $1.node, $3.node); }
  | expr NotEqual expr
      { $$.node = t.mT3NotEqual(@1, $1.node, $3.node); }
  | expr Less expr
      { $$.node = t.mT3Less(@1, $1.node, $3.node); }
  | expr Greater expr
      { $$.node = t.mT3Greater(@1, $1.node, $3.node); }
  | expr GreaterOrEqual expr
      { $$.node = t.mT3GreaterOrEqual(@1, $1.node, $3.node); }
  | expr LessOrEqual expr
      { $$.node = t.mT3LessOrEqual(@1, $1.node, $3.node); }
  | expr ShiftLeft expr
      { $$.node = t.mT3ShiftLeft(@1, $1.node, $3.node); }
  | expr ShiftRight expr
      { $$.node = t.mT3ShiftRight(@1, $1.node, $3.node); }
  | expr RotateLeft expr
      { $$.node = t.mT3RotateLeft(@1, $1.node, $3.node); }
  | expr RotateRight expr
      { $$.node = t.mT3RotateRight(@1, $1.node, $3.node); }
  | expr kw_and4b expr
      { $$.node = t.mT3And4b(@1, $1.node, $3.node); }
  | expr kw_or4b expr
      { $$.node = t.mT3Or4b(@1, $1.node, $3.node); }
  | expr kw_xor4b expr
      { $$.node = t.mT3Xor4b(@1, $1.node, $3.node); }
  | kw_not4b expr
      { $$.node = t.mT3UnaryNot4b(@1, $2.node); }
  | expr Plus expr
      { $$.node = t.mT3Plus(@1, $1.node, $3.node); }
  | expr Minus expr
      { $$.node = t.mT3Minus(@1, $1.node, $3.node); }
  | expr Ampersand expr
      { $$.node = t.mT3Concatenate(@1, $1.node, $3.node); }
  | expr Star expr
      { $$.node = t.mT3Multiply(@1, $1.node, $3.node); }
  | expr Slash expr
      { $$.node = t.mT3Divide(@1, $1.node, $3.node); }
  | expr kw_mod expr
      { $$.node = t.mT3Mod(@1, $1.node, $3.node); }
  | expr kw_rem expr
      { $$.node = t.mT3Rem(@1, $1.node, $3.node); }
  ;

signed_operand:
    Minus operand
      { $$.node = t.mT3UnaryMinus(@1, $2.node); }
  | Plus operand
      {
        $$.node = $2.node;
        NoteSignedOperand($2.node);
      }
  | operand
  ;

operand:
    boolean_value
      { $$.node = t.mT3BooleanLiteral(@1, $1.flag); }
  | string_value
      { $$.node = t.mT3CharStringLiteral(@1, $1.string); }
  | quadruple
  | integer_value
      { $$.node = t.mT3IntLiteral(@1, $1.string); }
  | objid_value
      { $$.node = t.mT3ObjectIdentifierLiteral(@1, $1.node); }
  | bit_string_val
      { $$.node = t.mT3BitStringLiteral(@1, $1.string); }
  | oct_string_val
      { $$.node = t.mT3OctStringLiteral(@1, $1.string); }
  | hex_string_val
      { $$.node = t.mT3HexStringLiteral(@1, $1.string); }
  | verdict_value
      {
        $$.node = t.mT3VerdictLiteral(@1, static_cast<t3_verdict_t>($1.number));
      }
  | float_value
      { $$.node = t.mT3FloatLiteral(@1, $1.string); }
  | kw_null
      { $$.node = t.mT3Null(@1); }
  | LeftParen expr RightParen
      { $$.node = $2.node; }
  | primary_invocation
  | kw_omit
      { $$.node = t.mT3Omit(@1); }
  | Macro_LINE
      {
        $$.node = t.mT3IntLiteral(@1, gStringM.PutString(std::to_string(@1.Line)));
      }
  ;

quadruple:
    kw_char LeftParen integer_value Comma integer_value Comma integer_value Comma integer_value RightParen
      {
        $$.node = t.mT3UnivCharLiteral(@1, t.mT3IntLiteral(@3, $3.string), t.mT3IntLiteral(@5, $5.string), t.mT3IntLiteral(@7, $7.string), t.mT3IntLiteral(@9, $9.string));
      }
  ;

objid_value:
    kw_objid LeftBrace objid_items objid_item RightBrace
      { $$.node = Reverse(t.mT3ObjIdItem(@4, $3.node, $4.node)); }
  ;

objid_items:
    %empty
      { $$.node = _sgT3NoObjIdItem(); }
  | objid_items objid_item
      { $$.node = t.mT3ObjIdItem(@2, $1.node, $2.node); }
  ;

objid_item:
    integer_value
      { $$.node = t.mT3IntLiteral(@1, $1.string); }
  | identifier LeftParen integer_value RightParen
      { $$.node = NumberForm(@1, $1.ident, t.mT3IntLiteral(@3, $3.string)); }
  | variable_ref
  ;

module_objid:
    kw_objid LeftBrace module_objid_items module_objid_item RightBrace
      {
        $$.node = t.mT3ObjectIdentifierLiteral(@1, Reverse(t.mT3ObjIdItem(@4, $3.node, $4.node)));
        if (!state.repaired) vexa_error("'objid' is currently not supported", @1);
      }
  ;

module_objid_items:
    %empty
      { $$.node = _sgT3NoObjIdItem(); }
  | module_objid_items module_objid_item
      { $$.node = t.mT3ObjIdItem(@2, $1.node, $2.node); }
  ;

module_objid_item:
    identifier
      { $$.node = t.mT3Identifier(@1, $1.ident); }
  | integer_value
      { $$.node = t.mT3IntLiteral(@1, $1.string); }
  | identifier LeftParen integer_value RightParen
      { $$.node = NumberForm(@1, $1.ident, t.mT3IntLiteral(@3, $3.string)); }
  ;

verdict_value:
    kw_pass
      { $$.number = 0; }
  | kw_fail
      { $$.number = 1; }
  | kw_inconc
      { $$.number = 2; }
  | kw_none
      { $$.number = 3; }
  | kw_error
      { $$.number = 4; }
  ;

template_body:
    simple_template match_attrs
      { $$.node = MatchAttributes(@1, $1.node, $2.node); }
  | field_spec_body match_attrs
      { $$.node = MatchAttributes(@1, $1.node, $2.node); }
  | array_value match_attrs
      { $$.node = MatchAttributes(@1, $1.node, $2.node); }
  ;

field_spec_body:
    LeftBrace RightBrace
      { $$.node = t.mT3CompoundValue(@1, _sgT3NoFieldValue()); }
  | LeftBrace field_spec field_spec_tail RightBrace
      {
        $$.node = t.mT3CompoundValue(@1, ConcatenateFieldValueList($2.node, Reverse($3.node)));
      }
  ;

field_spec_tail:
    %empty
      { $$.node = _sgT3NoFieldValue(); }
  | field_spec_tail Comma field_spec
      {
        $3.node->as<T3FieldValue>()->next = $1.node;
        $$.node = $3.node;
      }
  ;

field_spec:
    field_ref Assign template_body
      {
        $$.node = t.mT3FieldValue(@1, _sgT3NoFieldValue(), $1.node, $3.node, t3_permutation_kind_t::No);
      }
  | field_ref Assign Minus
      {
        $$.node = t.mT3FieldValue(@1, _sgT3NoFieldValue(), $1.node, t.mT3NotUsedSymbol(@3), t3_permutation_kind_t::No);
      }
  ;

field_ref:
    identifier Dot identifier
      {
        $$.node = t.mT3FieldName(@1, $3.ident, t.mT3Identifier(@1, $1.ident));
      }
  | identifier
      { $$.node = t.mT3FieldName(@1, $1.ident, _sgT3NoExpression()); }
  | LeftBracket expr RightBracket
      { $$.node = t.mT3FieldIndex(@1, $2.node); }
  | builtin_type
      {
        $$.node = t.mT3FieldName(@1, $1.node->as<T3Identifier>()->id, _sgT3NoExpression());
      }
  ;

field_probe:
    Dot identifier Assign
      { $$.node = nullptr; }
  ;

array_value:
    LeftBrace array_element array_value_tail RightBrace
      {
        $$.node = t.mT3CompoundValue(@1, ConcatenateFieldValueList($2.node, Reverse($3.node)));
      }
  | LeftBrace permutation_value array_value_tail RightBrace
      {
        $$.node = t.mT3CompoundValue(@1, ConcatenateFieldValueList($2.node, Reverse($3.node)));
      }
  ;

array_value_tail:
    %empty
      { $$.node = _sgT3NoFieldValue(); }
  | array_value_tail Comma array_element
      { $$.node = PushFieldValues($1.node, $3.node); }
  | array_value_tail Comma permutation_value
      { $$.node = PushFieldValues($1.node, $3.node); }
  ;

array_element:
    template_body
      {
        $$.node = t.mT3FieldValue(@1, _sgT3NoFieldValue(), _sgT3NoFieldSpec(), $1.node, t3_permutation_kind_t::No);
      }
  | Minus
      {
        $$.node = t.mT3FieldValue(@1, _sgT3NoFieldValue(), _sgT3NoFieldSpec(), t.mT3NotUsedSymbol(@1), t3_permutation_kind_t::No);
      }
  ;

permutation_value:
    kw_permutation LeftParen permutation_item permutation_tail RightParen
      {
        $$.node = FixPermutation(PrependFieldValue($3.node, Reverse($4.node)), nullptr);
      }
  | kw_permutation LeftParen permutation_item permutation_tail RightParen length_match
      {
        $$.node = FixPermutation(PrependFieldValue($3.node, Reverse($4.node)), $6.node);
      }
  ;

permutation_tail:
    %empty
      { $$.node = _sgT3NoFieldValue(); }
  | permutation_tail Comma permutation_item
      {
        $3.node->as<T3FieldValue>()->next = $1.node;
        $$.node = $3.node;
      }
  ;

permutation_item:
    template_body
      {
        $$.node = t.mT3FieldValue(@1, _sgT3NoFieldValue(), _sgT3NoFieldSpec(), $1.node, t3_permutation_kind_t::No);
      }
  | permutation_value
      {
        Report(ERR_permutation_illegal, $1.node, @1);
        $$.node = t.mT3FieldValue(@1, _sgT3NoFieldValue(), _sgT3NoFieldSpec(), t.mT3CompoundValue(@1, $1.node), t3_permutation_kind_t::No);
      }
  ;

simple_template:
    matching_symbol
  | expr
  ;

matching_symbol:
    kw_complement LeftParen template_body RightParen
      {
        $$.node = t.mT3Complement(@1, t.mT3ValueListItem(@3, _sgT3NoValueListItem(), $3.node));
      }
  | kw_complement value_list
      { $$.node = t.mT3Complement(@1, $2.node); }
  | Question
      { $$.node = t.mT3AnyValue(@1); }
  | Star
      { $$.node = t.mT3AnyOrOmit(@1); }
  | value_list
      { $$.node = t.mT3ValueList(@1, $1.node); }
  | LeftParen lower_bound DotDot upper_bound RightParen
      { $$.node = t.mT3ValueRange(@1, $2.node, $4.node); }
  | bit_string_match_val
      { $$.node = t.mT3BitStringMatch(@1, $1.string); }
  | oct_string_match_val
      { $$.node = t.mT3OctStringMatch(@1, $1.string); }
  | hex_string_match_val
      { $$.node = t.mT3HexStringMatch(@1, $1.string); }
  | kw_pattern pattern_text
      {
        $$.node = t.mT3CharStringMatch(@1, t.mT3CharStringLiteral(@2, $2.string));
      }
  | kw_pattern quadruple
      { $$.node = t.mT3CharStringMatch(@1, $2.node); }
  | kw_subset set_match
      { $$.node = t.mT3SubSet(@1, $2.node); }
  | kw_superset set_match
      { $$.node = t.mT3SuperSet(@1, $2.node); }
  ;

set_match:
    LeftParen constant_value set_match_tail RightParen
      { $$.node = t.mT3ValueListItem(@2, Reverse($3.node), $2.node); }
  ;

set_match_tail:
    %empty
      { $$.node = _sgT3NoValueListItem(); }
  | set_match_tail Comma constant_value
      { $$.node = t.mT3ValueListItem(@3, $1.node, $3.node); }
  ;

value_list:
    LeftParen template_body Comma template_body value_list_tail RightParen
      {
        $$.node = t.mT3ValueListItem(@2, t.mT3ValueListItem(@4, Reverse($5.node), $4.node), $2.node);
      }
  ;

value_list_tail:
    %empty
      { $$.node = _sgT3NoValueListItem(); }
  | value_list_tail Comma template_body
      { $$.node = t.mT3ValueListItem(@3, $1.node, $3.node); }
  ;

match_attrs:
    %empty
  | length_match
      { $$.node = t.mT3LengthMatch(@1, nullptr, $1.node); }
  | kw_ifpresent
      { $$.node = t.mT3IfPresentMatch(@1, nullptr); }
  | length_match kw_ifpresent
      { $$.node = t.mT3IfPresentIfLengthMatch(@1, nullptr, $1.node); }
  ;

length_match:
    kw_length LeftParen bound_expr RightParen
      { $$.node = t.mT3SingleBound(@1, $3.node); }
  | kw_length LeftParen bound_expr DotDot upper_bound RightParen
      { $$.node = t.mT3RangeBound(@1, $3.node, $5.node); }
  ;

lower_bound:
    bound_expr
  | Minus kw_infinity
      { $$.node = t.mT3UnaryMinus(@1, t.mT3Infinity(@2)); }
  ;

upper_bound:
    bound_expr
  | kw_infinity
      { $$.node = t.mT3Infinity(@1); }
  ;

constant_value:
    expr
  | value_field_body
  | value_array
  ;

value_field_body:
    LeftBrace value_field value_field_tail RightBrace
      {
        $$.node = t.mT3CompoundValue(@1, ConcatenateFieldValueList($2.node, Reverse($3.node)));
      }
  ;

value_field_tail:
    %empty
      { $$.node = _sgT3NoFieldValue(); }
  | value_field_tail Comma value_field
      {
        $3.node->as<T3FieldValue>()->next = $1.node;
        $$.node = $3.node;
      }
  ;

value_field:
    field_ref Assign constant_value
      {
        $$.node = t.mT3FieldValue(@1, _sgT3NoFieldValue(), $1.node, $3.node, t3_permutation_kind_t::No);
      }
  | field_ref Assign Minus
      {
        $$.node = t.mT3FieldValue(@1, _sgT3NoFieldValue(), $1.node, t.mT3NotUsedSymbol(@3), t3_permutation_kind_t::No);
      }
  ;

value_array:
    LeftBrace RightBrace
      { $$.node = t.mT3CompoundValue(@1, _sgT3NoFieldValue()); }
  | LeftBrace value_array_item value_array_tail RightBrace
      {
        $$.node = t.mT3CompoundValue(@1, t.mT3FieldValue(@2, Reverse($3.node), _sgT3NoFieldSpec(), $2.node, t3_permutation_kind_t::No));
      }
  ;

value_array_tail:
    %empty
      { $$.node = _sgT3NoFieldValue(); }
  | value_array_tail Comma value_array_item
      {
        $$.node = t.mT3FieldValue(@3, $1.node, _sgT3NoFieldSpec(), $3.node, t3_permutation_kind_t::No);
      }
  ;

value_array_item:
    constant_value
  | Minus
      { $$.node = t.mT3NotUsedSymbol(@1); }
  ;

string_value:
    Macro_MODULE
      { $$.string = PutInQuotes(gIdents.GetCStr(state.macroModuleIdent)); }
  | Macro_FILE
      { $$.string = PutInQuotes(gIdents.GetCStr(gCurrentFilename)); }
  | Macro_SCOPE
      { $$.string = PutInQuotes(ScopeName(state)); }
  | cstring_freetext
  ;
