#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "tool/run_tool.h"

namespace ppl_test {
namespace {

class CommandErrors : public ToolTest {
 protected:
  void SetUp() override {
    ToolTest::SetUp();
    write("frame.raw", std::string(640 * 480, 'x'));
    write("three.raw", std::string(3 * 128 * 32, 'x'));
    write("rest.raw", std::string(640 * 480 + 1000, 'x'));
    write("short.raw", std::string(1000, 'x'));
    write("empty.raw", "");
    write("old.png", "old content");
    mkdir(path("folder").c_str(), 0700);
    remember_files();
  }

  // A command that fails leaves these alone.
  void remember_files() { files_before_ = files(); }

  // One line on standard error that says so, nothing on standard output, and no new file.
  void expect_error(int status, const std::string &phrase,
                    const std::vector<std::string> &arguments,
                    const std::string &input = "") const {
    std::string line = "ppl";
    for (const std::string &argument : arguments) line += " " + argument;
    const ToolResult result = run(arguments, input);
    EXPECT_EQ(result.status, status) << line << "\n" << result.err;
    EXPECT_EQ(result.out, "") << line;
    EXPECT_EQ(count_lines(result.err), 1u) << line << "\n" << result.err;
    EXPECT_EQ(result.err.rfind("ppl: ", 0), 0u) << line << "\n" << result.err;
    EXPECT_NE(result.err.find(phrase), std::string::npos) << line << "\n" << result.err;
    EXPECT_EQ(files(), files_before_) << line;
    EXPECT_EQ(read("old.png"), "old content") << line;
  }

 private:
  std::vector<std::string> files_before_;
};

TEST_F(CommandErrors, WrongSizes) {
  for (const char *size :
       {"1282x480", "640x1026", "641x480", "640x481", "16x480", "640x8", "0x0", "4294967295x2"})
    expect_error(1, "even width from 128 to 1280 and an even height from 18 to 1024",
                 {"convert", "frame.raw", "--size", size, "-o", "out.png"});
  for (const char *size : {"640", "640x", "x480", "640*480", "640x480x3", "-640x480", "640x-480",
                           " 640x480", "vga", "99999999999x2"})
    expect_error(2, "is no frame size: write width x height, such as 640x480",
                 {"convert", "frame.raw", "--size", size, "-o", "out.png"});
}

TEST_F(CommandErrors, ShortFiles) {
  expect_error(1,
               "'short.raw' is too short: 640x480 needs 307200 bytes a frame, and after 0 whole "
               "frames there are 1000 left",
               {"convert", "short.raw", "--size", "640x480", "-o", "old.png"});
  expect_error(1, "after 0 whole frames there are 0 left",
               {"convert", "empty.raw", "--size", "640x480", "-o", "out.png"});
  expect_error(1, "after 1 whole frame there are 1000 left",
               {"convert", "rest.raw", "--size", "640x480", "-o", "out.y4m"});
  expect_error(1, "holds 1 whole frame of 640x480, not 2: lower --frames or check --size",
               {"convert", "rest.raw", "--size", "640x480", "-o", "out.y4m", "--frames", "2"});
}

TEST_F(CommandErrors, ShortStandardInputLeavesNoOutput) {
  const std::string frame(128 * 32, 'x');
  for (const std::string &input : {std::string(), frame.substr(1), frame + "rest"})
    expect_error(1, "standard input is too short",
                 {"convert", "-", "--size", "128x32", "-o", "out.yuv"}, input);
  expect_error(1, "standard input is too short",
               {"convert", "-", "--size", "128x32", "-o", "out.yuv", "--frames", "2"}, frame);
}

TEST_F(CommandErrors, UnreadableInput) {
  expect_error(1, "cannot read 'none.raw': No such file or directory",
               {"convert", "none.raw", "--size", "640x480", "-o", "out.png"});
  expect_error(1, "cannot read 'folder': it is a folder",
               {"convert", "folder", "--size", "640x480", "-o", "out.png"});
  expect_error(1, "cannot read 'frame.raw' as PNG",
               {"simulate", "--png", "frame.raw", "-o", "out.raw"});
  expect_error(1, "cannot read 'none.png' as PNG",
               {"simulate", "--png", "none.png", "-o", "out.raw"});
}

TEST_F(CommandErrors, ControlsThatAreUnknownOrRefused) {
  const auto set = [](const char *assignment) {
    return std::vector<std::string>{"convert", "frame.raw", "--size", "640x480",
                                    "-o",      "old.png",   "--set",  assignment};
  };
  expect_error(1, "there is no control 'edge_treshold'; did you mean 'edge_threshold'?",
               set("edge_treshold=5"));
  expect_error(1, "edge_threshold=1531 is refused: the range is 0 to 1530",
               set("edge_threshold=1531"));
  expect_error(1, "rgb_gain=1,2,3000 is refused: the range is 0 to 2047 each",
               set("rgb_gain=1,2,3000"));
  expect_error(1, "sensor_type=1 is refused: the range is 22356", set("sensor_type=1"));
  expect_error(1, "is a table of 256 bytes", set("rgb_gamma_table=1"));
  expect_error(2, "--set takes NAME=VALUE, not 'gamma'", set("gamma"));
  expect_error(1, "quality=15 is refused: the range is 0 to 14",
               {"convert", "frame.raw", "--size", "640x480", "-o", "out.png", "--quality", "15"});
  expect_error(
      1, "decimation=3,0,0",
      {"convert", "frame.raw", "--size", "640x480", "-o", "out.png", "--set", "decimation=3,0,0"});
}

TEST_F(CommandErrors, OutputThatCannotBeWritten) {
  const auto to = [](const char *output) {
    return std::vector<std::string>{"convert", "frame.raw", "--size", "640x480", "-o", output};
  };
  expect_error(1, "cannot write 'none/out.png': No such file or directory; create its folder first",
               to("none/out.png"));
  expect_error(1, "cannot write 'folder': Is a directory; name a file in it", to("folder"));
  expect_error(1, "cannot write 'frame.raw/out.png': Not a directory", to("frame.raw/out.png"));
  expect_error(1, "cannot write '/dev/full': No space left on device", to("/dev/full"));
  expect_error(1, "cannot write 'none/out.raw'", {"simulate", "-o", "none/out.raw"});
  expect_error(
      1, "cannot write 'none/stats.json'",
      {"convert", "frame.raw", "--size", "640x480", "-o", "out.png", "--stats", "none/stats.json"});
  expect_error(
      1, "cannot write '/dev/full'",
      {"convert", "frame.raw", "--size", "640x480", "-o", "out.png", "--stats", "/dev/full"});
  expect_error(1, "cannot write 'none/truth.png'",
               {"simulate", "-o", "out.raw", "--truth", "none/truth.png"});
}

TEST_F(CommandErrors, OutputWithoutTheRightToWrite) {
  if (geteuid() == 0) GTEST_SKIP() << "the superuser may write everywhere";
  chmod(path("folder").c_str(), 0500);
  expect_error(1, "Permission denied; choose a place where you may write",
               {"convert", "frame.raw", "--size", "640x480", "-o", "folder/out.png"});
}

TEST_F(CommandErrors, SeveralFramesIntoOnePicture) {
  for (const char *name : {"old.png", "out.ppm"})
    expect_error(1, "use --frames 1, or a name with their number such as out_%03d.png",
                 {"convert", "three.raw", "--size", "128x32", "-o", name});
}

TEST_F(CommandErrors, RgbIntoY4m) {
  expect_error(1, "a .y4m file holds Y, U, V and not rgb24: use --format i420, yuyv or uyvy",
               {"convert", "frame.raw", "--size", "640x480", "-o", "out.y4m", "--format", "rgb24"});
}

TEST_F(CommandErrors, VideoThatTheLibraryDoesNotConvert) {
  write("video", std::string(2 * 128 * 32, 'x'));
  remember_files();
  const auto video = [](std::vector<std::string> more) {
    std::vector<std::string> arguments{"convert", "video",  "--from", "yuyv",
                                       "--size",  "128x32", "-o",     "out.yuv"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  };
  for (const char *format : {"yuyv", "uyvy", "rgb32"})
    expect_error(1,
                 "progressive yuyv video does not become " + std::string(format) +
                     ": use --format with one of i420, rgb24",
                 video({"--format", format}));
  expect_error(1,
               "interlaced yuyv video does not become rgb32: use --format with one of i420, yuyv, "
               "uyvy, rgb24",
               video({"--format", "rgb32", "--interlaced"}));
  expect_error(1,
               "interlaced yuyv video without the motion test does not become uyvy: use --format "
               "with one of i420, yuyv, rgb24",
               video({"--format", "uyvy", "--interlaced", "--no-motion-test"}));
  for (const char *decimation : {"1", "2", "-1"})
    expect_error(1, "progressive video is not scaled: leave out the decimation",
                 video({"--decimation", decimation}));
  expect_error(1, "interlaced video is doubled with the motion test only",
               video({"--interlaced", "--no-motion-test", "--decimation", "-1"}));
  expect_error(1, "progressive yuyv video is not mirrored on its way to rgb24",
               video({"--format", "rgb24", "--mirror", "h"}));
  expect_error(1, "interlaced yuyv video is not mirrored on its way to i420",
               video({"--interlaced", "--mirror", "v"}));
  expect_error(1, "intl_3T_threshold=766 is refused: the range is 0 to 765",
               video({"--interlaced", "--motion-threshold", "766"}));
  for (const char *lines : {"2000,0", "-1,3"})
    expect_error(1, "decimation=0," + std::string(lines) + " is refused",
                 video({"--black-lines", lines}));
  for (const char *lines : {"1,2,3", "few"})
    expect_error(1, "decimation", video({"--black-lines", lines}));
}

TEST_F(CommandErrors, VideoOfAnotherSize) {
  write("even", std::string(2 * 128 * 32, 'x'));  // two fields
  write("odd", std::string(128 * 32, 'x'));
  remember_files();
  const auto fields = [](std::vector<std::string> names) {
    names.insert(names.begin(), "convert");
    names.insert(names.end(), {"--from", "yuyv", "--interlaced", "--size", "128x32", "-o", "out"});
    return names;
  };
  expect_error(1, "'even' and 'odd' hold different numbers of fields", fields({"even", "odd"}));
  expect_error(1, "'even' holds 2 fields: give one, that before the first of 'odd'",
               fields({"odd", "odd", "even"}));
  expect_error(1,
               "'short.raw' is too short: 128x32 needs 4096 bytes a field, and after 0 whole "
               "fields there are 1000 left; check --size, which is that of the whole frame",
               fields({"odd", "short.raw"}));
  expect_error(1, "'odd' is too short: 128x32 needs 8192 bytes a frame", fields({"odd"}));
  expect_error(1, "standard input is too short", fields({"odd", "-"}));
  expect_error(1, "hold different numbers of fields", fields({"even", "-"}),
               std::string(128 * 32, 'x'));
  expect_error(1, "cannot read 'none'", fields({"odd", "odd", "none"}));
}

TEST_F(CommandErrors, VideoOptionsThatMakeNoSense) {
  const auto convert = [](std::vector<std::string> more) {
    more.insert(more.begin(), {"convert", "frame.raw", "--size", "640x480", "-o", "old.png"});
    return more;
  };
  expect_error(2, "--from", convert({"--from", "nv12"}));
  expect_error(2, "--interlaced is for packed video", convert({"--interlaced"}));
  expect_error(2, "--no-motion-test and --motion-threshold are for --interlaced",
               convert({"--from", "yuyv", "--no-motion-test"}));
  expect_error(2, "--no-motion-test and --motion-threshold are for --interlaced",
               convert({"--from", "yuyv", "--motion-threshold", "5"}));
  expect_error(2, "--quality and --neutral are for raw frames",
               convert({"--from", "yuyv", "--quality", "3"}));
  expect_error(2, "--quality and --neutral are for raw frames",
               convert({"--from", "yuyv", "--neutral"}));
  expect_error(2, "--stats is for raw frames", convert({"--from", "yuyv", "--stats", "s.json"}));
  expect_error(2, "one file at a time", convert({"three.raw"}));
  expect_error(2, "one file at a time", convert({"three.raw", "--from", "uyvy"}));
  expect_error(2, "only one of the files can be standard input",
               {"convert", "-", "-", "--from", "uyvy", "--interlaced", "--size", "640x480", "-o",
                "old.png"});
  expect_error(2, "three files at the most", convert({"two", "three", "four"}));
}

TEST_F(CommandErrors, ComparisonsThatCannotBeMade) {
  write("small.raw", std::string(128 * 18, 'x'));
  run_well({"convert", "frame.raw", "--size", "640x480", "-o", "truth.png"});
  run_well({"convert", "small.raw", "--size", "128x18", "-o", "small.png"});
  remember_files();
  const auto compare = [](std::vector<std::string> more) {
    more.insert(more.begin(), {"compare", "frame.raw", "--size", "640x480", "-o", "old.png"});
    return more;
  };
  expect_error(1, "the truth 'small.png' is 128x18 and the frame 640x480",
               compare({"--truth", "small.png"}));
  expect_error(1, "cannot read 'frame.raw' as PNG", compare({"--truth", "frame.raw"}));
  expect_error(1, "too small to be compared with a truth",
               {"compare", "small.raw", "--size", "128x18", "--truth", "small.png"});
  expect_error(1, "the crop 60x60 at 600,0 does not lie inside the frame of 640x480",
               compare({"--crop", "600,0"}));
  for (const char *crop : {"0,0,0x5", "0,0,641x5", "0,480,5x5", "4294967295,0,2x2"})
    expect_error(1, "does not lie inside the frame", compare({"--crop", crop}));
  for (const char *crop :
       {"here", "5", "5,", "5,5,", "5,5,5", "5,5,5x", "5,5,5x5x5", "-5,5", "5;5"})
    expect_error(2, "is no crop: write X,Y or X,Y,WxH", compare({std::string("--crop=") + crop}));
  expect_error(1, "leave out decimation", compare({"--set", "decimation=1"}));
  expect_error(1, "leave out mirrors", compare({"--set", "h_mirror=1"}));
  expect_error(1, "there is no control 'gama'", compare({"--set", "gama=1"}));
  expect_error(2, "--frames takes at least 1", compare({"--frames", "0"}));
  expect_error(2, "--format", compare({"--format", "gif"}));
  expect_error(2, "the sheet is a picture: name it .png or .ppm, not 'out.y4m'",
               {"compare", "frame.raw", "--size", "640x480", "-o", "out.y4m"});
  expect_error(1, "cannot write 'none/table.json'", compare({"--json", "none/table.json"}));
  expect_error(1, "cannot write '/dev/full'", compare({"--json", "/dev/full"}));
  expect_error(1, "'short.raw' is too short", {"compare", "short.raw", "--size", "640x480"});
  expect_error(2, "only one of sheet and table can go to standard output",
               {"compare", "frame.raw", "--size", "640x480", "-o", "-", "--json", "-"});
}

TEST_F(CommandErrors, WrongUsage) {
  expect_error(2, "(see ppl --help)", {});
  expect_error(2, "(see ppl --help)", {"transmogrify"});
  expect_error(2, "--size is required (see ppl convert --help)",
               {"convert", "frame.raw", "-o", "out.png"});
  expect_error(2, "input is required", {"convert", "--size", "640x480", "-o", "out.png"});
  expect_error(2, "nothing to do: give -o OUT, --md5 or --stats FILE",
               {"convert", "frame.raw", "--size", "640x480"});
  const auto with = [](std::vector<std::string> more) {
    std::vector<std::string> arguments{"convert", "frame.raw", "--size",
                                       "640x480", "-o",        "out.png"};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  };
  expect_error(2, "--format", with({"--format", "rgb16"}));
  expect_error(2, "--tier", with({"--tier", "avx"}));
  expect_error(2, "--mirror", with({"--mirror", "up"}));
  expect_error(2, "--frames", with({"--frames", "some"}));
  expect_error(2, "--frames takes at least 1", with({"--frames", "0"}));
  expect_error(2, "'gif' is no kind of file: use raw, png, ppm or y4m", with({"--as", "gif"}));
  expect_error(2, "--verbose", with({"--verbose"}));
  expect_error(2, "--output is required", {"simulate"});
  expect_error(2, "excludes", {"simulate", "-o", "x.raw", "--png", "a.png", "--scene", "flat"});
  expect_error(2, "raw frames are no .y4m", {"simulate", "-o", "x.y4m"});
  expect_error(2, "a grey picture holds one frame", {"simulate", "-o", "x.png", "--frames", "2"});
}

TEST_F(CommandErrors, SimulatorSettingsOutOfRange) {
  expect_error(1, "there is no scene 'cat': use chart, patches",
               {"simulate", "-o", "x.raw", "--scene", "cat"});
  expect_error(1, "the simulator takes no frame of 641x480",
               {"simulate", "-o", "x.raw", "--size", "641x480"});
  expect_error(1, "--exposure is out of range: give -20 to 20 stops",
               {"simulate", "-o", "x.raw", "--exposure", "-21"});
  expect_error(1, "--illuminant is out of range",
               {"simulate", "-o", "x.raw", "--illuminant", "100"});
  expect_error(1, "--gains is out of range", {"simulate", "-o", "x.raw", "--gains", "1,1,100"});
  expect_error(1, "--black is out of range", {"simulate", "-o", "x.raw", "--black", "200"});
  expect_error(1, "--read-noise is out of range",
               {"simulate", "-o", "x.raw", "--read-noise", "-1"});
  expect_error(1, "--crosstalk is out of range", {"simulate", "-o", "x.raw", "--crosstalk", "0.5"});
  expect_error(1, "--hot or --dead is out of range", {"simulate", "-o", "x.raw", "--hot", "4000"});
}

}  // namespace
}  // namespace ppl_test
