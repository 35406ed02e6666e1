#include "convert/templatetabdlg.h"

#include "common/help/help.h"
#include "common/widgets/strwnd.h"
#include "convert/conversionsettings.h"

#include "ui_templatetabdlg.h"

CTemplateTabDlg::CTemplateTabDlg(Kind kind, TemplateTabValues &values, bool launchMode, const TextLookup &text)
    : m_kind(kind), m_values(values), m_launchMode(launchMode), m_text(text)
{
}

CTemplateTabDlg::~CTemplateTabDlg()
{
    delete m_window.data();
}

QWidget *CTemplateTabDlg::create(QWidget *parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::TemplateTabDlg>();
    m_ui->setupUi(m_window);
    if (m_kind == Kind::Sheets) {
        m_window->setObjectName(QStringLiteral("SheetsTemplateDlg"));
        m_ui->outputGroup->setTitle(QStringLiteral("Sheets to output"));
        m_ui->allRadio->setText(QStringLiteral("All sheets"));
        m_ui->lastActiveRadio->setText(QStringLiteral("Last active sheet"));
        m_ui->namedRadio->setText(QStringLiteral("Named sheet (use * as wildcard):"));
        m_ui->fileGroup->setTitle(QStringLiteral("Multi-sheet output"));
        m_ui->onePerItemRadio->setText(QStringLiteral("Create one output file per sheet"));
        m_ui->allInOneRadio->setText(QStringLiteral("Include all sheets in the same output file"));
    } else {
        m_window->setObjectName(QStringLiteral("ConfsTemplateDlg"));
    }
    (new StrWnd(m_window))->localise(m_window->objectName());
    // At launch F1 stays on the launch topic of the page that holds the tab.
    if (!m_launchMode)
        setHelpTopic(m_window, m_window->objectName());
    for (QRadioButton *radio : {m_ui->allRadio, m_ui->lastActiveRadio, m_ui->namedRadio})
        QObject::connect(radio, &QRadioButton::toggled, m_window, [this] { updateStates(); });
    showValues();
    return m_window;
}

void CTemplateTabDlg::showValues()
{
    if (!m_window)
        return;
    using namespace ConversionBits;
    QRadioButton *output = m_values.output == OutputNamed       ? m_ui->namedRadio
                           : m_values.output == OutputLastActive ? m_ui->lastActiveRadio
                                                                 : m_ui->allRadio;
    output->setChecked(true);
    m_ui->patternEdit->setText(m_values.pattern);
    m_ui->allowOutputCheck->setChecked(m_values.allowOutput);
    (m_values.file == FileAllInOne ? m_ui->allInOneRadio : m_ui->onePerItemRadio)->setChecked(true);
    m_ui->allowFileCheck->setChecked(m_values.allowFile);
    if (m_launchMode) {
        m_ui->allowOutputCheck->hide();
        m_ui->allowFileCheck->hide();
        m_ui->outputGroup->setVisible(m_values.outputOpen());
    }
    updateStates();
}

void CTemplateTabDlg::updateStates()
{
    if (!m_window)
        return;
    m_ui->patternEdit->setEnabled(m_ui->namedRadio->isChecked());
    const bool fileShown = m_values.multiOutput() && (!m_launchMode || m_values.fileOpen());
    m_ui->fileGroup->setVisible(fileShown);
    m_ui->fileGroup->setEnabled(!m_ui->lastActiveRadio->isChecked());
    m_window->adjustSize();
}

void CTemplateTabDlg::takeValues()
{
    if (!m_window)
        return;
    using namespace ConversionBits;
    m_values.output = m_ui->namedRadio->isChecked()   ? OutputNamed
                      : m_ui->allRadio->isChecked()    ? OutputAll
                                                       : OutputLastActive;
    m_values.pattern = m_ui->patternEdit->text();
    m_values.allowOutput = m_ui->allowOutputCheck->isChecked();
    m_values.file = m_ui->allInOneRadio->isChecked() ? FileAllInOne : FileOnePerItem;
    m_values.allowFile = m_ui->allowFileCheck->isChecked();
}
