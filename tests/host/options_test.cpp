// SPDX-License-Identifier: MIT
#include "command/options.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <set>
#include <sstream>

#include "order/option_table.h"
#include "order/palettes.h"
#include "order/presets.h"

namespace {

using host::Options;

Options parse(std::initializer_list<const char *> words) {
  std::vector<char *> argv{const_cast<char *>("raxel-export")};
  for (const char *word : words) argv.push_back(const_cast<char *>(word));
  return host::parseOptions(static_cast<int>(argv.size()), argv.data());
}

std::string errorOf(std::initializer_list<const char *> words) {
  try {
    parse(words);
  } catch (const host::Failure &failure) {
    EXPECT_EQ(failure.code(), host::kUsage);
    return failure.what();
  }
  return "";
}

}  // namespace

TEST(Options, TheLastFileIsTheOutput) {
  const Options o = parse({"in.png", "out.tif"});
  EXPECT_EQ(o.inputs, (std::vector<std::string>{"in.png"}));
  EXPECT_EQ(o.outputs, (std::vector<std::string>{"out.tif"}));
  EXPECT_FALSE(o.mode || o.compression || o.dpi || o.size || o.layout || o.treatment);
}

TEST(Options, OutputAndStandardStreamsCanBeNamed) {
  const Options o = parse({"-o", "-", "-"});
  EXPECT_EQ(o.inputs.front(), "-");
  EXPECT_EQ(o.outputs.front(), "-");
  EXPECT_EQ(parse({"-", "out.tif"}).inputs.front(), "-");
}

TEST(Options, AFolderGetsEveryInputUnderItsOwnName) {
  const Options o = parse({"-d", "to", "-j", "3", "a/x.png", "y.tar.gz", "z", ".hidden"});
  EXPECT_EQ(o.outputs,
            (std::vector<std::string>{"to/x.tif", "to/y.tar.tif", "to/z.tif", "to/.hidden.tif"}));
  EXPECT_EQ(o.jobs, 3u);
  EXPECT_EQ(errorOf({"-d", "to", "a/x.png", "b/x.jpg"}), "two inputs would be written to to/x.tif");
  EXPECT_EQ(errorOf({"-d", "to", "-"}), "standard input has no name to use with -d; give -o");
}

TEST(Options, ThreadsAreANumber) {
  EXPECT_EQ(parse({"in.png", "out.tif"}).threads, 0u);
  EXPECT_EQ(parse({"--threads", "2", "in.png", "out.tif"}).threads, 2u);
  for (const char *bad : {"0", "257", "-1", "x", "2x"}) {
    EXPECT_NE(errorOf({"--threads", bad, "in.png", "out.tif"}), "") << bad;
  }
}

TEST(Options, SeveralInputsNeedAFolder) {
  EXPECT_EQ(errorOf({"a.png", "b.png", "c.tif"}),
            "several inputs go into a folder, or as pages into one file: give -d DIR, or --pages");
  EXPECT_EQ(errorOf({}), "no input given");
  EXPECT_EQ(errorOf({"a.png"}), "no output given");
  EXPECT_EQ(parse({"--dry-run", "a.png"}).outputs.front(), "");
}

TEST(Options, AnEmptyNameIsNotTakenForNoneGiven) {
  for (const char *option : {"--output", "--directory", "--library", "--profile", "--section"}) {
    EXPECT_EQ(errorOf({option, "", "a.png", "b.png"}), std::string(option) + ": the name is empty");
  }
}

TEST(Options, UnderstandsOtherNamesOfModesAndCompressions) {
  const Options o = parse({"-m", "bw", "-c", "CCITTFax4", "a", "b"});
  EXPECT_EQ(o.mode, RAXEL_MODE_BILEVEL);
  EXPECT_EQ(o.compression, RAXEL_COMPRESS_T6);
  EXPECT_TRUE(parse({"--mode", "auto", "a", "b"}).autoMode);
  EXPECT_EQ(errorOf({"-c", "zip", "a", "b"}),
            "--compress zip: is none of auto none packbits huffman lzw t4 t6; see --list");
}

TEST(Options, KnowsWordsInCapitals) {
  const Options o =
      parse({"-m", "AUTO", "--layout", "TILES", "--size", "6X4IN", "--quantizer", "Fast", "--dpi",
             "200X100", "--background", "Black", "--color-treatment", "GREY", "a", "b"});
  EXPECT_TRUE(o.autoMode);
  EXPECT_EQ(o.layout, RAXEL_LAYOUT_TILES);
  EXPECT_EQ(o.size->x, 6);
  EXPECT_EQ(o.size->y, 4);
  EXPECT_EQ(o.quantizer, RAXEL_QUANTIZE_FAST);
  EXPECT_EQ(o.dpi, (std::array{200.0, 100.0}));
  EXPECT_EQ(o.background, (std::array<uint8_t, 3>{0, 0, 0}));
  EXPECT_EQ(o.treatment, RAXEL_TREAT_GREY);
}

TEST(Options, ReadsResolutions) {
  EXPECT_EQ(parse({"--dpi", "300", "a", "b"}).dpi, (std::array{300.0, 300.0}));
  EXPECT_EQ(parse({"--dpi=200x100", "a", "b"}).dpi, (std::array{200.0, 100.0}));
  EXPECT_EQ(parse({"--dpi", "203.2x1200", "a", "b"}).dpi, (std::array{203.2, 1200.0}));
  for (const char *bad : {"0", "0.9", "100001", "x", "300x", "300x0", "3e2", "nan", "-96", "96.5.1", ""}) {
    EXPECT_EQ(errorOf({"--dpi", bad, "a", "b"}),
              std::string("--dpi ") + bad + ": give 1 to 100000, as 300, 203.2 or 204x98");
  }
}

TEST(Options, HoldsResolutionsAgainstTheFilterWhereItWritesThem) {
  const std::string why =
      "--dpi: the filter itself takes whole numbers from 32 to 400, and so do --as-is and --save";
  for (const char *bad : {"600", "31", "203.2"}) {
    EXPECT_EQ(errorOf({"--dpi", bad, "--as-is", "a", "b"}), why);
    EXPECT_EQ(errorOf({"--dpi", bad, "--save", "--profile", "p", "a", "b"}), why);
  }
  EXPECT_EQ(parse({"--dpi", "400", "--as-is", "a", "b"}).dpi, (std::array{400.0, 400.0}));
}

TEST(Options, ReadsPages) {
  const auto pages = [](const char *text) {
    std::vector<std::array<uint32_t, 2>> out;
    for (const host::PageRange &range : parse({"--pages", "--page", text, "a", "b"}).pageRanges)
      out.push_back({range.first, range.last});
    return out;
  };
  using Ranges = std::vector<std::array<uint32_t, 2>>;
  EXPECT_EQ(pages("3"), (Ranges{{3, 3}}));
  EXPECT_EQ(pages("3,1-2,7-"), (Ranges{{3, 3}, {1, 2}, {7, 0}}));
  for (const char *bad : {"0", "2-1", "x", "-3", "1,,2", "", "1-2-3", "70000"}) {
    EXPECT_EQ(errorOf({"--pages", "--page", bad, "a", "b"}),
              std::string("--page ") + bad + ": give numbers from 1 on, as 3, 1,4-6 or 2-");
  }
}

TEST(Options, PutsSeveralInputsIntoOneFileAsPagesOnly) {
  const host::Options o = parse({"--pages", "a", "b", "c"});
  EXPECT_EQ(o.inputs, (std::vector<std::string>{"a", "b"}));
  EXPECT_EQ(o.outputs, (std::vector<std::string>{"c"}));
  EXPECT_EQ(errorOf({"a", "b", "-o", "c"}),
            "several inputs go into a folder, or as pages into one file: give -d DIR, or --pages");
  EXPECT_EQ(errorOf({"--page", "1-2", "a", "b"}),
            "--page names several pages: give --pages for one file, or -d DIR for a file a page");
  EXPECT_EQ(errorOf({"--pages", "--as-is", "a", "b"}),
            "--as-is leaves all to the filter, which writes one picture: no --pages");
}

TEST(Options, CodesOneStripByOneRoadOnly) {
  EXPECT_EQ(parse({"a", "b"}).strips, RAXEL_STRIPS_QUARTERS);
  EXPECT_EQ(parse({"--strips", "one", "a", "b"}).strips, RAXEL_STRIPS_ONE);
  EXPECT_EQ(errorOf({"--strips", "two", "a", "b"}), "--strips two: is none of quarters one");
  EXPECT_EQ(errorOf({"--strips", "one", "--as-is", "a", "b"}),
            "--as-is leaves all to the filter: no --strips");
  EXPECT_EQ(errorOf({"--strips", "one", "--via", "driver", "a", "b"}), "--strips one goes by --via cell");
}

TEST(Options, ReadsSizes) {
  const auto size = [](const char *text) { return *parse({"--size", text, "a", "b"}).size; };
  EXPECT_EQ(size("6x4").x, 6);
  EXPECT_EQ(size("6x4in").y, 4);
  EXPECT_DOUBLE_EQ(size("25.4x50.8mm").y, 2);
  EXPECT_DOUBLE_EQ(size("5.08x2.54cm").x, 2);
  EXPECT_TRUE(size("800x600px").pixels);
  EXPECT_EQ(size("x3").x, 0);
  EXPECT_EQ(size("x3").y, 3);
  EXPECT_EQ(size("7").x, 7);
  for (const char *bad : {"", "x", "0x0", "axb", "6x4ft", "6x4x2", "-6x4", "1e9x1", "nanx1"}) {
    EXPECT_NE(errorOf({"--size", bad, "a", "b"}), "") << bad;
  }
}

TEST(Options, ReadsColorsAndEscapes) {
  EXPECT_EQ(parse({"--background", "#1080fF", "a", "b"}).background,
            (std::array<uint8_t, 3>{16, 128, 255}));
  EXPECT_EQ(parse({"--background", "#1aF", "a", "b"}).background,
            (std::array<uint8_t, 3>{0x11, 0xAA, 0xFF}));
  for (const char *bad : {"", "#", "pink", "#12", "#1234", "#12345", "#1234567", "#12345g", "#-12345"}) {
    EXPECT_NE(errorOf({"--background", bad, "a", "b"}), "") << bad;
  }
  const Options o = parse({"--set", "10=153", "--set", "13=2.5", "a", "b"});
  ASSERT_EQ(o.set.size(), 2u);
  EXPECT_EQ(o.set[1].number, 13);
  EXPECT_EQ(o.set[1].value, "2.5");
  EXPECT_NE(errorOf({"--set", "10", "a", "b"}), "");
  EXPECT_NE(errorOf({"--set", "x=1", "a", "b"}), "");
}

// The table of HTML 4.
TEST(Options, KnowsTheSixteenColorsOfHtml) {
  const std::vector<std::pair<const char *, std::array<uint8_t, 3>>> colors{
      {"Black", {0, 0, 0}},       {"Green", {0, 128, 0}},    {"Silver", {192, 192, 192}},
      {"Lime", {0, 255, 0}},      {"Gray", {128, 128, 128}}, {"Olive", {128, 128, 0}},
      {"White", {255, 255, 255}}, {"Yellow", {255, 255, 0}}, {"Maroon", {128, 0, 0}},
      {"Navy", {0, 0, 128}},      {"Red", {255, 0, 0}},      {"Blue", {0, 0, 255}},
      {"Purple", {128, 0, 128}},  {"Teal", {0, 128, 128}},   {"Fuchsia", {255, 0, 255}},
      {"Aqua", {0, 255, 255}}};
  for (const auto &[name, color] : colors)
    EXPECT_EQ(parse({"--background", name, "a", "b"}).background, color) << name;
  // And these are what the shells complete.
  for (const host::OptionRow &row : host::kOptions) {
    if (row.id != host::OptionId::kBackground) continue;
    std::istringstream words{std::string(row.choices)};
    size_t count = 0;
    for (std::string word; words >> word; ++count)
      EXPECT_EQ(errorOf({"--background", word.c_str(), "a", "b"}), "") << word;
    EXPECT_EQ(count, colors.size());
  }
}

TEST(Options, WaitForTheDiskUnlessToldNotTo) {
  EXPECT_FALSE(parse({"a", "b"}).rules.noSync);
  EXPECT_TRUE(parse({"--no-sync", "a", "b"}).rules.noSync);
}

TEST(Options, ConfineDecodersUnlessToldNotTo) {
  EXPECT_FALSE(parse({"a", "b"}).noSandbox);
  EXPECT_TRUE(parse({"--no-sandbox", "a", "b"}).noSandbox);
}

TEST(Options, RefusesWhatDoesNotGoTogether) {
  EXPECT_EQ(errorOf({"--save", "a", "b"}), "--save needs --profile");
  EXPECT_EQ(errorOf({"--section", "s", "a", "b"}), "--section needs --profile");
  EXPECT_EQ(errorOf({"-q", "-v", "a", "b"}), "--quiet and --verbose exclude each other");
  EXPECT_EQ(errorOf({"-f", "-n", "a", "b"}), "--force and --no-clobber exclude each other");
  EXPECT_EQ(errorOf({"-o", "x", "-d", "y", "a"}), "-o and -d exclude each other");
  EXPECT_NE(errorOf({"--as-is", "--verify", "a", "b"}), "");
  EXPECT_NE(errorOf({"--as-is", "--via", "driver", "a", "b"}), "");
  EXPECT_NE(errorOf({"-j", "0", "-d", "x", "a"}), "");
  EXPECT_NE(errorOf({"--bogus", "a", "b"}), "");
  EXPECT_NE(errorOf({"a", "--mode"}), "");
}

TEST(Options, EveryRowOfTheTableIsAnOption) {
  for (const host::OptionRow &row : host::kOptions) {
    EXPECT_FALSE(row.help.empty());
    EXPECT_NE(row.help.back(), '.') << row.longName;
    const bool words = row.completes == host::Completes::kChoices ||
                       row.completes == host::Completes::kExamples ||
                       row.completes == host::Completes::kChoicesOrFile;
    EXPECT_EQ(words, !row.choices.empty()) << row.longName;
    // Without its argument an option is an error that is not "unknown".
    const std::string name = "--" + std::string(row.longName);
    const std::string error = errorOf({name.c_str()});
    EXPECT_EQ(error.find("not expected"), std::string::npos) << error;
  }
}

TEST(Options, NamesAreThoseOfTheTables) {
  const auto choicesOf = [](host::OptionId id) {
    return std::string(std::ranges::find(host::kOptions, id, &host::OptionRow::id)->choices);
  };
  std::set<std::string> presets, palettes;
  for (const host::Preset &preset : host::kPresets) presets.emplace(preset.name);
  for (const host::NamedPalette &palette : host::kPalettes) palettes.emplace(palette.name);
  const auto words = [](const std::string &text) {
    std::istringstream list(text);
    return std::set<std::string>(std::istream_iterator<std::string>(list), {});
  };
  EXPECT_EQ(words(choicesOf(host::OptionId::kPreset)), presets);
  EXPECT_EQ(words(choicesOf(host::OptionId::kPalette)), palettes);
}

TEST(Options, ADateIsADayThatThereIs) {
  for (const char *good : {"2026:01:31 23:59:59", "2024:02:29 00:00:00"})
    EXPECT_EQ(parse({"--date", good, "a", "b"}).date, good);
  for (const char *bad :
       {"2026:13:01 00:00:00", "2026:00:01 00:00:00", "2026:04:31 00:00:00", "2026:01:00 00:00:00",
        "2025:02:29 00:00:00", "2026:01:01 24:00:00", "2026:01:01 00:60:00", "2026:01:01 00:00:60",
        "2026-01-01 00:00:00", "2026:01:01"})
    EXPECT_EQ(errorOf({"--date", bad, "a", "b"}),
              "--date " + std::string(bad) + ": give now, or a date and time as 2026:01:31 23:59:59");
}

TEST(Options, APresetKeepsSilentAboutWhatIsGiven) {
  const Options fax = parse({"--preset", "fax-fine", "in.png", "out.tif"});
  EXPECT_EQ(fax.mode, RAXEL_MODE_BILEVEL);
  EXPECT_EQ(fax.compression, RAXEL_COMPRESS_T4);
  EXPECT_EQ(fax.strips, RAXEL_STRIPS_ONE);
  EXPECT_EQ(fax.dpi, (std::array<double, 2>{204, 196}));
  EXPECT_EQ(fax.paper, int{host::kPaperA4});
  EXPECT_TRUE(fax.pages);
  const Options own = parse({"--paper", "letter", "--preset", "fax-fine", "-c", "t6", "in.png", "out.tif"});
  EXPECT_EQ(own.compression, RAXEL_COMPRESS_T6);
  EXPECT_EQ(own.paper, int{host::kPaperLetter});
  EXPECT_EQ(own.mode, RAXEL_MODE_BILEVEL);
  EXPECT_EQ(parse({"--preset", "label", "in.png", "out.tif"}).strips, RAXEL_STRIPS_ONE);
  // Which is for fax codes alone.
  EXPECT_EQ(parse({"--preset", "label", "-c", "packbits", "a", "b"}).strips, RAXEL_STRIPS_QUARTERS);
  EXPECT_EQ(parse({"--preset", "label", "--layout", "tiles", "a", "b"}).strips, RAXEL_STRIPS_QUARTERS);
  const Options dots = parse({"--preset", "label", "--dither", "in.png", "out.tif"});
  EXPECT_EQ(dots.threshold, int{RAXEL_THRESHOLD_NONE});
  EXPECT_NE(errorOf({"--preset", "fax", "in.png", "out.tif"}).find("see --list"), std::string::npos);
  EXPECT_EQ(errorOf({"--fit", "pad", "in.png", "out.tif"}), "--fit needs --size or --paper");
}
