#include "app/cli.h"

#include <QCoreApplication>
#include <QDir>
#include <cstdio>

namespace {

void printUsage(QTextStream &out)
{
    out << "Usage: mctask [--home DIR] <command> [options]\n\nCommands:\n";
    for (const CommandEntry &c : allCommands()) {
        const QString words = c.name.isEmpty() ? c.group : c.group + ' ' + c.name;
        out << "  " << (words + ' ' + c.usage).leftJustified(60) << ' ' << c.summary << '\n';
    }
    out << "\nEvery command takes --help.\n";
    out.flush();
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
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
        qputenv("MCTASK_HOME", QDir(dir).absolutePath().toLocal8Bit());
    }
    if (args.isEmpty() || args.first() == QLatin1String("--help") || args.first() == QLatin1String("-h")) {
        printUsage(args.isEmpty() ? err : out);
        return args.isEmpty() ? 2 : 0;
    }

    const QString group = args.takeFirst();
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
    }
}
