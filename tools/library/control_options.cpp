#include "library/control_options.h"

#include <fmt/core.h>

#include "base/failure.h"
#include "library/context.h"
#include "library/control_assignment.h"

namespace ppl::tool {

std::vector<std::string> ControlOptions::all() const {
  std::vector<std::string> list;
  if (neutral) {
    list.push_back("gamma=-17");
    list.push_back("sensor_matrix=256,0,0,0,256,0,0,0,256,256,0,0,0,256,0,0,0,256");
  }
  if (quality) list.push_back(fmt::format("quality={}", *quality));
  if (decimation || !black_lines.empty())
    list.push_back(fmt::format("decimation={},{}", decimation.value_or(0),
                               black_lines.empty() ? "0,0" : black_lines));
  if (motion_threshold) list.push_back(fmt::format("intl_3T_threshold={}", *motion_threshold));
  if (mirror.find('h') != std::string::npos) list.push_back("h_mirror=1");
  if (mirror.find('v') != std::string::npos) list.push_back("v_mirror=1");
  if (!tier.empty()) list.push_back(tier == "p3" ? "P3_only=1" : "P3_only=0");
  list.insert(list.end(), assignments.begin(), assignments.end());
  return list;
}

void ControlOptions::apply(PplContext *context) const {
  for (const std::string &assignment : all()) set_control(context, assignment);
  if (tier == "sse2" && tier_of(context) != Tier::sse2)
    throw Failure("the sse2 tier cannot run here: leave out --tier, or use --tier p3");
}

}  // namespace ppl::tool
