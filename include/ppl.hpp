/*
ppl for C++20: one stream, described once


About

  A Pipeline takes the frames of one camera and makes pictures of them. It is told once what comes
  in and once what is wanted, says how large every buffer is, and then runs frame after frame:

    - any of the four mosaics, 8 to 16 bits a sample, plain or in the packings of MIPI; packed
      video, progressive or in fields
    - I420, YUYV, UYVY, RGB24, RGB32, mirrored, halved or doubled, with black lines, into memory of
      any alignment and pitch
    - every control by its name, from one table; profiles of them as JSON text
    - statistics as plain values, and exposure and white balance that follow them

  Underneath are the functions of ppl.h, which stays the manual of what qualities, controls and
  statistics mean. What needs care there is taken care of here: sizes, alignment, first frames,
  parts of a picture that nothing writes, mirrors that displace colours.


Synopsis

  Frames of a sensor with 12 bits a sample on standard input, RGB24 on standard output:

    #include <cstdio>
    #include <ppl.hpp>
    #include <vector>

    int main() try {
      ppl::Pipeline pipeline(ppl::RawFormat::named("rggb12", 640, 480),
                             {.format = ppl::PixelFormat::rgb24, .quality = 1});
      pipeline.controls().set("rgb_gain", {300, 256, 360});  // 8.8 fixed point: 256 is 1.0

      std::vector<uint8_t> frame(pipeline.input_bytes()), picture(pipeline.layout().bytes);
      while (std::fread(frame.data(), 1, frame.size(), stdin) == frame.size()) {
        pipeline.process(frame, picture);
        std::fwrite(picture.data(), 1, picture.size(), stdout);
        std::fprintf(stderr, "mean of green: %.1f\n", pipeline.statistics().whole_frame.steps().g);
      }
    } catch (const ppl::Error &error) {
      std::fprintf(stderr, "%s\n", error.what());
      return 1;
    }


Errors

  What cannot be done throws ppl::Error with one sentence that says what to do. Everything then is
  as it was: no control is half set, no frame half run, no buffer touched. Memory that cannot be had
  throws std::bad_alloc.


Threads

  One pipeline, one thread at a time; different pipelines on different threads. Pipelines may be
  made and destroyed on any thread. There are eight at most, with those that a program takes by
  ppl_init; it must not do so while a pipeline is made or destroyed.
*/
#ifndef PPL_HPP
#define PPL_HPP

#include <array>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <map>
#include <memory>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "ppl.h"

namespace ppl {

struct Error : std::runtime_error {
  using std::runtime_error::runtime_error;
};

// ---- What comes in ----

// The first two samples of the first line, then those of the second.
enum class Mosaic { bggr, gbrg, grbg, rggb };

// How samples lie in memory.
enum class Packing {
  plain,  // 8 bits in a byte; more than 8 in the low bits of 16-bit words, low byte first
  mipi    // 10 bits: four high bytes, then their low bits; 12 bits: two high bytes, then theirs
};

/* Frames of a sensor, top line first.

   Each mosaic gives a whole picture: the frame is turned on its way in so that it begins with B,
   and the picture is turned back. Where a quality treats the two sides of a pixel differently
   (doubling, halving, the relief of sharpening), that shows the other way round.

   Of more than 8 bits the eight highest count, as they are or rounded.

   Sizes are those of ppl_new_frame_size: widths from 128 (64 on a processor without SSE2) to 1280,
   heights of 14 and from 18 to 1024. Of an odd width or height the last column or line is left out,
   and so is what does not fill a chroma sample of a halved picture. Pipeline::layout tells the size
   of the picture. */
struct RawFormat {
  uint32_t width = 0, height = 0;
  Mosaic mosaic = Mosaic::bggr;
  unsigned bits = 8;  // 8, 10, 12, 14 or 16; in the packing of MIPI 10 or 12
  Packing packing = Packing::plain;
  size_t stride = 0;    // bytes from line to line; 0: there is no gap between lines
  bool rounds = false;  // to the nearest of 8 bits, in place of cutting off

  /* A format by its name: a mosaic with its bits and a p for MIPI's packing (bggr, grbg10,
     rggb12p), or what V4L2 calls it:

         8        10       10 packed    12       12 packed    14       16
         BA81     BG10     pBAA         BG12     pBCC         BG14     BYR2
         GBRG     GB10     pGAA         GB12     pGCC         GB14     GB16
         GRBG     BA10     pgAA         BA12     pgCC         GR14     GR16
         RGGB     RG10     pRAA         RG12     pRCC         RG14     RG16 */
  static RawFormat named(std::string_view name, uint32_t width, uint32_t height, size_t stride = 0);

  std::string name() const;    // the plain one: "rggb12p"
  std::string fourcc() const;  // V4L2's

  size_t line_bytes() const;
  size_t bytes() const;  // of a frame: up to the end of its last line

  bool operator==(const RawFormat &) const = default;
};

// The bytes of a pair of pixels. yyyy is the packing of 1.5 bytes a pixel (YUYVYYYYToI420MMX): its
// picture has luma alone, with the peculiarities that ppl.h tells; V is 128 all over.
enum class VideoPacking { yuyv, uyvy, yyyy };

enum class Scan {
  progressive,
  interleaved,  // a frame of two fields, line by line in turns
  separate      // two fields, each by itself
};

// Which lines the earlier of two fields has; the frame's first line is an even one.
enum class FirstField { even_lines, odd_lines };

/* Packed video. No colour control takes part, and there are no statistics.

       progressive   yuyv, uyvy to i420, rgb24; yyyy to i420; not scaled
       in fields     yuyv, uyvy to i420, yuyv, uyvy, rgb24; decimation 0, 1, 2, -1

   Sizes are those of raw frames; heights of fields are even. What does not fill a chroma sample of
   the picture is left out at the right and at the bottom.

   Two fields become a frame, whichever of them was first in time. Where something moved, the chroma
   of an odd line gives way to that of the even lines around it; motion is found by comparing the
   odd lines with those of the frame before. The first frame has none before it and is woven as it
   is (or see Pipeline::set_reference). */
struct VideoFormat {
  uint32_t width = 0, height = 0;  // of the whole frame
  VideoPacking packing = VideoPacking::yuyv;
  Scan scan = Scan::progressive;
  FirstField first_field = FirstField::even_lines;
  bool tests_motion = true;  // of fields; otherwise they are woven as they are
  size_t stride = 0;         // bytes from line to line of a frame or a field; 0: no gap

  // yuyv, uyvy or yyyy, in capitals as well; YUY2 is yuyv. Progressive.
  static VideoFormat named(std::string_view name, uint32_t width, uint32_t height,
                           size_t stride = 0);

  std::string name() const;

  size_t line_bytes() const;
  size_t bytes() const;        // of a frame, or of a field where they are separate
  size_t field_bytes() const;  // of a field by itself

  bool operator==(const VideoFormat &) const = default;
};

using Input = std::variant<RawFormat, VideoFormat>;

// Either by its name.
Input input_named(std::string_view name, uint32_t width, uint32_t height, size_t stride = 0);

// ---- What goes out ----

/* Layouts as in ppl.h: i420 has three planes, the others one; RGB is B, G, R (and 0) in memory,
   bottom line first unless Output::top_down is set. Luma 16..235, chroma 16..240, ITU-R BT.601. */
enum class PixelFormat { i420, yuyv, uyvy, rgb24, rgb32 };

inline constexpr std::array all_pixel_formats = {PixelFormat::i420, PixelFormat::yuyv,
                                                 PixelFormat::uyvy, PixelFormat::rgb24,
                                                 PixelFormat::rgb32};

std::string_view name_of(PixelFormat format);
PixelFormat pixel_format_named(std::string_view name);

enum class Tier { best, p3, sse2 };
std::string_view name_of(Tier tier);

// The best tier of this processor. Throws where there is none. It borrows a context for a moment.
Tier processor_tier();

// What a quality does, in a few words; empty above 14.
std::string_view quality_text(uint32_t quality);

/* What is wanted. Quality, decimation and black lines, mirrors, tier and statistics are controls as
   well (quality; decimation; h_mirror, v_mirror; P3_only; mean_collection): to set one is to set
   the other.

   Qualities and formats of raw frames:

       quality              formats             decimation
       0 to 2, 10 to 12     all                 0, 1; -1 but in rgb32
       3                    all                 0, 1; -1 but in rgb32
       4, 9                 i420, yuyv, uyvy    0, 1
                            rgb24               0
                            rgb32               0, 1
       5 to 8               none
       13                   i420, rgb24         0, 1
       14                   i420, yuyv, uyvy    0, 1, -1

   All others are refused, as their pictures would be empty or torn. */
struct Output {
  PixelFormat format = PixelFormat::i420;
  uint32_t quality = 3;  // of raw frames
  int decimation = 0;    // 1 halves width and height, -1 doubles them, 2 is a quarter (of fields)
  bool h_mirror = false, v_mirror = false;
  // Black lines above and below the picture, 1024 at most. i420 takes even numbers.
  uint32_t black_lines_top = 0, black_lines_bottom = 0;
  Tier tier = Tier::best;
  bool statistics = true;
  bool top_down = false;  // RGB with its top line first

  /* The library's own way, where this layer would make a right picture in another one: with both
     mirrors the displaced chroma of quality 3 in i420; with one mirror the torn picture of the
     multi-pass qualities doubled to rgb24; and the stripes of rgb24 in the P3 tier while statistics
     are gathered. Mosaics other than bggr bring mirrors of their own. */
  bool verbatim = false;

  bool operator==(const Output &) const = default;
};

// A plane of a picture without gaps.
struct PlaneLayout {
  size_t offset = 0;      // of its first line from the picture's first byte
  size_t line_bytes = 0;  // of a line, and from line to line
  uint32_t lines = 0;

  bool operator==(const PlaneLayout &) const = default;
};

// A picture without gaps, black lines included.
struct Layout {
  PixelFormat format = PixelFormat::i420;
  uint32_t width = 0, height = 0;
  size_t plane_count = 0;
  std::array<PlaneLayout, 3> planes = {};
  size_t bytes = 0;

  bool operator==(const Layout &) const = default;
};

// What a pipeline's layout would be, without a pipeline. Throws what the pipeline would throw, but
// for what depends on the processor.
Layout layout_of(const Input &input, const Output &output);

// One plane of the caller's memory.
struct Plane {
  std::span<uint8_t> bytes;
  size_t pitch = 0;  // bytes from line to line
};

/* Where a picture goes: a span of at least Layout::bytes, or a plane for each of the layout's, each
   with a pitch of its own of at least the plane's line.

   A picture is written straight to where it belongs if that begins on a multiple of 16 and has no
   gaps (in i420 neither between planes). Elsewhere it is copied there once. Between the lines of a
   pitch and behind the last line nothing is written. */
class Target {
 public:
  Target(std::span<uint8_t> bytes) : whole_(bytes) {}
  Target(std::vector<uint8_t> &bytes) : whole_(bytes) {}
  Target(std::span<const Plane> planes);
  Target(std::initializer_list<Plane> planes);

  bool is_whole() const { return plane_count_ == 0; }
  std::span<uint8_t> whole() const { return whole_; }
  std::span<const Plane> planes() const { return {planes_.data(), plane_count_}; }

 private:
  std::span<uint8_t> whole_;
  std::array<Plane, 3> planes_;
  size_t plane_count_ = 0;
};

// ---- Controls ----

enum class ControlKind {
  integer,
  flag,    // 0 or 1
  choice,  // one of Control::choices
  band,    // minimum, maximum
  triple,  // red, green, blue
  matrix,  // two of 3 by 3, row by row
  list,    // numbers of different meanings
  table    // bytes
};
std::string_view name_of(ControlKind kind);

struct Range {
  int64_t low = 0, high = 0;
};

struct Choice {
  int64_t value = 0;
  std::string_view text;
};

// What there is to know of a control. Its name is that of the getter in ppl.h without the prefix; a
// band of two getters is named by what they share.
struct Control {
  std::string_view name, family;
  ControlKind kind = ControlKind::integer;
  size_t count = 1;           // of values
  size_t optional_count = 0;  // so many at the end may be left out and are then 0
  std::vector<Range> ranges;  // one for all values, or one each
  std::string_view limits;    // what else must hold, in words; or empty
  std::vector<int64_t> initial;
  std::string_view initial_text;  // where the values would tell nothing: "identity"; or empty
  std::string_view unit;
  bool fixed88 = false;  // 8.8 fixed point: 256 is 1.0
  std::string_view text;
  std::vector<Choice> choices;
  // Not empty: another way to set these, and no part of a profile.
  std::vector<std::string_view> stands_for;
  bool process_wide = false;  // shared by all pipelines, and no part of a profile
  bool is_kept = true;        // otherwise values are judged, but not kept: no part of a profile
  bool inert = false;         // kept for the caller: no frame depends on it
  std::vector<std::string_view> functions;  // the setters of ppl.h that it reaches

  const Range &range(size_t index) const { return ranges[ranges.size() == 1 ? 0 : index]; }
  bool in_profile() const { return stands_for.empty() && !process_wide && is_kept; }
  std::string range_text() const;
  std::string default_text() const;
};

// All of them, by family. A control that sets others as well (gamma its two tables, contrast_c its
// curve) stands before them.
std::span<const Control> control_table();

const Control *find_control(std::string_view name);       // null if there is none
const Control &control_named(std::string_view name);      // throws, and names the nearest one
std::string_view nearest_control(std::string_view name);  // to a misspelt name

/* Values as text: numbers with commas in between. A number with a decimal point stands for itself
   times 256 where the control is 8.8 fixed point. Throws for what does not belong to the control,
   and names its range. */
std::vector<int64_t> parse_values(const Control &control, std::string_view text);
std::string values_text(std::span<const int64_t> values);

// Throws unless the control takes these values.
void require_values(const Control &control, std::span<const int64_t> values);

/* Values of controls that are no part of a pipeline: what was saved, or is to be loaded. Values are
   tested when they come in. */
class Profile {
 public:
  /* The text is JSON:

         {
           "ppl_profile": 1,
           "controls": {
             "quality": 1,
             "rgb_gain": [420, 256, 380],
             "h_mirror": true
           }
         }

     Numbers are integers, flags true or false, controls of several values arrays. Throws for what
     is no such text, for a name that is unknown or stands twice, and for a value of another kind or
     out of range. What to_json writes comes back byte for byte. */
  static Profile from_json(std::string_view text);
  std::string to_json() const;

  void set(std::string_view name, std::span<const int64_t> values);
  void set(std::string_view name, std::initializer_list<int64_t> values);
  bool erase(std::string_view name);                              // false if it was not there
  const std::vector<int64_t> *find(std::string_view name) const;  // null if it is not there
  bool empty() const { return values_.empty(); }
  std::vector<std::string_view> names() const;  // in the table's order

  bool operator==(const Profile &) const = default;

 private:
  std::map<size_t, std::vector<int64_t>> values_;  // by place in the table
};

namespace detail {
class Stream;
}

/* The controls of a pipeline. They act from the next frame on.

   A value that a control does not take is refused with its range, also where ppl.h would store it
   without effect; so is one with which the stream would have no picture (a quality that lacks the
   format).

   gamma sets rgb_gamma_table and yuv_gamma_table, contrast_c sets contrast_table: their defaults
   are what gamma and contrast_c made of them. */
class Controls {
 public:
  explicit Controls(detail::Stream &stream) : stream_(&stream) {}

  void set(std::string_view name, int64_t value);
  void set(std::string_view name, std::span<const int64_t> values);
  void set(std::string_view name, std::initializer_list<int64_t> values);
  void set_bytes(std::string_view name, std::span<const uint8_t> bytes);  // of tables
  void set_text(std::string_view name, std::string_view text);            // as parse_values

  std::vector<int64_t> get(std::string_view name) const;
  int64_t get_number(std::string_view name) const;  // of a control with one value
  std::vector<uint8_t> get_bytes(std::string_view name) const;
  std::string get_text(std::string_view name) const;

  void reset(std::string_view name);
  void reset();  // all but the process-wide ones

  // All that differs from the defaults. The process-wide families of curves are no part of it: a
  // curve that is none of the built-in ones is, as a table.
  Profile profile() const;

  // Sets all controls: those of the profile to its values, the others to their defaults.
  void load(const Profile &profile);

 private:
  detail::Stream *stream_;
};

// ---- Statistics ----

struct Rgb {
  double r = 0, g = 0, b = 0;
};

// Means of the channels in 8.8 fixed point: 256 is one step of the 8-bit scale.
struct Mean {
  uint32_t r = 0, g = 0, b = 0;

  constexpr Rgb steps() const { return {r / 256.0, g / 256.0, b / 256.0}; }  // 0 to 255
  bool operator==(const Mean &) const = default;
};

/* What a frame left, as plain values that need neither the pipeline nor its context.

   What they count and how exactly, ppl.h tells under "Statistics". Windows are rows and columns of
   the frame as the camera sent it, whatever is mirrored. Values that a quality does not gather are
   0; has_... tells them from those that are 0 by themselves. (In the P3 tier of a processor with
   SSE2, windows are off by their scale where the width is no multiple of 128.) */
struct Statistics {
  uint64_t frame = 0;  // which one, from 1 on
  uint32_t quality = 0;
  uint32_t cells = 0;  // of 2 by 2 samples in the frame

  bool has_means = false;    // whole_frame
  bool has_windows = false;  // windows, outside_windows, all_windows, and the centre by itself
  bool has_bands = false;    // exposure, qualified, histograms

  Mean whole_frame;
  std::array<std::array<Mean, 8>, 6> windows = {};
  Mean outside_windows;  // as if what is outside were as large as one window
  Mean all_windows;
  Mean exposure;                // of the cells in the band of exposure (qAE_RGB)
  uint32_t exposure_cells = 0;  // how many they are
  Mean qualified;               // of the cells near grey (the qual bands), before gain and gamma
  uint32_t qualified_cells = 0;
  std::array<std::array<uint32_t, 256>, 3> histograms = {};  // red, green, blue

  // The mean of the four central windows; of all windows, the central ones counted 4, 8 or 16 times
  // and the ring around them twice. Without windows: of quality 3 the whole frame's mean, else 0.
  Mean centre() const;
  Mean weighted_to_centre(uint32_t central_weight) const;
};

// ---- Pipeline ----

/* One stream, from an input to an output. Takes one of the eight contexts and gives it back when it
   ends. Can be moved, not copied.

   Memory is taken when the pipeline is made, when its output changes, and with the first frame
   whose target needs a copy of the picture; no later frame takes any. */
class Pipeline {
 public:
  explicit Pipeline(const Input &input, const Output &output = {});
  ~Pipeline();
  Pipeline(Pipeline &&other) noexcept;
  Pipeline &operator=(Pipeline &&other) noexcept;

  const Input &input() const;
  const Output &output() const;

  // Another output for the same input, from the next frame on. Controls stay.
  void set_output(const Output &output);

  // Bytes of a frame; of a field where they are separate.
  size_t input_bytes() const;

  // The picture, as it stands in a buffer without gaps.
  const Layout &layout() const;

  // The tier that frames run on: p3 or sse2.
  Tier tier() const;

  /* Runs a frame of input_bytes or more. The frame is read, and may begin anywhere. It must not
     overlap the target.

     Frames of 8 bits are copied once, as the library works in place; others are reduced to 8 bits
     on the way. Packed video that begins on a multiple of 16 and has no gaps is not copied, but for
     the fields of interleaved frames and those that the motion test keeps. */
  void process(std::span<const uint8_t> frame, const Target &target);

  // The same for a frame that the caller needs no more: its samples are changed where that saves
  // the copy. It does for bggr of 8 bits that begins on a multiple of 16 and has no gaps (in
  // qualities 3 and 13 a stride up to 1280), all of it used.
  void consume(std::span<uint8_t> frame, const Target &target);

  // Runs two separate fields, the earlier one first.
  void process_fields(std::span<const uint8_t> first, std::span<const uint8_t> second,
                      const Target &target);

  // The odd lines of the frame before the next one, for the motion test: VideoFormat::field_bytes.
  // Every frame does that for its successor; after a gap in the film forget_reference makes the
  // next one a first frame.
  void set_reference(std::span<const uint8_t> odd_lines);
  void forget_reference();

  // Of the last frame. Throws before the first one, and in packed video.
  Statistics statistics() const;

  // How many frames this pipeline has run.
  uint64_t frames() const;

  Controls &controls();
  const Controls &controls() const;

  // For readers of ppl.h that have no place here. The size, mirrors and decimation in it are the
  // pipeline's own affair.
  const PplContext *context() const;

 private:
  detail::Stream &stream() const;  // throws where the pipeline was moved away

  std::unique_ptr<detail::Stream> stream_;
};

// ---- Exposure and white balance ----

/* Steers exposure and white balance by the statistics of each frame:

       ppl::AutoExposure steering;
       steering.prepare(pipeline.controls());
       for (;;) {
         set the sensor to steering.exposure() stops; take a frame
         pipeline.process(frame, picture);
         steering.update(pipeline.statistics());
         steering.apply(pipeline.controls());
       }

   It looks at the qualified means, which are taken before gain and gamma and so are linear: green
   is brought to a level, and red and blue to green, on the ground that the world is grey on the
   average. Needs a quality that gathers them: 0 to 3, 10, 11 or 14. */
class AutoExposure {
 public:
  struct Settings {
    double level = 44;            // the mean of green to aim at, in sample steps above black
    double highest_sample = 250;  // a cell with a sample above is clipped and counts for nothing
    double largest_step = 2;      // in stops, from one frame to the next
    double lowest_gain = 0.25, highest_gain = 7.9;  // of red and blue
    bool white_balance = true;
  };

  AutoExposure();
  explicit AutoExposure(const Settings &settings);

  // Sets the bands so that a cell counts by its level alone.
  void prepare(Controls &controls) const;

  // Takes in what a frame left.
  void update(const Statistics &statistics);

  // Sets the gains.
  void apply(Controls &controls) const;

  double exposure() const { return exposure_; }  // in stops, 0 at first
  void set_exposure(double stops) { exposure_ = stops; }
  double r_gain() const { return r_gain_; }  // green stays at 1
  double b_gain() const { return b_gain_; }

 private:
  Settings settings_;
  double exposure_ = 0, r_gain_ = 1, b_gain_ = 1;
};

}  // namespace ppl

#endif  // PPL_HPP
