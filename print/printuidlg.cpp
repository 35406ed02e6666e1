#include "print/printuidlg.h"

#include "common/help/help.h"
#include "common/translator.h"
#include "common/widgets/icons.h"
#include "common/widgets/prompter.h"
#include "common/widgets/strwnd.h"
#include "host/hostcall.h"
#include "host/hosterror.h"
#include "host/idoxtask.h"
#include "print/filereftreemodel.h"
#include "print/printsettings.h"

#include "ui_printuidlg.h"

#include <QDialog>
#include <QHeaderView>
#include <QIntValidator>

namespace {
constexpr std::int32_t PrintCaptionText = 92;
constexpr std::int32_t FilesTabText = 16;
constexpr std::int32_t MarginsTabText = 15;
constexpr std::int32_t ReferencedTipText = 123;
constexpr std::int32_t LatestTipText = 124;
constexpr int ReferencedIcon = 156;
constexpr int LatestIcon = 158;

const QString PrintCaption = QStringLiteral("Print");
const QString RefDlgSection = QStringLiteral("RefDlg");
} // namespace

PrintUIDlg::PrintUIDlg(std::shared_ptr<IDoxVault> vault, std::shared_ptr<IDoxTaskInstance> instance,
                       DoxCmdDataArray &selection, TextLookup text, QWidget *parent)
    : m_launch(std::move(vault), std::move(instance), selection, text), m_text(std::move(text))
{
    m_dialog = new QDialog(parent);
    m_ui = std::make_unique<Ui::PrintUIDlg>();
    m_ui->setupUi(m_dialog);
    connectHelp(m_dialog, m_ui->helpButton, QStringLiteral("PrintUIDlg"));
}

PrintUIDlg::~PrintUIDlg()
{
    delete m_dialog.data();
}

QString PrintUIDlg::text(std::int32_t number, const char *english) const
{
    return lookupText(m_text, number, english);
}

void PrintUIDlg::initialise()
{
    (new StrWnd(m_dialog))->localise(QStringLiteral("PrintUIDlg"));
    m_dialog->setWindowTitle(text(PrintCaptionText, "Print"));
    // The tool tips are texts of the reference dialog's section.
    const Translator &translator = Translator::instance();
    m_ui->referencedButton->setToolTip(translator.text(ReferencedTipText, QStringLiteral("Referenced version"), RefDlgSection));
    m_ui->latestButton->setToolTip(translator.text(LatestTipText, QStringLiteral("Latest version"), RefDlgSection));
    m_ui->referencedButton->setIcon(ProjectIcons::icon(ReferencedIcon));
    m_ui->latestButton->setIcon(ProjectIcons::icon(LatestIcon));
    m_ui->copiesEdit->setValidator(new QIntValidator(m_ui->copiesEdit));

    m_launch.initialise();

    const bool choice = m_launch.versionChoiceShown();
    for (QWidget *w : std::initializer_list<QWidget *>{m_ui->versionLabel, m_ui->referencedButton, m_ui->latestButton})
        w->setVisible(choice);
    m_ui->tabWidget->setTabText(0, text(FilesTabText, "Files"));
    if (m_launch.marginsTabExists())
        m_ui->tabWidget->setTabText(1, text(MarginsTabText, "Margins"));
    else
        m_ui->tabWidget->removeTab(1);
    m_ui->marginsGroup->setEnabled(m_launch.marginType() == PromptUser);
    m_ui->headerGroup->setEnabled(m_launch.headerType() == PromptUser);
    m_ui->footerGroup->setEnabled(m_launch.footerType() == PromptUser);

    m_tree = new FileRefTreeModel(m_launch, m_dialog);
    m_tree->setCheckChanged([this] { updateTotal(); });
    m_ui->referenceTree->setModel(m_tree);
    m_ui->referenceTree->expandAll();
    m_ui->referenceTree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);

    showChoices();
    m_ui->printerCombo->setEnabled(m_launch.printerMode() == PromptPrinter);
    m_ui->printerLabel->setEnabled(m_launch.printerMode() != PrinterBySize);
    m_ui->paperCombo->setEnabled(m_launch.paperChangeable());
    m_ui->portraitRadio->setEnabled(m_launch.orientationChangeable());
    m_ui->landscapeRadio->setEnabled(m_launch.orientationChangeable());

    // A host failure in a slot must not unwind through the event loop: it is
    // shown, and the controls show what the launch holds after it.
    QObject::connect(m_ui->paperCombo, &QComboBox::currentIndexChanged, m_dialog, [this](int index) {
        if (m_launch.printerMode() != PrinterBySize)
            return;
        const HRESULT hr = hostCall([&] {
            m_launch.selectPaper(index);
            return S_OK;
        });
        m_ui->printerCombo->clear();
        m_ui->printerCombo->addItems(m_launch.printers);
        m_ui->printerCombo->setCurrentIndex(m_launch.printerIndex);
        if (failed(hr))
            Prompter::showError(m_dialog, hr);
    });
    QObject::connect(m_ui->latestButton, &QToolButton::toggled, m_dialog, [this](bool latest) {
        const HRESULT hr = hostCall([&] {
            m_launch.setLatestVersion(latest);
            return S_OK;
        });
        if (failed(hr))
            Prompter::showError(m_dialog, hr);
        m_tree->reload();
        m_ui->referenceTree->expandAll();
        updateTotal();
    });
    QObject::connect(m_ui->copiesEdit, &QLineEdit::textChanged, m_dialog, [this](const QString &copies) {
        m_launch.copies = copies;
        updateTotal();
    });
    QObject::connect(m_ui->printButton, &QPushButton::clicked, m_dialog, [this] { print(); });
    QObject::connect(m_ui->cancelButton, &QPushButton::clicked, m_dialog, &QDialog::reject);

    if (!m_launch.listingError().isEmpty())
        Prompter::instance().message(m_dialog, m_launch.listingError(), PrintCaption, Prompter::Icon::Warning);
}

void PrintUIDlg::showChoices()
{
    m_ui->printerCombo->clear();
    m_ui->printerCombo->addItems(m_launch.printers);
    m_ui->printerCombo->setCurrentIndex(m_launch.printerIndex);
    const QSignalBlocker block(m_ui->paperCombo);
    m_ui->paperCombo->clear();
    for (const std::int32_t code : m_launch.papers)
        m_ui->paperCombo->addItem(PaperSizes::label(code), code);
    m_ui->paperCombo->setCurrentIndex(m_launch.paperIndex);
    m_ui->portraitRadio->setChecked(m_launch.orientation == 0);
    m_ui->landscapeRadio->setChecked(m_launch.orientation == 1);
    (m_launch.latestVersion ? m_ui->latestButton : m_ui->referencedButton)->setChecked(true);
    m_ui->copiesEdit->setText(m_launch.copies);

    m_ui->customMarginsRadio->setChecked(m_launch.customMargins);
    m_ui->printerMarginsRadio->setChecked(!m_launch.customMargins);
    QLineEdit *margins[] = {m_ui->topEdit, m_ui->bottomEdit, m_ui->leftEdit, m_ui->rightEdit};
    for (int i = 0; i < 4; ++i) {
        margins[i]->setValidator(new QIntValidator(0, 10000, margins[i]));
        margins[i]->setText(m_launch.margins[i]);
    }
    m_ui->useHeaderCheck->setChecked(m_launch.useHeader);
    m_ui->useFooterCheck->setChecked(m_launch.useFooter);
    QLineEdit *header[] = {m_ui->headerLeftEdit, m_ui->headerCenterEdit, m_ui->headerRightEdit};
    QLineEdit *footer[] = {m_ui->footerLeftEdit, m_ui->footerCenterEdit, m_ui->footerRightEdit};
    for (int i = 0; i < 3; ++i) {
        header[i]->setText(m_launch.header[i]);
        footer[i]->setText(m_launch.footer[i]);
    }
    updateTotal();
}

void PrintUIDlg::takeChoices()
{
    m_launch.printers.clear();
    for (int i = 0; i < m_ui->printerCombo->count(); ++i)
        m_launch.printers << m_ui->printerCombo->itemText(i);
    m_launch.printerIndex = m_ui->printerCombo->currentIndex();
    m_launch.paperIndex = m_ui->paperCombo->currentIndex();
    m_launch.orientation = m_ui->portraitRadio->isChecked() ? 0 : 1;
    m_launch.copies = m_ui->copiesEdit->text();
    m_launch.customMargins = m_ui->customMarginsRadio->isChecked();
    m_launch.margins = {m_ui->topEdit->text(), m_ui->bottomEdit->text(), m_ui->leftEdit->text(),
                        m_ui->rightEdit->text()};
    m_launch.useHeader = m_ui->useHeaderCheck->isChecked();
    m_launch.useFooter = m_ui->useFooterCheck->isChecked();
    m_launch.header = {m_ui->headerLeftEdit->text(), m_ui->headerCenterEdit->text(), m_ui->headerRightEdit->text()};
    m_launch.footer = {m_ui->footerLeftEdit->text(), m_ui->footerCenterEdit->text(), m_ui->footerRightEdit->text()};
}

void PrintUIDlg::updateTotal()
{
    m_ui->totalLabel->setText(m_launch.totalText());
}

void PrintUIDlg::focus(PrintLaunch::Control control)
{
    using C = PrintLaunch::Control;
    QWidget *target = nullptr;
    switch (control) {
    case C::Printer: target = m_ui->printerCombo; break;
    case C::Paper: target = m_ui->paperCombo; break;
    case C::Orientation: target = m_ui->portraitRadio; break;
    case C::Copies: target = m_ui->copiesEdit; break;
    case C::Margins: target = m_ui->topEdit; break;
    case C::Header: target = m_ui->useHeaderCheck; break;
    case C::Footer: target = m_ui->useFooterCheck; break;
    case C::Version: target = m_ui->latestButton; break;
    case C::Files: target = m_ui->referenceTree; break;
    case C::None: break;
    }
    if (!target)
        return;
    // A control on the other tab brings its tab forward first.
    const bool onMargins = m_ui->marginsTab->isAncestorOf(target);
    m_ui->tabWidget->setCurrentWidget(onMargins ? m_ui->marginsTab : m_ui->filesTab);
    target->setFocus();
}

bool PrintUIDlg::print()
{
    takeChoices();
    const PrintLaunch::Refusal refusal = m_launch.takeData();
    if (!refusal.message.isEmpty()) {
        Prompter::instance().message(m_dialog, refusal.message, PrintCaption, Prompter::Icon::Information);
        focus(refusal.control);
        return false;
    }
    m_dialog->accept();
    return true;
}

int PrintUIDlg::exec()
{
    return m_dialog->exec();
}

bool runPrintLaunchDialog(const std::shared_ptr<IDoxVault> &vault, DoxCmd *cmd, DoxCmdDataArray &selection, bool show,
                          TextLookup text)
{
    if (!cmd) {
        Prompter::instance().message(nullptr, QStringLiteral("DoxCmd struct is NULL"),
                                     QStringLiteral("Mecadra Print Add-In"), Prompter::Icon::Warning);
        return false;
    }
    const auto instance = queryInterface<IDoxTaskInstance>(cmd->extra);
    if (!instance) {
        Prompter::instance().message(cmd->window, QStringLiteral("Failed to get IDoxTaskInstance ptr from DoxCmd"),
                                     PrintCaption, Prompter::Icon::Warning);
        return false;
    }
    if (!show) {
        // Everything the dialog would do, without the window.
        PrintLaunch launch(vault, instance, selection, text);
        launch.initialise();
        if (!launch.listingError().isEmpty())
            Prompter::instance().message(cmd->window, launch.listingError(), PrintCaption, Prompter::Icon::Warning);
        const PrintLaunch::Refusal refusal = launch.takeData();
        if (!refusal.message.isEmpty())
            Prompter::instance().message(cmd->window, refusal.message, PrintCaption, Prompter::Icon::Information);
        return true;
    }
    PrintUIDlg dialog(vault, instance, selection, std::move(text), cmd->window);
    dialog.initialise();
    return dialog.exec() == QDialog::Accepted;
}
