#include "opencv_route.h"

#ifdef PPL_BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace ppl::bench {

#ifdef PPL_BENCH_OPENCV

bool has_opencv() { return true; }

std::function<void()> opencv_route(const OpenCvStages &stages, const PlainTables &tables,
                                   uint8_t *src, uint8_t *dst, int width, int height) {
  cv::setNumThreads(1);
  const cv::Mat raw(height, width, CV_8UC1, src);
  const cv::Mat i420(height * 3 / 2, width, CV_8UC1, dst);
  const cv::Mat luma(height, width, CV_8UC1, dst);

  // One table, that of green on even lines, for all four positions: a table for each position takes
  // OpenCV more than twice as long.
  cv::Mat table(1, 256, CV_8UC1);
  std::copy_n(tables.sample[0][1], 256, table.data);
  cv::Mat_<float> matrix(3, 3);  // B, G, R
  for (int i = 0; i < 3; ++i) {
    const PlainMatrixRow &row = tables.rgb[2 - i];
    matrix(i, 0) = static_cast<float>(row.b) / 64;
    matrix(i, 1) = static_cast<float>(row.g) / 64;
    matrix(i, 2) = static_cast<float>(row.r) / 64;
  }
  // The usual five weights: a kernel that is nearer to the library's has seven and takes longer.
  constexpr float k = 0.125F;
  const cv::Mat sharpen = (cv::Mat_<float>(3, 3) << 0, -k, 0, -k, 1 + 4 * k, -k, 0, -k, 0);
  const int demosaic =
      stages.demosaics_along_edges ? cv::COLOR_BayerBGGR2BGR_EA : cv::COLOR_BayerBGGR2BGR;
  const bool sharpens = stages.sharpens;
  return [=, looked_up = cv::Mat(), bgr = cv::Mat(), corrected = cv::Mat()]() mutable {
    cv::LUT(raw, table, looked_up);
    cv::cvtColor(looked_up, bgr, demosaic);
    cv::transform(bgr, corrected, matrix);
    cv::cvtColor(corrected, i420, cv::COLOR_BGR2YUV_I420);
    if (sharpens) cv::filter2D(luma, luma, -1, sharpen);
  };
}

#else

bool has_opencv() { return false; }

std::function<void()> opencv_route(const OpenCvStages & /*stages*/, const PlainTables & /*tables*/,
                                   uint8_t * /*src*/, uint8_t * /*dst*/, int /*width*/,
                                   int /*height*/) {
  return {};
}

#endif

}  // namespace ppl::bench
