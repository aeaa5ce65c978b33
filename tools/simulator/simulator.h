/* A small camera sensor simulator with a plain C interface.
 *
 * It turns a scene into raw 8-bit mosaic frames such as a USB camera's sensor delivers:
 *
 *   even lines   B  Gb B  Gb ...
 *   odd lines    Gr R  Gr R  ...
 *
 * The way of one sample:
 *
 *   scene      linear light, 0 = black, 1 = diffuse white (sRGB primaries and curve, linearised)
 *   colour     each colour filter also passes a fraction of the other two colours (crosstalk):
 *              own' = (1 - 2c) own + c (sum of the two others). Grey stays grey.
 *   light      one factor per channel (the illuminant; below)
 *   exposure   2 to the power of the exposure in stops; at 0 stops diffuse white fills 80 percent
 *              of the range that the black level leaves
 *   photons    signal times full well = mean number of electrons; shot noise with that variance
 *              and read noise are added (one normal deviate; good from some 20 electrons on)
 *   code       black level + electrons / full well * (255 - black level), to nearest, 0 to 255
 *   defects    a hot pixel reads 255, a dead one 0
 *
 * The illuminant is a black body of the given temperature, seen at one wavelength per channel (R
 * 600, G 540, B 460 nm) relative to 6500 K, and scaled so that green keeps its level. A white
 * balance by channel gains can thus undo it exactly.
 *
 * Frames depend on nothing but the settings, the seed and the number of frames rendered so far:
 * noise comes from SplitMix64 and integer sums, and all other arithmetic uses only operations that
 * IEEE 754 rounds exactly, so every platform renders the same bytes.
 */
#ifndef PPL_TOOLS_SIMULATOR_H
#define PPL_TOOLS_SIMULATOR_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct PplSimulator PplSimulator;

/* Names of the built-in scenes, from index 0 on; null behind the last one. */
const char *ppl_simulator_scene_name(uint32_t index);
/* What that scene shows, in a few words. */
const char *ppl_simulator_scene_text(uint32_t index);

/* A simulator for a built-in scene. Null for an unknown scene, a size that is odd, below 2 or above
 * 8192 in either direction, or no memory. */
PplSimulator *ppl_simulator_create(const char *scene, uint32_t width, uint32_t height,
                                   uint64_t seed);

/* The same for a picture: sRGB, three bytes R, G, B a pixel, lines from top to bottom. It is scaled
 * to cover the frame, keeping its shape, and cut evenly at the two sides that stand over. */
PplSimulator *ppl_simulator_create_from_rgb(const uint8_t *rgb, uint32_t picture_width,
                                            uint32_t picture_height, uint32_t width,
                                            uint32_t height, uint64_t seed);

/* Null is allowed. */
void ppl_simulator_free(PplSimulator *simulator);

/* Settings take effect with the next frame. Each returns 1, or 0 with nothing changed where a value
 * is out of range (or not a number). */

/* Stops, -20 to 20; 0 at first. */
uint8_t ppl_simulator_set_exposure(PplSimulator *simulator, double stops);

/* 1500 to 25000 kelvin; 6500 at first, where all factors are 1. */
uint8_t ppl_simulator_set_illuminant(PplSimulator *simulator, double kelvin);

/* The factors themselves, 0 to 64 each, instead of those that set_illuminant computes. */
uint8_t ppl_simulator_set_channel_gains(PplSimulator *simulator, double r, double g, double b);

/* Sample steps, 0 to 128; 0 at first. */
uint8_t ppl_simulator_set_black_level(PplSimulator *simulator, double codes);

/* Electrons; 8000 and 20 at first. A full well of 0 turns shot noise off, and read noise then
 * counts in 1/8000 of the range. */
uint8_t ppl_simulator_set_noise(PplSimulator *simulator, double full_well, double read_noise);

/* 0 to 1/3; 0.15 at first. */
uint8_t ppl_simulator_set_crosstalk(PplSimulator *simulator, double fraction);

/* Numbers of pixels, together at most a hundredth of the frame; none at first. */
uint8_t ppl_simulator_set_defects(PplSimulator *simulator, uint32_t hot, uint32_t dead);

/* The channel factors now in force. */
void ppl_simulator_channel_gains(const PplSimulator *simulator, double *r, double *g, double *b);

uint32_t ppl_simulator_width(const PplSimulator *simulator);
uint32_t ppl_simulator_height(const PplSimulator *simulator);

/* Renders the next frame: width times height bytes, no padding. */
void ppl_simulator_render(PplSimulator *simulator, uint8_t *raw);

/* The scene itself as sRGB, R, G, B from top to bottom: 3 times width times height bytes. */
void ppl_simulator_scene_rgb(const PplSimulator *simulator, uint8_t *rgb);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* PPL_TOOLS_SIMULATOR_H */
