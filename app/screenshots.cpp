// Renders the set-up windows to PNG files, offscreen, so that people can
// look at them without a screen: mctask_screenshots OUTPUT_FOLDER.
#include "addin/menucommanddlg.h"
#include "app/printscreenshots.h"
#include "app/setupdialog.h"
#include "common/widgets/placeholderedit.h"
#include "common/widgets/vlistctrl.h"
#include "host/testing/faketask.h"
#include "script/scriptpagedlg.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QMenu>
#include <QPushButton>
#include <QTextStream>
#include <cstdio>

namespace {

QString english(std::int32_t, const QString &text)
{
    return text;
}

std::vector<InstalledProducts::Product> sampleProducts()
{
    return {{"{0001}", "Mecadra 2013 x64 Edition SP2.0"}, {"{0002}", "Mecadra 2014 x64 Edition SP0.0"}};
}

bool save(QWidget &widget, const QDir &folder, const QString &name)
{
    widget.show();
    QApplication::processEvents();
    const QString path = folder.filePath(name + QStringLiteral(".png"));
    const bool ok = widget.grab().save(path);
    QTextStream(stdout) << (ok ? "wrote " : "FAILED ") << path << '\n';
    return ok;
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: mctask_screenshots OUTPUT_FOLDER\n");
        return 2;
    }
    QDir folder(QString::fromLocal8Bit(argv[1]));
    if (!folder.mkpath(QStringLiteral(".")))
        return 1;
    bool ok = true;
    QWidget host;

    // The two pages of an execute-script task inside the host's dialog.
    FakeTaskProperties script;
    CMenuCommandDlg menuPage(3, english);
    menuPage.create(&host);
    menuPage.load(script);
    CScriptPageDlg scriptPage(true, 3, english, sampleProducts);
    scriptPage.create(&host);
    scriptPage.load(script);
    {
        SetupDialog dialog;
        dialog.addPage(QStringLiteral("Menu Command"), menuPage.window());
        dialog.addPage(QStringLiteral("Script"), scriptPage.window());
        dialog.resize(780, 520);
        ok &= save(dialog, folder, QStringLiteral("setup-dialog-menu-command"));
        dialog.showPage(QStringLiteral("Script"));
        ok &= save(dialog, folder, QStringLiteral("setup-dialog-script"));
        dialog.releasePages();
    }

    // The pages alone, as a page of a conversion task shows its defaults.
    FakeTaskProperties convert;
    CMenuCommandDlg convertMenu(1, english);
    convertMenu.create(&host);
    convertMenu.load(convert);
    convertMenu.window()->setParent(nullptr);
    convertMenu.window()->resize(480, 220);
    ok &= save(*convertMenu.window(), folder, QStringLiteral("menu-command-page-convert"));
    convertMenu.window()->hide();

    // "Advanced Scripting Options" of a conversion task with its own macro.
    convert.set(QStringLiteral("__type"), Variant::fromI4(1));
    convert.set(QStringLiteral("__mc_version"), Variant::fromI4(2014));
    CScriptPageDlg options(false, 1, english, sampleProducts);
    options.load(convert);
    options.editScript(options.editorText() + QStringLiteral("' changed\n"));
    QWidget *dialog = options.create(nullptr);
    dialog->resize(680, 480);
    ok &= save(*dialog, folder, QStringLiteral("advanced-scripting-options"));

    // Its "Insert Macro >" menu, drawn beside the dialog.
    if (auto *menu = dialog->findChild<QMenu *>(QStringLiteral("insertMacroMenu"))) {
        menu->popup(dialog->findChild<QPushButton *>(QStringLiteral("insertMacroButton"))->mapToGlobal(QPoint(0, 0)));
        ok &= save(*menu, folder, QStringLiteral("insert-macro-menu"));
        menu->hide();
    }
    dialog->hide();

    // The shared widgets the path pages use: placeholders as tokens, a list
    // sorted by its second column.
    {
        QWidget widgets;
        widgets.resize(460, 200);
        auto *edit = new PlaceholderEdit(&widgets);
        edit->addPattern(QStringLiteral("Source File Name"), QStringLiteral("<Filename>"));
        edit->addPattern(QStringLiteral("Configuration Name"), QStringLiteral("<Configuration>"));
        edit->setText(QStringLiteral("<Filename>_<Configuration>_rev.pdf"));
        edit->setGeometry(10, 10, 440, edit->sizeHint().height());
        auto *list = new VListCtrl(&widgets);
        list->setGeometry(10, 50, 440, 140);
        list->setColumns({QStringLiteral("File Name"), QStringLiteral("Version")});
        class Row final : public VListCtrlItem
        {
        public:
            Row(QString name, QString version) : m_cells{std::move(name), std::move(version)} {}
            QString text(int column) const override { return m_cells.value(column); }

        private:
            QStringList m_cells;
        };
        list->setRows({std::make_shared<Row>(QStringLiteral("gear.mcdprt"), QStringLiteral("3/-")),
                       std::make_shared<Row>(QStringLiteral("plate.mcddrw"), QStringLiteral("1/4")),
                       std::make_shared<Row>(QStringLiteral("base.mcdasm"), QStringLiteral("2/2"))});
        list->headerClicked(1);
        ok &= save(widgets, folder, QStringLiteral("shared-widgets"));
    }
    ok &= savePrintScreenshots(folder, save);
    return ok ? 0 : 1;
}
