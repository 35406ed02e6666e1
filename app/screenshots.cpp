// Renders the set-up windows to PNG files, offscreen, so that people can
// look at them without a screen:
//   mctask_screenshots OUTPUT_FOLDER [--language-folder DIR] [--record-texts FILE]
// The texts come from the language folder (English without one); with
// --record-texts every text the windows ask the translation service for is
// written to FILE, one "module TAB section TAB key TAB English" a line.
#include "addin/menucommanddlg.h"
#include "addin/taskcatalogue.h"
#include "app/printscreenshots.h"
#include "app/setupdialog.h"
#include "app/vaultbrowser.h"
#include "common/help/helpwindow.h"
#include "common/translator.h"
#include "common/widgets/placeholderedit.h"
#include "common/widgets/vlistctrl.h"
#include "convert/advancedconvopdlg.h"
#include "convert/conversionsettingspage.h"
#include "convert/filecardpagedlg.h"
#include "convert/outputfiledetailspagedlg.h"
#include "host/testing/faketask.h"
#include "host/testing/fakevault.h"
#include "run/taskdetailspage.h"
#include "script/scriptpagedlg.h"
#include "script/selectiondlg.h"
#include "vault/embeddedvault.h"
#include "vault/vaultstore.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QMenu>
#include <QListWidget>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTreeWidget>
#include <QTextStream>
#include <cstdio>
#include <tuple>

namespace {

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

// The windows of a launch without a selection and of an instance's details,
// over a small vault of their own.
bool saveLaunchWindows(const QDir &folder)
{
    bool ok = true;
    QTemporaryDir work;
    const auto store = VaultStore::createInMemory(work.filePath(QStringLiteral("vault")), QStringLiteral("Demo"));
    const struct {
        const char *folder;
        const char *name;
    } files[] = {{"Parts", "gear.mcdprt"},     {"Parts", "shaft.mcdprt"}, {"Parts", "notes.txt"},
                 {"Assemblies", "gearbox.mcdasm"}, {"Drawings", "gearbox.mcddrw"}};
    for (const auto &file : files) {
        const QString source = work.filePath(QString::fromLatin1(file.name));
        QFile bytes(source);
        ok &= bytes.open(QIODevice::WriteOnly) && bytes.write("sample\n") > 0;
        bytes.close();
        store->ensureFolder(QString::fromLatin1(file.folder));
        store->addFile(source, QString::fromLatin1(file.folder), QString::fromLatin1(file.name), {});
    }
    auto vault = std::make_shared<EmbeddedVault>(store);
    QString root;
    vault->GetRootFolderPath(root);

    {
        CSelectionDlg selection(vault, root, {});
        selection.addEntry(root + QStringLiteral("\\Parts\\gear.mcdprt"), {2, DoxObject_File, 2, 1});
        selection.addEntry(root + QStringLiteral("\\Assemblies\\gearbox.mcdasm"), {4, DoxObject_File, 3, 1});
        selection.addEntry(root + QStringLiteral("\\Drawings"), {4, DoxObject_Folder, 0, 0});
        QDialog *window = selection.create(nullptr);
        window->findChild<QListWidget *>(QStringLiteral("list209"))->item(1)->setSelected(true);
        ok &= save(*window, folder, QStringLiteral("selection-dialog"));
        window->hide();
    }
    {
        VaultBrowser files(*vault, VaultBrowser::Mode::Files, tr_ts(5, QStringLiteral("Select Files")),
                           CSelectionDlg(vault, root, {}).filterText());
        auto *tree = files.findChild<QTreeWidget *>(QStringLiteral("folderTree"));
        tree->setCurrentItem(tree->topLevelItem(0)->child(2)); // Parts
        auto *list = files.findChild<QTreeWidget *>(QStringLiteral("fileList"));
        if (list->topLevelItemCount() > 0)
            list->topLevelItem(0)->setSelected(true);
        ok &= save(files, folder, QStringLiteral("vault-file-browser"));
        files.hide();
        VaultBrowser folders(*vault, VaultBrowser::Mode::Folder, tr_ts(6, QStringLiteral("Please select a folder:")));
        tree = folders.findChild<QTreeWidget *>(QStringLiteral("folderTree"));
        tree->setCurrentItem(tree->topLevelItem(0)->child(1)); // Drawings
        ok &= save(folders, folder, QStringLiteral("vault-folder-browser"));
        folders.hide();
    }
    {
        // A finished print: what was printed, on which printer.
        auto instance = std::make_shared<FakeTaskInstance>();
        instance->set(QStringLiteral("__output_list"),
                      Variant::fromBStr(QStringLiteral(
                          "<sels><sel><doc_id>5</doc_id><proj_id>4</proj_id><path>V:\\Drawings\\gearbox.mcddrw</path>"
                          "<ver>2</ver><conf>Sheet1</conf><extra>Office A3</extra></sel>"
                          "<sel><doc_id>5</doc_id><proj_id>4</proj_id><path>V:\\Drawings\\gearbox.mcddrw</path>"
                          "<ver>2</ver><conf>Sheet2</conf><extra>Office A3</extra></sel>"
                          "<sel><doc_id>2</doc_id><proj_id>2</proj_id><path>V:\\Parts\\gear.mcdprt</path>"
                          "<ver>1</ver><conf>Default</conf><extra>Plotter</extra></sel></sels>")));
        PageContext context;
        context.instance = instance;
        context.taskType = 2;
        context.finished = true;
        TaskDetailsPage details(context, tr_ts);
        QWidget *page = details.create(nullptr);
        page->setWindowTitle(tr_ts(114, QStringLiteral("Printed Files")));
        // Wide enough for every column (their widths add up to 16 tenths).
        page->resize(1300, 260);
        ok &= save(*page, folder, QStringLiteral("task-details-printed"));
        page->hide();
    }
    return ok;
}

// A page of its own, at the size the set-up dialog gives its pages.
bool savePage(QWidget *page, const QDir &folder, const QString &name)
{
    page->setParent(nullptr);
    page->resize(std::max(page->sizeHint().width(), 720), page->sizeHint().height());
    const bool ok = save(*page, folder, name);
    page->hide();
    return ok;
}

// The pages of a convert task: set-up, launch, and the format option dialogs.
bool saveConvertPages(const QDir &folder)
{
    bool ok = true;
    auto vault = std::make_shared<FakeVault>(QStringLiteral("Demo"), QStringLiteral("V:\\Demo"));
    vault->cardVariables = {QStringLiteral("Description"), QStringLiteral("Number"), QStringLiteral("Title")};
    auto props = std::make_shared<FakeTaskProperties>();
    props->taskName = QStringLiteral("To STEP");
    props->set(QStringLiteral("FileFormat"), Variant::fromBStr(QStringLiteral("STEP (*.step)")));
    // A long path: its example line is elided in the middle, not widening the page.
    props->set(QStringLiteral("OutputPath"),
               Variant::fromBStr(QStringLiteral("<VaultPath>\\Released\\Customer projects of the current year\\"
                                                "Exports for the suppliers\\<Filename>_<Configuration>_<Revision>")));
    props->set(QStringLiteral("FileCardData"),
               Variant::fromBStr(QStringLiteral("Description;8;Exported by the task\nTitle;1;\nNumber;100;Number\n")));
    PageContext context;
    context.vault = vault;
    context.properties = props;
    context.taskType = 1;

    CConversionSettingsPageDlg settings(context, tr_ts);
    settings.create(nullptr);
    settings.load(*props);
    ok &= savePage(settings.window(), folder, QStringLiteral("conversion-settings-setup"));
    settings.window()->findChild<QTabWidget *>(QStringLiteral("templateTabs"))->setCurrentIndex(1);
    ok &= savePage(settings.window(), folder, QStringLiteral("conversion-settings-setup-sheets"));
    context.conversionPage = &settings;

    CFileCardPageDlg card(context, tr_ts);
    card.create(nullptr);
    card.load(*props);
    card.selectRow(0);
    ok &= savePage(card.window(), folder, QStringLiteral("file-card"));

    COutputFileDetailsPageDlg details(context, tr_ts);
    details.create(nullptr);
    details.load(*props);
    ok &= savePage(details.window(), folder, QStringLiteral("output-file-details"));

    // At launch: the administrator left the format and the sheets open.
    FakeTaskInstance launch;
    launch.set(QStringLiteral("FileFormat"), Variant::fromBStr(QStringLiteral("<Prompt the user>")));
    launch.set(QStringLiteral("OutputPath"), Variant::fromBStr(QStringLiteral("<VaultPath>\\PDF\\<Filename>")));
    launch.set(QStringLiteral("SourceRefs"), Variant::fromI4(2));
    launch.set(QStringLiteral("OutputConfs"), Variant::fromI4(2));
    launch.set(QStringLiteral("FileConfs"), Variant::fromI4(4));
    PageContext launchContext = context;
    launchContext.launchMode = true;
    CConversionSettingsPageDlg atLaunch(launchContext, tr_ts);
    atLaunch.create(nullptr);
    atLaunch.load(launch);
    ok &= savePage(atLaunch.window(), folder, QStringLiteral("conversion-settings-launch"));

    for (const auto &[index, name] : {std::pair{4, "Adobe PDF (*.pdf)"}, {9, "Glimpse (*.gprt; *.gasm; *.glmp)"},
                                      {22, "VRML (*.wrl)"}, {2, "ACIS (*.sat)"}, {15, "Parasolid (*.x_t)"},
                                      {12, "IGES (*.igs)"}, {17, "STEP (*.step)"}, {18, "STL (*.stl)"},
                                      {19, "TIF (*.tif)"}}) {
        CAdvancedConvOpDlg dialog(*props, index, QString::fromLatin1(name), nullptr, true, tr_ts);
        ok &= save(dialog, folder,
                   QStringLiteral("conversion-options-") + QString::fromLatin1(name).section(QLatin1Char(' '), 0, 0).toLower());
        dialog.hide();
    }
    return ok;
}

} // namespace

// The help window on the build's help files, in English and German.
bool saveHelpWindows(const QDir &folder)
{
    QTemporaryDir home; // the help engine's collection files
    qputenv("MCTASK_HOME", home.path().toLocal8Bit());
    bool ok = true;
    for (const auto &[language, topic, name] :
         {std::tuple{"GB", "OutputFileDetailsPageDlg", "help-output-file-details"},
          std::tuple{"DE", "PrintUIDlg", "help-print-de"}}) {
        HelpWindow help;
        ok &= help.open(QStringLiteral(MCTASK_HELP_INSTALL_DIR "/Lang/%1/McTaskAddIn.qch").arg(QLatin1String(language)));
        ok &= help.showTopic(QLatin1String(topic));
        help.resize(900, 640);
        help.show();
        QCoreApplication::processEvents();
        ok &= save(help, folder, QLatin1String(name));
    }
    return ok;
}

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QStringList args = app.arguments().mid(1);
    auto option = [&](const QString &name) {
        const qsizetype at = args.indexOf(name);
        if (at < 0 || at + 1 >= args.size())
            return QString();
        const QString value = args.at(at + 1);
        args.remove(at, 2);
        return value;
    };
    const QString languageFolder = option(QStringLiteral("--language-folder"));
    const QString recordFile = option(QStringLiteral("--record-texts"));
    if (args.size() != 1) {
        std::fprintf(stderr, "usage: mctask_screenshots OUTPUT_FOLDER [--language-folder DIR] [--record-texts FILE]\n");
        return 2;
    }
    QDir folder(args.first());
    if (!folder.mkpath(QStringLiteral(".")))
        return 1;
    Translator translator(languageFolder.isEmpty() ? QString() : QDir(languageFolder).absolutePath());
    ScopedTranslator translatorGuard(translator);
    translator.installQtTranslations();
    QFile record(recordFile);
    QTextStream recorded(&record);
    if (!recordFile.isEmpty()) {
        if (!record.open(QIODevice::WriteOnly | QIODevice::Text))
            return 1;
        recorded.setEncoding(QStringConverter::Utf8);
        Translator::setRecorder([&recorded](const QString &module, const QString &section, const QString &key,
                                            const QString &english) {
            QString escaped = english;
            escaped.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('\n'), QLatin1String("\\n"))
                .replace(QLatin1Char('\t'), QLatin1String("\\t"));
            recorded << module << '\t' << section << '\t' << key << '\t' << escaped << '\n';
        });
    }
    struct RecorderGuard {
        ~RecorderGuard() { Translator::setRecorder({}); }
    } recorderGuard;
    bool ok = true;
    QWidget host;

    // The two pages of an execute-script task inside the host's dialog.
    FakeTaskProperties script;
    CMenuCommandDlg menuPage(3, tr_ts);
    menuPage.create(&host);
    menuPage.load(script);
    CScriptPageDlg scriptPage(true, 3, tr_ts, sampleProducts);
    scriptPage.create(&host);
    scriptPage.load(script);
    {
        SetupDialog dialog;
        const std::vector<TaskCatalogue::Page> setup = TaskCatalogue::setupPages(TaskCatalogue::ExecuteScript);
        const QString menuCaption = tr_ts(setup[0].caption.number, QString::fromLatin1(setup[0].caption.english));
        const QString scriptCaption = tr_ts(setup[1].caption.number, QString::fromLatin1(setup[1].caption.english));
        dialog.addPage(menuCaption, menuPage.window());
        dialog.addPage(scriptCaption, scriptPage.window());
        dialog.resize(780, 520);
        ok &= save(dialog, folder, QStringLiteral("setup-dialog-menu-command"));
        dialog.showPage(scriptCaption);
        ok &= save(dialog, folder, QStringLiteral("setup-dialog-script"));
        dialog.releasePages();
    }

    // The pages alone, as a page of a conversion task shows its defaults.
    FakeTaskProperties convert;
    CMenuCommandDlg convertMenu(1, tr_ts);
    convertMenu.create(&host);
    convertMenu.load(convert);
    convertMenu.window()->setParent(nullptr);
    convertMenu.window()->resize(480, 220);
    ok &= save(*convertMenu.window(), folder, QStringLiteral("menu-command-page-convert"));
    convertMenu.window()->hide();

    // "Advanced Scripting Options" of a conversion task with its own macro.
    convert.set(QStringLiteral("__type"), Variant::fromI4(1));
    convert.set(QStringLiteral("__mc_version"), Variant::fromI4(2014));
    CScriptPageDlg options(false, 1, tr_ts, sampleProducts);
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
    ok &= saveLaunchWindows(folder);

    ok &= saveConvertPages(folder);
    ok &= savePrintScreenshots(folder, save);
    ok &= saveHelpWindows(folder);
    return ok ? 0 : 1;
}
