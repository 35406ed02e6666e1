#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"

#include <QPointer>
#include <QWidget>
#include <memory>

namespace Ui {
class OutputFileDetailsPageDlg;
}
class PathTemplateEditor;

// Keys of the "Output File Details" page.
namespace OutputKeys {
inline const QString ErrorLogPath = QStringLiteral("ErrorLogPath");
inline const QString OutputPath = QStringLiteral("OutputPath");
inline const QString OutputPath2 = QStringLiteral("OutputPath2");
inline const QString RefToSource = QStringLiteral("RefToSource");
inline const QString ReplaceOutput = QStringLiteral("ReplaceOutput");
inline const QString PromptOutput = QStringLiteral("PromptOutput");
} // namespace OutputKeys

// The convert task's set-up page for where the outputs go: the two path
// templates, whether the user may change the primary one at launch, the
// reference to the source, duplicate handling and the error log folder.
class COutputFileDetailsPageDlg final : public TaskPage
{
public:
    static inline const QString DefaultOutputPath = QStringLiteral("<Path>\\<Filename>_<Extension>_<Configuration>");

    COutputFileDetailsPageDlg(const PageContext &context, TextLookup text = {});
    ~COutputFileDetailsPageDlg() override;

    HostWindow create(HostWindow parent) override;
    HostWindow window() const override { return m_window; }
    // The log folder's default names the task, when the holder knows it.
    HRESULT load(IDoxVariables &holder) override;
    HRESULT save(IDoxVariables &holder) override;
    bool takeControlValues() override;

    QString errorLogPath;
    QString outputPath = DefaultOutputPath;
    QString outputPath2;
    bool refToSource = false;
    bool replaceOutput = true;
    bool promptOutput = true;

    // "Browse...": the vault's folder browser; the chosen folder's local path
    // becomes the log folder. Errors are shown, nothing changes.
    void browseErrorLogFolder();
    // "Advanced Scripting Options...": the script dialog of a conversion task.
    HRESULT advancedScriptingOptions();

private:
    QString text(std::int32_t number, const char *english) const;
    void showValues();

    PageContext m_context;
    TextLookup m_text;
    QPointer<QWidget> m_window;
    std::unique_ptr<Ui::OutputFileDetailsPageDlg> m_ui;
    PathTemplateEditor *m_primary = nullptr;
    PathTemplateEditor *m_secondary = nullptr;
};
