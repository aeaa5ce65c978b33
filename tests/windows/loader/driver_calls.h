// Every function of ppl.h, led into a loaded image: whoever calls BaylorToI420MMX in a program that
// links this calls the image's export of that name. On the way the stack is moved to one of the
// four offsets that a caller on Windows may have it at, and back. A call after which an x87 or MMX
// register is in use, or x87 arithmetic goes wrong, counts in kernel_calls.unclean.
#pragma once

#include <stdint.h>

#include "loader/pe_file.h"

namespace ppl_test {

// The functions of ppl.h, in the order of packaging/exports.
extern "C" const char *const driver_function_names[];
extern "C" const uint32_t driver_function_count;

// Finds all of them in the image. Returns the name of one that is not there, or null.
const char *connect_driver(const PeImage &image);

// The stack pointer modulo 16 at every call from now on: 0, 4, 8 or 12, or each in turn.
inline constexpr uint32_t each_in_turn = 16;
void set_stack_offset(uint32_t offset);

// Gives each call a stack of its own, 16 KB, and notes how much of it the deepest call has used,
// the two kernel functions included.
void measure_stack(bool on);
uint32_t deepest_stack();
// What a call may use of the 12 KB that a kernel thread has for everybody on the way to it.
inline constexpr uint32_t most_stack = 4096;

}  // namespace ppl_test
