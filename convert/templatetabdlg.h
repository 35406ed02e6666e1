#pragma once

#include "common/translator.h"

#include <QPointer>
#include <QWidget>
#include <functional>
#include <memory>

namespace Ui {
class TemplateTabDlg;
}
class TemplateTabValues;

// The window of one template tab ("Configurations" or "Sheets") over its
// values: which items are converted and whether into one file; at launch the
// allow boxes are hidden and the closed sections removed.
class CTemplateTabDlg final
{
public:
    enum class Kind { Configurations, Sheets };

    CTemplateTabDlg(Kind kind, TemplateTabValues &values, bool launchMode, const TextLookup &text);
    ~CTemplateTabDlg();

    QWidget *create(QWidget *parent);
    QWidget *window() const { return m_window; }
    // After a load: the values into the controls, closed sections removed.
    void showValues();
    // The format changed: the multi-output section follows it.
    void updateStates();
    void takeValues();

private:
    Kind m_kind;
    TemplateTabValues &m_values;
    bool m_launchMode;
    TextLookup m_text;
    QPointer<QWidget> m_window;
    std::unique_ptr<Ui::TemplateTabDlg> m_ui;
};
