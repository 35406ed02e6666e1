#pragma once

#include "addin/taskpage.h"
#include "convert/conversionsettings.h"

// The "Conversion Settings" page of a convert task. This build has its
// values only: Load decides what a launch asks the user, Save writes the
// choices; its window is not built yet, so create gives none.
class CConversionSettingsPageDlg final : public ConversionSettingsPage
{
public:
    CConversionSettingsPageDlg(const PageContext &context, ConversionTextLookup text);

    HostWindow create(HostWindow) override { return nullptr; }
    HostWindow window() const override { return nullptr; }
    HRESULT load(IDoxVariables &holder) override { return m_values.load(holder); }
    HRESULT save(IDoxVariables &holder) override { return m_values.save(holder); }
    bool hasLaunchPrompt() const override { return m_values.hasUserChoices(); }

    ConversionSettingsValues &values() { return m_values; }

private:
    ConversionSettingsValues m_values;
};
