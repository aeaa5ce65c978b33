// Controls by name, as a command line gives them.
#pragma once

#include <ppl.h>

#include <string>

namespace ppl::tool {

// Carries out "NAME=VALUE". VALUE is numbers with commas in between, or @ and the name of a file
// with the bytes of a table. A number with a decimal point stands for itself times 256 where the
// control is 8.8 fixed point. Throws Failure for an unknown name and for a value that is malformed
// or refused.
void set_control(PplContext *context, const std::string &assignment);

// The known name that is closest to a misspelt one.
std::string nearest_control(const std::string &name);

}  // namespace ppl::tool
