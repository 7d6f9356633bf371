#pragma once

/// What the tool says about itself: --help, the man page and the completions are made of these.
namespace tool::words {

/// A command, or judging, which has no name.
struct Command {
  const char* name;
  const char* operands;  ///< what stands behind the options
  const char* brief;     ///< for a list of commands
  const char* purpose;   ///< sentences
  const char* more;      ///< lines that stand below the options
};

constexpr Command kJudge = {
    "", "PATH...", "says whether movie files are protected",
    "Says whether MP4, MOV, M4A, 3GP, CMAF, HEIF and related files are protected, and on what "
    "evidence.",
    "One line a file, in the order given:\n"
    "  PATH: clear                            every track and item was seen, none is protected\n"
    "  PATH: protected (cenc: video, audio)   by these schemes\n"
    "  PATH: undetermined (REASON)            unreadable, cut, broken, or not a movie\n"
    "Control characters in a name are shown as \\xHH, a backslash as two.\n"};
constexpr Command kTree = {
    "tree", "FILE", "the boxes of a file, with their fields",
    "Prints the boxes of a file: offset, size, type and the standard's name, with the fields below "
    "and what is wrong with a box behind \"!\". Fields of long tables show their first rows.",
    "Exit status: 0, or 2 when the file could not be read or is no movie, or not every box was\n"
    "listed.\n"};
constexpr Command kInfo = {
    "info", "FILE", "movie, tracks, codecs, metadata, protection",
    "Prints what a file is: protection, duration and bit rate; of each track its codec with "
    "profile and level, dimensions, language, frame rate and edits; metadata and chapters.",
    "Exit status: 0, or 2 when the file could not be read.\n"};
constexpr Command kSamples = {
    "samples", "FILE", "every sample: where it lies and when it plays",
    "Lists every sample of a movie: where it lies in the file and when it plays. Times are in "
    "units of the track. Samples whose place is unknown are not listed; what is wrong with the "
    "boxes that place them goes to standard error.",
    "Exit status: 0, or 2 when the file could not be read or is no movie, something is wrong with\n"
    "the boxes that place its samples, or not every sample was listed.\n"};
constexpr Command kChart = {
    "chart", "FILE -o CHART", "where things lie in a file, drawn to scale",
    "Draws where things lie in a file, to scale: its boxes, the media of each track, what the "
    "verdict rests on, what is wrong, and the bit rate over time. The chart is one file that needs "
    "nothing else, light or dark as its reader's system is.",
    "Exit status: 0, or 2 when the file could not be read as a whole, not everything was drawn, "
    "or\n"
    "the chart could not be written.\n"};
constexpr Command kDiff = {
    "diff", "A B", "what differs between two files",
    "Prints what differs between two files in boxes, fields, tables and protection, a line each: "
    "\"-\" is in A alone, \"+\" in B alone, \"~\" in both but not the same. Media data is compared "
    "by its size alone.",
    "Exit status: 0 when nothing differs, 1 when something does, 2 when a file could not be read\n"
    "or is no movie, or not everything was compared.\n"};

constexpr const char* kHelp = "Print this and exit";
constexpr const char* kVersion = "Print the version and exit";
constexpr const char* kRecursive =
    "Judge the files in folders, too: by content, whatever their names. What plainly is no movie "
    "is passed over. Each folder is walked once, however many links lead to it";
constexpr const char* kExtensions = "In folders, only files with one of these extensions";
constexpr const char* kAllFiles = "In folders, list what plainly is no movie as well";
constexpr const char* kFilesFrom = "Judge the files named in FILE, one a line, too; - is the input";
constexpr const char* kFiles0From = "The same with names that a zero byte ends";
constexpr const char* kQuiet = "Print nothing: the exit status is the answer";
constexpr const char* kOnlyProtected = "Print only the paths of protected files";
constexpr const char* kOnlyOthers =
    "Print only the paths of files that are not known to be protected";
constexpr const char* kNul = "End each record with a zero byte, and print names as they are";
constexpr const char* kJson =
    "Print a JSON object a line, as docs/report.schema.json has it, valid whatever the names";
constexpr const char* kExplain =
    "Print the evidence, problems and notes below each line, and why the host's answer differs";
constexpr const char* kHostAnswer =
    "Add the host's answer: 1 when the first sample entry of a sound or video track is \"drms\", "
    "else 0";
constexpr const char* kEverything =
    "Look at every movie fragment, not only at those that decide as a rule";
constexpr const char* kSummary = "Print counts by verdict and scheme at the end, on standard error";
constexpr const char* kJobs = "Judge so many files at a time; otherwise one for each processor";
constexpr const char* kCache =
    "Remember verdicts in FILE (SQLite), and look at unchanged files no second time";
constexpr const char* kNoSandbox =
    "Keep all rights. Otherwise the tool gives up everything but reading before it looks at the "
    "first byte, where the system can do that";
constexpr const char* kPrint = "Print the man page, or the completions for a shell, and exit";

constexpr const char* kTreePath =
    "Only the boxes of this path, with what is below: \"trak[2]/tkhd\", \"tenc\", "
    "\"/moov/*/udta\"";
constexpr const char* kTreeDepth = "Only so many levels";
constexpr const char* kTreeMost = "List at most N boxes; otherwise 200,000";
constexpr const char* kTreeNoFields = "Leave the fields out";
constexpr const char* kLookJson = "Print JSON, valid whatever the file holds";

constexpr const char* kSamplesJson =
    "A JSON object a line: track, sample, offset, size, dts, cts, duration, sync, description, "
    "protected; null for what cannot be told. Where they apply: fragment (its number), outside "
    "(not all of its bytes are in the file), external (its data lie in another file)";
constexpr const char* kSamplesCsv = "The same as comma-separated values, with a header";
constexpr const char* kSamplesTrack = "Only the track of this ID";
constexpr const char* kSamplesMost =
    "List at most N samples; otherwise two millions, and one for every four bytes of the file";
constexpr const char* kSamplesInit = "FILE is a media segment, which this file initializes";

constexpr const char* kChartOutput =
    "The chart: a name in .svg is a picture, one in .html a page that zooms and tells on hover";

constexpr const char* kStatus =
    "Exit status:\n"
    "  0    every file is clear\n"
    "  1    something is protected, and nothing is undetermined\n"
    "  2    something is undetermined or unreadable, or the usage was wrong, or the output could\n"
    "       not be written\n"
    "  130  interrupted\n";

}  // namespace tool::words
