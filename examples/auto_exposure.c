/* Auto-exposure and white balance, the way a capture driver would do them.
 *
 * A camera looks at a grey card and coloured patches while the light changes: too dark and too
 * bright by three stops, warm and cold. After each frame the loop reads what the library gathered
 * on its way through the pixels, and steers the exposure and the channel gains for the next frame.
 * The sensor is simulated; everything between "steer" and "configure" would be the same with a real
 * one.
 *
 * Prints a table of the convergence; exits with 1 if a light was not mastered within 15 frames.
 */
#include <math.h>
#include <stdio.h>
#include <stdlib.h>

#include "ppl.h"
#include "simulator.h"

enum { width = 640, height = 480, frames_per_light = 15 };

/* Mean green of the raw frame, in sample steps above black, that the exposure aims at: middle grey,
 * with room for highlights. */
static const double target_level = 44;

/* What the loop steers. */
struct Camera {
  double exposure;       /* in stops, as a sensor's exposure time and gain would set it */
  double r_gain, b_gain; /* green stays at 1 */
};

/* ---- configure: once per stream ---- */

static PplContext *open_stream(void) {
  PplContext *ctx = ppl_init();
  if (!ctx) return NULL;
  /* The qualified cells are judged and summed before gain and gamma, so their means are linear.
   * Here a cell qualifies by its level alone: clipped ones are left out, colours are not. */
  ppl_set_qual_BmGb_min_max(ctx, -255, 255);
  ppl_set_qual_GrmR_min_max(ctx, -255, 255);
  ppl_set_qual_BmGb_p_GrmR_min_max(ctx, -510, 510);
  ppl_set_qual_BmGb_m_GrmR_min_max(ctx, -510, 510);
  ppl_set_qual_RGB_min_max(ctx, 0, 250, 0, 250, 0, 250);
  return ctx;
}

/* ---- steer: once per frame ---- */

static double limited(double value, double low, double high) {
  return value < low ? low : value > high ? high : value;
}

/* 8.8 fixed point; the kernels drop the lowest three bits, so the nearest multiple of 8 serves
 * best. */
static int32_t nf88_gain(double gain) { return (int32_t)(gain * 32 + 0.5) * 8; }

static void steer(PplContext *ctx, struct Camera *camera) {
  const PplTriple *mean = ppl_qual_rgb_means_whole_frame(ctx); /* 8.8: 256 is one sample step */
  const double r = mean->r / 256.0, g = mean->g / 256.0, b = mean->b / 256.0;
  const double cells = width / 2 * height / 2;
  const double unclipped = ppl_n_qual_2x2_whole_frame(ctx) / cells;

  /* Exposure. Where much is clipped the mean of the rest says little: take a large step down. */
  if (unclipped < 0.9) {
    camera->exposure -= unclipped < 0.6 ? 2 : 1;
  } else {
    camera->exposure += limited(log2(target_level / limited(g, 0.1, 255)), -2, 2);
  }

  /* White balance: on the average the world is grey. Too dark a frame tells nothing about colour.
   */
  if (unclipped >= 0.9 && r > 1 && b > 1) {
    camera->r_gain = limited(g / r, 0.25, 7.9);
    camera->b_gain = limited(g / b, 0.25, 7.9);
    ppl_set_rgb_gain(ctx, nf88_gain(camera->r_gain), 256, nf88_gain(camera->b_gain));
  }
}

/* ---- the simulated world ---- */

/* A grey card in the middle of patches whose colours cancel out. sRGB, R, G, B. */
static uint8_t *draw_scene(void) {
  static const uint8_t patches[6][3] = {{150, 75, 75},  {75, 134, 134}, {75, 150, 75},
                                        {136, 75, 136}, {75, 75, 150},  {132, 132, 75}};
  uint8_t *rgb = malloc(3 * width * height);
  if (!rgb) return NULL;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int in_card =
          x >= width / 3 && x < 2 * width / 3 && y >= height / 3 && y < 2 * height / 3;
      const uint8_t *patch = patches[(x / 80 + 2 * (y / 80)) % 6];
      for (int c = 0; c < 3; ++c) rgb[3 * (y * width + x) + c] = in_card ? 118 : patch[c];
    }
  }
  return rgb;
}

/* Mean of the grey card in a finished RGB24 frame: B, G, R in memory. */
static void measure_card(const uint8_t *frame, double bgr[3]) {
  double sum[3] = {0, 0, 0};
  int count = 0;
  for (int y = height / 2 - 40; y < height / 2 + 40; ++y) {
    for (int x = width / 2 - 40; x < width / 2 + 40; ++x, ++count) {
      for (int c = 0; c < 3; ++c) sum[c] += frame[3 * (y * width + x) + c];
    }
  }
  for (int c = 0; c < 3; ++c) bgr[c] = sum[c] / count;
}

static int is_neutral(const double bgr[3]) {
  double low = bgr[0], high = bgr[0];
  for (int c = 1; c < 3; ++c) {
    if (bgr[c] < low) low = bgr[c];
    if (bgr[c] > high) high = bgr[c];
  }
  return high <= 1.03 * low;
}

int main(void) {
  static const struct {
    double stops, kelvin;
  } lights[] = {{-3, 3000}, {3, 3000}, {3, 10000}, {-3, 10000}};

  PplContext *ctx = open_stream();
  uint8_t *raw = aligned_alloc(16, width * height);
  uint8_t *frame = aligned_alloc(16, 3 * width * height);
  uint8_t *scene = draw_scene();
  PplSimulator *sensor =
      scene ? ppl_simulator_create_from_rgb(scene, width, height, width, height, 1) : NULL;
  if (!ctx || !raw || !frame || !sensor) return 1;

  struct Camera camera = {0, 1, 1};
  int failures = 0;
  printf("frame  light            exposure   level   gain r    b    grey card  r      g      b\n");
  for (size_t light = 0; light < sizeof lights / sizeof lights[0]; ++light) {
    int settled_at = -1;
    ppl_simulator_set_illuminant(sensor, lights[light].kelvin);
    for (int i = 0; i < frames_per_light; ++i) {
      ppl_simulator_set_exposure(sensor, limited(lights[light].stops + camera.exposure, -20, 20));
      ppl_simulator_render(sensor, raw);
      const double r_gain = camera.r_gain, b_gain = camera.b_gain, exposure = camera.exposure;

      if (!BaylorToRGB24MMX(ctx, raw, frame, width, height)) return 1;
      const double level = ppl_qual_rgb_means_whole_frame(ctx)->g / 256.0;
      steer(ctx, &camera);

      double card[3];
      measure_card(frame, card);
      const int settled = fabs(level / target_level - 1) < 0.05 && is_neutral(card);
      if (!settled) settled_at = -1;
      if (settled && settled_at < 0) settled_at = i;
      printf(
          "%5d  %+.0f stops %5.0f K   %+8.2f  %6.1f    %5.2f %5.2f          %6.1f %6.1f %6.1f%s\n",
          (int)light * frames_per_light + i, lights[light].stops, lights[light].kelvin, exposure,
          level, r_gain, b_gain, card[2], card[1], card[0], settled ? "  settled" : "");
    }
    if (settled_at < 0) ++failures;
  }
  printf(failures ? "Not settled in %d of the lights.\n" : "Settled in every light.\n", failures);

  ppl_simulator_free(sensor);
  ppl_free(ctx);
  free(scene);
  free(frame);
  free(raw);
  return failures ? 1 : 0;
}
