// SPDX-License-Identifier: MIT
// Every option of raxel-export, once: the command line, --help, the manual page and the completions are
// made from this table.
#pragma once

#include <array>
#include <string_view>

namespace host {

enum class OptionId {
  kOutput,
  kDirectory,
  kJobs,
  kThreads,
  kPages,
  kPage,
  kForce,
  kNoClobber,
  kNoSync,
  kNoSandbox,
  kManifest,
  kResume,
  kShard,
  kPreset,
  kMode,
  kCompress,
  kDpi,
  kSize,
  kFit,
  kPaper,
  kLayout,
  kStrips,
  kPredictor,
  kDither,
  kNoDither,
  kThreshold,
  kTreatment,
  kQuantizer,
  kPalette,
  kBackground,
  kAsIs,
  kIcc,
  kDescription,
  kArtist,
  kCopyright,
  kDate,
  kVia,
  kLibrary,
  kProfile,
  kSection,
  kSave,
  kSet,
  kDryRun,
  kVerify,
  kInspect,
  kList,
  kJson,
  kQuiet,
  kVerbose,
  kVersion,
};

// What completes an argument: kChoices are all that it can be, kExamples some of it, and kChoicesOrFile all
// but the names of files.
enum class Completes { kNothing, kChoices, kExamples, kChoicesOrFile, kFile, kFolder };

struct OptionRow {
  OptionId id;
  char shortName;  // 0 for none
  std::string_view longName;
  std::string_view argument;  // what stands for its value in texts; empty for a flag
  Completes completes;
  std::string_view choices;  // separated by spaces
  std::string_view group;
  std::string_view help;  // a sentence without its full stop
};

inline constexpr std::string_view kGroupOutput = "Output";
inline constexpr std::string_view kGroupPicture = "Picture";
inline constexpr std::string_view kGroupFilter = "Filter";
inline constexpr std::string_view kGroupReport = "Report";

// clang-format off
inline constexpr auto kOptions = std::to_array<OptionRow>({
  {OptionId::kOutput, 'o', "output", "FILE", Completes::kFile, "", kGroupOutput,
   "Write to FILE; - is standard output"},
  {OptionId::kDirectory, 'd', "directory", "DIR", Completes::kFolder, "", kGroupOutput,
   "Write every input to a file of the same name with .tif in DIR, which is made when it is missing"},
  {OptionId::kJobs, 'j', "jobs", "N", Completes::kNothing, "", kGroupOutput,
   "With -d: export N pictures at a time, each in a process of its own"},
  {OptionId::kThreads, 0, "threads", "N", Completes::kNothing, "", kGroupOutput,
   "Code large pictures on at most N cores, which -j shares out; all there are by default"},
  {OptionId::kPages, 0, "pages", "", Completes::kNothing, "", kGroupOutput,
   "Write all pages of all inputs to one file, or with -d those of each input to its own"},
  {OptionId::kPage, 0, "page", "N,M-K", Completes::kNothing, "", kGroupOutput,
   "Take these pages of each TIFF or GIF, in this order; with -d and no --pages each goes to a file of its own"},
  {OptionId::kForce, 'f', "force", "", Completes::kNothing, "", kGroupOutput,
   "Replace an output even when it is write-protected or no TIFF"},
  {OptionId::kNoClobber, 'n', "no-clobber", "", Completes::kNothing, "", kGroupOutput,
   "Never replace a file"},
  {OptionId::kNoSync, 0, "no-sync", "", Completes::kNothing, "", kGroupOutput,
   "Do not wait until the disk has the file; a power cut soon after may then leave neither the old nor the new one"},
  {OptionId::kNoSandbox, 0, "no-sandbox", "", Completes::kNothing, "", kGroupOutput,
   "Decode pictures in this process; else libraries that do so work in one of their own, which can open no file"},
  {OptionId::kManifest, 0, "manifest", "FILE", Completes::kFile, "", kGroupOutput,
   "Append a line of JSON to FILE for each picture that is written: source, target, digests, options"},
  {OptionId::kResume, 0, "resume", "", Completes::kNothing, "", kGroupOutput,
   "With --manifest: leave out what it says was made with these options from this source, if the file still is as it was"},
  {OptionId::kShard, 0, "shard", "I/N", Completes::kNothing, "", kGroupOutput,
   "With -d: take the share number I, from 1 on, of N, into which the inputs fall by their names"},

  {OptionId::kPreset, 0, "preset", "NAME", Completes::kChoices,
   "archive fax-standard fax-fine fax-superfine label", kGroupPicture,
   "Options for a purpose, which --list names; those that are given go before them"},
  {OptionId::kMode, 'm', "mode", "MODE", Completes::kChoices,
   "auto bilevel grey16 grey256 color8 color16 color256 rgb", kGroupPicture,
   "What the pixels become; auto (the default) is the smallest mode that keeps the picture; --list has other names"},
  {OptionId::kCompress, 'c', "compress", "CODE", Completes::kChoices,
   "auto none packbits huffman lzw t4 t6", kGroupPicture,
   "How they are coded; huffman, t4 and t6 are for bilevel pictures; auto is t6 for them and lzw for all others; "
   "none is the default; --list has other names"},
  {OptionId::kDpi, 0, "dpi", "X[xY]", Completes::kNothing, "", kGroupPicture,
   "Dots an inch, as 300, 203.2 or 204x98; the picture's own or 96 by default"},
  {OptionId::kSize, 0, "size", "WxH[UNIT]", Completes::kNothing, "", kGroupPicture,
   "Scale to fit into W by H in, cm, mm or px (inches by default); either may be left out"},
  {OptionId::kFit, 0, "fit", "HOW", Completes::kChoices, "contain exact pad", kGroupPicture,
   "With --size or --paper: keep the proportions (the default), fill the box (the default for WxHpx where the dots "
   "an inch differ), or keep them and pad with white (the default with --paper)"},
  {OptionId::kPaper, 0, "paper", "PAPER", Completes::kChoices, "a4 letter", kGroupPicture,
   "Fit into a sheet of paper and pad with white; a side of --size in px goes before its own"},
  {OptionId::kLayout, 0, "layout", "LAYOUT", Completes::kChoices, "strips tiles", kGroupPicture,
   "strips (the default), or tiles of 512 by 128 pixels with t6"},
  {OptionId::kStrips, 0, "strips", "HOW", Completes::kChoices, "quarters one", kGroupPicture,
   "Cut the rows into quarters (the default), or code them as one strip with huffman, t4 or t6"},
  {OptionId::kPredictor, 0, "predictor", "KIND", Completes::kChoices, "none horizontal auto", kGroupPicture,
   "With lzw in the modes grey256 and rgb: code differences from pixel to pixel, which makes photos smaller; auto "
   "(the default) does where a trial says so"},
  {OptionId::kDither, 0, "dither", "", Completes::kNothing, "", kGroupPicture,
   "Spread lost levels by error diffusion; the default for bilevel, grey16, color8 and color16, except for "
   "pictures of two colours and documents as bilevel"},
  {OptionId::kNoDither, 0, "no-dither", "", Completes::kNothing, "", kGroupPicture,
   "Take the nearest colour instead"},
  {OptionId::kThreshold, 0, "threshold", "LEVEL", Completes::kExamples, "auto adaptive 128", kGroupPicture,
   "In bilevel files make black what is below LEVEL, 0 to 255; auto finds one level for all of the picture, "
   "and adaptive one for the surroundings of each pixel, which shadows ask for"},
  {OptionId::kTreatment, 0, "color-treatment", "KIND", Completes::kChoices,
   "none invert invert-grey grey grey-invert", kGroupPicture,
   "Change colours first: invert all or only greys, or make all grey"},
  {OptionId::kQuantizer, 0, "quantizer", "WHICH", Completes::kChoices, "best fast filter", kGroupPicture,
   "Who chooses colours for the 16- and 256-colour modes: the smallest error, Leptonica, or the filter"},
  {OptionId::kPalette, 0, "palette", "FILE|NAME", Completes::kChoicesOrFile, "eink7 ega16 web216", kGroupPicture,
   "The colours of the 16- and 256-colour modes: those of a GIMP palette (.gpl), of a picture that has few, or of "
   "a name that --list tells"},
  {OptionId::kBackground, 0, "background", "COLOR", Completes::kExamples,
   "white black silver gray maroon red purple fuchsia green lime olive yellow navy blue teal aqua", kGroupPicture,
   "What shows through transparent parts: white (the default), another of HTML's sixteen names, #RGB or #RRGGBB"},
  {OptionId::kAsIs, 0, "as-is", "", Completes::kNothing, "", kGroupPicture,
   "Hand the picture over unprepared and let the filter do everything in its own way"},
  {OptionId::kIcc, 0, "icc", "WHAT", Completes::kChoicesOrFile, "keep drop", kGroupPicture,
   "The ICC profile of an RGB or grey file: keep (the default: the picture's own, where it fits), drop, or a FILE"},
  {OptionId::kDescription, 0, "description", "TEXT", Completes::kNothing, "", kGroupPicture,
   "What the picture shows; the picture's own by default, and none for an empty TEXT"},
  {OptionId::kArtist, 0, "artist", "TEXT", Completes::kNothing, "", kGroupPicture,
   "Who made it, likewise"},
  {OptionId::kCopyright, 0, "copyright", "TEXT", Completes::kNothing, "", kGroupPicture,
   "Whose it is, likewise"},
  {OptionId::kDate, 0, "date", "WHEN", Completes::kExamples, "now", kGroupPicture,
   "The file's date, now or as \"2026:01:31 23:59:59\"; none by default, so that bytes repeat"},

  {OptionId::kVia, 0, "via", "ROAD", Completes::kChoices, "cell driver metafile", kGroupFilter,
   "The road into the filter: one call (the default), a raster driver session, or a metafile session, "
   "which always ends with exit code 70 here, for the tests of hosts"},
  {OptionId::kLibrary, 0, "library", "FILE", Completes::kFile, "", kGroupFilter,
   "Load this raxel.so"},
  {OptionId::kProfile, 0, "profile", "FILE", Completes::kFile, "", kGroupFilter,
   "Take settings from this profile; other options go before it"},
  {OptionId::kSection, 0, "section", "NAME", Completes::kNothing, "", kGroupFilter,
   "The profile's section; what its ~Mode key names by default"},
  {OptionId::kSave, 0, "save", "", Completes::kNothing, "", kGroupFilter,
   "Store the settings given on the command line in the profile"},
  {OptionId::kSet, 0, "set", "N=VALUE", Completes::kNothing, "", kGroupFilter,
   "Send setup escape N with this value before all else; may be repeated"},

  {OptionId::kDryRun, 0, "dry-run", "", Completes::kNothing, "", kGroupReport,
   "Write nothing; tell what would be written"},
  {OptionId::kVerify, 0, "verify", "", Completes::kNothing, "", kGroupReport,
   "Decode what was written and compare it with what was meant, before the old file goes"},
  {OptionId::kInspect, 0, "inspect", "", Completes::kNothing, "", kGroupReport,
   "Print directory, strips and faults of TIFF files, and write nothing"},
  {OptionId::kList, 0, "list", "", Completes::kNothing, "", kGroupReport,
   "List modes and compressions with their other names, palettes and presets"},
  {OptionId::kJson, 0, "json", "", Completes::kNothing, "", kGroupReport,
   "Report as one JSON document on standard output (standard error when the picture goes there)"},
  {OptionId::kQuiet, 'q', "quiet", "", Completes::kNothing, "", kGroupReport,
   "No progress and no notes"},
  {OptionId::kVerbose, 'v', "verbose", "", Completes::kNothing, "", kGroupReport,
   "Tell what was done, with times"},
  {OptionId::kVersion, 0, "version", "", Completes::kNothing, "", kGroupReport,
   "Print the version and stop"},
});
// clang-format on

}  // namespace host
