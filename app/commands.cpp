#include "app/cli.h"

// Each command file defines its entry points; they are listed here so the
// program's help shows them in one order.

int runAddInRegister(CommandContext &context);
int runAddInUnregister(CommandContext &context);
int runErrorCommand(CommandContext &context);
#ifdef MCTASK_WITH_VAULT
int runVaultInitCommand(CommandContext &context);
int runVaultAddCommand(CommandContext &context);
int runVaultLsCommand(CommandContext &context);
int runVaultCardCommand(CommandContext &context);
int runVaultRefCommand(CommandContext &context);
#endif
#ifdef MCTASK_WITH_MACRO
int runMacroPreviewCommand(CommandContext &context);
#endif

const std::vector<CommandEntry> &allCommands()
{
    static const std::vector<CommandEntry> commands = {
        {"addin", "register", "[MODULE]", "register the task add-in module", &runAddInRegister},
        {"addin", "unregister", "[MODULE]", "remove the add-in's registration", &runAddInUnregister},
        {"error", "", "CODE", "print the name and message of a result code", &runErrorCommand},
#ifdef MCTASK_WITH_VAULT
        {"vault", "init", "DIR [--name NAME] [--drive LETTER] [--date-style N]", "create a vault", &runVaultInitCommand},
        {"vault", "add", "[--vault DIR] SRC... [--to FOLDER] [...]", "add files or new versions", &runVaultAddCommand},
        {"vault", "ls", "[--vault DIR] [--json] [FOLDER]", "list the files of a folder and below", &runVaultLsCommand},
        {"vault", "card", "[--vault DIR] FILE [NAME[=VALUE]]...", "read or set card variables", &runVaultCardCommand},
        {"vault", "ref", "[--vault DIR] PARENT CHILD [--conf NAME]", "make a reference", &runVaultRefCommand},
#endif
#ifdef MCTASK_WITH_MACRO
        {"macro", "preview", "[--vault DIR] INSTANCE|TASK FILE", "print the macro a run would build for a file",
         &runMacroPreviewCommand},
#endif
    };
    return commands;
}
