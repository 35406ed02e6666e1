#include "app/addinhost.h"
#include "app/cli.h"

#include <QCommandLineParser>
#include <QFileInfo>

namespace {

QString describe(HRESULT hr)
{
    return QStringLiteral("0x%1").arg(static_cast<quint32>(hr), 8, 16, QLatin1Char('0'));
}

int runRegistration(CommandContext &context, bool unregister)
{
    QCommandLineParser parser;
    if (!parseCommandLine(parser, context,
                          unregister ? QStringLiteral("addin unregister [MODULE]") : QStringLiteral("addin register [MODULE]"),
                          unregister ? QStringLiteral("Removes the task add-in module's registration from the registry store "
                                                      "under MCTASK_HOME.\nMODULE defaults to the McTaskAddIn.so of this build.")
                                     : QStringLiteral("Registers the task add-in module in the registry store under "
                                                      "MCTASK_HOME.\nMODULE defaults to the McTaskAddIn.so of this build.")))
        return 0;
    const QStringList args = parser.positionalArguments();
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
    if (!unregister && !recordInstallationFolder(module)) {
        context.err << "mctask: the installation folder could not be recorded\n";
        return 1;
    }
    context.out << (unregister ? "unregistered " : "registered ") << module << '\n';
    return 0;
}

} // namespace

int runAddInRegister(CommandContext &context) { return runRegistration(context, false); }
int runAddInUnregister(CommandContext &context) { return runRegistration(context, true); }
