#pragma once

#include <QString>
#include <QStringList>
#include <cstdint>

// How to open a native document (the open-specification object of the
// automation interface); OpenDoc7 fills in Error and Warning.
struct DocumentSpecification
{
    QString fileName;
    std::int32_t documentType = 0;
    bool readOnly = false;
    bool silent = false;
    QString configurationName;
    QString displayState;
    std::int32_t error = 0;
    std::int32_t warning = 0;
};

// The PDF export data object: which sheets a PDF export of a drawing holds.
class ExportPdfData final
{
public:
    void setSheets(std::int32_t which, const QStringList &sheets)
    {
        m_which = which;
        m_sheets = sheets;
    }
    std::int32_t which() const { return m_which; }
    QStringList sheets() const { return m_sheets; }

private:
    std::int32_t m_which = 1; // all sheets
    QStringList m_sheets;
};
