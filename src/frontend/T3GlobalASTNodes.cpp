#include "frontend/T3GlobalASTNodes.h"

#include <string>

const char* PermutationKindToString(t3_permutation_kind_t kind) {
  switch (kind) {
    case t3_permutation_kind_t::No:
      return "lumo_not_permutated_c";
    case t3_permutation_kind_t::HeadTail:
      return "lumo_permutation_head_tail_c";
    case t3_permutation_kind_t::Head:
      return "lumo_permutation_head_c";
    case t3_permutation_kind_t::Body:
      return "lumo_permutation_body_c";
    case t3_permutation_kind_t::Tail:
      return "lumo_permutation_tail_c";
  }
  throw std::string("INVALID_AST: illegal permutation kind");
}
