#include "app/cli.h"
#include "platform/qtmessages.h"
#include "host/hosterror.h"

#include <QCoreApplication>
#include <QDir>
#include <algorithm>
#include <cstdio>
#include <memory>

#include <QApplication>

namespace {

// The command list of "mctask --help", or of one group for
// "mctask GROUP --help" (and a bare GROUP).
void printUsage(QTextStream &out, const QString &group = {})
{
    out << "Usage: mctask " << (group.isEmpty() ? QStringLiteral("[--home DIR]") : group)
        << " <command> [options]\n\nCommands:\n";
    for (const CommandEntry &c : allCommands()) {
        if (!group.isEmpty() && c.group != group)
            continue;
        const QString words = c.name.isEmpty() ? c.group : c.group + ' ' + c.name;
        out << "  " << (words + ' ' + c.usage).leftJustified(60) << ' ' << c.summary << '\n';
    }
    out << "\nEvery command takes --help.\n";
    out.flush();
}

// The task commands hold the host's page window, so they run as a widget
// application; without --gui its windows stay offscreen and are never shown.
std::unique_ptr<QCoreApplication> makeApplication(int &argc, char **argv)
{
    // The command's group is the first argument after --home.
    int group = 1;
    while (group < argc && qstrncmp(argv[group], "--home", 6) == 0)
        group += qstrcmp(argv[group], "--home") == 0 ? 2 : 1;
    // The task host loads the add-in as "task run" does.
    const bool task = group < argc && (qstrcmp(argv[group], "task") == 0 || qstrcmp(argv[group], "host") == 0);
    bool gui = false;
    for (int i = group; i < argc; ++i)
        gui = gui || qstrcmp(argv[i], "--gui") == 0;
    if (task && gui)
        return std::make_unique<QApplication>(argc, argv);
    if (task) {
        // The platform's start-up chatter (runtime folder and the like) would
        // land on the stderr that scripts read; nobody sees these windows.
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return std::make_unique<QApplication>(argc, argv);
    }
    return std::make_unique<QCoreApplication>(argc, argv);
}

} // namespace

int main(int argc, char **argv)
{
    installQuietQtMessages();
    const std::unique_ptr<QCoreApplication> application = makeApplication(argc, argv);
    QCoreApplication &app = *application;
    QCoreApplication::setApplicationName(QStringLiteral("mctask"));
    QTextStream out(stdout);
    QTextStream err(stderr);

    QStringList args = app.arguments().mid(1);
    // --home DIR: where the registry store, drive map and object table live.
    while (!args.isEmpty() && args.first().startsWith(QLatin1String("--home"))) {
        QString dir;
        if (args.first().startsWith(QLatin1String("--home="))) {
            dir = args.takeFirst().mid(7);
        } else {
            args.removeFirst();
            if (args.isEmpty()) {
                err << "mctask: --home needs a folder\n";
                return 2;
            }
            dir = args.takeFirst();
        }
        if (dir.trimmed().isEmpty()) {
            err << "mctask: --home: an empty path names nothing\n";
            return 2;
        }
        qputenv("MCTASK_HOME", QDir(dir).absolutePath().toLocal8Bit());
    }
    if (args.isEmpty() || args.first() == QLatin1String("--help") || args.first() == QLatin1String("-h")) {
        printUsage(args.isEmpty() ? err : out);
        return args.isEmpty() ? 2 : 0;
    }

    const QString group = args.takeFirst();
    const bool groupHelp = args.isEmpty() || args.first() == QLatin1String("--help") || args.first() == QLatin1String("-h");
    const bool named = std::any_of(allCommands().begin(), allCommands().end(),
                                   [&](const CommandEntry &c) { return c.group == group && !c.name.isEmpty(); });
    if (named && groupHelp) {
        const bool asked = !args.isEmpty();
        printUsage(asked ? out : err, group);
        return asked ? 0 : 2;
    }
    const CommandEntry *match = nullptr;
    for (const CommandEntry &c : allCommands()) {
        if (c.group != group)
            continue;
        if (c.name.isEmpty()) {
            match = &c;
            break;
        }
        if (!args.isEmpty() && args.first() == c.name) {
            args.removeFirst();
            match = &c;
            break;
        }
    }
    if (!match) {
        err << "mctask: unknown command '" << (args.isEmpty() ? group : group + ' ' + args.first())
            << "' (see mctask --help)\n";
        return 2;
    }
    CommandContext context{args, out, err};
    try {
        const int status = match->run(context);
        out.flush();
        return status;
    } catch (const CliError &e) {
        out.flush();
        err << "mctask: " << e.message() << '\n';
        return 2;
    } catch (const HostError &e) {
        return reportHostError(context, e);
    } catch (const std::exception &e) {
        out.flush();
        err << "mctask: " << e.what() << '\n';
        return 1;
    }
}
