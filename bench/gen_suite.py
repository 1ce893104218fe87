#!/usr/bin/env python3
"""Writes TTCN-3 suites of any size for measurements: types, constants, templates, functions and behaviour in a
realistic mix, the same for the same arguments.

    gen_suite.py --lines N [--modules M] FOLDER

With several modules each one imports two earlier ones, so that the imports form a lattice; module 0 is the root of
the imports, the last one that of the suite. Prints the files in the order of their names.
"""

import argparse
from pathlib import Path

# One unit of a module: @K is its number in the suite, @N a number that differs from unit to unit, @P the type, @T
# the template and @F the function of an earlier unit.
UNIT = """
  // Unit @K: orders of one kind, the templates for them, and the behaviour that serves them.
  group unit_@K {
    type integer Number_@K (0..@N);
    type charstring Name_@K length(1..32);
    type enumerated Kind_@K { e_first_@K, e_second_@K, e_third_@K(@N), e_other_@K }

    type record Item_@K {
      Number_@K number,
      Name_@K name optional,
      Kind_@K kind,
      octetstring data length(0..16),
      boolean valid
    } with { variant (name) "text"; encode "unit @K" }

    type record of Item_@K ItemList_@K;

    type set Options_@K {
      boolean urgent,
      bitstring flags length(8),
      float weight optional
    }

    type union Content_@K {
      Item_@K item,
      ItemList_@K items,
      charstring text,
      @P previous
    }

    type record Order_@K {
      integer id,
      Content_@K content,
      Options_@K options optional
    }

    type port Port_@K message {
      inout Order_@K, Item_@K
    }

    type component Comp_@K extends Base@M {
      port Port_@K pt_order;
      var integer vc_served := 0;
      timer t_serve := 0.5;
    }

    const Number_@K c_limit_@K := @N - 1;
    const Item_@K c_item_@K := { c_limit_@K, "item @K", e_first_@K, 'AB@D'O, true };

    template Item_@K m_item_@K(integer p_number, charstring p_name) := {
      number := p_number,
      name := p_name,
      kind := e_second_@K,
      data := '0102@D'O,
      valid := true
    }

    template Item_@K m_invalid_@K(integer p_number, charstring p_name) modifies m_item_@K := {
      name := omit,
      valid := false
    }

    template Order_@K m_order_@K(integer p_id, Item_@K p_item) := {
      id := p_id,
      content := { item := p_item },
      options := { urgent := false, flags := '00001111'B, weight := @K.5 }
    }

    template Order_@K mw_order_@K(template Kind_@K p_kind) := {
      id := (1..@N),
      content := { item := { number := ?, name := *, kind := p_kind, data := ?, valid := ? } },
      options := *
    }

    template ItemList_@K mw_items_@K := { m_item_@K(1, "a"), ?, * };

    // Adds up the numbers of the valid items, up to the limit.
    function f_sum_@K(ItemList_@K p_items) return integer {
      var integer v_sum := 0;
      for (var integer v_i := 0; v_i < sizeof(p_items); v_i := v_i + 1) {
        if (p_items[v_i].valid and (p_items[v_i].number <= c_limit_@K)) {
          v_sum := v_sum + p_items[v_i].number * 2 - @N mod 7;
        } else if (ispresent(p_items[v_i].name)) {
          v_sum := v_sum + lengthof(p_items[v_i].name);
        }
      }
      return v_sum;
    }

    function f_kind_@K(integer p_number) return Kind_@K {
      select (p_number) {
        case (0, 1) { return e_first_@K; }
        case ((2..9)) { return e_second_@K; }
        case else { return e_other_@K; }
      }
      return e_third_@K;
    }

    function f_text_@K(Order_@K p_order) return charstring {
      var charstring v_text := "order " & int2str(p_order.id);
      if (ischosen(p_order.content.item)) {
        v_text := v_text & " of " & p_order.content.item.name;
      } else if (ischosen(p_order.content.items)) {
        v_text := v_text & " of " & int2str(f_sum_@K(p_order.content.items));
      } else if (ischosen(p_order.content.text)) {
        v_text := v_text & ": " & p_order.content.text;
      }
      if (match(p_order, mw_order_@K(e_first_@K))) {
        log("first kind: ", p_order);
      }
      return v_text;
    }

    function f_later_@K(integer p_number) return integer {
      return @F + p_number;
    }

    altstep a_item_@K(integer p_least) runs on Comp_@K {
      var Item_@K v_item;
      [] pt_order.receive(Item_@K:{ ?, *, e_first_@K, ?, true }) -> value v_item {
        if (v_item.number < p_least) {
          setverdict(inconc);
        }
        repeat;
      }
      [vc_served > 0] t_serve.timeout {
        setverdict(pass);
      }
    }

    function f_serve_@K(integer p_count) runs on Comp_@K {
      var Order_@K v_order;
      var default v_default := activate(a_item_@K(p_count));
      t_serve.start;
      while (vc_served < p_count) {
        alt {
          [] pt_order.receive(mw_order_@K(?)) -> value v_order {
            vc_served := vc_served + 1;
            pt_order.send(m_order_@K(v_order.id + 1, v_order.content.item));
          }
          [] pt_order.receive {
            setverdict(fail);
          }
        }
      }
      t_serve.stop;
      deactivate(v_default);
    }

    testcase TC_@K(integer p_count) runs on Comp_@K system Comp_@K {
      var Comp_@K v_peer := Comp_@K.create("peer @K");
      var Item_@K v_item := valueof(m_item_@K(3, "b"));
      connect(self:pt_order, v_peer:pt_order);
      v_peer.start(f_serve_@K(p_count));
      for (var integer v_i := 0; v_i < p_count; v_i := v_i + 1) {
        v_item.kind := f_kind_@K(v_i);
        pt_order.send(m_order_@K(v_i + 1, v_item));
        pt_order.receive(mw_order_@K((e_first_@K, e_second_@K, e_other_@K)));
      }
      v_peer.done;
      setverdict(pass);
    }
  }
"""

HEAD = """// Module @M of a suite for measurements.
module @NAME language "TTCN-3:2005" {
@IMPORTS
  modulepar {
    integer PX_COUNT@M := 3;
    charstring PX_NAME@M := "module @M"
  }

  type component Base@M {
    var integer vc_base := 0;
    timer t_base := 1.0;
  }
"""

TAIL = """
  control {
    execute(TC_@K(PX_COUNT@M), 5.0);
  }
}
"""

CHAIN = 5  # so many units of a module build on one another
UNIT_LINES = UNIT.count("\n")
FRAME_LINES = HEAD.count("\n") + TAIL.count("\n")


def unit_text(number, module, earlier):
    """The text of a unit; `earlier` is the number of the unit that it builds on, or None."""
    replacements = {
        "@P": f"Order_{earlier}" if earlier is not None else "hexstring",
        "@F": f"f_later_{earlier}(p_number)" if earlier is not None else "1",
        "@N": str(100 + number % 9000),
        "@D": f"{number % 256:02X}",
        "@M": str(module),
        "@K": str(number),
    }
    text = UNIT
    for key, value in replacements.items():
        text = text.replace(key, value)
    return text


def module_name(prefix, module):
    return f"{prefix}_{module:05d}"


def write_module(folder, prefix, module, first, units):
    """Writes a module of `units` units from the number `first` on; answers its file."""
    imported = sorted({module - 1, module // 2}) if module > 0 else []
    imports = "".join(f"  import from {module_name(prefix, other)} all;\n" for other in imported)
    parts = [HEAD.replace("@NAME", module_name(prefix, module)).replace("@IMPORTS", imports)
             .replace("@M", str(module))]
    for index in range(units):
        number = first + index
        if index % CHAIN:
            earlier = number - 1
        else:
            # The last unit of the module in the middle: the chain of units through the modules stays short.
            earlier = module // 2 * units + units - 1 if imported and index == 0 else None
        parts.append(unit_text(number, module, earlier))
    parts.append(TAIL.replace("@K", str(first)).replace("@M", str(module)))
    path = folder / f"{module_name(prefix, module)}.ttcn"
    path.write_text("".join(parts), encoding="ascii")
    return path


def write_suite(folder, lines, modules=1, prefix="Bench"):
    """Writes a suite of about `lines` lines in `modules` modules; answers the files and their lines."""
    folder = Path(folder)
    folder.mkdir(parents=True, exist_ok=True)
    units = max(1, round((lines / modules - FRAME_LINES) / UNIT_LINES))
    files = [write_module(folder, prefix, module, module * units, units) for module in range(modules)]
    return files, sum(path.read_bytes().count(b"\n") for path in files)


def main():
    parser = argparse.ArgumentParser(description="Writes a TTCN-3 suite for measurements.")
    parser.add_argument("--lines", type=int, required=True)
    parser.add_argument("--modules", type=int, default=1)
    parser.add_argument("--prefix", default="Bench", help="of the modules' names")
    parser.add_argument("folder")
    arguments = parser.parse_args()
    files, _ = write_suite(arguments.folder, arguments.lines, arguments.modules, arguments.prefix)
    print("\n".join(str(path) for path in files))


if __name__ == "__main__":
    main()
