#include "app/cli.h"

#include "common/errortexts.h"
#include "host/hosterror.h"

#include <QCommandLineParser>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <algorithm>

void printTable(QTextStream &out, const QStringList &headers, const std::vector<QStringList> &rows)
{
    std::vector<qsizetype> widths(headers.size());
    for (qsizetype i = 0; i < headers.size(); ++i)
        widths[i] = headers[i].size();
    for (const QStringList &row : rows)
        for (qsizetype i = 0; i < row.size() && i < headers.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    auto line = [&](const QStringList &cells) {
        QString text;
        for (qsizetype i = 0; i < headers.size(); ++i) {
            const QString cell = i < cells.size() ? cells[i] : QString();
            text += i + 1 < headers.size() ? cell.leftJustified(widths[i] + 2) : cell;
        }
        out << text << '\n';
    };
    line(headers);
    for (const QStringList &row : rows)
        line(row);
    out.flush();
}

void printJson(QTextStream &out, const QJsonValue &value)
{
    QJsonDocument doc;
    if (value.isArray())
        doc = QJsonDocument(value.toArray());
    else
        doc = QJsonDocument(value.toObject());
    out << doc.toJson(QJsonDocument::Indented);
    out.flush();
}

int reportHostError(CommandContext &context, const HostError &error)
{
    context.out.flush();
    context.err << "mctask: " << errorName(error.code()) << ": "
                << (error.context().isEmpty() ? errorText(error.code()) : error.context()) << '\n';
    context.err.flush();
    return 1;
}

void requirePath(const QString &value, const QString &what)
{
    if (value.trimmed().isEmpty())
        throw CliError(QStringLiteral("%1: an empty path names nothing").arg(what));
}

const QCommandLineOption &helpOption()
{
    static const QCommandLineOption option({QStringLiteral("h"), QStringLiteral("help")},
                                           QStringLiteral("Show this help."));
    return option;
}

const QCommandLineOption &vaultOption()
{
    static const QCommandLineOption option(QStringLiteral("vault"), QStringLiteral("The vault's folder."),
                                           QStringLiteral("DIR"));
    return option;
}

const QCommandLineOption &jsonOption()
{
    static const QCommandLineOption option(QStringLiteral("json"), QStringLiteral("Print JSON for scripts."));
    return option;
}

bool parseCommandLine(QCommandLineParser &parser, CommandContext &context, const QString &usage,
                      const QString &about)
{
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.addOption(helpOption());
    if (!parser.parse(QStringList{QStringLiteral("mctask")} + context.args))
        throw CliError(parser.errorText() + QStringLiteral(" (see --help)"));
    // optionNames() holds only options given, so commands without --vault
    // are not asked about it.
    if (parser.optionNames().contains(QStringLiteral("vault")))
        requirePath(parser.value(vaultOption()), QStringLiteral("--vault"));
    if (!parser.isSet(helpOption()))
        return true;
    // Qt's own usage line names the program only; ours is the real one.
    const QString help = parser.helpText();
    context.out << "Usage: mctask " << usage << "\n\n" << about << "\n\n"
                << help.mid(help.indexOf(QLatin1String("Options:")));
    context.out.flush();
    return false;
}
