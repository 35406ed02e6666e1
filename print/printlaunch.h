#pragma once

#include "addin/addinservices.h"
#include "host/doxcmd.h"

#include <QString>
#include <QStringList>
#include <array>
#include <memory>
#include <vector>

class IDoxVault;
class IDoxTaskInstance;

// One document the launch may print: a selected file or a reference of one.
struct FileInfo {
    std::int32_t fileId = 0;
    std::int32_t folderId = 0;
    QString fileName;
    QString configuration; // configuration or sheet; empty for the whole document
    QString folderPath;    // no trailing backslash
    std::int32_t version = 0;
    std::int32_t otherValue = 0;
    bool checked = false;
    std::int32_t state = 0; // 0 normal, 2 unsupported
    QString errorText;
    int parent = -1; // index of the selected file it is a reference of

    bool hasCheckBox() const { return errorText.isEmpty(); }
    QString fullPath() const { return folderPath + QLatin1Char('\\') + fileName; }
};

// What a print launch asks and decides, with or without its window: the
// launch answers (printer, paper, orientation, copies, margins, header and
// footer), the documents to print, and "Print", which writes the answers
// into the task instance and hands over the documents as the selection.
class PrintLaunch
{
public:
    // The control a refusal puts the focus on.
    enum class Control { None, Printer, Paper, Orientation, Copies, Margins, Header, Footer, Version, Files };
    struct Refusal {
        Control control = Control::None;
        QString message; // empty: accepted
    };

    PrintLaunch(std::shared_ptr<IDoxVault> vault, std::shared_ptr<IDoxTaskInstance> instance,
                DoxCmdDataArray &selection, TextLookup text = {});

    // Reads the settings and lists the documents. Host failures raise HostError.
    void initialise();

    // Settings as read.
    std::int32_t printerMode() const { return m_printerMode; }
    std::int32_t refVersionType() const { return m_refVersion; }
    bool versionChoiceShown() const { return m_refVersion == 2; }
    bool marginsTabExists() const;
    bool paperChangeable() const { return m_userSizeChange; }
    bool orientationChangeable() const { return m_userOrientChange; }
    std::int32_t marginType() const { return m_marginType; }
    std::int32_t headerType() const { return m_headerType; }
    std::int32_t footerType() const { return m_footerType; }
    // A message of the last listing ("Failed to read ..."), empty when it worked.
    const QString &listingError() const { return m_listingError; }

    // The answers, as the window shows them.
    QStringList printers; // the printer combo's entries
    int printerIndex = -1;
    std::vector<std::int32_t> papers; // codes of the paper combo
    int paperIndex = -1;
    std::int32_t orientation = 1;
    QString copies = QStringLiteral("1");
    bool latestVersion = true;
    bool customMargins = true;          // margins tab: "Use custom margins:"
    std::array<QString, 4> margins;     // whole millimetres: top, bottom, left, right
    bool useHeader = false;
    std::array<QString, 3> header;
    bool useFooter = false;
    std::array<QString, 3> footer;

    // The paper choice; in printer-by-size mode it names the one printer.
    void selectPaper(int index);
    // Lists the documents again in the referenced or latest versions.
    void setLatestVersion(bool latest);

    const std::vector<FileInfo> &files() const { return m_files; }
    void setChecked(std::size_t index, bool checked);
    // Ticked documents times the copies (0 when the copies are no number).
    std::int64_t total() const;
    QString totalText() const;

    // "Print": every write and every refusal, in order. Accepted, the
    // ticked documents replace the launch's selection.
    Refusal takeData();

private:
    QString text(std::int32_t number, const char *english) const;
    void loadFiles();
    Refusal failedWrite(HRESULT hr, Control control) const;

    std::shared_ptr<IDoxVault> m_vault;
    std::shared_ptr<IDoxTaskInstance> m_instance;
    DoxCmdDataArray &m_selection;
    TextLookup m_text;

    std::int32_t m_printerMode = 0;
    std::int32_t m_takeMode = 0; // the mode "Print" takes the data in
    std::int32_t m_refVersion = 2;
    bool m_userSizeChange = true;
    bool m_userOrientChange = true;
    std::int32_t m_marginType = 1;
    std::int32_t m_headerType = 1;
    std::int32_t m_footerType = 1;
    std::int32_t m_autoSelect = 1;
    QString m_listingError;
    std::vector<FileInfo> m_files;
};
