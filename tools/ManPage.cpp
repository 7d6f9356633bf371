#include "tools/ManPage.h"

#include <algorithm>
#include <utility>

#include "mp4judge/mp4judge.h"
#include "tools/Words.h"

namespace tool {

namespace {

constexpr const char* kCommandNames[] = {"tree", "info", "samples", "chart", "diff"};

std::string Replaced(std::string text, char what, const std::string& with) {
  std::string result;
  for (const char c : text) c == what ? result += with : result += c;
  return result;
}

/// Text as roff takes it: no line may begin with a full stop or a quote.
std::string Roff(const std::string& text) {
  std::string safe = Replaced(Replaced(text, '\\', "\\e"), '-', "\\-");
  if (!safe.empty() && (safe[0] == '.' || safe[0] == '\'')) safe.insert(0, "\\&");
  return safe;
}

std::string RoffLines(const std::string& text) {
  std::string result = ".nf\n";
  for (std::size_t from = 0, to = 0; (to = text.find('\n', from)) != std::string::npos;
       from = to + 1) {
    result += Roff(text.substr(from, to - from)) + '\n';
  }
  return result + ".fi\n";
}

std::string NamesOf(const OptionWords& option, const char* between) {
  std::string text;
  for (const std::string& name : option.names) text += (text.empty() ? "" : between) + name;
  return text;
}

/// The words of a text on lines of at most 79 characters, the first behind `first`, the others
/// behind as many spaces as `indent` says.
std::string Wrapped(std::string first, const std::string& text, std::size_t indent) {
  constexpr std::size_t kWidth = 79;
  std::string line = std::move(first);
  if (line.size() + 1 > indent) {
    line += '\n' + std::string(indent, ' ');
  } else {
    line.resize(indent, ' ');
  }
  std::size_t column = indent;
  for (std::size_t from = 0; from < text.size();) {
    const std::size_t to = std::min(text.find(' ', from), text.size());
    if (column + (to - from) > kWidth) {
      if (line.back() == ' ') line.pop_back();
      line += '\n' + std::string(indent, ' ');
      column = indent;
    }
    line.append(text, from, to - from).append(to < text.size() ? " " : "");
    column += to - from + 1;
    from = to + 1;
  }
  return line + '\n';
}

std::string OptionHelp(const char* purpose, const char* usage,
                       const std::vector<OptionWords>& options) {
  constexpr std::size_t kIndent = 27;
  std::string text = Wrapped("", purpose, 0) + "\n" + usage + "\n\nOptions:\n";
  for (const OptionWords& option : options) {
    std::string names = option.names.size() > 1 ? "  " : "      ";
    names += NamesOf(option, ", ");
    if (!option.value.empty()) names += " " + option.value;
    text += Wrapped(std::move(names), option.text, kIndent);
  }
  return text;
}

std::string Help(const std::vector<OptionWords>& options) {
  return OptionHelp(words::kPurpose, words::kUsage, options) + "\n" + words::kVerdicts + "\n" +
         words::kCommands + "\n" + words::kStatus;
}

std::string ManPage(const std::vector<OptionWords>& options) {
  std::string page = ".TH MP4JUDGE 1 \"\" \"mp4judge " + std::string(mp4judge_version()) + "\"\n";
  page += ".SH NAME\nmp4judge \\- say whether movie files are protected\n";
  page += ".SH SYNOPSIS\n.B mp4judge\n[OPTIONS] PATH...\n.br\n.B mp4judge\nCOMMAND ...\n";
  page += ".SH DESCRIPTION\n" + Roff(words::kPurpose) + "\n.PP\n" + RoffLines(words::kVerdicts);
  page += ".SH OPTIONS\n";
  for (const OptionWords& option : options) {
    page += ".TP\n\\fB" + Roff(NamesOf(option, ", ")) + "\\fR";
    if (!option.value.empty()) page += " \\fI" + Roff(option.value) + "\\fR";
    page += '\n' + Roff(option.text) + ".\n";
  }
  page += ".SH COMMANDS\n" + RoffLines(words::kCommands);
  page += ".SH \"EXIT STATUS\"\n" + RoffLines(words::kStatus);
  return page;
}

std::string Words(const std::vector<OptionWords>& options) {
  std::string all;
  for (const OptionWords& option : options) all += NamesOf(option, " ") + ' ';
  return all;
}

std::string Bash(const std::vector<OptionWords>& options) {
  std::string script =
      "_mp4judge() {\n  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]}\n";
  script += "  COMPREPLY=()\n  case $before in\n";
  for (const OptionWords& option : options) {
    if (option.choices.empty()) continue;
    std::string choices;
    for (const std::string& choice : option.choices) choices += choice + ' ';
    script += "    " + NamesOf(option, "|") + ") COMPREPLY=($(compgen -W \"" + choices +
              "\" -- \"$word\")); return ;;\n";
  }
  script += "  esac\n  if [[ $word == -* ]]; then\n    COMPREPLY=($(compgen -W \"" +
            Words(options) + "\" -- \"$word\"))\n    return\n  fi\n";
  script += "  if ((COMP_CWORD == 1)); then COMPREPLY=($(compgen -W \"";
  for (const char* name : kCommandNames) script += std::string(name) + ' ';
  script += "\" -- \"$word\")); fi\n";
  script += "  local IFS=$'\\n'\n  COMPREPLY+=($(compgen -f -- \"$word\"))\n}\n";
  return script + "complete -o filenames -F _mp4judge mp4judge\n";
}

std::string InSingleQuotes(const std::string& text) {
  return std::string(1, '\'').append(Replaced(text, '\'', "'\\''")).append(1, '\'');
}

std::string Zsh(const std::vector<OptionWords>& options) {
  std::string script = "#compdef mp4judge\n_arguments -s \\\n";
  for (const OptionWords& option : options) {
    const std::string text =
        Replaced(Replaced(Replaced(option.text, '[', "\\["), ']', "\\]"), ':', "\\:");
    std::string value;
    if (!option.choices.empty()) {
      value = ":what:(";
      for (const std::string& choice : option.choices) value += choice + ' ';
      value += ')';
    } else if (!option.value.empty()) {
      value = ":" + option.value + (option.value == "FILE" ? ":_files" : ":");
    }
    for (const std::string& name : option.names) {
      script += "  " + InSingleQuotes(name + "[" + text + "]" + value) + " \\\n";
    }
  }
  script += "  '1: :{_alternative \"commands\\:command\\:(";
  for (const char* name : kCommandNames) script += std::string(name) + ' ';
  return script + ")\" \"files\\:file\\:_files\"}' \\\n  '*:file:_files'\n";
}

std::string Fish(const std::vector<OptionWords>& options) {
  std::string script;
  for (const OptionWords& option : options) {
    script += "complete -c mp4judge";
    for (const std::string& name : option.names) {
      script += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
    }
    if (!option.value.empty()) script += " -r";
    if (!option.choices.empty()) {
      std::string choices;
      for (const std::string& choice : option.choices) choices += choice + ' ';
      script += " -f -a " + InSingleQuotes(choices);
    }
    const std::string text = Replaced(Replaced(option.text, '\\', "\\\\"), '\'', "\\'");
    script += " -d '" + text + "'\n";
  }
  script += "complete -c mp4judge -n __fish_is_first_token -a '";
  for (const char* name : kCommandNames) script += std::string(name) + ' ';
  return script + "'\n";
}

}  // namespace

std::string PrintFor(const std::string& what, const std::vector<OptionWords>& options) {
  if (what == "help") return Help(options);
  if (what == "samples help") {
    return OptionHelp(words::kSamplesPurpose, words::kSamplesUsage, options);
  }
  if (what == "man") return ManPage(options);
  if (what == "bash") return Bash(options);
  return what == "zsh" ? Zsh(options) : Fish(options);
}

}  // namespace tool
