#include "tools/Commands.h"

#include "tools/LookCommandLine.h"
#include "tools/SamplesCommand.h"

namespace tool {

const std::vector<Command>& Commands() {
  static const std::vector<Command> commands = {{"tree", TreeCommandLine},
                                                {"info", InfoCommandLine},
                                                {"samples", SamplesCommand},
                                                {"chart", ChartCommandLine},
                                                {"diff", DiffCommandLine}};
  return commands;
}

}  // namespace tool
