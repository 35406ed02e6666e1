#include "convert/conversionsettingspage.h"

#include "common/help/help.h"
#include "common/widgets/icons.h"
#include "common/widgets/strwnd.h"
#include "convert/advancedconvopdlg.h"
#include "convert/convoptions.h"
#include "convert/pathtemplateeditor.h"
#include "convert/templatetabdlg.h"

#include "ui_conversionsettingspage.h"

#include <QFileIconProvider>
#include <QMimeDatabase>

namespace {

constexpr int ConfigurationsIcon = 164;
constexpr int SheetsIcon = 189;

// The icon of a format entry: the desktop's icon for its first extension.
QIcon formatIcon(const OutputFormatEntry &format)
{
    if (format.index == 0)
        return {};
    const QString extension = formatExtension(format);
    const QMimeType type = QMimeDatabase().mimeTypeForFile(QStringLiteral("sample") + extension,
                                                           QMimeDatabase::MatchExtension);
    QIcon icon = QIcon::fromTheme(type.iconName(), QIcon::fromTheme(type.genericIconName()));
    return icon.isNull() ? ProjectIcons::icon(220) : icon;
}

} // namespace

CConversionSettingsPageDlg::CConversionSettingsPageDlg(const PageContext &context, TextLookup text)
    : m_context(context), m_text(text), m_values(context.launchMode, std::move(text))
{
}

CConversionSettingsPageDlg::~CConversionSettingsPageDlg()
{
    m_confs.reset();
    m_sheets.reset();
    delete m_window.data();
}

HostWindow CConversionSettingsPageDlg::create(HostWindow parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::ConversionSettingsPageDlg>();
    m_ui->setupUi(m_window);
    auto *helper = m_helper = new StrWnd(m_window);
    helper->localise(QStringLiteral("ConversionSettingsPageDlg"));
    // The user at launch reads another topic than the administrator.
    setHelpTopic(m_window, m_values.launchMode() ? QStringLiteral("ConversionSettingsPageDlg.Launch")
                                                 : QStringLiteral("ConversionSettingsPageDlg"));

    for (const OutputFormatEntry &format : m_values.formats())
        m_ui->formatList->addItem(formatIcon(format), format.text, format.index);
    m_ui->formatList->setIconSize(QSize(16, 16));

    m_path = new PathTemplateEditor(m_ui->pathEdit, m_ui->placeholderButton, m_ui->exampleLabel, m_text);
    m_path->setExtension([this] { return m_values.currentExtension(); });
    m_path->setVault(m_context.vault);

    const auto text = [this](std::int32_t number, const char *english) {
        return m_text ? m_text(number, QString::fromLatin1(english)) : QString::fromLatin1(english);
    };
    m_confs = std::make_unique<CTemplateTabDlg>(CTemplateTabDlg::Kind::Configurations, m_values.configurations,
                                                m_values.launchMode(), m_text);
    m_sheets = std::make_unique<CTemplateTabDlg>(CTemplateTabDlg::Kind::Sheets, m_values.sheets,
                                                 m_values.launchMode(), m_text);
    m_ui->templateTabs->addTab(m_confs->create(m_ui->templateTabs), ProjectIcons::icon(ConfigurationsIcon),
                               text(55, "Configurations"));
    m_ui->templateTabs->addTab(m_sheets->create(m_ui->templateTabs), ProjectIcons::icon(SheetsIcon),
                               text(56, "Sheets"));

    helper->addControl(1, m_ui->formatSection);
    helper->addControl(2, m_ui->pathSection);
    helper->addControl(3, m_ui->templateTabs);
    helper->addControl(4, m_ui->referencesGroup);

    QObject::connect(m_ui->formatList, &QComboBox::currentIndexChanged, m_window, [this](int index) {
        if (!m_showing)
            selectFormatEntry(index);
    });
    QObject::connect(m_ui->conversionOptionsButton, &QPushButton::clicked, m_window,
                     [this] { showConversionOptions(); });
    showValues();
    return m_window;
}

void CConversionSettingsPageDlg::showValues()
{
    if (!m_window)
        return;
    m_showing = true;
    m_ui->formatList->setCurrentIndex(m_ui->formatList->findText(m_values.selectedFormat().text));
    (m_values.referencedVersions ? m_ui->referencedRadio : m_ui->latestRadio)->setChecked(true);
    m_ui->allowReferencesCheck->setChecked(m_values.allowRefChange);
    m_path->setText(m_values.outputPath);
    m_confs->showValues();
    m_sheets->showValues();
    m_showing = false;
    formatChanged();
    closeUpSections();
}

// Set-up never edits the output path here; a launch shows only what the
// administrator left open, and the page shrinks by what it hides.
void CConversionSettingsPageDlg::closeUpSections()
{
    StrWnd *helper = m_helper;
    if (!m_values.launchMode()) {
        helper->showGroup(2, false);
    } else {
        m_ui->allowReferencesCheck->hide();
        helper->showGroup(1, m_values.formatOpen());
        helper->showGroup(2, m_values.promptOutput);
        helper->showGroup(4, m_values.referencesOpen());
        const bool confs = m_values.configurations.hasUserChoices();
        const bool sheets = m_values.sheets.hasUserChoices();
        QTabWidget *tabs = m_ui->templateTabs;
        helper->showGroup(3, confs || sheets);
        if (confs != sheets && tabs->count() == 2)
            tabs->removeTab(confs ? 1 : 0);
    }
    m_window->resize(m_window->width(), m_window->sizeHint().height());
}

void CConversionSettingsPageDlg::formatChanged()
{
    if (!m_window)
        return;
    m_ui->conversionOptionsButton->setEnabled(hasConvOpPage(m_values.selectedFormat().index));
    m_confs->updateStates();
    m_sheets->updateStates();
    m_path->refresh();
}

void CConversionSettingsPageDlg::selectFormatEntry(int entry)
{
    if (entry < 0 || entry >= static_cast<int>(m_values.formats().size()))
        return;
    m_values.selectFormat(m_values.formats()[entry].text);
    if (m_window && m_ui->formatList->currentIndex() != entry)
        m_ui->formatList->setCurrentIndex(entry);
    formatChanged();
}

void CConversionSettingsPageDlg::showConversionOptions()
{
    IDoxVariables *holder = m_holder;
    if (!holder)
        return;
    const OutputFormatEntry &format = m_values.selectedFormat();
    CAdvancedConvOpDlg dialog(*holder, format.index, format.text, m_window, true, m_text);
    dialog.exec();
}

bool CConversionSettingsPageDlg::takeControlValues()
{
    if (!m_window)
        return true;
    m_values.referencedVersions = m_ui->referencedRadio->isChecked();
    m_values.allowRefChange = m_ui->allowReferencesCheck->isChecked();
    if (m_values.launchMode())
        m_values.outputPath = m_path->text();
    m_confs->takeValues();
    m_sheets->takeValues();
    return true;
}

HRESULT CConversionSettingsPageDlg::load(IDoxVariables &holder)
{
    m_holder = &holder;
    const HRESULT hr = m_values.load(holder);
    showValues();
    return hr;
}

HRESULT CConversionSettingsPageDlg::save(IDoxVariables &holder)
{
    takeControlValues();
    return m_values.save(holder);
}
