#!/usr/bin/env python3
"""Computes the gamma curves that the library stores, and prints src/controls/gamma_data.cpp.

    tools/generate_gamma.py > src/controls/gamma_data.cpp
    tools/generate_gamma.py --check src/controls/gamma_data.cpp    # does the file hold these curves?

A curve has a linear toe, so that dark noise is not lifted without bound, and a power section above
it. Both meet at TOE_END. The library only looks the curves up: it computes nothing of this itself.
"""

import argparse
import math
import sys

INDEX_MIN, INDEX_MAX = -32, 32
TOE_END = 0.018

# The offset of the power section per index: it sets how steep the toe is.
POWER_OFFSETS = (
    -0.000820, -0.001010, -0.001220, -0.001434, -0.001660, -0.001895, -0.002139, -0.002308,  # -32
    -0.002450, -0.002545, -0.002520, -0.002400, -0.002100, -0.001634, -0.000946, 0.0,  # -24
    0.001311, 0.002920, 0.004936, 0.007385, 0.010320, 0.013780, 0.017822, 0.022424,  # -16
    0.027750, 0.033796, 0.040560, 0.048045, 0.056468, 0.065716, 0.075970, 0.087112,  # -8
    0.099296, 0.112520, 0.126771, 0.142274, 0.158900, 0.176852, 0.196011, 0.216555,  # 0
    0.238476, 0.261845, 0.286737, 0.313189, 0.341196, 0.371020, 0.402598, 0.436000,  # 8
    0.471248, 0.508631, 0.548022, 0.589590, 0.633431, 0.679644, 0.728295, 0.779640,  # 16
    0.833508, 0.890227, 0.950022, 1.012812, 1.078627, 1.148116, 1.220685, 1.297464,  # 24
    1.377240,  # 32
)
assert len(POWER_OFFSETS) == INDEX_MAX - INDEX_MIN + 1


def exponent(index):
    """0.45 in the middle; each step of the index scales it by the same factor."""
    return 0.45 * math.exp(-3.0 * index / 64.0)


def curve(index, t):
    """The transfer curve on 0..1."""
    offset, power = POWER_OFFSETS[index - INDEX_MIN], exponent(index)
    if t < TOE_END:
        slope = ((1.0 + offset) * TOE_END**power - offset) / TOE_END
        return slope * t
    return (1.0 + offset) * t**power - offset


def clamp(value, low, high):
    return max(low, min(high, value))


def full_range_row(index):
    return [clamp(math.floor(256.0 * curve(index, x / 256.0)), 0, 255) for x in range(256)]


def studio_range_row(index):
    """16..235 in, 16..235 out."""
    return [
        clamp(16 + math.floor(220.0 * curve(index, max(x - 16, 0) / 220.0)), 16, 235)
        for x in range(256)
    ]


def lines_of(values, per_line, width):
    for start in range(0, len(values), per_line):
        yield "    " + "".join(f"{value:{width}}," for value in values[start:start + per_line])


def source():
    indices = range(INDEX_MIN, INDEX_MAX + 1)
    out = [
        "// Printed by tools/generate_gamma.py: change the rule there, not the numbers here.",
        '#include "controls/gamma_data.h"',
        "",
        "namespace ppl {",
        "",
        "// clang-format off",
    ]
    for name, row in (("gamma_tables65x256", full_range_row),
                      ("gamma_tables65x256_16_235", studio_range_row)):
        out.append(f"uint8_t {name}[gamma_curve_count][256] = {{")
        for index in indices:
            out.append(f"  {{  // {index}")
            out.extend(lines_of(row(index), 16, 3))
            out.append("  },")
        out += ["};", ""]
    out.append("const int32_t gamma_nf20_12_values[gamma_curve_count] = {")
    out.extend(lines_of([math.floor(4096.0 * exponent(index)) for index in indices], 13, 5))
    out += ["};", "// clang-format on", "", "}  // namespace ppl", ""]
    return "\n".join(out)


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--check", metavar="FILE", help="compare with FILE in place of printing")
    arguments = parser.parse_args()
    if arguments.check is None:
        sys.stdout.write(source())
        return 0
    with open(arguments.check, encoding="ascii") as file:
        if file.read() == source():
            return 0
    print(f"{arguments.check}: does not hold what tools/generate_gamma.py prints", file=sys.stderr)
    return 1


if __name__ == "__main__":
    sys.exit(main())
