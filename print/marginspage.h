#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"

#include <QPointer>
#include <QWidget>
#include <array>
#include <memory>

namespace Ui {
class MarginsDlg;
}

// The print task's set-up page "Margins": paper margins in millimetres
// (fractions allowed), and the custom header and footer, each either left
// out, asked at launch or fixed here.
class CMarginsDlg final : public TaskPage
{
public:
    struct Values {
        std::int32_t marginType = 0;
        std::int32_t headerType = 0;
        std::int32_t footerType = 0;
        std::array<float, 4> margins{}; // top, bottom, left, right
        std::array<QString, 3> header;  // left, center, right
        std::array<QString, 3> footer;
        bool operator==(const Values &) const = default;
    };

    explicit CMarginsDlg(TextLookup text = {});
    ~CMarginsDlg() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    HRESULT load(IDoxVariables &holder) override;
    // S_FALSE when a margin is not a number.
    HRESULT save(IDoxVariables &holder) override;
    // Refuses (with the number message) a margin that is not a number.
    bool takeControlValues() override;

    const Values &values() const { return m_values; }
    void setValues(const Values &values);

private:
    void showValues();
    void enableEdits();

    TextLookup m_text;
    Values m_values;
    QPointer<QWidget> m_window;
    std::unique_ptr<Ui::MarginsDlg> m_ui;
};
