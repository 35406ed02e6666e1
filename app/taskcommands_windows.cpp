#include "app/taskhost.h"

#include "app/setupdialog.h"
#include "common/help/help.h"
#include "run/taskdetailsmodel.h"
#include "vault/taskstore.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QHeaderView>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

// The buttons under a page of the add-in; Help and F1 open the page's topic.
QDialogButtonBox *addButtons(QDialog &dialog, QVBoxLayout &layout, QDialogButtonBox::StandardButtons which,
                             const QString &helpTopic)
{
    auto *buttons = new QDialogButtonBox(which | QDialogButtonBox::Help, &dialog);
    buttons->setObjectName(QStringLiteral("buttons"));
    QPushButton *help = buttons->button(QDialogButtonBox::Help);
    help->setObjectName(QStringLiteral("helpButton"));
    connectHelp(&dialog, help, helpTopic);
    layout.addWidget(buttons);
    return buttons;
}

} // namespace

void showSetupDialog(TaskHost &host, const std::shared_ptr<StoredTaskProperties> &properties, SetupOutcome &outcome)
{
    SetupDialog dialog;
    dialog.setObjectName(QStringLiteral("taskSetupDialog"));
    for (const SetupPage &page : properties->setupPages())
        if (page.window)
            dialog.addPage(page.caption, page.window);
    dialog.setOkHandler([&] {
        outcome.confirmed = true;
        outcome.buttonResult = host.pressSetupButton(properties, QStringLiteral("OK"), outcome.refusedPage);
        return outcome.refusedPage;
    });
    dialog.setCancelHandler([&] {
        QString ignored;
        host.pressSetupButton(properties, QStringLiteral("Cancel"), ignored);
        outcome.confirmed = false;
        outcome.refusedPage.clear();
    });
    dialog.exec();
    dialog.releasePages();
}

bool showLaunchPage(HostWindow page, const QString &caption)
{
    QWidget *owner = page->parentWidget();
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("taskLaunchDialog"));
    dialog.setWindowTitle(caption);
    auto *layout = new QVBoxLayout(&dialog);
    page->setParent(&dialog);
    layout->addWidget(page);
    QDialogButtonBox *buttons =
        addButtons(dialog, *layout, QDialogButtonBox::Ok | QDialogButtonBox::Cancel, helpTopicOf(page));
    QObject::connect(buttons, &QDialogButtonBox::accepted, &dialog, &QDialog::accept);
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    const bool ok = dialog.exec() == QDialog::Accepted;
    layout->removeWidget(page);
    page->setParent(owner);
    return ok;
}

void showDetails(HostWindow page, const QString &caption, const TaskDetailsModel &model)
{
    QDialog dialog;
    dialog.setObjectName(QStringLiteral("taskDetailsDialog"));
    dialog.setWindowTitle(caption.isEmpty() ? QStringLiteral("Task Details") : caption);
    auto *layout = new QVBoxLayout(&dialog);
    QWidget *owner = page ? page->parentWidget() : nullptr;
    if (page) {
        // The page's list sized its columns to the page's width.
        const QSize pageSize = page->size();
        page->setParent(&dialog);
        layout->addWidget(page);
        dialog.resize(pageSize + QSize(layout->contentsMargins().left() + layout->contentsMargins().right(), 60));
    } else {
        auto *list = new QTreeWidget(&dialog);
        list->setObjectName(QStringLiteral("files"));
        list->setRootIsDecorated(false);
        list->setHeaderLabels(model.captions());
        for (std::size_t i = 0; i < model.rows().size(); ++i)
            list->addTopLevelItem(new QTreeWidgetItem(model.rowTexts(i)));
        const int width = 800;
        for (std::size_t c = 0; c < model.columns().size(); ++c)
            list->setColumnWidth(static_cast<int>(c), TaskDetailsModel::columnWidth(model.columns()[c], width));
        layout->addWidget(list);
        dialog.resize(width, 400);
    }
    QDialogButtonBox *buttons =
        addButtons(dialog, *layout, QDialogButtonBox::Close, page ? helpTopicOf(page) : QStringLiteral("TaskDetailsPage"));
    QObject::connect(buttons, &QDialogButtonBox::rejected, &dialog, &QDialog::reject);
    dialog.exec();
    if (page) {
        layout->removeWidget(page);
        page->setParent(owner);
    }
}
