"""Writes twenty modules in five layers, with the faults that are due: each imports two of the layer before recursively,
and declares a literal that all declare. Every second one takes what is not there."""


def module(layer, place):
    name, first, second = f"l{layer}_{place}", f"l{layer - 1}_{place}", f"l{layer - 1}_{(place + 1) % 4}"
    lines = [f"type enumerated E{name} {{ common, own{name} }}", f"const E{name} c{name} := common;",
             f"const E{name} same := own{name};"]
    if layer:
        lines = [f"import from {first} recursive all;", f"import from {second} recursive all;", *lines,
                 f"const E{second} second := {second}.same;", f"const E{second} third := own{second};",
                 f"const E{first} fourth := c{first};", f"const E{name} local := same;"]
        if place % 2:
            lines += [f"const E{first}",
                      '  wrong := common;  // expect-error@:12 {{the type of "common" is not correct}}',
                      f'const E{first} none{name} := none{second};  '
                      f'// expect-error@:25 {{{{no declaration for "none{second}"}}}}']
    if layer > 1:
        far = f"l{layer - 2}_{(place + 1) % 4}"
        lines.append(f"const E{far} far := {far}.same;")
    return "\n".join([f"module {name} {{", *lines, "}"])


print("\n".join(module(layer, place) for layer in range(5) for place in range(4)))
