#include "convert/outputfiledetailspagedlg.h"

#include "settings/tasksettings.h"
#include "common/translator.h"
#include "common/widgets/prompter.h"
#include "common/widgets/strwnd.h"
#include "convert/pathtemplateeditor.h"
#include "host/idoxvault.h"
#include "script/scriptpagedlg.h"

#include "ui_outputfiledetailspagedlg.h"

namespace {
constexpr std::int32_t LogsTextId = 135;
constexpr std::int32_t SelectFolderTextId = 6;
} // namespace

COutputFileDetailsPageDlg::COutputFileDetailsPageDlg(const PageContext &context, TextLookup text)
    : m_context(context), m_text(std::move(text))
{
}

COutputFileDetailsPageDlg::~COutputFileDetailsPageDlg()
{
    delete m_window.data();
}

QString COutputFileDetailsPageDlg::text(std::int32_t number, const char *english) const
{
    return lookupText(m_text, number, english);
}

HostWindow COutputFileDetailsPageDlg::create(HostWindow parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::OutputFileDetailsPageDlg>();
    m_ui->setupUi(m_window);
    (new StrWnd(m_window))->localise(QStringLiteral("OutputFileDetailsPageDlg"));
    const auto extension = [this] {
        return m_context.conversionPage ? m_context.conversionPage->currentExtension() : QStringLiteral(".pdf");
    };
    m_primary = new PathTemplateEditor(m_ui->primaryPathEdit, m_ui->primaryPlaceholderButton,
                                       m_ui->primaryExampleLabel, m_text);
    m_secondary = new PathTemplateEditor(m_ui->secondaryPathEdit, m_ui->secondaryPlaceholderButton,
                                         m_ui->secondaryExampleLabel, m_text);
    for (PathTemplateEditor *editor : {m_primary, m_secondary}) {
        editor->setExtension(extension);
        editor->setVault(m_context.vault);
    }
    QObject::connect(m_ui->browseButton, &QPushButton::clicked, m_window, [this] { browseErrorLogFolder(); });
    QObject::connect(m_ui->advancedScriptingButton, &QPushButton::clicked, m_window,
                     [this] { advancedScriptingOptions(); });
    showValues();
    return m_window;
}

void COutputFileDetailsPageDlg::showValues()
{
    if (!m_window)
        return;
    m_ui->errorLogEdit->setText(errorLogPath);
    m_primary->setText(outputPath);
    m_secondary->setText(outputPath2);
    m_ui->refToSourceCheck->setChecked(refToSource);
    (replaceOutput ? m_ui->replaceRadio : m_ui->newVersionRadio)->setChecked(true);
    m_ui->promptOutputCheck->setChecked(promptOutput);
}

bool COutputFileDetailsPageDlg::takeControlValues()
{
    if (m_window) {
        errorLogPath = m_ui->errorLogEdit->text();
        outputPath = m_primary->text();
        outputPath2 = m_secondary->text();
        refToSource = m_ui->refToSourceCheck->isChecked();
        replaceOutput = m_ui->replaceRadio->isChecked();
        promptOutput = m_ui->promptOutputCheck->isChecked();
    }
    return true;
}

HRESULT COutputFileDetailsPageDlg::load(IDoxVariables &holder)
{
    if (auto *props = dynamic_cast<IDoxTaskProperties *>(&holder)) {
        QString name;
        if (succeeded(props->GetTaskName(name)))
            errorLogPath = QStringLiteral("\\") + text(LogsTextId, "Logs") + QStringLiteral("\\") + name;
    }
    // A failing key leaves it and the keys after it at their defaults.
    const HRESULT hr = VariableLoader(holder)
                           .text(OutputKeys::ErrorLogPath, errorLogPath)
                           .text(OutputKeys::OutputPath, outputPath)
                           .text(OutputKeys::OutputPath2, outputPath2)
                           .boolean(OutputKeys::RefToSource, refToSource)
                           .boolean(OutputKeys::ReplaceOutput, replaceOutput)
                           .boolean(OutputKeys::PromptOutput, promptOutput)
                           .result();
    showValues();
    return hr;
}

HRESULT COutputFileDetailsPageDlg::save(IDoxVariables &holder)
{
    takeControlValues();
    return VariableSaver(holder)
        .text(OutputKeys::ErrorLogPath, errorLogPath)
        .text(OutputKeys::OutputPath, outputPath)
        .text(OutputKeys::OutputPath2, outputPath2)
        .boolean(OutputKeys::RefToSource, refToSource)
        .boolean(OutputKeys::ReplaceOutput, replaceOutput)
        .boolean(OutputKeys::PromptOutput, promptOutput)
        .result();
}

void COutputFileDetailsPageDlg::browseErrorLogFolder()
{
    if (!m_context.vault)
        return;
    std::shared_ptr<IDoxFolder> folder;
    const HRESULT hr =
        m_context.vault->BrowseForFolder(m_window, text(SelectFolderTextId, "Select a folder:"), folder);
    if (failed(hr)) {
        Prompter::showError(m_window, hr);
        return;
    }
    if (hr != S_OK || !folder)
        return;
    errorLogPath = folder->GetLocalPath();
    if (m_window)
        m_ui->errorLogEdit->setText(errorLogPath);
}

HRESULT COutputFileDetailsPageDlg::advancedScriptingOptions()
{
    const auto props = m_context.properties.lock();
    if (!props)
        return E_POINTER;
    return runAdvancedScriptingOptions(*props, m_context.taskType, m_window, m_text);
}
