#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>
#include <vector>

class VListCtrl;
class FocusEdit;
class PaperSizeRow;

namespace Ui {
class PrinterDlg;
}

// The print task's set-up page "Printer": one printer for every file, a
// list the user chooses from at launch, or a printer per paper size.
class CPrinterDlg final : public TaskPage
{
public:
    using PrinterList = std::function<QStringList()>;

    // Printers come from the machine unless given.
    explicit CPrinterDlg(TextLookup text = {}, PrinterList printers = {});
    ~CPrinterDlg() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    HRESULT load(IDoxVariables &holder) override;
    HRESULT save(IDoxVariables &holder) override;
    bool takeControlValues() override;

    std::int32_t mode() const { return m_mode; }
    const QString &printerName() const { return m_printerName; }
    const QString &printerList() const { return m_printerList; }
    void setMode(std::int32_t mode);
    void setPrinterName(const QString &name);
    void setPrinterList(const QString &list);

    // The paper-size rows: ten sizes and "Default" last.
    std::size_t rowCount() const { return m_rows.size(); }
    std::int32_t rowCode(std::size_t row) const;
    QString rowLabel(std::size_t row) const;
    QString rowPrinter(std::size_t row) const;
    void setRowPrinter(std::size_t row, const QString &printer);
    // Opens the in-place editor over a row's printer cell (window only).
    FocusEdit *editRowPrinter(std::size_t row);

private:
    friend class PaperSizeRow;
    QString text(std::int32_t number, const char *english) const;
    void showValues();
    void enableControls();
    void refreshRows();

    TextLookup m_text;
    PrinterList m_printers;
    std::int32_t m_mode = 0;
    QString m_printerName;
    QString m_printerList;
    std::vector<std::shared_ptr<PaperSizeRow>> m_rows;
    QPointer<QWidget> m_window;
    QPointer<FocusEdit> m_editor;
    std::unique_ptr<Ui::PrinterDlg> m_ui;
};
