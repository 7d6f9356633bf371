#include "tools/Commands.h"

#include "tools/SamplesCommand.h"

namespace tool {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {{"samples", SamplesCommand}};
  return commands;
}

}  // namespace tool
