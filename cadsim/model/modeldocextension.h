#pragma once

#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

class ModelDoc;
class ExportPdfData;
struct PrintRecord;

// The extension object of a document: export (SaveAs) and printing.
class ModelDocExtension final
{
public:
    explicit ModelDocExtension(ModelDoc &doc) : m_doc(doc) {}

    // Writes name. A native extension writes the document itself; any other
    // writes a description of the export (source, configuration or sheets,
    // format, every export preference in effect). Failures set the error
    // and warning bits of the type library and return false.
    bool saveAs(const QString &name, std::int32_t version, std::int32_t options,
                const ExportPdfData *exportData, std::int32_t &errors, std::int32_t &warnings);

    // Appends one record to the application's print spool. sheets holds
    // 1-based sheet positions; no value prints every sheet. printer empty
    // means the document's printer. Problems go to the application's error
    // messages and return false.
    bool printOut2(const std::optional<std::vector<std::int32_t>> &sheets, std::int32_t copies, bool collate,
                   const QString &printer, const QString &printToFile);

    std::int32_t usePageSetup() const { return m_usePageSetup; }
    void setUsePageSetup(std::int32_t value) { m_usePageSetup = value; }

private:
    // Sends a PDF of the printed document to a print-system queue.
    bool printOnQueue(const PrintRecord &record);
    ModelDoc &m_doc;
    std::int32_t m_usePageSetup = 0;
};
