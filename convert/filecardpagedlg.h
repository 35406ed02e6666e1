#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"
#include "run/filecardmapping.h"

#include <QPointer>
#include <QStringList>
#include <QWidget>
#include <memory>
#include <vector>

namespace Ui {
class FileCardPageDlg;
}

// The convert task's set-up page "File Card": which card variables of each
// output are filled, and from what. The rows are stored in "FileCardData"
// in the form the run reads back (run/filecardmapping).
class CFileCardPageDlg final : public TaskPage
{
public:
    static inline const QString FileCardDataKey = QStringLiteral("FileCardData");

    CFileCardPageDlg(const PageContext &context, TextLookup text = {});
    ~CFileCardPageDlg() override;

    // Reads the vault's card variable names (once, on the first call).
    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    // Rows naming variables the vault does not have are dropped.
    HRESULT load(IDoxVariables &holder) override;
    // Declares every mapped variable with the task, then writes the rows.
    HRESULT save(IDoxVariables &holder) override;

    HRESULT readVariableNames();
    const QStringList &variableNames() const { return m_names; }
    const std::vector<FileCardRow> &rows() const { return m_rows; }
    // The row's "Source" column: the kind's name, the free text or the
    // source variable.
    QString sourceText(const FileCardRow &row) const;

    // What the administrator does (through the window when it exists).
    void addRow();
    void removeSelectedRow();
    void selectRow(int row);
    void chooseSource(int entry);      // index in the source list
    void chooseDestination(int entry); // index in the destination list
    void setFreeText(const QString &text);

private:
    QString text(std::int32_t number, const char *english) const;
    QString kindName(std::int32_t kind) const;
    bool knownVariable(const QString &name) const;
    void fillLists();
    void showRows();
    void showRow(int row);
    void showSelection();

    PageContext m_context;
    TextLookup m_text;
    bool m_namesRead = false;
    QStringList m_names;
    std::vector<FileCardRow> m_rows;
    int m_selected = -1;
    bool m_showing = false;
    QPointer<QWidget> m_window;
    class StrWnd *m_helper = nullptr;
    std::unique_ptr<Ui::FileCardPageDlg> m_ui;
};
