#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"

#include <QPointer>
#include <QWidget>
#include <memory>

namespace Ui {
class FilesDlg;
}

// The print task's set-up page "Files": whether a launch shows the print
// dialog, which references it ticks by itself, which version of the
// references it prints, and the error log folder.
class CFilesDlg final : public TaskPage
{
public:
    struct Values {
        bool showPrintDialog = true;
        std::int32_t autoSelect = 1;
        std::int32_t refVersion = 2;
        QString errorLogPath;
        bool operator==(const Values &) const = default;
    };

    CFilesDlg(std::shared_ptr<IDoxVault> vault, TextLookup text = {});
    ~CFilesDlg() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    // Needs the task properties (the task's name gives the log folder).
    HRESULT load(IDoxVariables &holder) override;
    HRESULT save(IDoxVariables &holder) override;
    bool takeControlValues() override;

    const Values &values() const { return m_values; }
    void setValues(const Values &values);
    // "Browse...": the folder the user picks in the vault becomes the log
    // folder, relative to the vault's root.
    void browseForLogFolder();

private:
    QString text(std::int32_t number, const char *english) const;
    void showValues();

    std::shared_ptr<IDoxVault> m_vault;
    IDoxTaskProperties *m_props = nullptr; // the host's, alive while the set-up dialog is
    TextLookup m_text;
    Values m_values;
    QPointer<QWidget> m_window;
    std::unique_ptr<Ui::FilesDlg> m_ui;
};
