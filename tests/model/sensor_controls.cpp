// Tier choice, quality, black level, gains, offsets, tables and matrices of the sensor, mirrors.
#include "model/colour.h"
#include "model/refresh.h"

namespace ppl_model {

uint8_t ppl_P3_only(const PplContext *ctx) { return ctx->P3_only; }
uint8_t ppl_set_P3_only(PplContext *ctx, uint8_t value) {
  ctx->P3_only = value;
  return 1;
}
uint8_t ppl_reset_P3_only(PplContext *ctx) { return ppl_set_P3_only(ctx, 0); }

int32_t ppl_sensor_type(const PplContext *ctx) { return ctx->sensor_type; }
// The code is judged, never stored.
uint8_t ppl_set_sensor_type(const PplContext *, int32_t code) {
  return code == 22356 || code == 22856 || code == 4347471 || code == 122965837 ? 1 : 0;
}

uint32_t ppl_quality(const PplContext *ctx) { return ctx->quality; }
uint8_t ppl_set_quality(PplContext *ctx, uint32_t quality) {
  if (quality >= 15) return 0;
  ctx->quality = quality;
  return 1;
}
uint8_t ppl_reset_quality(PplContext *ctx) { return ppl_set_quality(ctx, 3); }

uint8_t ppl_mean_collection(const PplContext *ctx) { return ctx->mean_collection; }
uint8_t ppl_set_mean_collection(PplContext *ctx, uint8_t value) {
  ctx->mean_collection = value;
  return 1;
}
uint8_t ppl_reset_mean_collection(PplContext *ctx) { return ppl_set_mean_collection(ctx, 1); }

// ---- Black level

uint32_t ppl_optical_black_b_gb_gr_r(const PplContext *ctx, uint32_t *b, uint32_t *gb, uint32_t *gr,
                                     uint32_t *r) {
  *b = ctx->optical_black_b;
  *gb = ctx->optical_black_gb;
  *gr = ctx->optical_black_gr;
  *r = ctx->optical_black_r;
  return ctx->optical_black_r;
}

uint8_t ppl_set_optical_black_b_gb_gr_r(PplContext *ctx, uint32_t b, uint32_t gb, uint32_t gr,
                                        uint32_t r) {
  ctx->optical_black_b = b;
  ctx->optical_black_gb = gb;
  ctx->optical_black_gr = gr;
  ctx->optical_black_r = r;
  return refresh(ctx, [=](Parameters &params) {
    if (b > 255 || gb > 255 || gr > 255 || r > 255) return false;
    params.optical_black_BG_vec = byte_pair(static_cast<int32_t>(b), static_cast<int32_t>(gb));
    params.optical_black_GR_vec = byte_pair(static_cast<int32_t>(gr), static_cast<int32_t>(r));
    return true;
  });
}

uint8_t ppl_reset_optical_black_b_gb_gr_r(PplContext *ctx) {
  return ppl_set_optical_black_b_gb_gr_r(ctx, 0, 0, 0, 0);
}

// ---- Triples whose words stand in a (b,g) and a (g,r) pair

namespace {

struct LinePairs {
  Pair<int16_t> &bg, &gr;
};

void write_r(LinePairs pairs, int32_t value) { pairs.gr.odd = wrap16(value); }
void write_g(LinePairs pairs, int32_t value) { pairs.bg.odd = pairs.gr.even = wrap16(value); }
void write_b(LinePairs pairs, int32_t value) { pairs.bg.even = wrap16(value); }

void write_rgb(LinePairs pairs, int32_t r, int32_t g, int32_t b) {
  write_r(pairs, r);
  write_g(pairs, g);
  write_b(pairs, b);
}

LinePairs delta_pairs(Parameters &params) {
  return {params.rgb_delta_BG_vec, params.rgb_delta_GR_vec};
}
LinePairs gain_pairs(Parameters &params) {
  return {params.rgb_gain_BG_vec, params.rgb_gain_GR_vec};
}
LinePairs quals_pairs(Parameters &params) {
  return {params.quals_gain_BG_vec, params.quals_gain_GR_vec};
}

using Writer = void (*)(LinePairs, int32_t);

uint8_t refresh_delta(PplContext *ctx, int32_t value, Writer write) {
  return refresh(ctx, [=](Parameters &params) {
    if (!fits_word(value)) return false;
    write(delta_pairs(params), value);
    return true;
  });
}

bool is_gain(int32_t value) { return value >= 0 && value <= 2047; }

// 8.8 becomes 8.5.
uint8_t refresh_gain(PplContext *ctx, int32_t value, Writer write) {
  return refresh(ctx, [=](Parameters &params) {
    if (!is_gain(value)) return false;
    write(gain_pairs(params), value >> 3);
    return true;
  });
}

bool is_quals_gain(int32_t value) { return value >= 0 && value <= 1023; }

void refresh_quals_gain(PplContext *ctx, int32_t value, Writer write) {
  refresh(ctx, [=](Parameters &params) {
    if (!is_quals_gain(value)) return false;
    write(quals_pairs(params), value >> 2);
    return true;
  });
}

}  // namespace

int32_t ppl_r_delta(const PplContext *ctx) { return ctx->r_delta; }
int32_t ppl_g_delta(const PplContext *ctx) { return ctx->g_delta; }
int32_t ppl_b_delta(const PplContext *ctx) { return ctx->b_delta; }

uint8_t ppl_set_rgb_delta(PplContext *ctx, int32_t r, int32_t g, int32_t b) {
  ctx->r_delta = r;
  ctx->g_delta = g;
  ctx->b_delta = b;
  return refresh(ctx, [=](Parameters &params) {
    if (!fits_word(r) || !fits_word(g) || !fits_word(b)) return false;
    write_rgb(delta_pairs(params), r, g, b);
    return true;
  });
}
uint8_t ppl_set_r_delta(PplContext *ctx, int32_t r) {
  ctx->r_delta = r;
  return refresh_delta(ctx, r, write_r);
}
uint8_t ppl_set_g_delta(PplContext *ctx, int32_t g) {
  ctx->g_delta = g;
  return refresh_delta(ctx, g, write_g);
}
uint8_t ppl_set_b_delta(PplContext *ctx, int32_t b) {
  ctx->b_delta = b;
  return refresh_delta(ctx, b, write_b);
}
uint8_t ppl_reset_rgb_delta(PplContext *ctx) { return ppl_set_rgb_delta(ctx, 0, 0, 0); }

int32_t ppl_nf88_r_gain(const PplContext *ctx) { return ctx->nf88_r_gain; }
int32_t ppl_nf88_g_gain(const PplContext *ctx) { return ctx->nf88_g_gain; }
int32_t ppl_nf88_b_gain(const PplContext *ctx) { return ctx->nf88_b_gain; }

uint8_t ppl_set_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b) {
  ctx->nf88_r_gain = r;
  ctx->nf88_g_gain = g;
  ctx->nf88_b_gain = b;
  return refresh(ctx, [=](Parameters &params) {
    if (!is_gain(r) || !is_gain(g) || !is_gain(b)) return false;
    write_rgb(gain_pairs(params), r >> 3, g >> 3, b >> 3);
    return true;
  });
}
uint8_t ppl_set_r_gain(PplContext *ctx, int32_t r) {
  ctx->nf88_r_gain = r;
  return refresh_gain(ctx, r, write_r);
}
uint8_t ppl_set_g_gain(PplContext *ctx, int32_t g) {
  ctx->nf88_g_gain = g;
  return refresh_gain(ctx, g, write_g);
}
uint8_t ppl_set_b_gain(PplContext *ctx, int32_t b) {
  ctx->nf88_b_gain = b;
  return refresh_gain(ctx, b, write_b);
}
uint8_t ppl_reset_rgb_gain(PplContext *ctx) { return ppl_set_rgb_gain(ctx, 256, 256, 256); }

// The quals gains return 0 whatever happened.

int32_t ppl_nf88_quals_r_gain(const PplContext *ctx) { return ctx->nf88_quals_r_gain; }
int32_t ppl_nf88_quals_g_gain(const PplContext *ctx) { return ctx->nf88_quals_g_gain; }
int32_t ppl_nf88_quals_b_gain(const PplContext *ctx) { return ctx->nf88_quals_b_gain; }

uint8_t ppl_set_quals_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b) {
  ctx->nf88_quals_r_gain = r;
  ctx->nf88_quals_g_gain = g;
  ctx->nf88_quals_b_gain = b;
  refresh(ctx, [=](Parameters &params) {
    if (!is_quals_gain(r) || !is_quals_gain(g) || !is_quals_gain(b)) return false;
    write_rgb(quals_pairs(params), r >> 2, g >> 2, b >> 2);
    return true;
  });
  return 0;
}
uint8_t ppl_set_quals_r_gain(PplContext *ctx, int32_t r) {
  ctx->nf88_quals_r_gain = r;
  refresh_quals_gain(ctx, r, write_r);
  return 0;
}
uint8_t ppl_set_quals_g_gain(PplContext *ctx, int32_t g) {
  ctx->nf88_quals_g_gain = g;
  refresh_quals_gain(ctx, g, write_g);
  return 0;
}
uint8_t ppl_set_quals_b_gain(PplContext *ctx, int32_t b) {
  ctx->nf88_quals_b_gain = b;
  refresh_quals_gain(ctx, b, write_b);
  return 0;
}
uint8_t ppl_reset_quals_rgb_gain(PplContext *ctx) {
  return ppl_set_quals_rgb_gain(ctx, 256, 256, 256);
}

// ---- Dekneel tables: kept, read by no kernel

const uint8_t *ppl_r_dekneel_table(const PplContext *ctx) { return ctx->r_dekneel_table.data(); }
const uint8_t *ppl_g_dekneel_table(const PplContext *ctx) { return ctx->g_dekneel_table.data(); }
const uint8_t *ppl_b_dekneel_table(const PplContext *ctx) { return ctx->b_dekneel_table.data(); }

uint8_t ppl_copy_r_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  std::copy_n(table, 256, ctx->r_dekneel_table.begin());
  return 0;
}
uint8_t ppl_copy_g_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  std::copy_n(table, 256, ctx->g_dekneel_table.begin());
  return 0;
}
uint8_t ppl_copy_b_dekneel_table(PplContext *ctx, const uint8_t table[256]) {
  std::copy_n(table, 256, ctx->b_dekneel_table.begin());
  return 0;
}
uint8_t ppl_reset_rgb_dekneel_table(PplContext *ctx) {
  for (ByteTable *table : {&ctx->r_dekneel_table, &ctx->g_dekneel_table, &ctx->b_dekneel_table})
    for (size_t i = 0; i < table->size(); ++i) (*table)[i] = static_cast<uint8_t>(i);
  return 1;
}

// ---- Sensor matrices

uint8_t ppl_sensor_matrix(const PplContext *ctx, int32_t matrices[18]) {
  std::copy(ctx->sensor_matrix.begin(), ctx->sensor_matrix.end(), matrices);
  return 1;
}
uint8_t ppl_copy_sensor_matrix(PplContext *ctx, const int32_t matrices[18]) {
  std::copy_n(matrices, 18, ctx->sensor_matrix.begin());
  return refresh_colour_matrix(ctx);
}
uint8_t ppl_reset_sensor_matrix(PplContext *ctx) {
  // For grey pixels, then for strongly coloured ones; every row sums to 1.0.
  static constexpr int32_t matrices[18] = {177, 88,  -9,  24,  232, -1,  29,  62,   166,
                                           410, -57, -97, -98, 423, -71, -84, -143, 486};
  return ppl_copy_sensor_matrix(ctx, matrices);
}

int32_t ppl_sensor_matrix_index_upper_bound(const PplContext *ctx) {
  return ctx->sensor_matrix_index_upper_bound;
}
uint8_t ppl_set_sensor_matrix_index_upper_bound(PplContext *ctx, int32_t bound) {
  ctx->sensor_matrix_index_upper_bound = bound;
  return refresh_colour_matrix(ctx);
}
uint8_t ppl_reset_sensor_matrix_index_upper_bound(PplContext *ctx) {
  return ppl_set_sensor_matrix_index_upper_bound(ctx, 12);
}

// ---- Mirrors

namespace {

// A save is tried on every call, whether or not the flag changed, though nothing is derived.
uint8_t set_mirror(uint8_t &flag, uint8_t value) {
  flag = value;
  machine::save();
  return 1;
}

}  // namespace

uint8_t ppl_h_mirror(const PplContext *ctx) { return ctx->h_mirror; }
uint8_t ppl_v_mirror(const PplContext *ctx) { return ctx->v_mirror; }
uint8_t ppl_set_h_mirror(PplContext *ctx, uint8_t value) {
  return set_mirror(ctx->h_mirror, value);
}
uint8_t ppl_set_v_mirror(PplContext *ctx, uint8_t value) {
  return set_mirror(ctx->v_mirror, value);
}
uint8_t ppl_reset_mirrors(PplContext *ctx) {
  ppl_set_v_mirror(ctx, 0);
  return ppl_set_h_mirror(ctx, 0);
}

}  // namespace ppl_model
