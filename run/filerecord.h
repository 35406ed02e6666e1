#pragma once

#include <QString>
#include <cstdint>
#include <memory>

// One entry of a launch's or a run's file list: a selected file, an output
// or error log that the CAD application saved, or a printed item.
struct FileRecord {
    QString path;       // full Windows path; empty for a print entry
    QString text1;      // revision label, filled when data cards are filled
    QString text2;      // workflow state name, filled with text1
    QString conf;       // configuration or sheet current at save or print
    QString info;       // printed document's name (print entries); "extra" when read back
    std::int32_t docId = 0;
    std::int32_t projId = 0;
    std::int32_t version = 0;
    std::int32_t altVersion = -1; // -1 when not set
    QString sourceConf; // per-file text that came with the selection
    bool checkedOut = false;
    bool isErrorLog = false;
    bool isCadDocument = false;
    bool isPrintEntry = false;
    bool inVaultTree = false;
    // The selected file being processed when an output or print entry
    // appeared; none for selected files. Shared, because filling data cards
    // later updates the source's altVersion and texts.
    std::shared_ptr<FileRecord> source;

    // The version to hand to the host: altVersion stands in for -1 and 0.
    std::int32_t effectiveVersion() const { return version == -1 || version == 0 ? altVersion : version; }
};

// The text after the last "." of the file name; hasExtension is false when
// the file name holds no "." at all ("name." has an empty extension).
QString fileExtension(const QString &path, bool *hasExtension = nullptr);

// "mcdprt", "mcdasm" or "mcddrw" in any letter case.
bool isCadDocumentPath(const QString &path);
