#include "library/statistics_json.h"

#include <vector>

namespace ppl::tool {
namespace {

using Json = nlohmann::ordered_json;

Json triple(const PplTriple *means) { return {{"r", means->r}, {"g", means->g}, {"b", means->b}}; }

Json histogram(const uint32_t *bins) { return std::vector<uint32_t>(bins, bins + 256); }

}  // namespace

Json statistics_of(const PplContext *context) {
  Json json;
  json["n_frame"] = ppl_n_frame(context);
  json["rgb_means_whole_frame"] = triple(ppl_rgb_means_whole_frame(context));
  json["rgb_means_whole_frame_4pts"] = triple(ppl_rgb_means_whole_frame_4pts(context));
  json["rgb_means_whole_frame_central4"] = triple(ppl_rgb_means_whole_frame_central4(context));
  json["rgb_means_whole_frame_central8"] = triple(ppl_rgb_means_whole_frame_central8(context));
  json["rgb_means_whole_frame_central16"] = triple(ppl_rgb_means_whole_frame_central16(context));
  json["n_qAE_2x2_whole_frame"] = ppl_n_qAE_2x2_whole_frame(context);
  json["qAE_rgb_means_whole_frame"] = triple(ppl_qAE_rgb_means_whole_frame(context));
  json["n_qual_2x2_whole_frame"] = ppl_n_qual_2x2_whole_frame(context);
  json["qual_rgb_means_whole_frame"] = triple(ppl_qual_rgb_means_whole_frame(context));

  uint32_t columns = 0, rows = 0;
  const auto count = static_cast<uint32_t>(ppl_n_sub_windows(context, &columns, &rows));
  json["n_sub_windows"] = {{"count", count}, {"columns", columns}, {"rows", rows}};
  json["rgb_means_all_sub_windows"] = triple(ppl_rgb_means_all_sub_windows(context));
  json["rgb_means_outside_all_sub_windows"] =
      triple(ppl_rgb_means_outside_all_sub_windows(context));
  const PplTriple *windows = ppl_rgb_means_sub_windows(context);
  Json list = Json::array();
  for (uint32_t i = 0; i < count; ++i) list.push_back(triple(&windows[i]));
  json["rgb_means_sub_windows"] = list;

  json["r_histogram"] = histogram(ppl_r_histogram(context));
  json["g_histogram"] = histogram(ppl_g_histogram(context));
  json["b_histogram"] = histogram(ppl_b_histogram(context));
  return json;
}

Json statistics_units() {
  return {
      {"means", "8.8 fixed point: 256 is one step of the 0..255 sample scale"},
      {"rgb_means_sub_windows",
       "8.8 fixed point; 8 columns by 6 rows, row by row from the top left"},
      {"rgb_means_outside_all_sub_windows",
       "8.8 fixed point as if the area outside were as large as one window"},
      {"n_qAE_2x2_whole_frame", "2x2 cells inside the qAE band, scaled to the whole frame"},
      {"n_qual_2x2_whole_frame", "2x2 cells inside the qual bands, scaled to the whole frame"},
      {"n_frame", "frames since the library was loaded, on this context"},
      {"histograms", "sampled block means in each of the 256 steps; not normalised"},
  };
}

}  // namespace ppl::tool
