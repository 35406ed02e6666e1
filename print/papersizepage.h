#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"

#include <QPointer>
#include <QWidget>
#include <memory>

namespace Ui {
class PaperSizeDlg;
}

// The print task's set-up page "Paper Size and Orientation".
class CPaperSizeDlg final : public TaskPage
{
public:
    struct Values {
        bool useDrawingInfo = true;
        std::int32_t paperSize = 10; // a code the list does not offer selects nothing
        bool allowSizeChange = true;
        std::int32_t orientation = 1; // 0 portrait, 1 landscape
        bool allowOrientationChange = true;
        bool operator==(const Values &) const = default;
    };

    explicit CPaperSizeDlg(TextLookup text = {});
    ~CPaperSizeDlg() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    HRESULT load(IDoxVariables &holder) override;
    HRESULT save(IDoxVariables &holder) override;
    bool takeControlValues() override;

    const Values &values() const { return m_values; }
    void setValues(const Values &values);
    // The code saved for the paper: the selected entry's, -1 without one.
    std::int32_t selectedPaperCode() const;

private:
    void showValues();

    TextLookup m_text;
    Values m_values;
    QPointer<QWidget> m_window;
    std::unique_ptr<Ui::PaperSizeDlg> m_ui;
};
