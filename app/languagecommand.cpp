#include "app/cli.h"

#include "common/settingslight.h"
#include "platform/drivemap.h"
#include "platform/filesystem.h"

#include <QCommandLineParser>
#include <QDir>
#include <QRegularExpression>

namespace {

// The language folder as a native path, and whether it is there.
QString nativeFolder(const QString &folder)
{
    const QString native = folder.startsWith(QLatin1Char('/')) ? QString(folder).replace(QLatin1Char('\\'), QLatin1Char('/'))
                                                                : DriveMap::instance().toNative(folder);
    return native.isEmpty() ? native : QDir::cleanPath(native) + QLatin1Char('/');
}

void printLanguage(CommandContext &context, SettingsLight &settings)
{
    const QString code = settings.language();
    const QString folder = settings.path(InstallPath::LanguageFolder);
    const QString native = nativeFolder(folder);
    context.out << code << '\n';
    if (folder.isEmpty())
        context.out << "language folder: none (run mctask addin register); texts are English\n";
    else if (native.isEmpty() || !FileSystem::instance().isDirectory(native))
        context.out << "language folder: " << (native.isEmpty() ? folder : native) << " (missing; texts are English)\n";
    else
        context.out << "language folder: " << native << '\n';
}

} // namespace

int runLanguageCommand(CommandContext &context)
{
    QCommandLineParser parser;
    if (!parseCommandLine(parser, context, QStringLiteral("language [CODE]"),
                          QStringLiteral("Shows the user-interface language of the add-in and the vault client's "
                                         "windows, and its language folder;\nwith CODE (\"GB\", \"DE\") sets it "
                                         "(value \"0\" of \"Vaults\\_-Global\\Settings\").")))
        return 0;
    const QStringList args = parser.positionalArguments();
    if (args.size() > 1)
        throw CliError(QStringLiteral("too many arguments (see --help)"));
    SettingsLight settings;
    if (!args.isEmpty()) {
        static const QRegularExpression code(QStringLiteral("^[A-Za-z]{2,8}$"));
        if (!code.match(args.first()).hasMatch())
            throw CliError(QStringLiteral("'%1' is no language code; give letters such as GB or DE").arg(args.first()));
        if (!settings.setLanguage(args.first().toUpper())) {
            context.err << "mctask: the language could not be written to the registry store\n";
            return 1;
        }
    }
    printLanguage(context, settings);
    return 0;
}
