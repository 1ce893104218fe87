// The enumerations that tree fields hold.
#pragma once

/// What an import statement or exception takes.
enum class t3_import_restr_t {
  Group,
  Type,
  Template,
  Const,
  Testcase,
  Teststep,
  Function,
  Signature,
  ModulePar,
  All
};

/// The direction of a formal parameter.
enum class t3_par_pass_t { In, Out, InOut };

/// The place of an element in a permutation.
enum class t3_permutation_kind_t { No, HeadTail, Head, Body, Tail };

enum class t3_port_kind_t { Message, Procedure, Mixed };

/// Where a list of declarations or of parameters stands: `vexa_place`.
enum T3ListPlace {
  kAtModuleLevel = 1,
  kInComponent = 2,
  kInBehaviour = 3,
  kAsParameters = 5,
  kAsTemplateParameters = 6,
  /// A name in a template in line that stands for one of the arguments of its functions: `vexa_id_place`.
  kPassedToTemplate = 7,
};

/// What a template is taken for: a message, or a signature with the parameters of a call or of a reply.
enum vexa_template_mode_t { vexa_template_plain, vexa_template_call, vexa_template_reply };

enum class t3_template_restriction_t { None, Omit, Value, Present };

enum class t3_verdict_t { Pass, Fail, Inconc, None, Error };

/// The kinds of `with` attribute.
enum class t3_with_attribute_t { Encode, Display, Variant, Extension };
