#pragma once

#include "host/variant.h"

#include <QDateTime>
#include <QString>
#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

struct FileRecord;

// What an output's card variable is filled from.
enum class FileCardSource : std::int32_t {
    SourceFileName = 1,
    SourceFilePath = 2,
    SourceConfiguration = 3,
    SourceRevision = 4,
    SourceVersion = 5,
    SourceWorkflowState = 6,
    ConversionDateTime = 7,
    FreeText = 8,
    SourceCardVariable = 100,
};

// One row of "FileCardData": the output's card variable, where its value
// comes from, and the free text or the source's variable name.
struct FileCardRow {
    QString destination;
    std::int32_t kind = 0;
    QString text;
    bool operator==(const FileCardRow &) const = default;
};

// The stored form: one "destination;kind;text" line per row, each ended by a
// line feed. The text is everything after the second ";"; empty lines are
// skipped and the kind is its leading integer, as the other stored lists read
// numbers (0 when there is none).
std::vector<FileCardRow> parseFileCardData(const QString &stored);
QString formatFileCardData(const std::vector<FileCardRow> &rows);

// A card value of the source file by variable name; nullopt when the source
// has none.
using SourceCardLookup = std::function<std::optional<Variant>(const QString &variable)>;

// The value a row writes into the card of output (whose source record must be
// set); nullopt when the row writes nothing.
std::optional<Variant> fileCardValue(const FileCardRow &row, const FileRecord &output, const QDateTime &now,
                                     const SourceCardLookup &sourceCard);
