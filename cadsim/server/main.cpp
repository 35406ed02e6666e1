// mcsim: the stand-in CAD application. Started like the real program
// ("mcsim /R" or "mcsim /B"), it serves its application object through the
// object table until asked to exit. Faults come from the environment
// (cadsim/README.md). "mcsim /regserver" installs it, "/unregserver" removes it.

#include "cadsim/server/enginemacrorunner.h"
#include "cadsim/server/macrotimelog.h"
#include "cadsim/server/mcsimcommandline.h"
#include "cadsim/server/simserver.h"
#include "platform/automation/processes.h"
#include "platform/drivemap.h"
#include "platform/qtmessages.h"

#include <QGuiApplication>
#include <QProcessEnvironment>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

void say(const QString &line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
}

// The show command the starter asked for (the normal state when not told).
int startShowCommand(const QProcessEnvironment &env)
{
    bool ok = false;
    const int command = env.value(QString::fromLatin1(Processes::ShowCommandVariable)).toInt(&ok);
    return ok ? command : static_cast<int>(ShowCommand::Normal);
}

int installOrRemove(const McsimCommandLine &command)
{
    QString error;
    const StandInInstallation &installation = command.installation;
    if (command.action == McsimCommandLine::Action::Register) {
        if (!installation.install(QCoreApplication::applicationFilePath(), error)) {
            std::fprintf(stderr, "mcsim: cannot register: %s\n", qPrintable(error));
            return 1;
        }
        say(QStringLiteral("installed %1 in %2").arg(installation.productName(), installation.installFolder()));
        return 0;
    }
    if (!installation.uninstall(error)) {
        std::fprintf(stderr, "mcsim: cannot unregister: %s\n", qPrintable(error));
        return 1;
    }
    say(QStringLiteral("removed Mecadra %1").arg(installation.versionYear));
    return 0;
}

[[noreturn]] void crashOnPurpose()
{
    std::fputs("mcsim: crashing as configured\n", stderr);
    std::fflush(stderr);
    const rlimit noCore{0, 0};
    setrlimit(RLIMIT_CORE, &noCore);
    std::abort();
}

} // namespace

int main(int argc, char *argv[])
{
    // Exports paint pages and pictures, which needs a GUI application; the
    // stand-in never shows a window of its own, so it always runs offscreen.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    installQuietQtMessages();
    QGuiApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("mcsim"));

    const McsimCommandLine command = McsimCommandLine::parse(QCoreApplication::arguments().mid(1));
    if (!command.error.isEmpty()) {
        std::fprintf(stderr, "mcsim: %s\n%s", qPrintable(command.error), qPrintable(McsimCommandLine::usage()));
        return 2;
    }
    if (command.action == McsimCommandLine::Action::Help) {
        std::fputs(qPrintable(McsimCommandLine::usage()), stdout);
        return 0;
    }
    if (command.action != McsimCommandLine::Action::Run)
        return installOrRemove(command);

    const QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    QStringList warnings;
    SimServer::Options options;
    options.startSwitch = command.startSwitch;
    options.startShowCommand = startShowCommand(env);
    options.faults = FaultConfig::fromEnvironment(env, &warnings);
    options.cad = CadSettings::fromEnvironment(env);
    options.resolver = [](const QString &path) { return DriveMap::instance().toNativeOrSelf(path); };
    options.processId = QCoreApplication::applicationPid();
    for (const QString &warning : warnings)
        std::fprintf(stderr, "mcsim: %s\n", qPrintable(warning));

    SimServer server(options, [&](const std::shared_ptr<CadApplication> &cad, WindowService &windows) {
        std::unique_ptr<MacroRunner> runner = makeEngineMacroRunner(cad, windows, options.resolver);
        const QString timeLog = env.value(QStringLiteral("MCSIM_MACRO_TIMES"));
        return timeLog.isEmpty() ? std::move(runner) : makeTimedMacroRunner(std::move(runner), timeLog);
    });
    QObject::connect(&server, &SimServer::registered, [](const QString &moniker) { say(QStringLiteral("registered ") + moniker); });
    QObject::connect(&server, &SimServer::registrationSkipped, [] { say(QStringLiteral("not registering")); });
    QObject::connect(&server, &SimServer::registrationFailed, [](const QString &moniker, const QString &reason) {
        std::fprintf(stderr, "mcsim: cannot register %s: %s\n", qPrintable(moniker), qPrintable(reason));
        QCoreApplication::exit(1);
    });
    QObject::connect(&server, &SimServer::crashRequested, [] { crashOnPurpose(); });
    QObject::connect(&server, &SimServer::exitRequested, &app, &QCoreApplication::quit);

    if (!server.start()) {
        std::fprintf(stderr, "mcsim: cannot register in the object table at %s: %s\n",
                     qPrintable(server.table().directory()), qPrintable(server.table().lastError()));
        return 1;
    }
    const int code = QCoreApplication::exec();
    server.shutdown();
    std::fflush(stdout);
    // A macro thread may still be blocked (a hang on purpose); do not wait for it.
    _exit(code);
}
