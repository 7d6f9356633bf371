#include "tools/Commands.h"

namespace tool {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {};
  return commands;
}

}  // namespace tool
