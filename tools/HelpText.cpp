#include "tools/HelpText.h"

#include <algorithm>
#include <utility>

namespace tool {

namespace {

/// The words of a text on lines of at most 79 characters, the first behind `first`, the others
/// behind as many spaces as `indent` says.
std::string Wrapped(std::string first, const std::string& text, std::size_t indent) {
  constexpr std::size_t kWidth = 79;
  std::string line = std::move(first);
  if (line.size() + 1 > indent && indent > 0) {
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

std::string Usage(const words::Command& command) {
  const std::string name = command.name[0] != '\0' ? std::string(" ") + command.name : "";
  std::string text = "Usage: mp4judge" + name + " [OPTIONS] " + command.operands + "\n";
  if (name.empty()) text += "       mp4judge COMMAND ...\n";
  return text;
}

}  // namespace

std::string ListOfCommands(const std::vector<CommandWords>& all) {
  constexpr std::size_t kColumn = 18;
  std::string text = "Commands:\n";
  for (const CommandWords& one : all) {
    if (one.command.name[0] == '\0') continue;
    std::string line = std::string("  ") + one.command.name + " " + one.command.operands;
    line.resize(std::max(line.size() + 1, kColumn), ' ');
    text += line + one.command.brief + "\n";
  }
  return text + "'mp4judge COMMAND --help' says more. A file of such a name is judged as ./tree.\n";
}

std::string HelpText(const CommandWords& command, const std::vector<CommandWords>& all) {
  constexpr std::size_t kIndent = 27;
  std::string text =
      Wrapped("", command.command.purpose, 0) + "\n" + Usage(command.command) + "\nOptions:\n";
  for (const OptionWords& option : command.options) {
    std::string names = option.names.size() > 1 ? "  " : "      ";
    names += NamesOf(option, ", ");
    if (!option.value.empty()) names += " " + option.value;
    text += Wrapped(std::move(names), option.text, kIndent);
  }
  text += std::string("\n") + command.command.more;
  if (command.command.name[0] != '\0') return text;
  return text + "\n" + ListOfCommands(all) + "\n" + words::kStatus;
}

}  // namespace tool
