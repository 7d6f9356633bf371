#include "tools/Completions.h"

namespace tool {

namespace {

bool IsJudging(const CommandWords& one) { return one.command.name[0] == '\0'; }

std::string NamesOf(const std::vector<CommandWords>& all) {
  std::string names;
  for (const CommandWords& one : all) {
    if (!IsJudging(one)) names += (names.empty() ? "" : " ") + std::string(one.command.name);
  }
  return names;
}

std::string InSingleQuotes(const std::string& text) {
  return std::string(1, '\'').append(Replaced(text, '\'', "'\\''")).append(1, '\'');
}

/// The words of one command for bash: its options, and the values that can be told.
std::string BashCase(const CommandWords& one) {
  std::string options, script;
  for (const OptionWords& option : one.options) {
    options += tool::NamesOf(option, " ") + ' ';
    if (option.choices.empty()) continue;
    script += "      case $before in " + tool::NamesOf(option, "|") +
              ") COMPREPLY=($(compgen -W \"" + ChoicesOf(option) +
              "\" -- \"$word\")); return ;; esac\n";
  }
  return script + "      words=\"" + options + "\"\n      ;;\n";
}

std::string ZshArguments(const std::vector<OptionWords>& options) {
  std::string script;
  for (const OptionWords& option : options) {
    const std::string text =
        Replaced(Replaced(Replaced(option.text, '[', "\\["), ']', "\\]"), ':', "\\:");
    std::string value;
    if (!option.choices.empty()) {
      value = ":what:(" + ChoicesOf(option) + ")";
    } else if (!option.value.empty()) {
      value = ":" + option.value + (option.value == "FILE" ? ":_files" : ":");
    }
    for (const std::string& name : option.names) {
      script += " \\\n      " + InSingleQuotes(name + "[" + text + "]" + value);
    }
  }
  return script;
}

std::string FishLine(const OptionWords& option, const std::string& condition) {
  std::string line = "complete -c mp4judge -n '" + condition + "'";
  for (const std::string& name : option.names) {
    line += name[1] == '-' ? " -l " + name.substr(2) : " -s " + name.substr(1);
  }
  if (!option.value.empty()) line += " -r";
  if (!option.choices.empty()) line += " -f -a " + InSingleQuotes(ChoicesOf(option));
  const std::string text = Replaced(Replaced(option.text, '\\', "\\\\"), '\'', "\\'");
  return line + " -d '" + text + "'\n";
}

}  // namespace

std::string BashCompletions(const std::vector<CommandWords>& all) {
  std::string script =
      "_mp4judge() {\n"
      "  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} words\n"
      "  COMPREPLY=()\n  case ${COMP_WORDS[1]} in\n";
  for (const CommandWords& one : all) {
    if (!IsJudging(one)) script += std::string("    ") + one.command.name + ")\n" + BashCase(one);
  }
  script += "    *)\n" + BashCase(all.front()) + "  esac\n";
  script +=
      "  if [[ $word == -* ]]; then\n"
      "    COMPREPLY=($(compgen -W \"$words\" -- \"$word\"))\n    return\n  fi\n"
      "  if ((COMP_CWORD == 1)); then COMPREPLY=($(compgen -W \"" +
      NamesOf(all) + "\" -- \"$word\")); fi\n";
  script += "  local IFS=$'\\n'\n  COMPREPLY+=($(compgen -f -- \"$word\"))\n}\n";
  return script + "complete -o filenames -F _mp4judge mp4judge\n";
}

std::string ZshCompletions(const std::vector<CommandWords>& all) {
  std::string script = "#compdef mp4judge\ncase $words[2] in\n";
  for (const CommandWords& one : all) {
    if (IsJudging(one)) continue;
    script += std::string("  ") + one.command.name + ")\n    shift words; ((CURRENT--))\n" +
              "    _arguments -s" + ZshArguments(one.options) +
              " \\\n      '*:file:_files'\n    ;;\n";
  }
  script += "  *)\n    _arguments -s" + ZshArguments(all.front().options);
  script += " \\\n      '1: :{_alternative \"commands\\:command\\:(" + NamesOf(all);
  return script + ")\" \"files\\:file\\:_files\"}' \\\n      '*:file:_files'\n    ;;\nesac\n";
}

std::string FishCompletions(const std::vector<CommandWords>& all) {
  std::string script;
  for (const CommandWords& one : all) {
    const std::string seen = "__fish_seen_subcommand_from ";
    const std::string condition =
        IsJudging(one) ? "not " + seen + NamesOf(all) : seen + one.command.name;
    for (const OptionWords& option : one.options) script += FishLine(option, condition);
    if (IsJudging(one)) continue;
    script += "complete -c mp4judge -n __fish_is_first_token -a " + std::string(one.command.name) +
              " -d " + InSingleQuotes(one.command.brief) + "\n";
  }
  return script;
}

}  // namespace tool
