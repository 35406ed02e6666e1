#include "print/filespage.h"

#include "settings/tasksettings.h"
#include "common/translator.h"
#include "common/widgets/prompter.h"
#include "common/widgets/strwnd.h"
#include "host/idoxvault.h"
#include "print/printsettings.h"
#include "script/scriptpagedlg.h"

#include "ui_filesdlg.h"

#include <QButtonGroup>

namespace {
constexpr std::int32_t LogsText = 135;
constexpr std::int32_t SelectFolderText = 6;
} // namespace

CFilesDlg::CFilesDlg(std::shared_ptr<IDoxVault> vault, TextLookup text) : m_vault(std::move(vault)), m_text(std::move(text))
{
}

CFilesDlg::~CFilesDlg()
{
    delete m_window.data();
}

QString CFilesDlg::text(std::int32_t number, const char *english) const
{
    return lookupText(m_text, number, english);
}

HostWindow CFilesDlg::create(HostWindow parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::FilesDlg>();
    m_ui->setupUi(m_window);
    (new StrWnd(m_window))->localise(QStringLiteral("FilesDlg"));
    QObject::connect(m_ui->browseButton, &QPushButton::clicked, m_window, [this] { browseForLogFolder(); });
    QObject::connect(m_ui->advancedButton, &QPushButton::clicked, m_window, [this] {
        // The scripting options have their own load and save on the task.
        if (m_props)
            runAdvancedScriptingOptions(*m_props, 2, m_window, m_text);
    });
    showValues();
    return m_window;
}

void CFilesDlg::showValues()
{
    if (!m_window)
        return;
    m_ui->showPrintDialogCheck->setChecked(m_values.showPrintDialog);
    QRadioButton *autoSelect[] = {m_ui->autoNoneRadio, m_ui->autoDrawingsRadio, m_ui->autoModelsRadio,
                                  m_ui->autoAllRadio};
    QRadioButton *version[] = {m_ui->referencedVersionRadio, m_ui->latestVersionRadio, m_ui->promptVersionRadio};
    for (int i = 0; i < 4; ++i)
        autoSelect[i]->setChecked(m_values.autoSelect == i);
    for (int i = 0; i < 3; ++i)
        version[i]->setChecked(m_values.refVersion == i);
    m_ui->errorLogEdit->setText(m_values.errorLogPath);
}

bool CFilesDlg::takeControlValues()
{
    if (!m_window)
        return true;
    m_values.showPrintDialog = m_ui->showPrintDialogCheck->isChecked();
    const QRadioButton *autoSelect[] = {m_ui->autoNoneRadio, m_ui->autoDrawingsRadio, m_ui->autoModelsRadio,
                                        m_ui->autoAllRadio};
    const QRadioButton *version[] = {m_ui->referencedVersionRadio, m_ui->latestVersionRadio,
                                     m_ui->promptVersionRadio};
    for (int i = 0; i < 4; ++i)
        if (autoSelect[i]->isChecked())
            m_values.autoSelect = i;
    for (int i = 0; i < 3; ++i)
        if (version[i]->isChecked())
            m_values.refVersion = i;
    m_values.errorLogPath = m_ui->errorLogEdit->text();
    return true;
}

void CFilesDlg::setValues(const Values &values)
{
    m_values = values;
    showValues();
}

HRESULT CFilesDlg::load(IDoxVariables &holder)
{
    // The log folder a task starts with is named after the task.
    if (auto *props = dynamic_cast<IDoxTaskProperties *>(&holder)) {
        m_props = props;
        QString name;
        if (succeeded(props->GetTaskName(name)))
            m_values.errorLogPath = QStringLiteral("\\") + text(LogsText, "Logs") + QStringLiteral("\\") + name;
    }
    const HRESULT hr = VariableLoader(holder)
                           .boolean(PrintKeys::ShowPrintDialog, m_values.showPrintDialog)
                           .integer(PrintKeys::AutoSelectRefs, m_values.autoSelect)
                           .integer(PrintKeys::RefVersion, m_values.refVersion)
                           .text(PrintKeys::ErrorLogPath, m_values.errorLogPath)
                           .result();
    showValues();
    return hr;
}

HRESULT CFilesDlg::save(IDoxVariables &holder)
{
    takeControlValues();
    return VariableSaver(holder)
        .boolean(PrintKeys::ShowPrintDialog, m_values.showPrintDialog)
        .integer(PrintKeys::AutoSelectRefs, m_values.autoSelect)
        .integer(PrintKeys::RefVersion, m_values.refVersion)
        .text(PrintKeys::ErrorLogPath, m_values.errorLogPath)
        .result();
}

void CFilesDlg::browseForLogFolder()
{
    if (!m_vault)
        return;
    const auto fail = [this](HRESULT hr) {
        Prompter::showError(m_window, hr);
    };
    std::shared_ptr<IDoxFolder> folder;
    HRESULT hr = m_vault->BrowseForFolder(m_window, text(SelectFolderText, "Please select a folder:"), folder);
    if (failed(hr))
        return fail(hr);
    if (hr != S_OK || !folder)
        return;
    QString root;
    if (hr = m_vault->GetRootFolderPath(root); failed(hr))
        return fail(hr);
    while (root.endsWith(QLatin1Char('\\')))
        root.chop(1);
    const QString picked = folder->GetLocalPath();
    QString relative = picked.right(std::max<qsizetype>(0, picked.size() - root.size()));
    relative += QLatin1Char('\\'); // the vault root itself becomes "\"
    m_values.errorLogPath = relative;
    if (m_window)
        m_ui->errorLogEdit->setText(relative);
}
