/*
ppl: a video pipeline for USB cameras


About

  A camera sensor delivers a mosaic: 8-bit samples, each behind a red, a green or a blue filter. ppl
  makes a picture of it in I420, YUYV, UYVY, RGB24 or RGB32: black level, gain, gamma, demosaicing,
  colour correction, scaling, mirrors. Beside the picture it leaves statistics, from which the
  caller steers exposure and white balance.

  All of it is plain synchronous calls on a context. The library allocates nothing, starts no
  thread, opens no file and needs no C runtime: it also links into a kernel-mode driver. Results are
  exact to the byte. What may differ between processors is listed under "Tiers".

  Below are first the rules for all, then the functions by family: contexts, geometry, tier; raw
  frames; controls (front end, filters, gamma, contrast, saturation and hue, statistics bands);
  statistics.


Synopsis

  Raw frames of 640 by 480 on standard input, I420 on standard output:

    #include <ppl.h>
    #include <stdio.h>
    #include <stdlib.h>

    enum { width = 640, height = 480, raw_bytes = width * height, out_bytes = raw_bytes * 3 / 2 };

    int main(void) {
      PplContext *ctx = ppl_init();
      uint8_t *raw = aligned_alloc(16, raw_bytes);
      uint8_t *out = aligned_alloc(16, out_bytes);
      if (!ctx || !raw || !out) return 1;

      ppl_new_frame_size(ctx, width, height, width);  // or the first I420 frame is dropped
      ppl_set_rgb_gain(ctx, 300, 256, 360);           // 8.8 fixed point: 256 is 1.0
      while (fread(raw, 1, raw_bytes, stdin) == raw_bytes) {
        if (!BaylorToI420MMX(ctx, raw, out, width, height)) return 1;
        fwrite(out, 1, out_bytes, stdout);
        const PplTriple *mean = ppl_rgb_means_whole_frame(ctx);  // 8.8 as well
        fprintf(stderr, "mean of green: %u of 255\n", (unsigned)(mean->g >> 8));
      }

      ppl_free(ctx);
      free(out);
      free(raw);
      return 0;
    }


The raw frame

  8 bits a sample, top line first. Even lines hold B and Gb, odd lines Gr and R, from line 0, column
  0 on. Nothing changes that order: for a sensor with another one, start a line or a column later.

                  0    1    2    3          width - 1
               +----+----+----+----+- - -+----+
        line 0 | B  | Gb | B  | Gb |     | Gb |   Gb: green on a line of blue
             1 | Gr | R  | Gr | R  |     | R  |   Gr: green on a line of red
               +----+----+----+----+- - -+----+
             2 | B  | Gb | B  | Gb |     | Gb |   a cell:      B  Gb
             3 | Gr | R  | Gr | R  |     | R  |                Gr R
               +----+----+----+----+- - -+----+   a line pair: lines 2p and 2p + 1

  Line y starts at src + y * stride. The frame has stride * (height - 1) + width bytes.

  The frame is consumed. All qualities but 4 to 9 work in place and leave every sample as it is
  behind black level, gain, delta and gamma (and repair, where ppl_medium_filter_enabled acts). The
  same buffer run twice gives two pictures.

  Sizes (ppl_new_frame_size):

                  at least                                   at most
        width     64, or 128 if the processor has SSE2       1280
        height    13, but not 16                             1024
        stride    the width (a smaller one is taken, but     1280
                  lines then overlap, the picture means
                  nothing, and src needs width * height
                  bytes)

  Every even width and height gives a whole picture. Of an odd width or height the last column or
  line is neither processed nor written, though the sizes below count it. Widths that are a multiple
  of 32 run fastest.


Output formats

  W and H are the width and height of the output, S is W * H. Divisions in this manual truncate.
  Lines follow each other without a gap: there is no padding and no pitch to choose.

    I420    S * 3 / 2 bytes. Three planes, top line first

        dst            +---------------+
                       | Y             |    W by H, a byte a pixel
        dst + S        +-------+-------+
                       | U     |            W/2 by H/2, a byte a cell
        dst + S + S/4  +-------+
                       | V     |            W/2 by H/2
                       +-------+

    YUYV    S * 2 bytes. Top line first; two pixels share U and V

        dst            | Y0 | U0 | Y1 | V0 | Y2 | U2 | Y3 | V2 | ...     line 0
        dst + 2W       | Y0 | U0 | Y1 | V0 | ...                         line 1

    UYVY    S * 2 bytes. Top line first; two pixels share U and V

        dst            | U0 | Y0 | V0 | Y1 | U2 | Y2 | V2 | Y3 | ...     line 0
        dst + 2W       | U0 | Y0 | V0 | Y1 | ...                         line 1

    RGB24   S * 3 bytes. BOTTOM LINE FIRST; a pixel is B, G, R in memory

        dst            | B0 | G0 | R0 | B1 | G1 | R1 | ...               line H - 1
        ...
        dst + 3W(H-1)  | B0 | G0 | R0 | B1 | G1 | R1 | ...               line 0

    RGB32   S * 4 bytes. BOTTOM LINE FIRST; a pixel is B, G, R, 0 in memory

        dst            | B0 | G0 | R0 |  0 | B1 | G1 | R1 |  0 | ...     line H - 1
        ...
        dst + 4W(H-1)  | B0 | G0 | R0 |  0 | B1 | G1 | R1 |  0 | ...     line 0

  Y is 16..235, U and V are 16..240, the studio range of ITU-R BT.601; but what qualities 0, 10 and
  14 sharpen may be 0..255 in Y. R, G and B are 0..255.
  ppl_set_v_mirror turns the order of lines round in every format.


Alignment

        src and dst both    entry functions                     ppl_process_*
        16                  SSE2 tier, if the processor has it  the same
        8                   P3 tier                             the same
        less                the fallback: no picture            P3 tier

  Planes, lines and sizes inside the buffers need no alignment.


How much is read and written

  Nothing beyond a line and nothing beyond a frame: buffers of exactly the sizes above are enough,
  for every size, format, mirror and tier. There are three exceptions. Below, n is width * height of
  the input, and up(x, g) is x rounded up to a multiple of g.

  1. Decimation 2. There is no 4:1 picture. The 2:1 picture is written, width/2 pixels a line where
     W = width/4 is declared, and reaches behind the declared end, never before dst. Enough is

        I420           S * 3 / 2 + n/4 bytes
        YUYV, UYVY     (S + n/4) * 2 bytes
        RGB24          (S + n/4) * 3 bytes
        RGB32          (S + n/4) * 4 bytes

  2. Qualities 4 and 9, the grey copy. It goes in groups of G source bytes, 16 in the P3 tier and 32
     in the SSE2 tier, and the last group is copied whole. Enough for all of it is room for 32 more
     bytes behind src and 64 behind dst. Exactly it takes

        format      decimation    bytes of src    bytes of dst
        I420        0             up(n, G)        S + up(S/2, G/2)
        I420        1             the frame       S + up(S/2, G/2)
        YUYV, UYVY  0             up(n, G)        2 * (S + up(n, G) - n)
        YUYV, UYVY  1             the frame       2 * S + up(width, G) - 2 * W
        RGB24       0             the frame       3 * (S + up(W, 4) - W)
        RGB32       0             the frame       4 * (S + up(W, 4) - W)
        RGB32       1             the frame       4 * (S + up(width, 4) / 2 - W)

  3. The fallbacks of the enlarging entry functions in I420, YUYV and UYVY, which read 4n bytes of
     src, far past the frame. See "Raw frames: entry functions". Those of packed video read as much
     as the output has pixels; see "Packed video".


What a frame call returns

        1    the frame ran. Also where the quality has nothing to do: dst then is as it was
        0    qualities 4 and 9: the grey copy is in dst
        0    the size stopped the frame. src, dst, statistics and ppl_n_frame are as they were
        0    entry functions alone: the fallback is in dst; src and context are as they were

  A size is sticky: it holds until a call brings another width, height or stride. Then

        the new size is         I420, YUYV, UYVY                      RGB24, RGB32
        taken                   drops this frame: 0. The next one     the frame runs
                                of that size runs
        above a limit           the frame runs at the OLD size, and   stops the frame: 0
                                the buffers must hold that
        below the least size    stops the frame: 0                    stops the frame: 0

  A caller that wants its first frame in I420, YUYV or UYVY, too, calls ppl_new_frame_size before
  it. In a context that never took a size no frame runs. The size of the output is not passed: it
  follows from the input's size, decimation and black lines (ppl_set_decimation).


Tiers

  All pixel work exists twice. The P3 tier needs MMX with the integer instructions of SSE (or AMD's
  extensions to MMX) and works in blocks of 8 columns. The SSE2 tier works in blocks of 16. The tier
  is chosen anew for each frame: SSE2 if processor, alignment and ppl_set_P3_only allow. Both give
  the same bytes. What differs is

    - exposure means and counts, and the whole frame's means, unless rgb_gamma_table is the
      identity (ppl_qAE_rgb_means_whole_frame); and histograms (ppl_r_histogram)
    - groups and marker of qualities 4 and 9; quality 13 at decimation -1
    - a block's width at both sides that the medium filter and the chroma of quality 14 leave as it
      is; where quality 12 reads what it has sharpened already; what qualities 10 and 11 leave
      behind (ppl_set_quality)
    - RGB24 in the P3 tier while ppl_mean_collection is on, in quality 3 at decimation 0 and -1 and
      in quality 13 at 1, 2 and -1: from the first sampled block on, in the second line pair, the
      samples of even columns (B and Gr) are lost to the picture, and the whole frame's mean of r
      is that of Gb. Turn ppl_mean_collection off there, or take RGB32.

  Processors without the P3 tier run no frames. The entry functions take their fallbacks there; the
  ppl_process_* functions must not be called.


Contexts and threads

  There are eight contexts, one for each stream, and no locks.

    - One context, one thread at a time. While a frame or a setter runs, nothing else may be called
      on its context, not even a reader.
    - Different contexts may be used at the same time on different threads.
    - Calls of ppl_init and ppl_free must not overlap each other.
    - All contexts share the gamma families (ppl_copy_gamma_tables65x256) and the results of
      ppl_rgb_means_whole_frame_4pts, _central4, _central8 and _central16.

  Pointers are not tested: ctx must come from ppl_init, and only where null is mentioned is it
  allowed.


Floating-point state

  In kernel mode of 32-bit Windows a driver must put MMX and SSE registers away before it uses them.
  Entry functions, setters and geometry functions do so themselves, with KeSaveFloatingPointState
  and KeRestoreFloatingPointState. The ppl_process_* functions do not: in kernel mode call them
  between those two. In user mode there is nothing to do.

  In kernel mode a save may fail. An entry function then takes its fallback. A setter or geometry
  function stores its values and returns 1, but the kernels keep what they had. Setting the value
  again repairs that. (ppl_set_decimation does nothing for the values that it has: set others
  first.) Until then the next pictures stay inside their buffers, but do not rely on them.

  Every function leaves the MMX state clear: x87 code may follow at once.


Numbers

        8.8            names with nf88: 256 is 1.0
        20.12          names with nf20_12: 4096 is 1.0
        sample step    one step of the 8-bit scale 0..255
        flag           a byte; every value but 0 means yes, and its getter returns it as given

  Arithmetic is part of the interface. Where a sum wraps or a quotient truncates, callers may rely
  on it.


Controls

  Any control may change between two frames. The names tell what a function does:

        ppl_x          gets           ppl_set_x    sets
        ppl_get_x      copies out     ppl_copy_x   copies in
                                      ppl_reset_x  sets the default and returns what the setter does

  A setter returns 1 when it has done its work. For a value that it cannot take it returns 0, and
  the words below tell which of two ways it goes:

        refuses           nothing is stored; everything is as it was
        effective range   a value outside is stored and its getter shows it, but the kernels keep
                          the one before. The next value in the range makes both agree again

  (Without the P3 tier there are no kernels to keep anything: values outside return 1.)

  Getters of tables return views: pointers into the context, good until ppl_free. They show every
  later change. Do not write through them.
*/
#ifndef PPL_H
#define PPL_H

#include <stdint.h>

/* Calling convention, the same for every function. */
#if defined(_WIN32)
#define PPL_CALL __cdecl
#else
#define PPL_CALL
#endif

/* On Windows define PPL_IMPORT before the include where ppl is linked as a DLL or driver. */
#if defined(_WIN32) && defined(PPL_IMPORT)
#define PPL_API __declspec(dllimport)
#elif defined(__GNUC__) && !defined(_WIN32)
#define PPL_API __attribute__((visibility("default")))
#else
#define PPL_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One video stream. Eight exist; ppl_init hands them out. */
typedef struct PplContext PplContext;

/* Three channel values, always in this order. Means are 8.8: 256 is one sample step. */
typedef struct PplTriple {
  uint32_t r, g, b;
} PplTriple;

/* ---- Contexts ---- */

/* Takes the first free one of the eight contexts and sets all its controls to their defaults.
   Returns null if all are taken.

   Note: a context that was used before keeps its frame size, its statistics and the count of
   ppl_n_frame. A first I420, YUYV or UYVY frame of that very size therefore is not dropped. */
PPL_API PplContext *PPL_CALL ppl_init(void);

/* Gives a context back. Returns 1, or 0 for null. Once more for the same context does nothing and
   returns 1; but it frees the context of whoever has taken it since. */
PPL_API uint8_t PPL_CALL ppl_free(PplContext *ctx);

/* For the loader of kernel-mode libraries. Does nothing and returns 0: contexts that are still
   taken stay as they are. */
PPL_API int32_t PPL_CALL DllUnload(void);

/* ---- Geometry ---- */

/* Sets the size of the input: width and height in samples and lines, stride in bytes from line to
   line. Frame calls do it themselves when a size changes; see "What a frame call returns".

   The output becomes the input scaled by the decimation in force.

   Refuses a width or stride above 1280, a height above 1024, and sizes too small for the grid of
   statistics: a width below 64 (below 128 if the processor has SSE2, whatever ppl_P3_only says), a
   height of 12 or less, and a height of 16. Without the P3 tier only the upper limits count.
   Returns 1 otherwise.

   Note: the black lines of ppl_set_decimation drop out of the output until that is called with
   other values.
   Note: the stride is part of the size. An entry function with _stride in its name passes twice or
   four times the width, so prepare its first frame with that stride.
   Note: with a stride other than the width take quality 3 or 13. The multi-pass qualities go from
   one line pair to the next by width + stride bytes, and some of their stages from line to line by
   the width. */
PPL_API uint8_t PPL_CALL ppl_new_frame_size(PplContext *ctx, uint32_t width, uint32_t height,
                                            uint32_t stride);

/* Sets input size, decimation and black lines at once, from a pair of sizes; the stride is
   in_width. These pairs are known:

       in             out                        decimation
       1280 by 1024   1280 by 1024               0
       320 by 240     320 by 240                 0
                      160 by 120                 1
       640 by 480     640 by 480                 0
                      1280 by 960                -1
                      320 by 240                 1
                      160 by 120                 2
                      352 by 240, 352 by 288     0
       480 by H       480 by h, h >= H           0     H is 480 or 576; so is h
       704 by H       704 by h, h >= H           0     H is 480 or 576
                      352 by h, h >= H / 2       1
                      176 by h, h >= H / 4       2
       720 by H       720 by h, h >= H           0     H is 480 or 576

   What h has more than the picture is black lines, half of them, rounded down, on top. Refuses all
   other pairs. Returns 1 otherwise.

   Note: 640 by 480 to 352 by 240 or 288 does not scale. The output is 640 by 480.
   Note: where decimation and black lines are those in force already, the output's height ends up
   without the black lines, as after ppl_new_frame_size. */
PPL_API uint8_t PPL_CALL ppl_new_frame_sizes(PplContext *ctx, uint32_t in_width, uint32_t in_height,
                                             uint32_t out_width, uint32_t out_height);

/* Scales the output and frames it with black lines.

       get       ppl_decimation, ppl_decimation_top_black_lines, ppl_decimation_bottom_black_lines
       set       ppl_set_decimation
       reset     ppl_reset_decimation: 0, 0, 0
       range     decimation -1..2; black lines 0 or more, in output lines
       default   0, 0, 0

   The output is out_width by out_height:

       decimation   out_width    out_height
       0            width        height       + top + bottom black lines
       1            width / 2    height / 2   + top + bottom black lines
       2            width / 4    height / 4   + top + bottom black lines
       -1           width * 2    height * 2   + top + bottom black lines

   Refuses a decimation out of range. Black lines are not tested: with fewer than 0 in all, and in
   packed video with fewer than 0 on either side, pictures leave their buffers. Returns 1 otherwise,
   and does nothing else if all three values are the stored ones.

   What a raw frame becomes (avg rounds up at the half; multi-pass qualities are 0, 1, 2, 10, 11, 12
   and 14; for 13 see ppl_set_quality):

       1    Every second pixel of every second line, those at B sites. Nothing is averaged. I420
            takes the chroma of every second cell of every second line pair: pairs 0, 2, 4 in
            quality 3, pairs 1, 3, 5 in the multi-pass ones. YUYV and UYVY take that of the first of
            two cells on every line; if width / 2 is odd, the last pixel of a line has a U alone
            (with ppl_h_mirror a V). YUYV and UYVY gather no statistics in quality 3.
       -1   Averages of finished output values, first along the line from in to out, then between
            output lines from lines m:

            A along    out[2k + 1] = in[k], out[2k] = avg(in[k - 1], in[k]), out[0] = in[0]
            B along    out[2k] = in[k], out[2k + 1] = avg(in[k], in[k + 1]), the last repeats
            C between  2m is line m, 2m + 1 the average of 2m and 2m + 2, the last repeats
            D between  2m + 1 is line m, 2m the average of 2m - 1 and 2m + 1, line 0 repeats line 1

                          quality 3    multi-pass qualities
            I420          A, C         A, C      each plane by itself
            RGB24         A, D         A, C
            YUYV, UYVY    B, C         A, C      chroma of pair m on lines 4m to 4m + 2, its average
                                                 with the next on 4m + 3, the last repeats

            RGB32 has no doubling. Lines stay as long as they are and take half of an output line
            each, line pairs move by 2.5 output lines (by 1.5 with one mirror flag), and the rest of
            the buffer is not written. Take RGB24 to enlarge.
            Note: RGB24 in the multi-pass qualities with exactly one mirror flag moves line pairs by
            two output lines, not four: height + 1 lines are written, and of the source only even
            lines and the last are left.
       2    The lines of 1, twice as long as those of the output, which run into each other. Take 1.
            It needs a larger buffer; see "How much is read and written".

   Black lines of raw frames are room and nothing more: no pass writes them. In I420, YUYV and UYVY
   they are the last lines of each plane, in RGB24 and RGB32 the first lines in memory (the other
   end with ppl_v_mirror), whatever is top and what is bottom.

   Note: ppl_new_frame_size leaves the black lines out of out_height again, and the same three
   values set once more do not bring them back.
   Note: entry functions for raw frames set decimation and black lines anew, the latter to 0. Raw
   frames with black lines or with decimation 2 take ppl_process_blrtoi420 and its sisters. */
PPL_API uint8_t PPL_CALL ppl_set_decimation(PplContext *ctx, int32_t decimation,
                                            int32_t top_black_lines, int32_t bottom_black_lines);
PPL_API int32_t PPL_CALL ppl_decimation(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_decimation_top_black_lines(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_decimation_bottom_black_lines(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_reset_decimation(PplContext *ctx);

/* ---- Tier ---- */

/* Forbids the SSE2 tier, from the next frame on.

       get       ppl_P3_only
       set       ppl_set_P3_only: returns 1
       reset     ppl_reset_P3_only: returns 1
       range     flag, default 0

   Note: it does not lower the least width, which is that of the processor's best tier. */
PPL_API uint8_t PPL_CALL ppl_P3_only(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_P3_only(PplContext *ctx, uint8_t value);
PPL_API uint8_t PPL_CALL ppl_reset_P3_only(PplContext *ctx);

/* ---- Raw frames: entry functions ---- */

/* One raw frame to a picture, five formats by five variants: BaylorTo<format>MMX<variant>. Each
   saves the floating-point state, sets the decimation of its variant without black lines, runs the
   format's driver (ppl_process_blrto<format>) and restores the state.

       ctx             the stream
       src             the raw frame. It is consumed
       dst             the picture; its size follows from the variant
       width, height   of the input, in samples and lines

       variant             decimation   stride       bytes of src           output
       (none)              0            width        n                      width by height
       _deci_2_1           1            width        n                      width/2 by height/2
       _intp_1_2           -1           width        n                      2*width by 2*height
       _intp_1_2_stride    -1           2 * width    width * (2*height-1)   2*width by 2*height
       _intp_1_4_stride    as it is     4 * width    width * (4*height-3)   by that decimation

   n is width * height. The _stride variants read frames whose lines stand two or four widths apart;
   since a stride is at most 1280, their width is at most 640 or 320.

   Returns what the driver returns: 1 for a picture; see "What a frame call returns". The decimation
   stays set.

   Where no picture can be made, dst gets the fallback, so that a stream need not stall: src or dst
   is no multiple of 8, the processor has no P3 tier, or the save failed. The call then returns 0
   and leaves the context alone.

                           plain                 _deci_2_1               the three _intp variants
       I420, YUYV, UYVY    n bytes of src, n/2   n/4 bytes of src, n/8   4n bytes of src, 2n
                           bytes of 128          bytes of 128            bytes of 128
       RGB24               3n bytes of 255       3 * (n/4) of 255        12n bytes of 255
       RGB32               4n bytes of 255       4 * (n/4) of 255        16n bytes of 255

   Note: the enlarging fallbacks read 4n bytes of src. Where a fallback is possible give src that
   room, and dst the room of the doubled picture even for _intp_1_4_stride, which may run at
   another decimation.
   Note: in YUYV and UYVY, too, the fallback has the shape of I420.
   Note: _intp_1_4_stride does not enlarge. It runs at the decimation and with the black lines that
   are in force.
   Note: a new size drops its first frame in I420, YUYV and UYVY, and going from one variant to one
   with another stride is a new size.

   Bytes of dst for a picture, with m = (width/2) * (height/2):

                     plain         _deci_2_1     _intp_1_2, _intp_1_2_stride
       I420          n * 3 / 2     m * 3 / 2     n * 6
       YUYV, UYVY    n * 2         m * 2         n * 8
       RGB24         n * 3         m * 3         n * 12
       RGB32         n * 4         m * 4         n * 16
*/

/* To I420. */
PPL_API uint8_t PPL_CALL BaylorToI420MMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToI420MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToI420MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToI420MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToI420MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);

/* To YUYV. */
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToYUYVMMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);

/* To UYVY. */
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToUYVYMMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                         uint8_t *dst, uint32_t width,
                                                         uint32_t height);

/* To RGB24, bottom line first. */
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                          uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                   uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                   uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                          uint8_t *dst, uint32_t width,
                                                          uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB24MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                          uint8_t *dst, uint32_t width,
                                                          uint32_t height);

/* To RGB32, bottom line first.

   Note: the _intp variants do not enlarge; see ppl_set_decimation. */
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                          uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX_deci_2_1(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                   uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX_intp_1_2(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                   uint32_t width, uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX_intp_1_2_stride(PplContext *ctx, uint8_t *src,
                                                          uint8_t *dst, uint32_t width,
                                                          uint32_t height);
PPL_API uint8_t PPL_CALL BaylorToRGB32MMX_intp_1_4_stride(PplContext *ctx, uint8_t *src,
                                                          uint8_t *dst, uint32_t width,
                                                          uint32_t height);

/* ---- Raw frames: drivers ---- */

/* One raw frame to a picture, at the decimation and with the black lines in force. This is what the
   entry functions run, for callers that hold the floating-point state already:
   ppl_process_blrtoi420, _blrtoyuyv, _blrtouyvy, _blrtorgb24, _blrtorgb32.

       ctx             the stream
       src             the raw frame, stride * (height - 1) + width bytes. It is consumed
       dst             the picture, out_width by out_height (ppl_set_decimation) in the format
       width, height   of the input, in samples and lines
       stride          bytes from line to line of src

   Returns 1 for a picture; see "What a frame call returns". There is no fallback.

   Note: in kernel mode call them only between a successful KeSaveFloatingPointState and its
   KeRestoreFloatingPointState.
   Note: they do not ask whether the processor has the P3 tier. Without it they must not run. */
PPL_API uint8_t PPL_CALL ppl_process_blrtoi420(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                               uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_process_blrtoyuyv(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                               uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_process_blrtouyvy(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                               uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_process_blrtorgb24(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                uint32_t width, uint32_t height, uint32_t stride);
PPL_API uint8_t PPL_CALL ppl_process_blrtorgb32(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                                uint32_t width, uint32_t height, uint32_t stride);

/* ---- Sensor and front end ----

   The way of a sample. Each step is a control below; ppl_set_quality tells the steps that only some
   qualities have.

       black level   s - black, at least 0
       gain          times gain
       delta         plus delta, held to 0..255
       gamma         rgb_gamma_table[s]; the raw frame keeps this value
       demosaic      in quality 3 within the cell: all four pixels take its R and B. Green is Gb and
                     Gr at their own sites, and Ga = (Gb + Gr + 1) / 2 at the sites of B and R
       colour        one 3 by 3 matrix, made of sensor matrix, saturation, hue and contrast. In
                     quality 3, Y and the G of RGB come from each pixel's own green; U, V and the R
                     and B of RGB once a cell, from Ga
       range         Y + 16 to 16..235, U and V + 128 to 16..240; R, G, B to 0..255

   The matrix has 6 fractional bits and its sums wrap in 16 bits. That shows in bright colours once
   the positive or the negative coefficients of a row add up to more than 2.0. */

/* The code of the sensor.

       get       ppl_sensor_type: 0, always
       set       ppl_set_sensor_type: returns 1 for 22356, 22856, 4347471 and 122965837, else 0

   Note: ppl_set_sensor_type judges the code and stores nothing. No kernel asks for it. */
PPL_API int32_t PPL_CALL ppl_sensor_type(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_sensor_type(const PplContext *ctx, int32_t code);

/* Selects the pipeline. It is no scale: a higher number is not a better picture.

       get       ppl_quality
       set       ppl_set_quality: refuses 15 and above
       reset     ppl_reset_quality
       range     0..14, default 3

       quality   picture                              formats             statistics
       0         accurate demosaic, sharpened         all                 all
       1         accurate demosaic                    all                 all
       2         demosaic by averages                 all                 all
       3         demosaic within the cell             all                 all but windows
       4, 9      grey copy of the raw samples         all                 none
       5 to 8    none: dst stays as it is             all                 none
       10        0 with flat areas smoothed           all                 all
       11        1 with flat areas smoothed           all                 all
       12        samples as grey, sharpened           all                 means of windows and frame
       13        samples as grey                      I420, RGB24         means of the frame
       14        green accurate, red and blue by      I420, YUYV, UYVY    all
                 averages; sharpened; chroma
                 smoothed

   Statistics that are not gathered read 0. In a format that it lacks a quality does what 5 does. 4
   to 9 leave the raw frame as it is.

   The steps, in order:

       repair       0, 1, 2, if ppl_medium_filter_enabled
       green        accurate: from the line or the column, whichever changes less, corrected by how
                    the site's own colour changes (ppl_CFA_T1_threshold)
       red, blue    accurate: by their differences to green
       flat areas   10, 11: one colour for a flat cell (ppl_CFA_T0_threshold)
       matrix       the two sensor matrices blended, by how colourful the pixel is. I420, YUYV and
                    UYVY take chroma at B sites
       sharpening   0, 10, 12, 14: luma (ppl_edge_threshold, ppl_nf88_edge_enhance_factor). In 12
                    before the matrix
       chroma       14: 28 / 256 of the sum over 3 by 3 pixels, but for the first line pair
                    and the first and last block

   Off the frame they read reflected pixels.

   0, 10, 12  Note: they sharpen by a relief: what they add follows the slope along one diagonal and
       its sign, and edges along the other diagonal stay as they are.

   0, 1  Note: after a frame of 10 or 11 on the same context and tier they repeat what that frame
       had in the last block of its last lines: the pixels of its flat cells stand in every block of
       the picture. ppl_free and ppl_init do not help; another frame of 10 or 11 whose last block is
       not flat does.

   12  Note: in I420, YUYV and UYVY the sharpening reads luma that is finished already in the line
       above each pair and in the column before each block.

   14  Note: at the right end the sharpening takes, for the first pixel of the last block, the east
       neighbour for the west one as well, and for a line's last pixel the first of the next line
       (of its own on the last).

   13  Black level, gain and delta as in quality 3, then yuv_contrast_gamma_table. No demosaic and
       no matrix: the mosaic shows as a texture on coloured things. In I420 Y is the value + 16, at
       most 235, and U and V are 128; in RGB24 B, G and R are the value. At decimation 1 and 2 the
       B samples alone reach the picture. At -1 the picture of 1 is spread over the doubled buffer,
       in runs of 8 (P3) or 16 (SSE2) pixels with gaps as wide, and most of it is not written. In
       YUYV, UYVY and RGB32 it does as 5 does.
       Note: the table is 16..235 by default, and I420 adds 16 on top: black is 32 there.

   4, 9  The same. Frame calls return 0. s is a sample of src as it came; mirrors are ignored.

                   decimation 0     decimation 1                              else
           I420    s; U, V 128      even columns of even lines; U, V 128      nothing
           YUYV    s, 128           s, 128, even columns of even lines        nothing
           UYVY    128, s           128, s, odd columns of even lines         nothing
           RGB24   s, s, s          nothing                                   nothing
           RGB32   s, s, s, 0       s, s, s, 0, even columns of even lines    nothing

       At decimation 0 the stride is not looked at: lines are width bytes apart.
       In I420 a marker shows that frames keep coming: a block of 255 in the V plane, out_width / 10
       by out_height / 12, that moves through 5 columns and 6 rows, a place a frame. Each tier
       counts for itself. It is there at every decimation, if out_width / 10 is a multiple of 8 (P3)
       or 16 (SSE2). */
PPL_API uint32_t PPL_CALL ppl_quality(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_quality(PplContext *ctx, uint32_t quality);
PPL_API uint8_t PPL_CALL ppl_reset_quality(PplContext *ctx);

/* Whether frames gather statistics. Off, all of them read 0 after a frame.

       get       ppl_mean_collection
       set       ppl_set_mean_collection: returns 1
       reset     ppl_reset_mean_collection: returns 1
       range     flag, default 1

   Note: in the P3 tier it spoils RGB24; see "Tiers". */
PPL_API uint8_t PPL_CALL ppl_mean_collection(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_mean_collection(PplContext *ctx, uint8_t value);
PPL_API uint8_t PPL_CALL ppl_reset_mean_collection(PplContext *ctx);

/* The black level of each mosaic position, subtracted first.

       get       ppl_optical_black_b_gb_gr_r: writes all four, returns that of R
       set       ppl_set_optical_black_b_gb_gr_r
       reset     ppl_reset_optical_black_b_gb_gr_r
       unit      sample steps; effective range 0..255, all four or none
       default   0 each

   A sample below its black level becomes 0. The getter's pointers may not be null. */
PPL_API uint32_t PPL_CALL ppl_optical_black_b_gb_gr_r(const PplContext *ctx, uint32_t *b,
                                                      uint32_t *gb, uint32_t *gr, uint32_t *r);
PPL_API uint8_t PPL_CALL ppl_set_optical_black_b_gb_gr_r(PplContext *ctx, uint32_t b, uint32_t gb,
                                                         uint32_t gr, uint32_t r);
PPL_API uint8_t PPL_CALL ppl_reset_optical_black_b_gb_gr_r(PplContext *ctx);

/* Offsets, added after the gain. Both greens take g.

       get       ppl_r_delta, ppl_g_delta, ppl_b_delta
       set       ppl_set_rgb_delta, ppl_set_r_delta, ppl_set_g_delta, ppl_set_b_delta
       reset     ppl_reset_rgb_delta
       unit      sample steps; effective range -32768..32767
       default   0 each

   The sum wraps in 16 bits and then is held to 0..255. The setter of all three stores all and takes
   effect for all or none; the others look at their own channel alone. */
PPL_API int32_t PPL_CALL ppl_r_delta(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_g_delta(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_b_delta(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_rgb_delta(PplContext *ctx, int32_t r, int32_t g, int32_t b);
PPL_API uint8_t PPL_CALL ppl_set_r_delta(PplContext *ctx, int32_t r);
PPL_API uint8_t PPL_CALL ppl_set_g_delta(PplContext *ctx, int32_t g);
PPL_API uint8_t PPL_CALL ppl_set_b_delta(PplContext *ctx, int32_t b);
PPL_API uint8_t PPL_CALL ppl_reset_rgb_delta(PplContext *ctx);

/* Gains. Both greens take g.

       get       ppl_nf88_r_gain, ppl_nf88_g_gain, ppl_nf88_b_gain
       set       ppl_set_rgb_gain, ppl_set_r_gain, ppl_set_g_gain, ppl_set_b_gain
       reset     ppl_reset_rgb_gain
       unit      8.8; effective range 0..2047, which is just below 8.0
       default   256 each

   Setters of all three and of one: as for the deltas.

   Note: the low three bits count for nothing. The kernels use gain / 8 with 5 fractional bits, so
   256 to 263 are 1.0 alike and a gain below 8 is 0. */
PPL_API int32_t PPL_CALL ppl_nf88_r_gain(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_g_gain(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_b_gain(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b);
PPL_API uint8_t PPL_CALL ppl_set_r_gain(PplContext *ctx, int32_t r);
PPL_API uint8_t PPL_CALL ppl_set_g_gain(PplContext *ctx, int32_t g);
PPL_API uint8_t PPL_CALL ppl_set_b_gain(PplContext *ctx, int32_t b);
PPL_API uint8_t PPL_CALL ppl_reset_rgb_gain(PplContext *ctx);

/* A table of 256 bytes for each channel, kept for its owner.

       get       ppl_r_dekneel_table, ppl_g_dekneel_table, ppl_b_dekneel_table: views
       set       ppl_copy_r_dekneel_table, ppl_copy_g_dekneel_table, ppl_copy_b_dekneel_table:
                 always work and always return 0
       reset     ppl_reset_rgb_dekneel_table: returns 1
       default   entry i is i

   Note: no kernel looks anything up in them. The curve of raw frames is rgb_gamma_table.
   Note: 0 from the copying functions is no failure. */
PPL_API const uint8_t *PPL_CALL ppl_r_dekneel_table(const PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_g_dekneel_table(const PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_b_dekneel_table(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_copy_r_dekneel_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_copy_g_dekneel_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_copy_b_dekneel_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_reset_rgb_dekneel_table(PplContext *ctx);

/* The colours of the sensor: two 3 by 3 matrices from its R, G, B to true R, G, B.

       get       ppl_sensor_matrix: copies out, returns 1
       set       ppl_copy_sensor_matrix: takes any values
       reset     ppl_reset_sensor_matrix
       layout    18 values: matrix 0, then matrix 1, each row by row; rows and columns R, G, B
       unit      8.8

       default   matrix 0               matrix 1
                 177   88   -9          410  -57  -97
                  24  232   -1          -98  423  -71
                  29   62  166          -84 -143  486

   Matrix 0 is for grey pixels, matrix 1 for coloured ones. Rows add up to about 256, so that grey
   stays grey. Quality 3 uses matrix 1 for every pixel, quality 12 matrix 0, and 13 none.

   Note: once saturation, hue and contrast are in, coefficients wrap outside -512.0..512.0 and are
   held at the ends of that range from +-1024.0 on. */
PPL_API uint8_t PPL_CALL ppl_sensor_matrix(const PplContext *ctx, int32_t matrices[18]);
PPL_API uint8_t PPL_CALL ppl_copy_sensor_matrix(PplContext *ctx, const int32_t matrices[18]);
PPL_API uint8_t PPL_CALL ppl_reset_sensor_matrix(PplContext *ctx);

/* How colourful a pixel must be for matrix 1 to count fully. Below it the coefficients lie between
   the two matrices, in proportion.

       get       ppl_sensor_matrix_index_upper_bound
       set       ppl_set_sensor_matrix_index_upper_bound: takes any value
       reset     ppl_reset_sensor_matrix_index_upper_bound
       unit      (|R - G| + |G - B| + |B - R|) / 4 in sample steps
       default   12

   For qualities 0, 1, 2, 10, 11 and 14.

   Note: 0 is kept and works like 1. */
PPL_API int32_t PPL_CALL ppl_sensor_matrix_index_upper_bound(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_sensor_matrix_index_upper_bound(PplContext *ctx, int32_t bound);
PPL_API uint8_t PPL_CALL ppl_reset_sensor_matrix_index_upper_bound(PplContext *ctx);

/* Mirrors: h exchanges left and right, v top and bottom.

       get       ppl_h_mirror, ppl_v_mirror
       set       ppl_set_h_mirror, ppl_set_v_mirror: return 1
       reset     ppl_reset_mirrors: both off, returns 1
       range     flags, default 0

   With v, RGB24 and RGB32 stand top line first in memory. Pixel pairs of YUYV and UYVY keep their
   order of U and V.

   Note: with both mirrors, I420 at decimation 0 in quality 3 writes its chroma a line too early.
   The first line of U falls on the last W/2 bytes of the Y plane, the first line of V on the last
   line of U, and the last line of V stays as it was. So the picture has a wrong half line of luma,
   its colours sit one chroma line off, and V ends in what the buffer held before. With one mirror,
   at other decimations, in quality 13 and in the other formats chroma is in its place.
   Note: qualities 4 and 9 ignore the mirrors. */
PPL_API uint8_t PPL_CALL ppl_h_mirror(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_v_mirror(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_h_mirror(PplContext *ctx, uint8_t value);
PPL_API uint8_t PPL_CALL ppl_set_v_mirror(PplContext *ctx, uint8_t value);
PPL_API uint8_t PPL_CALL ppl_reset_mirrors(PplContext *ctx);

/* ---- Filter thresholds ----

   Of the multi-pass qualities and of interlaced video. "Summed" thresholds are compared with sums
   of differences, so their limits are multiples of 255. */

/* The medium filter of qualities 0, 1 and 2 repairs hot and dead pixels: it compares a sample,
   behind gamma, with its four nearest of the same colour and puts the second smallest of them in
   its place. The first and last two lines and the first and last 8 (P3) or 16 (SSE2) columns stay
   as they are.

   The difference threshold.

       get       ppl_medium_filter_diff_threshold
       set       ppl_set_medium_filter_diff_threshold
       reset     ppl_reset_medium_filter
       unit      sample steps; takes any value; default 24

   Note: it reaches no kernel. Its setter brings the hot pixel threshold up to date instead, from
   the stored one, and returns 0 if that is out of its effective range. */
PPL_API int32_t PPL_CALL ppl_medium_filter_diff_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_medium_filter_diff_threshold(PplContext *ctx, int32_t value);

/* Levels: hot is a sample above the hot threshold and above the percentage of its neighbours' sum,
   dead is one below both.

       get       ppl_medium_filter_hot_pixel_threshold, ppl_medium_filter_dead_pixel_threshold
       set       ppl_set_medium_filter_hot_pixel_threshold,
                 ppl_set_medium_filter_dead_pixel_threshold
       reset     ppl_reset_medium_filter
       unit      sample steps; effective range -32768..32767
       default   240 and 16 */
PPL_API int32_t PPL_CALL ppl_medium_filter_hot_pixel_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_medium_filter_hot_pixel_threshold(PplContext *ctx, int32_t value);
PPL_API int32_t PPL_CALL ppl_medium_filter_dead_pixel_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_medium_filter_dead_pixel_threshold(PplContext *ctx, int32_t value);

/* Percentages: the factors that the sum of the four neighbours is multiplied by. 64 is their mean.

       get       ppl_nf88_medium_filter_hot_pixel_threshold_percentage,
                 ppl_nf88_medium_filter_dead_pixel_threshold_percentage
       set       ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage,
                 ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage
       reset     ppl_reset_medium_filter
       unit      8.8, in steps of 4; effective range -65536..65535
       default   80 (0.3125: 1.25 of the mean) and 48 (0.1875: 0.75 of the mean)

   Note: the product wraps in 16 bits. From 132 on bright surroundings can reach that. */
PPL_API int32_t PPL_CALL
ppl_nf88_medium_filter_hot_pixel_threshold_percentage(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_nf88_medium_filter_hot_pixel_threshold_percentage(PplContext *ctx,
                                                                                   int32_t value);
PPL_API int32_t PPL_CALL
ppl_nf88_medium_filter_dead_pixel_threshold_percentage(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_nf88_medium_filter_dead_pixel_threshold_percentage(PplContext *ctx,
                                                                                    int32_t value);

/* Turns the medium filter on and off.

       get       ppl_medium_filter_enabled: 1 or 0, default 0
       set       ppl_enable_medium_filter, ppl_disable_medium_filter: return 1
       reset     ppl_reset_medium_filter: off, and all five values above to their defaults;
                 returns 1 */
PPL_API uint8_t PPL_CALL ppl_medium_filter_enabled(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_enable_medium_filter(PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_disable_medium_filter(PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_reset_medium_filter(PplContext *ctx);

/* What qualities 0, 10, 12 and 14 sharpen: pixels whose summed differences to their neighbours are
   above edge_threshold and below edge_threshold2. What is weaker counts as noise, what is stronger
   is sharp enough.

       get       ppl_edge_threshold, ppl_edge_threshold2
       set       ppl_set_edge_threshold, ppl_set_edge_threshold2: refuse what is out of range
       reset     ppl_reset_edge_threshold, ppl_reset_edge_threshold2
       unit      summed sample steps, 0..1530 (6 * 255)
       default   100 and 1530 */
PPL_API int32_t PPL_CALL ppl_edge_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_edge_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_edge_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_edge_threshold2(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_edge_threshold2(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_edge_threshold2(PplContext *ctx);

/* How much they sharpen. At 0 luma stays as it is.

       get       ppl_nf88_edge_enhance_factor
       set       ppl_set_nf88_edge_enhance_factor: refuses what is out of range
       reset     ppl_reset_nf88_edge_enhance_factor
       unit      8.8 in steps of 4, 0..256
       default   32 (0.125)

   Note: the product of edge and factor wraps in 16 bits. From 88 on strong edges can reach that. */
PPL_API int32_t PPL_CALL ppl_nf88_edge_enhance_factor(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_nf88_edge_enhance_factor(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_nf88_edge_enhance_factor(PplContext *ctx);

/* Noise filter thresholds: twelve differences of green, eight of red, eight of blue.

       get       ppl_noise_filter_G_12T_threshold, ppl_noise_filter_R_8T_threshold,
                 ppl_noise_filter_B_8T_threshold
       set       ppl_set_noise_filter_G_12T_threshold, ppl_set_noise_filter_R_8T_threshold,
                 ppl_set_noise_filter_B_8T_threshold: refuse what is out of range
       reset     ppl_reset_noise_filter_G_12T_threshold, ppl_reset_noise_filter_R_8T_threshold,
                 ppl_reset_noise_filter_B_8T_threshold
       unit      summed sample steps: 0..3060 (12 * 255), 0..2040 (8 * 255), 0..2040
       default   60, 40, 40

   Note: no quality has a filter that reads them. Flat areas go by ppl_CFA_T0_threshold. */
PPL_API int32_t PPL_CALL ppl_noise_filter_G_12T_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_noise_filter_G_12T_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_noise_filter_G_12T_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_noise_filter_R_8T_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_noise_filter_R_8T_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_noise_filter_R_8T_threshold(PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_noise_filter_B_8T_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_noise_filter_B_8T_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_noise_filter_B_8T_threshold(PplContext *ctx);

/* Flat areas of qualities 10 and 11: a cell whose twelve differences of neighbouring greens all
   stay within this gets one smoothed colour.

       get       ppl_CFA_T0_threshold
       set       ppl_set_CFA_T0_threshold: refuses what is out of range
       reset     ppl_reset_CFA_T0_threshold
       unit      sample steps, 0..255, default 10. At 255 every cell is flat */
PPL_API int32_t PPL_CALL ppl_CFA_T0_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_CFA_T0_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_CFA_T0_threshold(PplContext *ctx);

/* Direction of green in qualities 0, 1, 10, 11 and 14: along the smaller gradient where one of the
   two is above this and the other below it, and both ways elsewhere.

       get       ppl_CFA_T1_threshold
       set       ppl_set_CFA_T1_threshold: refuses what is out of range
       reset     ppl_reset_CFA_T1_threshold
       unit      sample steps, 0..63, default 15. At 0 no site has a direction */
PPL_API int32_t PPL_CALL ppl_CFA_T1_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_CFA_T1_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_CFA_T1_threshold(PplContext *ctx);

/* Motion between the two fields of interlaced video. Raw frames do not use it.

       get       ppl_intl_3T_threshold
       set       ppl_set_intl_3T_threshold: refuses what is out of range
       reset     ppl_reset_intl_3T_threshold
       unit      summed sample steps, 0..765 (3 * 255), default 50 */
PPL_API int32_t PPL_CALL ppl_intl_3T_threshold(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_intl_3T_threshold(PplContext *ctx, int32_t value);
PPL_API uint8_t PPL_CALL ppl_reset_intl_3T_threshold(PplContext *ctx);

/* ---- Gamma ----

   A gamma curve is a table from byte to byte. Every context has two: rgb_gamma_table, which every
   sample of a raw frame goes through before the demosaic, and yuv_gamma_table, which with the
   contrast curve serves quality 13 in its place. Both come from families of 65 curves, or from the
   caller.

   Curve k of -32..32 has the form of the transfer of ITU-R BT.709, a power with a linear toe:

       f(t) = s * t                      for t < 0.018
       f(t) = (1 + a) * t^g - a          from there on, with g = 0.45 * exp(-3k / 64)

   where a depends on k (0.0993 at 0) and s makes the two parts meet. k = 0 is the curve of BT.709
   itself, with s = 4.5. A smaller k is darker, a larger one brighter.

       k      exponent g    nf20_12_gamma
       -32    2.017         8260
       -17    0.998         4089             the identity
       0      0.45          1843             default
       32     0.100         411

   Entry x of the full-range family is floor(256 * f(x / 256)), held to 0..255. In the studio family
   it is 16 + floor(220 * f((x - 16) / 220)), held to 16..235, and 16 for x below 16. */

/* Takes curve `index` into both tables of the context: rgb from the full-range family, yuv from the
   studio family.

       set       ppl_set_gamma: refuses what is out of range
       reset     ppl_reset_gamma
       range     -32..32, default 0 */
PPL_API uint8_t PPL_CALL ppl_set_gamma(PplContext *ctx, int32_t index);
PPL_API uint8_t PPL_CALL ppl_reset_gamma(PplContext *ctx);

/* Returns the exponent of the curve in use, 20.12, or 0 after a table was copied in. min_index and
   max_index receive -32 and 32, reserved receives 0; each may be null. The index itself is not
   kept. */
PPL_API int32_t PPL_CALL ppl_nf20_12_gamma(const PplContext *ctx, int32_t *reserved,
                                           int32_t *min_index, int32_t *max_index);

/* The two tables of a context, 256 bytes each.

       get       ppl_yuv_gamma_table, ppl_rgb_gamma_table: views
                 ppl_get_yuv_gamma_table, ppl_get_rgb_gamma_table: copy out, return 1
       set       ppl_copy_yuv_gamma_table, ppl_copy_rgb_gamma_table: take any bytes, return 1
       reset     ppl_reset_gamma

   Note: copying in one table makes ppl_nf20_12_gamma 0, though the other may be of a family. */
PPL_API const uint8_t *PPL_CALL ppl_yuv_gamma_table(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_copy_yuv_gamma_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_get_yuv_gamma_table(const PplContext *ctx, uint8_t table[256]);
PPL_API const uint8_t *PPL_CALL ppl_rgb_gamma_table(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_copy_rgb_gamma_table(PplContext *ctx, const uint8_t table[256]);
PPL_API uint8_t PPL_CALL ppl_get_rgb_gamma_table(const PplContext *ctx, uint8_t table[256]);

/* The families: 65 tables of 256 bytes, that of index k from byte (k + 32) * 256 on.
   gamma_tables65x256 is the full-range one, gamma_tables65x256_16_235 the studio one.

       get       ppl_get_gamma_tables65x256, ppl_get_gamma_tables65x256_16_235: copy out, return 1
       set       ppl_copy_gamma_tables65x256, ppl_copy_gamma_tables65x256_16_235: take any bytes,
                 return 1

   Note: the families belong to the process. ctx is not looked at and may be null. No context's
   tables change until its next ppl_set_gamma, and no reset brings the first families back.
   Note: a copy into a family must not run beside any ppl_set_gamma, ppl_reset_gamma,
   ppl_reset_all_controls or ppl_init, whatever the context. */
PPL_API uint8_t PPL_CALL ppl_copy_gamma_tables65x256(PplContext *ctx,
                                                     const uint8_t tables[65 * 256]);
PPL_API uint8_t PPL_CALL ppl_get_gamma_tables65x256(const PplContext *ctx,
                                                    uint8_t tables[65 * 256]);
PPL_API uint8_t PPL_CALL ppl_copy_gamma_tables65x256_16_235(PplContext *ctx,
                                                            const uint8_t tables[65 * 256]);
PPL_API uint8_t PPL_CALL ppl_get_gamma_tables65x256_16_235(const PplContext *ctx,
                                                           uint8_t tables[65 * 256]);

/* ---- Contrast ----

   Contrast works in two places. In quality 13 it is a curve of 256 bytes in front of the gamma
   table. In the others it is a gain of luma in the colour matrix, around 128 in RGB and around 144
   in Y, which has 16 on top.

       table                          is                                      read by
       contrast_table                 the curve                               no kernel
       yuv_contrast_gamma_table       yuv_gamma_table[contrast_table[i]]      quality 13
       rgb_contrast_gamma_table       rgb_gamma_table[contrast_table[i]]      no kernel */

/* Sets both, the gain and the curve.

       set       ppl_set_contrast_c: refuses what is out of range
       reset     ppl_reset_contrast
       range     c -127..127, default 0

       c         gain of luma        curve
       > 0       1 + 2c / 256        0 up to c, straight from (c, 0) to (255 - c, 255), then 255
       0         1                   entry i is i
       < 0       1 + c / 256         straight from (0, -c) to (255, 255 + c)

   Slopes are rounded down, so entries may lie one below their line. x and y receive what the curve
   was built from, (c, 0) or (0, -c), and nothing if c is refused; each may be null. There is no
   getter for c.

   Note: the gain is twice as steep above 0 as below: from 129/256 at -127 to 510/256 at 127. */
PPL_API uint8_t PPL_CALL ppl_set_contrast_c(PplContext *ctx, int32_t c, int32_t *x, int32_t *y);

/* Sets the curve alone, from two values: straight lines through (0, 0), (x, y), (255 - x, 255 - y)
   and (255, 255), or, if x is 0, from (0, y) to (255, 255 - y).

       set       ppl_set_contrast_xy: refuses an x above 127; y is not tested
       reset     ppl_reset_contrast: x, y and c to 0
       unit      sample steps, default 0, 0

   Note: the gain of luma stays that of the last ppl_set_contrast_c.
   Note: entries keep their low 8 bits, so a y above 255 wraps. */
PPL_API uint8_t PPL_CALL ppl_set_contrast_xy(PplContext *ctx, uint32_t x, uint32_t y);
PPL_API uint8_t PPL_CALL ppl_reset_contrast(PplContext *ctx);

/* The three tables above, 256 bytes each.

       get       ppl_contrast_table, ppl_yuv_contrast_gamma_table, ppl_rgb_contrast_gamma_table:
                 views
       set       ppl_copy_contrast_table: takes any bytes, returns 1
       reset     ppl_reset_contrast

   The two products follow every change of their parts. A curve copied in leaves the gain of luma
   alone. */
PPL_API const uint8_t *PPL_CALL ppl_contrast_table(const PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_yuv_contrast_gamma_table(const PplContext *ctx);
PPL_API const uint8_t *PPL_CALL ppl_rgb_contrast_gamma_table(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_copy_contrast_table(PplContext *ctx, const uint8_t table[256]);

/* ---- Saturation and hue ---- */

/* Scales and turns the plane of U and V, in every format; RGB goes through it and back.

       get       ppl_nf88_sat, ppl_hue_degree
       set       ppl_set_sat_hue, ppl_set_sat, ppl_set_hue: refuse a saturation above 512
       reset     ppl_reset_sat_hue
       unit      saturation 8.8, 0..512: 0 is grey, 256 neutral. Hue in degrees, any value;
                 kept, and returned, as 0..359
       default   256, 0

   A hue of h turns U by h degrees towards V. Sines come from a table of whole degrees with 12
   fractional bits, rounded down.

   The matrices are those of ITU-R BT.601 with 12 fractional bits: luma weighs R, G, B by 0.299,
   0.587, 0.114. In the studio form luma spans 219 steps and chroma 224; in the full form both are
   larger by 255 / 219. Neutral, rounded to 256ths, they are

       studio   Y    66  129   25      full   Y    77  150   29
                U   -38  -74  112             U   -44  -87  131
                V   112  -94  -18             V   131 -110  -21

   Y, U, V formats take the studio form (with 16 and 128 added), RGB formats the full form and its
   inverse.

   Note: a refused saturation drops the hue of the call as well.
   Note: in quality 3 with the default sensor matrix the sums of RGB24 and RGB32 can wrap from a
   saturation of 271 on: a full blue turns black. Those of Y, U and V never do. */
PPL_API uint8_t PPL_CALL ppl_set_sat_hue(PplContext *ctx, uint32_t nf88_sat, int32_t hue_degree);
PPL_API uint8_t PPL_CALL ppl_set_sat(PplContext *ctx, uint32_t nf88_sat);
PPL_API uint8_t PPL_CALL ppl_set_hue(PplContext *ctx, int32_t hue_degree);
PPL_API uint32_t PPL_CALL ppl_nf88_sat(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_hue_degree(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_reset_sat_hue(PplContext *ctx);

/* ---- Statistics bands ----

   Which of the sampled cells count. Bands include both their ends. They change the statistics of
   later frames; those that are there stay. */

/* A cell qualifies for white balance if it is near grey. Its differences must lie in four bands,
   B, Gb, Gr and R being its samples after black level:

       band               of                            default
       BmGb               B - Gb                        -25..25
       GrmR               Gr - R                        -25..25
       BmGb_p_GrmR        (B - Gb) + (Gr - R)           -30..30
       BmGb_m_GrmR        (B - Gb) - (Gr - R)           -30..30

       get       ppl_qual_BmGb_min, ppl_qual_BmGb_max, ppl_qual_GrmR_min, ppl_qual_GrmR_max,
                 ppl_qual_BmGb_p_GrmR_min, ppl_qual_BmGb_p_GrmR_max, ppl_qual_BmGb_m_GrmR_min,
                 ppl_qual_BmGb_m_GrmR_max
       set       ppl_set_qual_BmGb_min_max, ppl_set_qual_GrmR_min_max,
                 ppl_set_qual_BmGb_p_GrmR_min_max, ppl_set_qual_BmGb_m_GrmR_min_max: refuse min
                 above max
       reset     ppl_reset_qual_min_max
       unit      sample steps; effective range -32767..32766 */
PPL_API int32_t PPL_CALL ppl_qual_BmGb_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_BmGb_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_GrmR_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_GrmR_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_GrmR_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_p_GrmR_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_p_GrmR_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_BmGb_p_GrmR_min_max(PplContext *ctx, int32_t min,
                                                          int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_m_GrmR_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_BmGb_m_GrmR_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_BmGb_m_GrmR_min_max(PplContext *ctx, int32_t min,
                                                          int32_t max);

/* And its samples after black level must lie in three bands: R, G (Gb and Gr both), B.

       get       ppl_qual_R_min, ppl_qual_R_max, ppl_qual_G_min, ppl_qual_G_max, ppl_qual_B_min,
                 ppl_qual_B_max
       set       ppl_set_qual_R_min_max, ppl_set_qual_G_min_max, ppl_set_qual_B_min_max;
                 ppl_set_qual_RGB_min_max sets all three or, with one bad band, none
       reset     ppl_reset_qual_min_max: these and the four above
       unit      sample steps. Refuse all but 0 <= min <= max <= 255
       default   0..255 each */
PPL_API int32_t PPL_CALL ppl_qual_R_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_R_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_R_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_G_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_G_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_G_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API int32_t PPL_CALL ppl_qual_B_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qual_B_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qual_B_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API uint8_t PPL_CALL ppl_set_qual_RGB_min_max(PplContext *ctx, int32_t r_min, int32_t r_max,
                                                  int32_t g_min, int32_t g_max, int32_t b_min,
                                                  int32_t b_max);
PPL_API uint8_t PPL_CALL ppl_reset_qual_min_max(PplContext *ctx);

/* The band of exposure. A cell is outside if all its four samples lie below the band, or all above
   it. One sample inside, or samples on both sides, make the cell count.

       get       ppl_qAE_RGB_min, ppl_qAE_RGB_max
       set       ppl_set_qAE_RGB_min_max
       reset     ppl_reset_qAE_min_max
       unit      sample steps. Refuses all but 0 <= min <= max <= 255
       default   0..255: every cell counts */
PPL_API int32_t PPL_CALL ppl_qAE_RGB_min(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_qAE_RGB_max(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_qAE_RGB_min_max(PplContext *ctx, int32_t min, int32_t max);
PPL_API uint8_t PPL_CALL ppl_reset_qAE_min_max(PplContext *ctx);

/* Gains kept beside the bands.

       get       ppl_nf88_quals_r_gain, ppl_nf88_quals_g_gain, ppl_nf88_quals_b_gain
       set       ppl_set_quals_rgb_gain, ppl_set_quals_r_gain, ppl_set_quals_g_gain,
                 ppl_set_quals_b_gain: store any value and always return 0
       reset     ppl_reset_quals_rgb_gain: returns 0, too
       unit      8.8; effective range 0..1023
       default   256 each

   Note: nothing reads them but their getters, and 0 is no failure. */
PPL_API int32_t PPL_CALL ppl_nf88_quals_r_gain(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_quals_g_gain(const PplContext *ctx);
PPL_API int32_t PPL_CALL ppl_nf88_quals_b_gain(const PplContext *ctx);
PPL_API uint8_t PPL_CALL ppl_set_quals_rgb_gain(PplContext *ctx, int32_t r, int32_t g, int32_t b);
PPL_API uint8_t PPL_CALL ppl_set_quals_r_gain(PplContext *ctx, int32_t r);
PPL_API uint8_t PPL_CALL ppl_set_quals_g_gain(PplContext *ctx, int32_t g);
PPL_API uint8_t PPL_CALL ppl_set_quals_b_gain(PplContext *ctx, int32_t b);
PPL_API uint8_t PPL_CALL ppl_reset_quals_rgb_gain(PplContext *ctx);

/* ---- All controls ---- */

/* Sets every control of the context to its default, decimation and black lines included. Returns 1.

   Note: frame size, statistics, ppl_n_frame and the gamma families of the process stay. */
PPL_API uint8_t PPL_CALL ppl_reset_all_controls(PplContext *ctx);

/* ---- Statistics ----

   What the last raw frame left. Every frame that runs clears all of it first; a frame that its size
   stopped, or a fallback, leaves the results of the one before.

   One cell in four is sampled: those at columns 2, 6, 10 and so on of every second line pair, from
   pair 1 on in qualities 3 and 13, width * height / 16 in all. The multi-pass qualities leave out
   some blocks and line pairs along the frame's edges and scale for it, not quite exactly: a flat
   frame of 320 by 240 reads 3 percent high in quality 0 and up to 12 percent low in quality 12.

   Means are 8.8; those of g are over both greens.

   Pointers lead into the context, but for ppl_rgb_means_whole_frame_4pts and _central4, _central8
   and _central16. They are good until ppl_free, and the next frame changes what they show. */

/* The grid of windows over the frame: 8 columns by 6 rows. Returns 48. columns and rows receive 8
   and 6 and may not be null; ctx is not looked at. */
PPL_API int32_t PPL_CALL ppl_n_sub_windows(const PplContext *ctx, uint32_t *columns,
                                           uint32_t *rows);

/* The windows. Those cut the frame into 8 by 6 equal parts from its top left corner, in units of 8
   (P3) or 16 (SSE2) columns and of 2 lines. What is left over at the right and at the bottom is
   outside. A cell may count for a window next to its own: the window is that of a place up to three
   blocks further left and three line pairs further up.

       ppl_rgb_means_sub_windows               the mean of each: 48 triples, row by row
       ppl_rgb_means_outside_all_sub_windows   what is outside, scaled as if it were one window: a
                                               mean only if it happens to be as large as one
       ppl_rgb_means_all_sub_windows           the mean of the 48 means, a shade low: it multiplies
                                               by 341 / 16384 in place of 1 / 48

   Note: qualities 3 and 13 gather no windows. All of these are 0 then.
   Note: windows do not hold equal numbers of sampled cells, and their scale does not allow for
   that. On a flat frame of 640 by 480 they read from 0.4 to 1.4 of its level in quality 0. The
   factors follow from size, quality, filter and tier alone: divide by what a flat frame reads.
   Note: where the processor has SSE2, both tiers scale for the grid of SSE2. At a width that is no
   multiple of 128 the means of the P3 tier are off by that. */
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_sub_windows(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_outside_all_sub_windows(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_all_sub_windows(const PplContext *ctx);

/* The mean of the whole frame, rounded: in qualities 3 and 13, 256 * v on a frame whose samples all
   are v behind gain, if gamma is the identity.

   Note: half of the sampled cells are seen after gain, delta and gamma, the other half after gain
   and delta alone: of two blocks of 8 (P3) or 16 (SSE2) columns the left one has passed the curve,
   which is rgb_gamma_table, or yuv_contrast_gamma_table in quality 13.
   Note: qualities 3 and 13 count a quarter of the frame's cells as sampled. Where width or height
   is no multiple of 4, fewer are, and the mean is low by what is missing. */
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame(const PplContext *ctx);

/* The centre of the frame, from the windows' means:

       ppl_rgb_means_whole_frame_4pts        the mean of the four central windows
       ppl_rgb_means_whole_frame_central4    all 48 windows, those at the frame's edge once, the
       ppl_rgb_means_whole_frame_central8    twenty around the centre twice, and the four central
       ppl_rgb_means_whole_frame_central16   ones 4, 8 or 16 times

   In quality 3 each returns what ppl_rgb_means_whole_frame returns.

   Note: the quality that counts is the one set at the time of the call, not the frame's.
   Note: after quality 13 they read 0, for want of windows.
   Note: in other qualities the result belongs to the process. It stays good for ever, and the next
   call of the same reader on any context overwrites it: copy it first, and do not call one of them
   on two threads at once. */
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_4pts(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central4(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central8(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_rgb_means_whole_frame_central16(const PplContext *ctx);

/* Means over the sampled cells that count:

       ppl_qAE_rgb_means_whole_frame     those in the band of exposure, half of them before and half
                                         after gamma, as in ppl_rgb_means_whole_frame
       ppl_qual_rgb_means_whole_frame    those that qualify as near grey, after black level and
                                         before gain

   Rounded. 0 if no cell counts, and after qualities 12 and 13.

   Note: in the multi-pass qualities the first sampled block of a line judges, in place of its left
   neighbour, a block of an earlier line pair or, at first, of the frame before. So what qualifies
   as near grey, histograms included, depends a little on the frame before. */
PPL_API const PplTriple *PPL_CALL ppl_qAE_rgb_means_whole_frame(const PplContext *ctx);
PPL_API const PplTriple *PPL_CALL ppl_qual_rgb_means_whole_frame(const PplContext *ctx);

/* How many cells count, scaled from the sampled ones to the whole frame (in quality 3 by 4). The
   frame has width * height / 4 cells. 0 after qualities 12 and 13. */
PPL_API uint32_t PPL_CALL ppl_n_qAE_2x2_whole_frame(const PplContext *ctx);
PPL_API uint32_t PPL_CALL ppl_n_qual_2x2_whole_frame(const PplContext *ctx);

/* The number of frames that have run on this context, those of idle qualities included. It wraps in
   32 bits, and nothing sets it back, not even ppl_free and ppl_init. */
PPL_API uint32_t PPL_CALL ppl_n_frame(const PplContext *ctx);

/* Histograms of 256 counts each, of samples after black level and before gain. All 0 after
   qualities 12 and 13.

   An entry is not a sample but a mean, truncated, of one mosaic position over 4 cells (P3) or 8
   (SSE2), and it adds 4 or 8 to its bin. Cells that do not qualify as near grey enter it as 0. If
   width is a multiple of 32, a histogram adds up to the number of sampled cells, unscaled; that of
   green to twice as many, since Gb and Gr have entries of their own.

   Note: the fewer cells qualify, the fuller bin 0, and the lower the other entries. */
PPL_API const uint32_t *PPL_CALL ppl_r_histogram(const PplContext *ctx);
PPL_API const uint32_t *PPL_CALL ppl_g_histogram(const PplContext *ctx);
PPL_API const uint32_t *PPL_CALL ppl_b_histogram(const PplContext *ctx);

/* ---- Packed video ----

  YUYV and UYVY frames go to I420 and RGB24, or two fields of them to a frame. No colour control
  takes part, and no statistics are gathered or cleared.

  A source line has 2 * width bytes (3 * width / 2 for the YYYY packing); there is no stride.

    YUYV   | Y0 | U0 | Y1 | V0 | Y2 | U1 | Y3 | V1 | ...    a pair of pixels shares U and V
    UYVY   | U0 | Y0 | V0 | Y1 | U1 | Y2 | V1 | Y3 | ...

  Sizes. A pair of an input and an output size is taken by ppl_new_frame_sizes; which pairs it
  takes is listed there, and what it makes of them: a decimation and black lines. A call with
  other sizes than the last one's sets them by itself; sizes that are refused give 0 with nothing
  written. The result is otherwise 1, also where a decimation is not converted, and ppl_n_frame
  counts one up.

  Buffers. dst holds, with w = out_width and h = out_height as ppl_new_frame_sizes leaves them
  (640 by 480 where 352 by 240 or 288 was passed):

    I420 w * h * 3 / 2    YUYV, UYVY w * h * 2    RGB24 w * h * 3

  Nothing is read or written beyond. But where out_height has lost the black lines that are still
  stored (see ppl_set_decimation), YUYV and UYVY write them all the same: dst then holds that many
  lines more.

  RGB24 is B, G, R in memory and bottom-up, as everywhere. Source and destination may not overlap.
  Alignment is as for raw frames: all pointers multiples of 8 for the pixel path at all, of 16 for
  the SSE2 tier.

  Fallback. An entry function that cannot run the pixel path returns 0 and writes, with n = w * h:
  to I420 n bytes copied from the source (the first field) and n / 2 bytes of 128; to RGB24 3 n
  bytes of 255; to RGB32 4 n bytes of 255; to YUYV and UYVY n bytes of the first field and n of
  the second. It reads these n bytes also where the source has fewer, as with a larger output or
  with black lines: a caller that may meet such a processor makes its source buffers that large.

  Odd sizes, which only raw calls can store, convert their even part. An odd scaled height of fields
  is written whole; in I420 the chroma row of its last line comes from that line alone, as far as it
  reaches into its plane.
*/

/* Progressive frames.

  I420: luma as it is; U and V of the two lines of a pair are averaged, rounding up. Both mirrors
  act. Only decimation 0 converts: at another one the frame is counted and dst left alone. Black
  lines stand behind the picture (before it with v_mirror): luma 16, chroma 128.

  RGB24, in 16-bit words that wrap, with y = 74 * max(Y - 16, 0), u = U - 128, v = V - 128:

    B = (y + 129 u) >> 6    G = (y - 25 u - 52 v) >> 6    R = (y + 102 v) >> 6    held in 0..255

  (ITU-R BT.601, studio range, in 1 / 64.) Both pixels of a pair take its U and V. Neither mirror
  nor decimation takes part: at another decimation than 0 the picture has the input's size all the
  same, and dst must hold 3 * width * height bytes. Black lines come first in memory, as zeros.

  Note: very bright pixels of strong colour wrap: Y = 255 with U = 255 gives B = 0. That is
  settled.

  The ppl_process_ functions are the drivers behind the entry functions: they take the same
  arguments, hold no floating-point bracket and have no fallback. */
PPL_API uint8_t PPL_CALL YUYVToI420MMX(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                       uint32_t width, uint32_t height, uint32_t out_width,
                                       uint32_t out_height);
PPL_API uint8_t PPL_CALL YUYVToRGB24MMX(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                        uint32_t width, uint32_t height, uint32_t out_width,
                                        uint32_t out_height);
PPL_API uint8_t PPL_CALL UYVYToI420MMX(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                       uint32_t width, uint32_t height, uint32_t out_width,
                                       uint32_t out_height);
PPL_API uint8_t PPL_CALL UYVYToRGB24MMX(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                        uint32_t width, uint32_t height, uint32_t out_width,
                                        uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_yuyvtoi420(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                                uint32_t width, uint32_t height, uint32_t out_width,
                                                uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_yuyvtorgb24(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                                 uint32_t width, uint32_t height,
                                                 uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_uyvytoi420(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                                uint32_t width, uint32_t height, uint32_t out_width,
                                                uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_uyvytorgb24(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                                 uint32_t width, uint32_t height,
                                                 uint32_t out_width, uint32_t out_height);

/* Interlaced frames: two fields of height / 2 lines each make a frame of height lines.

  reference_field   a field of second_field's parity, from a frame earlier. Read by the motion test
                    alone, but it must be a valid, aligned pointer in every call.
  first_field       the even lines, from line 0 on
  second_field      the odd lines

  Each field has width * height bytes (2 * width bytes in each of height / 2 lines).

  Without the motion test (_no_motion) the fields are woven. With it, the chroma byte of a pixel
  of an odd line gives way to the rounded average of the first field's lines above and below,
  where it moved: where the differences to reference_field at the pixel and at its two neighbours
  spread around their mean by more than ppl_intl_3T_threshold. Luma is woven in any case, and so
  is the last line. A change that is the same everywhere is no motion, but at a line's two ends,
  where the missing neighbour counts as unchanged.

  Where the layouts differ, the bytes of each pair are swapped. I420 averages the chroma of a line
  pair. RGB24 takes the arithmetic above, but an odd pixel takes the rounded average of the chroma
  on both sides (the last one of a line its own). Mirrors do not act.

  Black lines: decimation_top_black_lines above the picture, which moves down by as many (chroma
  by half of them), the others below.

  Decimation: 1 and 2 take every second or fourth pair and line of a picture made of first_field
  alone. Minus 1 doubles the merged frame both ways: every value follows its rounded average with
  the one before; without the motion test it writes nothing.

  Note: IntlUYVYToYUYVMMX_no_motion and IntlYUYVToUYVYMMX_no_motion are one operation, which
  counts a frame, converts nothing and returns 1. */
PPL_API uint8_t PPL_CALL IntlYUYVToYUYVMMX(PplContext *ctx, const uint8_t *reference_field,
                                           const uint8_t *first_field, const uint8_t *second_field,
                                           uint8_t *out, uint32_t width, uint32_t height,
                                           uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlYUYVToYUYVMMX_no_motion(PplContext *ctx,
                                                     const uint8_t *reference_field,
                                                     const uint8_t *first_field,
                                                     const uint8_t *second_field, uint8_t *out,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlUYVYToUYVYMMX(PplContext *ctx, const uint8_t *reference_field,
                                           const uint8_t *first_field, const uint8_t *second_field,
                                           uint8_t *out, uint32_t width, uint32_t height,
                                           uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlUYVYToUYVYMMX_no_motion(PplContext *ctx,
                                                     const uint8_t *reference_field,
                                                     const uint8_t *first_field,
                                                     const uint8_t *second_field, uint8_t *out,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlUYVYToYUYVMMX(PplContext *ctx, const uint8_t *reference_field,
                                           const uint8_t *first_field, const uint8_t *second_field,
                                           uint8_t *out, uint32_t width, uint32_t height,
                                           uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlUYVYToYUYVMMX_no_motion(PplContext *ctx,
                                                     const uint8_t *reference_field,
                                                     const uint8_t *first_field,
                                                     const uint8_t *second_field, uint8_t *out,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlYUYVToUYVYMMX(PplContext *ctx, const uint8_t *reference_field,
                                           const uint8_t *first_field, const uint8_t *second_field,
                                           uint8_t *out, uint32_t width, uint32_t height,
                                           uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlYUYVToUYVYMMX_no_motion(PplContext *ctx,
                                                     const uint8_t *reference_field,
                                                     const uint8_t *first_field,
                                                     const uint8_t *second_field, uint8_t *out,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlYUYVToI420MMX(PplContext *ctx, const uint8_t *reference_field,
                                           const uint8_t *first_field, const uint8_t *second_field,
                                           uint8_t *out, uint32_t width, uint32_t height,
                                           uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlYUYVToI420MMX_no_motion(PplContext *ctx,
                                                     const uint8_t *reference_field,
                                                     const uint8_t *first_field,
                                                     const uint8_t *second_field, uint8_t *out,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlUYVYToI420MMX(PplContext *ctx, const uint8_t *reference_field,
                                           const uint8_t *first_field, const uint8_t *second_field,
                                           uint8_t *out, uint32_t width, uint32_t height,
                                           uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlUYVYToI420MMX_no_motion(PplContext *ctx,
                                                     const uint8_t *reference_field,
                                                     const uint8_t *first_field,
                                                     const uint8_t *second_field, uint8_t *out,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlYUYVToRGB24MMX(PplContext *ctx, const uint8_t *reference_field,
                                            const uint8_t *first_field, const uint8_t *second_field,
                                            uint8_t *out, uint32_t width, uint32_t height,
                                            uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlYUYVToRGB24MMX_no_motion(PplContext *ctx,
                                                      const uint8_t *reference_field,
                                                      const uint8_t *first_field,
                                                      const uint8_t *second_field, uint8_t *out,
                                                      uint32_t width, uint32_t height,
                                                      uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlUYVYToRGB24MMX(PplContext *ctx, const uint8_t *reference_field,
                                            const uint8_t *first_field, const uint8_t *second_field,
                                            uint8_t *out, uint32_t width, uint32_t height,
                                            uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL IntlUYVYToRGB24MMX_no_motion(PplContext *ctx,
                                                      const uint8_t *reference_field,
                                                      const uint8_t *first_field,
                                                      const uint8_t *second_field, uint8_t *out,
                                                      uint32_t width, uint32_t height,
                                                      uint32_t out_width, uint32_t out_height);

/* Their drivers, with the motion test. */
PPL_API uint8_t PPL_CALL ppl_process_intlyuyvtoyuyv(PplContext *ctx, const uint8_t *reference_field,
                                                    const uint8_t *first_field,
                                                    const uint8_t *second_field, uint8_t *out,
                                                    uint32_t width, uint32_t height,
                                                    uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_intluyvytouyvy(PplContext *ctx, const uint8_t *reference_field,
                                                    const uint8_t *first_field,
                                                    const uint8_t *second_field, uint8_t *out,
                                                    uint32_t width, uint32_t height,
                                                    uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_intlyuyvtoi420(PplContext *ctx, const uint8_t *reference_field,
                                                    const uint8_t *first_field,
                                                    const uint8_t *second_field, uint8_t *out,
                                                    uint32_t width, uint32_t height,
                                                    uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_intluyvytoi420(PplContext *ctx, const uint8_t *reference_field,
                                                    const uint8_t *first_field,
                                                    const uint8_t *second_field, uint8_t *out,
                                                    uint32_t width, uint32_t height,
                                                    uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_intlyuyvtorgb24(PplContext *ctx,
                                                     const uint8_t *reference_field,
                                                     const uint8_t *first_field,
                                                     const uint8_t *second_field, uint8_t *out,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_intluyvytorgb24(PplContext *ctx,
                                                     const uint8_t *reference_field,
                                                     const uint8_t *first_field,
                                                     const uint8_t *second_field, uint8_t *out,
                                                     uint32_t width, uint32_t height,
                                                     uint32_t out_width, uint32_t out_height);

/* A packing of 1.5 bytes a pixel to I420: 24 source bytes q make 16 pixels, at decimation 0
  alone.

  Luma: the low bytes of pairs 0 to 3 (q[0], q[2], ...), then q[8], q[9] | q[17], q[10], q[11] |
  q[19]; the low bytes of the pairs from q[12] on, then 0, q[21], 0, q[23]. Chroma: the high bytes
  of the same eight pairs, unseparated, to the U plane; the odd line's overwrite the even line's.
  The V plane is left alone. With h_mirror the groups run from the right end, luma reversed. A
  source line has 3 * width / 2 bytes; where that ends within a group, the rest counts as zeros.

  Note: both names are one operation: the low byte of a pair is always taken as luma. */
PPL_API uint8_t PPL_CALL YUYVYYYYToI420MMX(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                           uint32_t width, uint32_t height, uint32_t out_width,
                                           uint32_t out_height);
PPL_API uint8_t PPL_CALL UYVYYYYYToI420MMX(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                           uint32_t width, uint32_t height, uint32_t out_width,
                                           uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_yuyvyyyytoi420(PplContext *ctx, const uint8_t *src,
                                                    uint8_t *dst, uint32_t width, uint32_t height,
                                                    uint32_t out_width, uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_uyvyyyyytoi420(PplContext *ctx, const uint8_t *src,
                                                    uint8_t *dst, uint32_t width, uint32_t height,
                                                    uint32_t out_width, uint32_t out_height);

/* Sets the sizes, counts a frame, converts nothing and returns 0. Where the pixel path cannot
  run, the entry function fills 4 * out_width * out_height bytes with 255 instead. */
PPL_API uint8_t PPL_CALL RGB24ToRGB32MMX(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                         uint32_t width, uint32_t height, uint32_t out_width,
                                         uint32_t out_height);
PPL_API uint8_t PPL_CALL ppl_process_rgb24torgb32(PplContext *ctx, const uint8_t *src, uint8_t *dst,
                                                  uint32_t width, uint32_t height,
                                                  uint32_t out_width, uint32_t out_height);

#ifdef __cplusplus
} /* extern "C" */
#endif

#endif /* PPL_H */
