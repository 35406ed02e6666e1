#include "cadsim/model/printspool.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace {

QJsonArray triple(const std::array<QString, 3> &t)
{
    return QJsonArray{t[0], t[1], t[2]};
}

std::array<QString, 3> tripleFrom(const QJsonValue &v)
{
    const QJsonArray a = v.toArray();
    return {a.at(0).toString(), a.at(1).toString(), a.at(2).toString()};
}

} // namespace

QByteArray printRecordLine(const PrintRecord &r)
{
    QJsonObject margins{{QStringLiteral("top"), r.marginTop},
                        {QStringLiteral("bottom"), r.marginBottom},
                        {QStringLiteral("left"), r.marginLeft},
                        {QStringLiteral("right"), r.marginRight}};
    QJsonObject o{{QStringLiteral("document"), r.document},
                  {QStringLiteral("printer"), r.printer},
                  {QStringLiteral("paperSize"), r.paperSize},
                  {QStringLiteral("orientation"), r.orientation},
                  {QStringLiteral("pageSetupInUse"), r.pageSetupInUse},
                  {QStringLiteral("usePrinterMargins"), r.usePrinterMargins},
                  {QStringLiteral("margins"), margins},
                  {QStringLiteral("header"), triple(r.header)},
                  {QStringLiteral("footer"), triple(r.footer)},
                  {QStringLiteral("sheets"), QJsonArray::fromStringList(r.sheets)},
                  {QStringLiteral("configuration"), r.configuration},
                  {QStringLiteral("copies"), r.copies},
                  {QStringLiteral("collate"), r.collate},
                  {QStringLiteral("printToFile"), r.printToFile}};
    return QJsonDocument(o).toJson(QJsonDocument::Compact) + '\n';
}

PrintRecord printRecordFromJson(const QJsonObject &o)
{
    PrintRecord r;
    r.document = o.value(QStringLiteral("document")).toString();
    r.printer = o.value(QStringLiteral("printer")).toString();
    r.paperSize = o.value(QStringLiteral("paperSize")).toInt();
    r.orientation = o.value(QStringLiteral("orientation")).toInt();
    r.pageSetupInUse = o.value(QStringLiteral("pageSetupInUse")).toInt();
    r.usePrinterMargins = o.value(QStringLiteral("usePrinterMargins")).toBool();
    const QJsonObject margins = o.value(QStringLiteral("margins")).toObject();
    r.marginTop = margins.value(QStringLiteral("top")).toDouble();
    r.marginBottom = margins.value(QStringLiteral("bottom")).toDouble();
    r.marginLeft = margins.value(QStringLiteral("left")).toDouble();
    r.marginRight = margins.value(QStringLiteral("right")).toDouble();
    r.header = tripleFrom(o.value(QStringLiteral("header")));
    r.footer = tripleFrom(o.value(QStringLiteral("footer")));
    for (const QJsonValue &s : o.value(QStringLiteral("sheets")).toArray())
        r.sheets << s.toString();
    r.configuration = o.value(QStringLiteral("configuration")).toString();
    r.copies = o.value(QStringLiteral("copies")).toInt();
    r.collate = o.value(QStringLiteral("collate")).toBool();
    r.printToFile = o.value(QStringLiteral("printToFile")).toString();
    return r;
}

QList<PrintRecord> readPrintSpool(const QByteArray &spool)
{
    QList<PrintRecord> records;
    for (const QByteArray &line : spool.split('\n')) {
        const QJsonDocument doc = QJsonDocument::fromJson(line);
        if (doc.isObject())
            records << printRecordFromJson(doc.object());
    }
    return records;
}
