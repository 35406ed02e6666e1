// mcsim: the stand-in CAD application. Started like the real program
// ("mcsim /R" or "mcsim /B"), it serves its application object through the
// object table until asked to exit. Faults come from the environment
// (cadsim/README.md).

#include "cadsim/server/enginemacrorunner.h"
#include "cadsim/server/simserver.h"
#include "platform/drivemap.h"

#include <QCommandLineParser>
#include <QGuiApplication>
#include <QProcessEnvironment>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

namespace {

QString startSwitchFrom(const QStringList &arguments)
{
    for (const QString &argument : arguments) {
        if (argument.compare(QLatin1String("/R"), Qt::CaseInsensitive) == 0)
            return QStringLiteral("/R");
        if (argument.compare(QLatin1String("/B"), Qt::CaseInsensitive) == 0)
            return QStringLiteral("/B");
    }
    return {};
}

void say(const QString &line)
{
    std::fputs(qPrintable(line + QLatin1Char('\n')), stdout);
    std::fflush(stdout);
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
    QGuiApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("mcsim"));

    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Stand-in CAD application with an automation server."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("switch"), QStringLiteral("/R (regression start) or /B (batch start)"),
                                 QStringLiteral("[/R|/B]"));
    parser.process(app);

    const QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    QStringList warnings;
    SimServer::Options options;
    options.startSwitch = startSwitchFrom(parser.positionalArguments());
    options.faults = FaultConfig::fromEnvironment(env, &warnings);
    options.cad = CadSettings::fromEnvironment(env);
    options.resolver = [](const QString &path) { return DriveMap::instance().toNativeOrSelf(path); };
    options.processId = QCoreApplication::applicationPid();
    for (const QString &warning : warnings)
        std::fprintf(stderr, "mcsim: %s\n", qPrintable(warning));

    SimServer server(options, [&](const std::shared_ptr<CadApplication> &cad, WindowService &windows) {
        return makeEngineMacroRunner(cad, windows, options.resolver);
    });
    QObject::connect(&server, &SimServer::registered, [](const QString &moniker) { say(QStringLiteral("registered ") + moniker); });
    QObject::connect(&server, &SimServer::registrationSkipped, [] { say(QStringLiteral("not registering")); });
    QObject::connect(&server, &SimServer::registrationFailed, [](const QString &moniker) {
        std::fprintf(stderr, "mcsim: cannot register %s\n", qPrintable(moniker));
    });
    QObject::connect(&server, &SimServer::crashRequested, [] { crashOnPurpose(); });
    QObject::connect(&server, &SimServer::exitRequested, &app, &QCoreApplication::quit);

    if (!server.start()) {
        std::fprintf(stderr, "mcsim: cannot register in the object table at %s\n",
                     qPrintable(server.table().directory()));
        return 1;
    }
    const int code = QCoreApplication::exec();
    server.shutdown();
    std::fflush(stdout);
    // A macro thread may still be blocked (a hang on purpose); do not wait for it.
    _exit(code);
}
