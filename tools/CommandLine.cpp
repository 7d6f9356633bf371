// The option parser is slow to compile, so this is the only judging source that includes it.
#include "tools/CommandLine.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstdio>

#include "mp4judge/mp4judge.h"
#include "tools/ManPage.h"
#include "tools/Sandbox.h"
#include "tools/Words.h"

namespace tool {

namespace {

struct Texts {
  std::string printFor;  ///< a shell, or "man"
};

void AddOptions(CLI::App* app, JudgeOptions* options, Texts* texts) {
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
  app->add_flag("!--no-sandbox", options->sandbox, words::kNoSandbox);
  app->add_option("--print", texts->printFor, words::kPrint)
      ->type_name("WHAT")
      ->check(CLI::IsMember({"man", "bash", "zsh", "fish"}));
}

struct Sorted {
  std::vector<std::string> options, names;
};

/// Names are kept from the option parser, which would split "[a,b]" and drop "{}".
Sorted Sort(const CLI::App& app, const std::vector<std::string>& arguments) {
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
    const CLI::Option* option = app.get_option_no_throw(text);
    const bool takesValue = option != nullptr && option->get_items_expected_max() > 0;
    if (takesValue && i + 1 < arguments.size()) sorted.options.push_back(arguments[++i]);
  }
  // The parser takes them from the back.
  std::reverse(sorted.options.begin(), sorted.options.end());
  return sorted;
}

int Complain(const std::string& what) {
  std::fprintf(stderr, "mp4judge: %s\nTry 'mp4judge --help'.\n", what.c_str());
  return kTrouble;
}

/// Everything that goes to standard output must arrive there.
int Say(const std::string& text) {
  std::fwrite(text.data(), 1, text.size(), stdout);
  if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) return kAllClear;
  std::fputs("mp4judge: the output cannot be written\n", stderr);
  return kTrouble;
}

std::vector<OptionWords> Described(const CLI::App& app) {
  std::vector<OptionWords> all;
  for (const CLI::Option* option : app.get_options()) {
    OptionWords one;
    for (const std::string& name : option->get_snames()) one.names.push_back("-" + name);
    for (const std::string& name : option->get_lnames()) one.names.push_back("--" + name);
    if (option->get_items_expected_max() > 0) {
      // What a value may be comes behind a colon.
      one.value = option->get_type_name();
      one.value.resize(std::min(one.value.find(':'), one.value.size()));
    }
    one.text = option->get_description();
    if (one.names.back() == "--print") one.choices = {"man", "bash", "zsh", "fish"};
    all.push_back(std::move(one));
  }
  return all;
}

}  // namespace

bool ParseJudgeArguments(const std::vector<std::string>& arguments, JudgeOptions* options,
                         int* status) {
  CLI::App app(words::kPurpose, "mp4judge");
  Texts texts;
  app.set_help_flag("-h,--help", words::kHelp);
  app.set_version_flag("--version", std::string("mp4judge ") + mp4judge_version(), words::kVersion);
  AddOptions(&app, options, &texts);
  Sorted sorted = Sort(app, arguments);
  try {
    app.parse(std::move(sorted.options));
  } catch (const CLI::CallForHelp&) {
    *status = Say(PrintFor("help", Described(app)));
    return false;
  } catch (const CLI::CallForVersion&) {
    *status = Say(std::string("mp4judge ") + mp4judge_version() + "\n");
    return false;
  } catch (const CLI::ParseError& error) {
    *status = Complain(error.what());
    return false;
  }
  if (!texts.printFor.empty()) {
    *status = Say(PrintFor(texts.printFor, Described(app)));
    return false;
  }
  options->paths = std::move(sorted.names);
  if (options->paths.empty() && options->filesFrom.empty() && options->files0From.empty()) {
    *status = Complain("no file is named");
    return false;
  }
  return true;
}

bool ParseSamplesArguments(const std::vector<std::string>& arguments, SamplesOptions* options,
                           int* status) {
  CLI::App app(words::kSamplesPurpose, "mp4judge samples");
  app.set_help_flag("-h,--help", words::kHelp);
  app.add_flag("--json", options->json, words::kSamplesJson);
  app.add_flag("--csv", options->csv, words::kSamplesCsv)->excludes("--json");
  app.add_option("--track", options->track, words::kSamplesTrack)->type_name("ID");
  app.add_option("--most", options->most, words::kSamplesMost)->type_name("N");
  app.add_option("--init", options->init, words::kSamplesInit)->type_name("FILE");
  Sorted sorted = Sort(app, arguments);
  try {
    app.parse(std::move(sorted.options));
  } catch (const CLI::CallForHelp&) {
    *status = Say(PrintFor("samples help", Described(app)));
    return false;
  } catch (const CLI::ParseError& error) {
    *status = Complain(error.what());
    return false;
  }
  if (sorted.names.size() != 1) {
    *status = Complain("samples takes one file");
    return false;
  }
  options->path = std::move(sorted.names.front());
  return true;
}

}  // namespace tool
