// The option parser is slow to compile; of the commands that look, only this source includes it.
#include "tools/LookCommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "tools/ChartCommand.h"
#include "tools/DiffCommand.h"
#include "tools/InfoCommand.h"
#include "tools/JudgeOptions.h"
#include "tools/TreeCommand.h"

namespace tool {

namespace {

int Complain(const std::string& command, const std::string& what) {
  std::fprintf(stderr, "mp4judge %s: %s\nTry 'mp4judge %s --help'.\n", command.c_str(),
               what.c_str(), command.c_str());
  return kTrouble;
}

/// Takes the options; what is left are names. Names are kept from the option parser, which would
/// split "[a,b]" and drop "{}"; behind "--" everything is a name.
class Arguments {
 public:
  Arguments(CLI::App* app, const std::vector<std::string>& arguments) {
    const auto end = std::find(arguments.begin(), arguments.end(), "--");
    std::vector<std::string> before(arguments.begin(), end);
    // The parser takes them from the back.
    std::reverse(before.begin(), before.end());
    app->allow_extras();
    app->parse(std::move(before));
    names_ = app->remaining();
    for (const std::string& name : names_) {
      if (name.size() > 1 && name[0] == '-') throw CLI::ExtrasError({name});
    }
    if (end != arguments.end()) names_.insert(names_.end(), end + 1, arguments.end());
  }
  /// So many names, no more and no fewer.
  const std::vector<std::string>& Names(std::size_t count) const {
    if (names_.size() < count) {
      throw CLI::RequiredError(count == 1 ? "no file is named; FILE" : "two files, A and B,");
    }
    if (names_.size() > count) throw CLI::ExtrasError({names_[count]});
    return names_;
  }

 private:
  std::vector<std::string> names_;
};

int Tree(CLI::App* app, const std::vector<std::string>& arguments) {
  TreeOptions options;
  bool noFields = false;
  app->add_option("-p,--path", options.path,
                  "Only the boxes of this path, with what is below: \"trak[2]/tkhd\", \"tenc\", "
                  "\"/moov/*/udta\"");
  app->add_option("-d,--depth", options.depth, "Only so many levels")->check(CLI::Range(1, 255));
  app->add_option("--most", options.most, "List at most so many boxes")->check(CLI::PositiveNumber);
  app->add_flag("--no-fields", noFields, "Leave the fields out");
  app->add_flag("--json", options.json, "Print JSON, valid whatever the file holds");
  options.file = Arguments(app, arguments).Names(1)[0];
  options.fields = !noFields;
  return RunTree(options);
}

int Info(CLI::App* app, const std::vector<std::string>& arguments) {
  InfoOptions options;
  app->add_flag("--json", options.json, "Print JSON, valid whatever the file holds");
  options.file = Arguments(app, arguments).Names(1)[0];
  return RunInfo(options);
}

int Chart(CLI::App* app, const std::vector<std::string>& arguments) {
  ChartOptions options;
  app->add_option("-o,--output", options.output,
                  "The chart: FILE.svg a picture, FILE.html one that zooms and tells on hover")
      ->required();
  options.file = Arguments(app, arguments).Names(1)[0];
  return RunChart(options);
}

int Diff(CLI::App* app, const std::vector<std::string>& arguments) {
  DiffOptions options;
  const Arguments taken(app, arguments);
  options.first = taken.Names(2)[0];
  options.second = taken.Names(2)[1];
  return RunDiff(options);
}

/// Runs a command that takes these names, `purpose` for its --help.
template <class Use>
int Run(const char* name, const char* names, const char* purpose, Use&& use) {
  CLI::App app(purpose, std::string("mp4judge ") + name);
  app.set_help_flag("-h,--help", "Print this and exit");
  try {
    return use(&app);
  } catch (const CLI::CallForHelp&) {
    std::string text = app.help();
    const std::string mark = "[OPTIONS]";
    const std::size_t at = text.find(mark);
    if (at != std::string::npos) text.insert(at + mark.size(), std::string(" ") + names);
    std::fwrite(text.data(), 1, text.size(), stdout);
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return kAllClear;
    std::fputs("mp4judge: the output cannot be written\n", stderr);
    return kTrouble;
  } catch (const CLI::ParseError& error) {
    return Complain(name, error.what());
  }
}

}  // namespace

int TreeCommandLine(const std::vector<std::string>& arguments) {
  return Run("tree", "FILE", "Prints the boxes of a file with offset, size, name and fields.",
             [&](CLI::App* app) { return Tree(app, arguments); });
}

int InfoCommandLine(const std::vector<std::string>& arguments) {
  return Run("info", "FILE", "Prints what a file is: movie, tracks, codecs, metadata, protection.",
             [&](CLI::App* app) { return Info(app, arguments); });
}

int ChartCommandLine(const std::vector<std::string>& arguments) {
  return Run("chart", "FILE", "Draws where things lie in a file, to scale.",
             [&](CLI::App* app) { return Chart(app, arguments); });
}

int DiffCommandLine(const std::vector<std::string>& arguments) {
  return Run("diff", "A B",
             "Prints what differs between two files in structure, fields and protection.\n"
             "Exit status: 0 when nothing does, 1 when something does, 2 on trouble.",
             [&](CLI::App* app) { return Diff(app, arguments); });
}

}  // namespace tool
