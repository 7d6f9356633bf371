#include "tools/ManPage.h"

#include "mp4judge/mp4judge.h"
#include "tools/HelpText.h"

namespace tool {

namespace {

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

std::string Options(const std::vector<OptionWords>& options) {
  std::string page;
  for (const OptionWords& option : options) {
    page += ".TP\n\\fB" + Roff(NamesOf(option, ", ")) + "\\fR";
    if (!option.value.empty()) page += " \\fI" + Roff(option.value) + "\\fR";
    page += '\n' + Roff(option.text) + ".\n";
  }
  return page;
}

/// A command below its own heading.
std::string Section(const CommandWords& one) {
  const std::string call = std::string(one.command.name) + " [OPTIONS] " + one.command.operands;
  return ".SS \"mp4judge " + call + "\"\n" + Roff(one.command.purpose) + "\n" +
         Options(one.options) + ".PP\n" + RoffLines(one.command.more);
}

}  // namespace

std::string ManPage(const std::vector<CommandWords>& all) {
  const CommandWords& judge = all.front();
  std::string page = ".TH MP4JUDGE 1 \"\" \"mp4judge " + std::string(mp4judge_version()) + "\"\n";
  page += ".SH NAME\nmp4judge \\- " + Roff(judge.command.brief) + "\n";
  page += ".SH SYNOPSIS\n.B mp4judge\n[OPTIONS] " + Roff(judge.command.operands) + "\n";
  page += ".br\n.B mp4judge\nCOMMAND ...\n";
  page +=
      ".SH DESCRIPTION\n" + Roff(judge.command.purpose) + "\n.PP\n" + RoffLines(judge.command.more);
  page += ".SH OPTIONS\n" + Options(judge.options);
  page += ".SH \"EXIT STATUS\"\n" + RoffLines(words::kStatus);
  page += ".SH COMMANDS\n" + RoffLines(ListOfCommands(all));
  for (const CommandWords& one : all) {
    if (one.command.name[0] != '\0') page += Section(one);
  }
  return page;
}

}  // namespace tool
