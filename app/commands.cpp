#include "app/cli.h"

// Each command file defines its entry points; they are listed here so the
// program's help shows them in one order.

const std::vector<CommandEntry> &allCommands()
{
    static const std::vector<CommandEntry> commands = {
    };
    return commands;
}
