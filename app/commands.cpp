#include "app/cli.h"

// Each command file defines its entry points; they are listed here so the
// program's help shows them in one order.

int runAddInRegister(CommandContext &context);
int runAddInUnregister(CommandContext &context);
int runErrorCommand(CommandContext &context);

const std::vector<CommandEntry> &allCommands()
{
    static const std::vector<CommandEntry> commands = {
        {"addin", "register", "[MODULE]", "register the task add-in module", &runAddInRegister},
        {"addin", "unregister", "[MODULE]", "remove the add-in's registration", &runAddInUnregister},
        {"error", "", "CODE", "print the name and message of a result code", &runErrorCommand},
    };
    return commands;
}
