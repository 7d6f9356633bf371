#include "tools/OptionWords.h"

namespace tool {

std::string NamesOf(const OptionWords& option, const char* between) {
  std::string text;
  for (const std::string& name : option.names) text += (text.empty() ? "" : between) + name;
  return text;
}

std::string ChoicesOf(const OptionWords& option) {
  std::string text;
  for (const std::string& choice : option.choices) text += (text.empty() ? "" : " ") + choice;
  return text;
}

std::string Replaced(const std::string& text, char what, const std::string& with) {
  std::string result;
  for (const char c : text) c == what ? result += with : result += c;
  return result;
}

}  // namespace tool
