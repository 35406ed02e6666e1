// The print task's windows for the screenshot program: its four set-up
// pages in the host's dialog and the launch dialog over an assembly of a
// scratch vault.
#include "app/printscreenshots.h"

#include "addin/taskcatalogue.h"

#include "addin/menucommanddlg.h"
#include "app/setupdialog.h"
#include "common/translator.h"
#include "host/testing/faketask.h"
#include "print/printpages.h"
#include "print/printuidlg.h"
#include "vault/embeddedvault.h"
#include "vault/vaultstore.h"

#include <QFile>
#include <QLineEdit>
#include <QTabWidget>
#include <QTemporaryDir>

namespace {

} // namespace

bool savePrintScreenshots(const QDir &folder, const SaveShot &save)
{
    bool ok = true;
    QWidget host;
    FakeTaskProperties props;
    props.taskName = QStringLiteral("Plot Drawings");
    props.set(QStringLiteral("__printer_prname"), Variant::fromBStr(QStringLiteral("Office")));
    props.set(QStringLiteral("__printer_papsize_A3"), Variant::fromBStr(QStringLiteral("Plotter")));
    {
        SetupDialog dialog;
        std::vector<std::unique_ptr<TaskPage>> pages;
        CMenuCommandDlg menu(2, tr_ts);
        menu.create(&host);
        menu.load(props);
        // The captions the add-in hands the host: "Menu Command", then the print pages.
        const std::vector<TaskCatalogue::Page> setup = TaskCatalogue::setupPages(TaskCatalogue::Print);
        auto caption = [&](std::size_t i) { return tr_ts(setup[i].caption.number, QString::fromLatin1(setup[i].caption.english)); };
        dialog.addPage(caption(0), menu.window());
        const QString captions[] = {caption(1), caption(2), caption(3), caption(4)};
        const char *names[] = {"setup-dialog-printer", "setup-dialog-paper-size", "setup-dialog-margins",
                               "setup-dialog-files"};
        PageContext context;
        context.taskType = 2;
        for (std::size_t i = 0; i < std::size(PrintSetupPages); ++i) {
            pages.push_back(createPrintPage(PrintSetupPages[i], context, tr_ts));
            pages.back()->create(&host);
            pages.back()->load(props);
            dialog.addPage(captions[i], pages.back()->window());
        }
        dialog.resize(800, 620);
        for (std::size_t i = 0; i < std::size(captions); ++i) {
            dialog.showPage(captions[i]);
            ok &= save(dialog, folder, QString::fromLatin1(names[i]));
        }
        dialog.releasePages();
    }

    // The launch over an assembly with a part, a drawing and a file no
    // print takes.
    QTemporaryDir scratch;
    auto store = VaultStore::create(scratch.filePath(QStringLiteral("vault")), QStringLiteral("Demo"));
    const auto add = [&](const QString &name) {
        const QString source = scratch.filePath(name);
        QFile file(source);
        file.open(QIODevice::WriteOnly);
        file.write(name.toUtf8());
        file.close();
        return store->addFile(source, QStringLiteral("Gearbox"), name, {});
    };
    const VaultFileRow assembly = add(QStringLiteral("gearbox.mcdasm"));
    for (const QString &name : {QStringLiteral("shaft.mcdprt"), QStringLiteral("layout.mcddrw"),
                                QStringLiteral("notes.xyz")})
        store->addReference(assembly.id, add(name).id, QString());
    auto vault = std::make_shared<EmbeddedVault>(store);
    QString root;
    vault->GetRootFolderPath(root);
    DoxCmdDataArray selection{{assembly.id, assembly.folderId, root + QStringLiteral("\\Gearbox\\gearbox.mcdasm"),
                               {}, DoxObject_File, 1}};
    auto instance = std::make_shared<FakeTaskInstance>();
    instance->set(QStringLiteral("__printer_prseltype"), Variant::fromI4(1));
    instance->set(QStringLiteral("__printer_prnamelist"), Variant::fromBStr(QStringLiteral("Office\r\nPlotter")));
    instance->set(QStringLiteral("__printer_prname"), Variant::fromBStr(QStringLiteral("Plotter")));
    PrintUIDlg dialog(vault, instance, selection, tr_ts);
    dialog.initialise();
    dialog.window()->resize(700, 540);
    dialog.window()->findChild<QLineEdit *>(QStringLiteral("copiesEdit"))->setText(QStringLiteral("3"));
    ok &= save(*dialog.window(), folder, QStringLiteral("print-launch-files"));
    dialog.window()->findChild<QTabWidget *>(QStringLiteral("tabWidget"))->setCurrentIndex(1);
    ok &= save(*dialog.window(), folder, QStringLiteral("print-launch-margins"));
    dialog.window()->hide();
    return ok;
}
