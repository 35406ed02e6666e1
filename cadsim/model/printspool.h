#pragma once

#include <QByteArray>
#include <QJsonObject>
#include <QList>
#include <QString>
#include <QStringList>
#include <array>
#include <cstdint>

// One print job as the spool file records it.
struct PrintRecord
{
    QString document;
    QString printer;
    std::int32_t paperSize = 0;
    std::int32_t orientation = 0;
    std::int32_t pageSetupInUse = 0;
    bool usePrinterMargins = false;
    double marginTop = 0, marginBottom = 0, marginLeft = 0, marginRight = 0;
    std::array<QString, 3> header;
    std::array<QString, 3> footer;
    QStringList sheets;    // drawings: the sheets printed
    QString configuration; // parts and assemblies
    std::int32_t copies = 1;
    bool collate = false;
    QString printToFile;

    bool operator==(const PrintRecord &) const = default;
};

// The spool holds one JSON object per line.
QByteArray printRecordLine(const PrintRecord &record);
PrintRecord printRecordFromJson(const QJsonObject &o);
// Reads a spool's records; lines that are not records are skipped.
QList<PrintRecord> readPrintSpool(const QByteArray &spool);
