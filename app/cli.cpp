#include "app/cli.h"

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
