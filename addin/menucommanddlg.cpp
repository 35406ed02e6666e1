#include "addin/menucommanddlg.h"

#include "addin/taskcatalogue.h"
#include "settings/tasksettings.h"
#include "common/translator.h"
#include "common/widgets/prompter.h"
#include "common/widgets/strwnd.h"
#include "host/idoxtask.h"

#include "ui_menucommanddlg.h"

namespace {
constexpr std::int32_t PleaseEnterMenuCommand = 134;
}

CMenuCommandDlg::CMenuCommandDlg(std::int32_t taskType, TextLookup text)
    : m_taskType(taskType), m_text(std::move(text))
{
}

CMenuCommandDlg::~CMenuCommandDlg()
{
    delete m_window.data();
}

QString CMenuCommandDlg::text(std::int32_t number, const char *english) const
{
    return lookupText(m_text, number, english);
}

HostWindow CMenuCommandDlg::create(HostWindow parent)
{
    delete m_window.data();
    m_window = new QWidget(parent);
    m_ui = std::make_unique<Ui::MenuCommandDlg>();
    m_ui->setupUi(m_window);
    m_ui->menuTextEdit->setMaxLength(MenuTextLimit);
    m_ui->helpTextEdit->setMaxLength(HelpTextLimit);
    (new StrWnd(m_window))->localise(QStringLiteral("MenuCommandDlg"));
    QObject::connect(m_ui->displayCheck, &QCheckBox::toggled, m_window, [this](bool checked) {
        m_ui->menuTextEdit->setEnabled(checked);
        m_ui->helpTextEdit->setEnabled(checked);
    });
    showValues();
    return m_window;
}

void CMenuCommandDlg::showValues()
{
    if (!m_window)
        return;
    m_ui->displayCheck->setChecked(m_display);
    m_ui->menuTextEdit->setText(m_menuText);
    m_ui->helpTextEdit->setText(m_help);
    m_ui->menuTextEdit->setEnabled(m_display);
    m_ui->helpTextEdit->setEnabled(m_display);
}

HRESULT CMenuCommandDlg::load(IDoxVariables &holder)
{
    const TaskCatalogue::Kind &kind = TaskCatalogue::kind(m_taskType);
    if (const HRESULT hr = readBoolVariable(holder, TaskKeys::MenuCmdDisplay, kind.menuShownByDefault, m_display);
        failed(hr))
        return hr;
    auto *props = dynamic_cast<IDoxTaskProperties *>(&holder);
    if (!props)
        return E_NOINTERFACE;
    std::vector<TaskMenuCommand> commands;
    if (const HRESULT hr = props->GetMenuCommands(commands); failed(hr))
        return hr;
    if (!commands.empty()) {
        // A null text leaves the field as it was.
        if (!commands.front().menuText.isNull())
            m_menuText = commands.front().menuText;
        if (!commands.front().statusBarHelp.isNull())
            m_help = commands.front().statusBarHelp;
    } else {
        m_menuText = text(kind.menuText.number, kind.menuText.english);
        m_help = text(kind.statusBarHelp.number, kind.statusBarHelp.english);
    }
    showValues();
    return S_OK;
}

bool CMenuCommandDlg::takeControlValues()
{
    if (m_window) {
        m_display = m_ui->displayCheck->isChecked();
        m_menuText = m_ui->menuTextEdit->text();
        m_help = m_ui->helpTextEdit->text();
    }
    if (m_display && m_menuText.trimmed().isEmpty()) {
        Prompter::instance().message(m_window, text(PleaseEnterMenuCommand, "Please enter menu command."),
                                     QStringLiteral("Mecadra Task Add-in"), Prompter::Icon::Warning);
        if (m_window)
            m_ui->menuTextEdit->setFocus();
        return false;
    }
    return true;
}

HRESULT CMenuCommandDlg::save(IDoxVariables &holder)
{
    if (!takeControlValues())
        return S_FALSE;
    return writeBoolVariable(holder, TaskKeys::MenuCmdDisplay, m_display);
}

void CMenuCommandDlg::setDisplayMenuCommand(bool display)
{
    m_display = display;
    if (m_window)
        m_ui->displayCheck->setChecked(display);
}

void CMenuCommandDlg::setMenuText(const QString &text)
{
    m_menuText = text.left(MenuTextLimit);
    if (m_window)
        m_ui->menuTextEdit->setText(m_menuText);
}

void CMenuCommandDlg::setStatusBarHelp(const QString &text)
{
    m_help = text.left(HelpTextLimit);
    if (m_window)
        m_ui->helpTextEdit->setText(m_help);
}
