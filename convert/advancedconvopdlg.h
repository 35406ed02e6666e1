#pragma once

#include "common/translator.h"
#include "convert/convoptions.h"

#include <QDialog>
#include <memory>

class IDoxVariables;

// The dialog that holds one format's option page: "&Reset All" sets the
// page's reset defaults, "OK" writes its keys at once, "Cancel" writes
// nothing. Silent (not interactive), it only loads and stores the keys.
class CAdvancedConvOpDlg final : public QDialog
{
    Q_OBJECT
public:
    CAdvancedConvOpDlg(IDoxVariables &holder, std::int32_t formatIndex, const QString &formatName, QWidget *parent,
                       bool interactive, TextLookup text = {});
    ~CAdvancedConvOpDlg() override;

    CConvOpDlg *page() const { return m_page.get(); }
    // "Advanced Scripting Options (PDF)" from "PDF (*.pdf)".
    static QString title(const QString &formatName, const TextLookup &text);

    // The result of reading the stored options; a dialog whose options could
    // not be read shows the error instead of opening and writes nothing.
    HRESULT loadResult() const { return m_loaded; }
    int exec() override;

    void resetAll();
    void accept() override;
    // The result of the last write ("OK").
    HRESULT writeResult() const { return m_written; }

private:
    std::unique_ptr<CConvOpDlg> m_page;
    HRESULT m_loaded = S_OK;
    HRESULT m_written = S_FALSE;
};
