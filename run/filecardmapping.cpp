#include "run/filecardmapping.h"

#include "base/leadinginteger.h"
#include "macro/dateformat.h"
#include "run/filerecord.h"

std::vector<FileCardRow> parseFileCardData(const QString &stored)
{
    std::vector<FileCardRow> rows;
    for (const QStringView line : QStringView(stored).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
        FileCardRow row;
        const qsizetype first = line.indexOf(QLatin1Char(';'));
        if (first < 0) {
            row.destination = line.toString();
            rows.push_back(std::move(row));
            continue;
        }
        row.destination = line.left(first).toString();
        const QStringView rest = line.mid(first + 1);
        const qsizetype second = rest.indexOf(QLatin1Char(';'));
        row.kind = leadingInteger((second < 0 ? rest : rest.left(second)).toString());
        if (second >= 0)
            row.text = rest.mid(second + 1).toString();
        rows.push_back(std::move(row));
    }
    return rows;
}

QString formatFileCardData(const std::vector<FileCardRow> &rows)
{
    QString stored;
    for (const FileCardRow &row : rows)
        stored += row.destination + QLatin1Char(';') + QString::number(row.kind) + QLatin1Char(';') + row.text
            + QLatin1Char('\n');
    return stored;
}

std::optional<Variant> fileCardValue(const FileCardRow &row, const FileRecord &output, const QDateTime &now,
                                     const SourceCardLookup &sourceCard)
{
    const FileRecord *source = output.source.get();
    if (!source)
        return std::nullopt;
    switch (static_cast<FileCardSource>(row.kind)) {
    case FileCardSource::SourceFileName: return Variant::fromBStr(source->path);
    case FileCardSource::SourceFilePath: return Variant::fromBStr(source->path.left(source->path.lastIndexOf(QLatin1Char('\\'))));
    case FileCardSource::SourceConfiguration: return Variant::fromBStr(output.conf);
    case FileCardSource::SourceRevision: return Variant::fromBStr(source->text1);
    case FileCardSource::SourceVersion: return Variant::fromI4(source->effectiveVersion());
    case FileCardSource::SourceWorkflowState: return Variant::fromBStr(source->text2);
    case FileCardSource::ConversionDateTime: return Variant::fromDate(toAutomationDate(now));
    case FileCardSource::FreeText: return Variant::fromBStr(row.text);
    case FileCardSource::SourceCardVariable: return sourceCard ? sourceCard(row.text) : std::nullopt;
    }
    return std::nullopt;
}
