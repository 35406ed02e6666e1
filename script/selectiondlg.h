#pragma once

#include "addin/addinservices.h"
#include "host/doxcmd.h"

#include <QDialog>
#include <QPointer>
#include <QStringList>
#include <map>
#include <memory>

class IDoxVault;
class QListWidget;
class Translator;

namespace Ui {
class SelectionDlg;
}

// "Select Files and Folders for Task": the vault files and folders a task
// launched without a selection works on. The dialog keeps its entries by
// displayed path (the full path without the vault root), so the result is
// ordered by that path whatever order they were added in; the list shows
// them in the order they were added.
class CSelectionDlg final
{
public:
    struct Entry {
        std::int32_t id = 0;
        std::int32_t kind = DoxObject_File;
        std::int32_t parentId = 0; // the folder holding a file; 0 for a folder
        std::int32_t extra = 0;    // the host's fourth value, passed through
        bool operator==(const Entry &) const = default;
    };
    // Ordinal, case-sensitive order of displayed paths.
    using Entries = std::map<QString, Entry>;

    // name: what the task is called in the caption; empty keeps "Task".
    // Every text of the dialog (numbered texts, file type names, control
    // texts) comes from translator, the process-wide one when none is given.
    CSelectionDlg(std::shared_ptr<IDoxVault> vault, QString vaultRoot, QString name = {},
                  const Translator *translator = nullptr);
    ~CSelectionDlg();
    CSelectionDlg(const CSelectionDlg &) = delete;
    CSelectionDlg &operator=(const CSelectionDlg &) = delete;

    // The filter of "Add Files...": "Name (*.a;*.b)|*.a; *.b|...||".
    QString filterText() const;

    // The caption for a named task; empty keeps the form's own.
    QString caption() const;
    QString displayedPath(const QString &fullPath) const;
    // Adds one entry unless its displayed path is there already; true when added.
    bool addEntry(const QString &fullPath, const Entry &entry);
    const Entries &entries() const { return m_entries; }
    // Displayed paths in list order.
    const QStringList &rows() const { return m_rows; }
    // Removes the rows and their entries.
    void removeRows(QList<int> rows);

    // "Add Files..." and "Add Folder...": the vault's pickers; a host
    // failure is shown and nothing more is added.
    void addFiles();
    void addFolder();
    // "OK": refused with a message while the list is empty.
    bool accept();
    // One record per entry, in the order of displayed paths.
    DoxCmdDataArray result() const;

    QDialog *create(QWidget *parent);
    QDialog *window() const { return m_dialog; }
    // Runs the dialog modally; true when it ended with "OK".
    bool exec(QWidget *parent);

private:
    const Translator &translator() const;
    QString text(std::int32_t number, const char *english) const;
    void showMessage(const QString &message);
    void showFailure(HRESULT hr);
    void updateRemoveButton();

    std::shared_ptr<IDoxVault> m_vault;
    QString m_root;
    QString m_name;
    const Translator *m_translator;
    Entries m_entries;
    QStringList m_rows;

    QPointer<QDialog> m_dialog;
    std::unique_ptr<Ui::SelectionDlg> m_ui;
};

// The selection dialog of a launch over owner: S_OK with the chosen items
// replacing selection, S_FALSE when the user cancelled.
HRESULT runSelectionDialog(HostWindow owner, const std::shared_ptr<IDoxVault> &vault, const QString &vaultRoot,
                           DoxCmdDataArray &selection, const Translator *translator = nullptr);
