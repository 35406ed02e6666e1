#pragma once

#include "addin/taskpage.h"
#include "common/translator.h"
#include "convert/conversionsettings.h"

#include <QPointer>
#include <QWidget>
#include <memory>

namespace Ui {
class ConversionSettingsPageDlg;
}
class CTemplateTabDlg;
class PathTemplateEditor;
class StrWnd;

// The "Conversion Settings" page of a convert task, in set-up or launch
// mode. At launch, Load decides what the user is asked and the window shows
// only those sections, closed up.
class CConversionSettingsPageDlg final : public ConversionSettingsPage
{
public:
    CConversionSettingsPageDlg(const PageContext &context, TextLookup text);
    ~CConversionSettingsPageDlg() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    HRESULT load(IDoxVariables &holder) override;
    HRESULT save(IDoxVariables &holder) override;
    bool takeControlValues() override;
    bool hasLaunchPrompt() const override { return m_values.hasUserChoices(); }
    QString currentExtension() const override { return m_values.currentExtension(); }

    ConversionSettingsValues &values() { return m_values; }

    // What a person does in the window.
    void selectFormatEntry(int entry);
    // "Conversion Options...": the options of the selected format, modal.
    void showConversionOptions();

private:
    void showValues();
    void closeUpSections();
    void formatChanged();

    PageContext m_context;
    TextLookup m_text;
    ConversionSettingsValues m_values;
    IDoxVariables *m_holder = nullptr; // where "Conversion Options..." reads and writes
    QPointer<QWidget> m_window;
    std::unique_ptr<Ui::ConversionSettingsPageDlg> m_ui;
    std::unique_ptr<CTemplateTabDlg> m_confs;
    std::unique_ptr<CTemplateTabDlg> m_sheets;
    PathTemplateEditor *m_path = nullptr;
    StrWnd *m_helper = nullptr;
    bool m_showing = false;
};
