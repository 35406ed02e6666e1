#include "app/cli.h"

// Each command file defines its entry points; they are listed here so the
// program's help shows them in one order.

int runAddInRegister(CommandContext &context);
int runAddInUnregister(CommandContext &context);
int runErrorCommand(CommandContext &context);
int runLanguageCommand(CommandContext &context);
int runRegistryGetCommand(CommandContext &context);
int runRegistrySetCommand(CommandContext &context);
int runRegistryDeleteCommand(CommandContext &context);
int runVaultInitCommand(CommandContext &context);
int runVaultAddCommand(CommandContext &context);
int runVaultLsCommand(CommandContext &context);
int runVaultAttachCommand(CommandContext &context);
int runVaultGetCommand(CommandContext &context);
int runVaultCardCommand(CommandContext &context);
int runVaultRefCommand(CommandContext &context);
int runVaultShowCommand(CommandContext &context);
int runMacroRunCommand(CommandContext &context);
int runMacroPreviewCommand(CommandContext &context);
int runMacroCheckCommand(CommandContext &context);
int runTaskCreateCommand(CommandContext &context);
int runTaskSetCommand(CommandContext &context);
int runTaskGetCommand(CommandContext &context);
int runTaskSetupCommand(CommandContext &context);
int runTaskLaunchCommand(CommandContext &context);
int runTaskRunCommand(CommandContext &context);
int runTaskDetailsCommand(CommandContext &context);
int runTaskInstancesCommand(CommandContext &context);
int runTaskSuspendCommand(CommandContext &context);
int runTaskResumeCommand(CommandContext &context);
int runTaskCancelCommand(CommandContext &context);
int runHostServeCommand(CommandContext &context);
int runHostStatusCommand(CommandContext &context);

const std::vector<CommandEntry> &allCommands()
{
    static const std::vector<CommandEntry> commands = {
        {"addin", "register", "[MODULE]", "register the task add-in module", &runAddInRegister},
        {"addin", "unregister", "[MODULE]", "remove the add-in's registration", &runAddInUnregister},
        {"error", "", "CODE", "print the name and message of a result code", &runErrorCommand},
        {"language", "", "[CODE]", "show or set the user-interface language", &runLanguageCommand},
        {"registry", "get", "[--view 32|64] KEY [NAME]", "print registry values", &runRegistryGetCommand},
        {"registry", "set", "[--view 32|64] KEY NAME VALUE [--dword|--string]", "write a registry value",
         &runRegistrySetCommand},
        {"registry", "delete", "[--view 32|64] KEY [NAME]", "delete a registry value or key",
         &runRegistryDeleteCommand},
        {"vault", "init", "DIR [--name NAME] [--drive LETTER] [--date-style N] [--server URL]", "create a vault",
         &runVaultInitCommand},
        {"vault", "attach", "URL DIR [--drive LETTER]", "make DIR this machine's local view of a vault on a server",
         &runVaultAttachCommand},
        {"vault", "get", "[--vault DIR] [FILE|FOLDER]...", "bring local copies up to the latest versions",
         &runVaultGetCommand},
        {"vault", "add", "[--vault DIR] SRC... [--to FOLDER] [...]", "add files or new versions", &runVaultAddCommand},
        {"vault", "ls", "[--vault DIR] [--json] [FOLDER]", "list the files of a folder and below", &runVaultLsCommand},
        {"vault", "card", "[--vault DIR] FILE [NAME[=VALUE]]...", "read or set card variables", &runVaultCardCommand},
        {"vault", "ref", "[--vault DIR] PARENT CHILD [--conf NAME]", "make a reference", &runVaultRefCommand},
        {"vault", "show", "[--vault DIR] [--json] FILE", "show a file's versions, card and references",
         &runVaultShowCommand},
        {"macro", "preview", "[--vault DIR] INSTANCE|TASK FILE", "print the macro a run would build for a file",
         &runMacroPreviewCommand},
        {"macro", "check", "[--vault DIR] INSTANCE|TASK FILE | FILE.mcb", "report a macro's syntax errors",
         &runMacroCheckCommand},
        {"macro", "run", "[--vault DIR] [--keep FILE] INSTANCE|TASK FILE | FILE.mcb [--proc NAME]", "run a task's macro on one file, or a macro file, in the stand-in",
         &runMacroRunCommand},
        {"task", "create", "[--vault DIR] NAME --kind convert|print|script", "create and set up a task",
         &runTaskCreateCommand},
        {"task", "set", "[--vault DIR] NAME KEY[:int|:bool|:real]=VALUE...", "set task variables",
         &runTaskSetCommand},
        {"task", "get", "[--vault DIR] NAME [KEY...] [--json]", "print task variables", &runTaskGetCommand},
        {"task", "setup", "[--vault DIR] NAME [--gui]", "set a task up through the add-in", &runTaskSetupCommand},
        {"task", "launch", "[--vault DIR] NAME [FILE...] [--set KEY=VALUE]... [--gui]",
         "launch a task; prints the instance", &runTaskLaunchCommand},
        {"task", "run", "[--vault DIR] INSTANCE [--json]", "run a launched instance", &runTaskRunCommand},
        {"task", "details", "[--vault DIR] INSTANCE [--json] [--gui]", "list an instance's files",
         &runTaskDetailsCommand},
        {"task", "instances", "[--vault DIR] [--json]", "list the task instances", &runTaskInstancesCommand},
        {"task", "suspend", "[--vault DIR] INSTANCE", "ask a run to suspend", &runTaskSuspendCommand},
        {"task", "resume", "[--vault DIR] INSTANCE", "ask a suspended run to resume", &runTaskResumeCommand},
        {"task", "cancel", "[--vault DIR] INSTANCE", "ask a run to stop", &runTaskCancelCommand},
        {"host", "serve", "[--vault DIR] [--name HOST] [--workers N] [--once] [...]",
         "run the task host: claim and run launched instances", &runHostServeCommand},
        {"host", "status", "[--vault DIR] [--json]", "list the task hosts and what their workers run",
         &runHostStatusCommand},
    };
    return commands;
}
