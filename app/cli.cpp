#include "app/cli.h"

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
    if (!parser.isSet(helpOption()))
        return true;
    // Qt's own usage line names the program only; ours is the real one.
    const QString help = parser.helpText();
    context.out << "Usage: mctask " << usage << "\n\n" << about << "\n\n"
                << help.mid(help.indexOf(QLatin1String("Options:")));
    context.out.flush();
    return false;
}
