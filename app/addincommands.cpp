#include "app/addinhost.h"
#include "app/cli.h"

#include <QFileInfo>

namespace {

QString describe(HRESULT hr)
{
    return QStringLiteral("0x%1").arg(static_cast<quint32>(hr), 8, 16, QLatin1Char('0'));
}

int runRegistration(CommandContext &context, bool unregister)
{
    QStringList args = context.args;
    if (args.contains(QStringLiteral("--help"))) {
        context.out << (unregister ? "Usage: mctask addin unregister [MODULE]\n"
                                   : "Usage: mctask addin register [MODULE]\n")
                    << "Registers the task add-in module in the registry store under MCTASK_HOME.\n"
                    << "MODULE defaults to the McTaskAddIn.so of this build.\n";
        return 0;
    }
    if (args.size() > 1)
        throw CliError(QStringLiteral("too many arguments (see --help)"));
    QString module = args.isEmpty() ? defaultAddInModulePath() : args.first();
    if (module.isEmpty())
        throw CliError(QStringLiteral("no add-in module found next to the program; name it"));
    if (!QFileInfo::exists(module))
        throw CliError(QStringLiteral("no such module: %1").arg(module));
    module = QFileInfo(module).canonicalFilePath();

    QString error;
    const HRESULT hr = callModuleRegistration(module, unregister, error);
    if (!error.isEmpty())
        throw CliError(error);
    if (failed(hr)) {
        context.err << "mctask: " << (unregister ? "unregistering" : "registering") << " failed: " << describe(hr)
                    << '\n';
        return 1;
    }
    context.out << (unregister ? "unregistered " : "registered ") << module << '\n';
    return 0;
}

} // namespace

int runAddInRegister(CommandContext &context) { return runRegistration(context, false); }
int runAddInUnregister(CommandContext &context) { return runRegistration(context, true); }
