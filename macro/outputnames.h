#pragma once

#include "common/translator.h"

#include <QString>
#include <cstdint>
#include <functional>
#include <vector>

class IDoxVariables;

// A placeholder that may stand in an output path, with the text id and
// English text of its display name in the set-up editors.
struct OutputPlaceholder {
    QString placeholder;
    std::int32_t textId = 0;
    QString displayName;
};

// The nine placeholders in the order the editors list them.
const std::vector<OutputPlaceholder> &outputPathPlaceholders();


inline constexpr std::int32_t kAllSheetsTextId = 170;
inline constexpr std::int32_t kAllConfigurationsTextId = 171;

// Bits of "FileSheets"/"FileConfs" and "OutputSheets"/"OutputConfs".
inline constexpr std::int32_t kOneFileEach = 4;
inline constexpr std::int32_t kOutputAll = 2;
inline constexpr std::int32_t kOutputNamed = 8;

// The label under which a conversion output is recorded: the sheet's or
// configuration's own name when each goes to its own file, otherwise what
// the file holds ("All sheets", "All configurations" or the name pattern).
// The settings are read once from the task's variables; absent ones take the
// set-up defaults (all, one file each).
class OutputLabels final
{
public:
    // Texts come from text (the add-in's translations when not given).
    // Throws HostError when a variable cannot be read.
    static OutputLabels read(IDoxVariables &variables, TextLookup text = {});

    QString SheetLabel(const QString &sheetName) const;
    QString ConfigurationLabel(const QString &configurationName) const;

private:
    struct Choice {
        std::int32_t fileMode = kOneFileEach | 1;
        std::int32_t output = kOutputAll | 1;
        QString pattern;
        QString allText;
    };
    static QString label(const Choice &choice, const QString &name);

    Choice m_sheets;
    Choice m_configurations;
};
