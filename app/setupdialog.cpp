#include "app/setupdialog.h"
#include "common/widgets/strwnd.h"

#include "common/help/help.h"

#include "ui_setupdialog.h"

#include <QApplication>
#include <QPushButton>

SetupDialog::SetupDialog(QWidget *parent) : QDialog(parent), m_ui(std::make_unique<Ui::SetupDialog>())
{
    m_ui->setupUi(this);
    (new StrWnd(this))->localise(QStringLiteral("SetupDialog"));
    setSizeGripEnabled(true);
    connect(m_ui->pageList, &QListWidget::currentRowChanged, m_ui->pageStack, &QStackedWidget::setCurrentIndex);
    connect(m_ui->buttons, &QDialogButtonBox::accepted, this, &SetupDialog::pressOk);
    connect(m_ui->buttons, &QDialogButtonBox::rejected, this, &SetupDialog::pressCancel);
    // Help and F1 open the topic of the page shown, or of the part of it
    // that has the focus.
    QPushButton *help = m_ui->buttons->button(QDialogButtonBox::Help);
    help->setObjectName(QStringLiteral("helpButton"));
    connectHelp(this, help, [this] { return helpTopicWithin(currentPage(), QApplication::focusWidget()); });
}

SetupDialog::~SetupDialog()
{
    releasePages();
}

void SetupDialog::addPage(const QString &caption, QWidget *page)
{
    m_pages.append(Page{page, page->parentWidget()});
    m_ui->pageStack->addWidget(page);
    m_ui->pageList->addItem(caption);
    if (m_ui->pageList->currentRow() < 0)
        m_ui->pageList->setCurrentRow(0);
    // The list is as wide as its longest caption.
    m_ui->pageList->setFixedWidth(m_ui->pageList->sizeHintForColumn(0) + 2 * m_ui->pageList->frameWidth() + 16);
}

int SetupDialog::pageCount() const
{
    return m_ui->pageList->count();
}

QString SetupDialog::currentCaption() const
{
    const QListWidgetItem *item = m_ui->pageList->currentItem();
    return item ? item->text() : QString();
}

QWidget *SetupDialog::currentPage() const
{
    return m_ui->pageStack->currentWidget();
}

bool SetupDialog::showPage(const QString &caption)
{
    for (int i = 0; i < m_ui->pageList->count(); ++i) {
        if (m_ui->pageList->item(i)->text() == caption) {
            m_ui->pageList->setCurrentRow(i);
            return true;
        }
    }
    return false;
}

void SetupDialog::pressOk()
{
    const QString refused = m_ok ? m_ok() : QString();
    if (!refused.isEmpty()) {
        showPage(refused); // the dialog stays open on the refusing page
        return;
    }
    accept();
}

void SetupDialog::pressCancel()
{
    if (m_cancel)
        m_cancel();
    reject();
}

void SetupDialog::releasePages()
{
    for (const Page &page : m_pages) {
        if (!page.widget)
            continue;
        m_ui->pageStack->removeWidget(page.widget);
        page.widget->hide();
        page.widget->setParent(page.owner);
    }
    m_pages.clear();
}
