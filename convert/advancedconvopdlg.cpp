#include "convert/advancedconvopdlg.h"

#include "common/help/help.h"
#include "common/widgets/prompter.h"
#include "common/widgets/strwnd.h"

#include <QDialogButtonBox>
#include <QPushButton>
#include <QVBoxLayout>

namespace {
constexpr std::int32_t TitleTextId = 22;
constexpr int MinimumWidth = 480;
} // namespace

QString CAdvancedConvOpDlg::title(const QString &formatName, const TextLookup &text)
{
    QString format = lookupText(text, TitleTextId, "Advanced Scripting Options (%s)");
    const qsizetype paren = formatName.indexOf(QLatin1Char('('));
    return format.replace(QLatin1String("%s"), (paren < 0 ? formatName : formatName.left(paren)).trimmed());
}

CAdvancedConvOpDlg::CAdvancedConvOpDlg(IDoxVariables &holder, std::int32_t formatIndex, const QString &formatName,
                                       QWidget *parent, bool interactive, TextLookup text)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("AdvancedConvOpDlg"));
    if (const ConvOpPageInfo *info = convOpPageFor(formatIndex))
        m_page = std::make_unique<CConvOpDlg>(*info, holder, text);
    if (!m_page)
        return;
    if (!interactive) {
        m_loaded = m_page->LoadVariables(false);
        return;
    }
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_page->CreatePage(this));
    m_loaded = m_page->LoadVariables(false);
    auto *buttons =
        new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel | QDialogButtonBox::Help, this);
    buttons->setObjectName(QStringLiteral("buttons"));
    QPushButton *help = buttons->button(QDialogButtonBox::Help);
    help->setObjectName(QStringLiteral("helpButton"));
    connectHelp(this, help, QString::fromLatin1(m_page->info().helpTopic));
    QPushButton *reset = buttons->addButton(QStringLiteral("&Reset All"), QDialogButtonBox::ResetRole);
    reset->setObjectName(QStringLiteral("resetAllButton"));
    connect(reset, &QPushButton::clicked, this, &CAdvancedConvOpDlg::resetAll);
    connect(buttons, &QDialogButtonBox::accepted, this, &CAdvancedConvOpDlg::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    layout->addWidget(buttons);
    (new StrWnd(this))->localise(QStringLiteral("AdvancedConvOpDlg"));
    // The caption names the format: a numbered text of its own, set after the
    // dialog's texts.
    setWindowTitle(title(formatName, text));
    adjustSize();
    resize(std::max(width(), MinimumWidth), height());
}

CAdvancedConvOpDlg::~CAdvancedConvOpDlg() = default;

void CAdvancedConvOpDlg::resetAll()
{
    if (m_page)
        m_page->LoadVariables(true);
}

int CAdvancedConvOpDlg::exec()
{
    // Options that could not be read are not shown: "OK" would overwrite
    // the stored ones with defaults.
    if (failed(m_loaded)) {
        Prompter::showError(parentWidget(), m_loaded);
        return QDialog::Rejected;
    }
    return QDialog::exec();
}

void CAdvancedConvOpDlg::accept()
{
    if (failed(m_loaded))
        return reject();
    if (m_page) {
        m_written = m_page->OnOK();
        if (failed(m_written)) {
            Prompter::showError(this, m_written);
            return;
        }
    }
    QDialog::accept();
}
