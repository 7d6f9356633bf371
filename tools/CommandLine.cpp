// The option parser is slow to compile, so this is the only source that includes it.
#include "tools/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "mp4judge/mp4judge.h"
#include "tools/ChartCommand.h"
#include "tools/Completions.h"
#include "tools/DiffCommand.h"
#include "tools/HelpText.h"
#include "tools/InfoCommand.h"
#include "tools/JudgeCommand.h"
#include "tools/ManPage.h"
#include "tools/Printable.h"
#include "tools/SamplesCommand.h"
#include "tools/TreeCommand.h"

namespace tool {

namespace {

using Names = std::vector<std::string>;

/// What a person can ask for, of whichever command.
struct Asked {
  JudgeOptions judge;
  TreeOptions tree;
  InfoOptions info;
  SamplesOptions samples;
  ChartOptions chart;
  DiffOptions diff;
  std::string print;  ///< a shell, or "man"
};

struct Command {
  const words::Command& words;
  std::size_t files;  ///< how many names it takes; 0: any number
  void (*add)(CLI::App*, Asked*);
  int (*run)(Asked*, Names*);
};

const Names kPrintable = {"man", "bash", "zsh", "fish"};

void AddSandbox(CLI::App* app, bool* sandbox) {
  app->add_flag("!--no-sandbox", *sandbox, words::kNoSandbox);
}

void AddJudge(CLI::App* app, Asked* asked) {
  JudgeOptions* const options = &asked->judge;
  app->set_version_flag("--version", "", words::kVersion);
  app->add_flag("-r,--recursive", options->recursive, words::kRecursive);
  app->add_option("--ext", options->extensions, words::kExtensions)
      ->delimiter(',')
      ->type_name("EXT,...")
      ->allow_extra_args(false);
  app->add_flag("--all-files", options->allFiles, words::kAllFiles);
  app->add_option("--files-from", options->filesFrom, words::kFilesFrom)->type_name("FILE");
  app->add_option("--files0-from", options->files0From, words::kFiles0From)->type_name("FILE");
  app->add_flag("-q,--quiet", options->quiet, words::kQuiet);
  app->add_flag("-l,--protected", options->onlyProtected, words::kOnlyProtected);
  app->add_flag("-L,--not-protected", options->onlyOthers, words::kOnlyOthers)
      ->excludes("--protected");
  app->add_flag("-0,--null", options->nulSeparated, words::kNul);
  app->add_flag("--json", options->json, words::kJson);
  app->add_flag("--explain", options->explain, words::kExplain);
  app->add_flag("--host-answer", options->hostAnswer, words::kHostAnswer);
  app->add_flag("--everything", options->everything, words::kEverything);
  app->add_flag("--summary", options->summary, words::kSummary);
  app->add_option("-j,--jobs", options->jobs, words::kJobs)
      ->type_name("N")
      ->check(CLI::Range(1, 256));
  app->add_option("--cache", options->cache, words::kCache)->type_name("FILE");
  AddSandbox(app, &options->sandbox);
  app->add_option("--print", asked->print, words::kPrint)
      ->type_name("WHAT")
      ->check(CLI::IsMember(kPrintable));
}

void AddTree(CLI::App* app, Asked* asked) {
  TreeOptions* const options = &asked->tree;
  app->add_option("-p,--path", options->path, words::kTreePath)->type_name("BOXES");
  app->add_option("-d,--depth", options->depth, words::kTreeDepth)
      ->type_name("N")
      ->check(CLI::Range(1, 255));
  app->add_option("--most", options->most, words::kTreeMost)
      ->type_name("N")
      ->check(CLI::PositiveNumber);
  app->add_flag("!--no-fields", options->fields, words::kTreeNoFields);
  app->add_flag("--json", options->json, words::kLookJson);
  AddSandbox(app, &options->sandbox);
}

void AddInfo(CLI::App* app, Asked* asked) {
  app->add_flag("--json", asked->info.json, words::kLookJson);
  AddSandbox(app, &asked->info.sandbox);
}

void AddSamples(CLI::App* app, Asked* asked) {
  SamplesOptions* const options = &asked->samples;
  app->add_flag("--json", options->json, words::kSamplesJson);
  app->add_flag("--csv", options->csv, words::kSamplesCsv)->excludes("--json");
  app->add_option("--track", options->track, words::kSamplesTrack)
      ->type_name("ID")
      ->check(CLI::NonNegativeNumber);
  app->add_option("--most", options->most, words::kSamplesMost)
      ->type_name("N")
      ->check(CLI::NonNegativeNumber);
  app->add_option("--init", options->init, words::kSamplesInit)->type_name("FILE");
  AddSandbox(app, &options->sandbox);
}

void AddChart(CLI::App* app, Asked* asked) {
  app->add_option("-o,--output", asked->chart.output, words::kChartOutput)->type_name("CHART");
  AddSandbox(app, &asked->chart.sandbox);
}

void AddDiff(CLI::App* app, Asked* asked) { AddSandbox(app, &asked->diff.sandbox); }

int Complain(const words::Command& command, const std::string& what) {
  const std::string name = std::string(command.name[0] != '\0' ? " " : "") + command.name;
  std::fprintf(stderr, "mp4judge%s: %s\nTry 'mp4judge%s --help'.\n", name.c_str(), what.c_str(),
               name.c_str());
  return kTrouble;
}

/// Everything that goes to standard output must arrive there.
int Say(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return kAllClear;
  std::fputs("mp4judge: the output cannot be written\n", stderr);
  return kTrouble;
}

int RunJudgement(Asked* asked, Names* names) {
  JudgeOptions* const options = &asked->judge;
  options->paths = std::move(*names);
  if (options->paths.empty() && options->filesFrom.empty() && options->files0From.empty()) {
    return Complain(words::kJudge, "no file is named");
  }
  return RunJudge(*options);
}

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {
      {words::kJudge, 0, AddJudge, RunJudgement},
      {words::kTree, 1, AddTree,
       [](Asked* asked, Names* names) {
         asked->tree.file = names->front();
         return RunTree(asked->tree);
       }},
      {words::kInfo, 1, AddInfo,
       [](Asked* asked, Names* names) {
         asked->info.file = names->front();
         return RunInfo(asked->info);
       }},
      {words::kSamples, 1, AddSamples,
       [](Asked* asked, Names* names) {
         asked->samples.file = names->front();
         return RunSamples(asked->samples);
       }},
      {words::kChart, 1, AddChart,
       [](Asked* asked, Names* names) {
         asked->chart.file = names->front();
         return RunChart(asked->chart);
       }},
      {words::kDiff, 2, AddDiff, [](Asked* asked, Names* names) {
         asked->diff.first = names->front();
         asked->diff.second = names->back();
         return RunDiff(asked->diff);
       }}};
  return commands;
}

/// What a value may be comes behind a colon.
std::string ValueName(const CLI::Option& option) {
  const std::string name = option.get_type_name();
  return name.substr(0, name.find(':'));
}

/// The parser of a command that fills `asked`.
class Parser {
 public:
  Parser(const Command& command, Asked* asked) : app_(command.words.purpose) {
    app_.set_help_flag("-h,--help", words::kHelp);
    command.add(&app_, asked);
  }
  CLI::App& App() { return app_; }

  CommandWords Words(const words::Command& command) const {
    CommandWords all{command, {}};
    for (const CLI::Option* option : app_.get_options()) {
      OptionWords one;
      for (const std::string& name : option->get_snames()) one.names.push_back("-" + name);
      for (const std::string& name : option->get_lnames()) one.names.push_back("--" + name);
      if (TakesValue(*option)) one.value = ValueName(*option);
      one.text = option->get_description();
      if (one.names.back() == "--print") one.choices = kPrintable;
      all.options.push_back(std::move(one));
    }
    return all;
  }

  static bool TakesValue(const CLI::Option& option) { return option.get_items_expected_max() > 0; }

 private:
  CLI::App app_;
};

/// Arguments with the names apart, which are kept from the parser: it would split "[a,b]" and drop
/// "{}". Behind "--" everything is a name.
struct Sorted {
  Names options, names;
  std::string unknown;  ///< the first option that there is not; empty when there are all
  std::string lacking;  ///< an option at the end that lacks its value
};

/// Steps of one letter that make one word of another.
std::size_t Distance(const std::string& a, const std::string& b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t corner = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t kept = corner + (a[i - 1] != b[j - 1] ? 1 : 0);
      corner = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, kept});
    }
  }
  return row[b.size()];
}

/// "there is no option --exlain; did you mean --explain?".
std::string NoOption(const CLI::App& app, const std::string& unknown) {
  std::string text = "there is no option " + Printable(unknown.substr(0, 200));
  constexpr std::size_t kFar = 3;
  std::size_t least = std::min(kFar, unknown.size() / 2);
  std::string nearest;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      const std::size_t distance = Distance(unknown.substr(0, 40), "--" + name);
      if (distance >= least) continue;
      least = distance;
      nearest = name;
    }
  }
  if (!nearest.empty()) text += "; did you mean --" + nearest + "?";
  return text;
}

/// Whether an option's value is the argument behind it. Options that there are not are noted.
bool ValueFollows(const CLI::App& app, const std::string& text, std::string* unknown) {
  const auto note = [&](const std::string& name) {
    if (unknown->empty()) *unknown = name;
    return false;
  };
  if (text[1] == '-') {
    const std::string name = text.substr(0, text.find('='));
    const CLI::Option* option = app.get_option_no_throw(name);
    if (option == nullptr) return note(name);
    return name.size() == text.size() && Parser::TakesValue(*option);
  }
  for (std::size_t i = 1; i < text.size(); ++i) {
    const std::string name = std::string("-") + text[i];
    const CLI::Option* option = app.get_option_no_throw(name);
    if (option == nullptr) return note(name);
    if (Parser::TakesValue(*option)) return i + 1 == text.size();
  }
  return false;
}

Sorted Sort(const CLI::App& app, const Names& arguments) {
  Sorted sorted;
  bool namesOnly = false;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& text = arguments[i];
    if (namesOnly || text.size() < 2 || text[0] != '-') {
      sorted.names.push_back(text);
      continue;
    }
    if (text == "--") {
      namesOnly = true;
      continue;
    }
    sorted.options.push_back(text);
    if (!ValueFollows(app, text, &sorted.unknown)) continue;
    if (i + 1 == arguments.size()) {
      sorted.lacking = text[1] == '-' ? text : std::string("-") + text.back();
    } else {
      sorted.options.push_back(arguments[++i]);
    }
  }
  // The parser takes them from the back.
  std::reverse(sorted.options.begin(), sorted.options.end());
  return sorted;
}

/// Judging first.
std::vector<CommandWords> AllWords() {
  std::vector<CommandWords> all;
  for (const Command& command : Commands()) {
    Asked unused;
    all.push_back(Parser(command, &unused).Words(command.words));
  }
  return all;
}

int Print(const std::string& what) {
  const std::vector<CommandWords> all = AllWords();
  if (what == "man") return Say(ManPage(all));
  if (what == "bash") return Say(BashCompletions(all));
  return Say(what == "zsh" ? ZshCompletions(all) : FishCompletions(all));
}

std::string WrongCount(const Command& command, const Names& names) {
  if (names.empty()) return "no file is named";
  if (names.size() < command.files) return "two files are compared, and one is named";
  return "\"" + Printable(names[command.files]) + "\" is one file too many";
}

int Run(const Command& command, const Names& arguments) {
  Asked asked;
  Parser parser(command, &asked);
  Sorted sorted = Sort(parser.App(), arguments);
  if (!sorted.unknown.empty()) {
    return Complain(command.words, NoOption(parser.App(), sorted.unknown));
  }
  if (!sorted.lacking.empty()) {
    const std::string value = ValueName(*parser.App().get_option(sorted.lacking));
    return Complain(command.words, "behind " + sorted.lacking + " there is no " + value);
  }
  try {
    parser.App().parse(std::move(sorted.options));
  } catch (const CLI::CallForHelp&) {
    return Say(HelpText(parser.Words(command.words), AllWords()));
  } catch (const CLI::CallForVersion&) {
    return Say(std::string("mp4judge ") + mp4judge_version() + "\n");
  } catch (const CLI::ParseError& error) {
    return Complain(command.words, Printable(error.what()));
  }
  if (!asked.print.empty()) return Print(asked.print);
  if (command.files != 0 && sorted.names.size() != command.files) {
    return Complain(command.words, WrongCount(command, sorted.names));
  }
  return command.run(&asked, &sorted.names);
}

}  // namespace

int RunCommandLine(const std::vector<std::string>& arguments) {
  const std::vector<Command>& commands = Commands();
  for (const Command& command : commands) {
    // Judging has no name, which an empty path is not either.
    if (arguments.empty() || arguments[0].empty() || arguments[0] != command.words.name) continue;
    return Run(command, Names(arguments.begin() + 1, arguments.end()));
  }
  return Run(commands.front(), arguments);
}

}  // namespace tool
