#include "script/selectiondlg.h"

#include "common/help/help.h"
#include "common/translator.h"
#include "common/widgets/icons.h"
#include "common/widgets/prompter.h"
#include "common/widgets/strwnd.h"
#include "host/hosterror.h"
#include "host/idoxvault.h"

#include "ui_selectiondlg.h"

#include <QDialog>
#include <QKeyEvent>
#include <QListWidget>
#include <QPushButton>

#include <algorithm>
#include <functional>

namespace {

struct FilterEntry {
    const char *name;
    std::vector<const char *> extensions;
};

// The file types of "Add Files...", in the order the filter offers them.
const std::vector<FilterEntry> &filterEntries()
{
    static const std::vector<FilterEntry> entries{
        {"Mecadra Files", {"mcdasm", "mcdprt", "mcddrw"}},
        {"Part", {"prt", "mcdprt"}},
        {"Assembly", {"asm", "mcdasm"}},
        {"Drawing", {"drw", "mcddrw"}},
        {"DXF", {"dxf"}},
        {"DWG", {"dwg"}},
        {"Adobe Photoshop Files", {"psd"}},
        {"Adobe Illustrator Files", {"ai"}},
        {"Lib Feat Part", {"lfp", "mcdlfp"}},
        {"Template", {"prtdot", "asmdot", "drwdot"}},
        {"Parasolid", {"x_t", "x_b", "xmt_txt", "xmt_bin"}},
        {"IGES", {"igs", "iges"}},
        {"STEP AP203/214", {"step", "stp"}},
        {"ACIS", {"sat"}},
        {"VDAFS", {"vda"}},
        {"VRML", {"wrl"}},
        {"STL", {"stl"}},
        {"Korinth Graphics", {"kgr"}},
        {"ProE Part", {"prt", "prt", "xpr"}},
        {"ProE Assembly", {"asm", "asm", "xas"}},
        {"UGII", {"prt"}},
        {"Inventor Part", {"ipt"}},
        {"Inventor Assembly", {"iam"}},
        {"Solid Edge Part", {"par", "psm"}},
        {"Solid Edge Assembly", {"asm"}},
        {"CADKEY", {"prt", "cdk"}},
        {"IDF", {"emn", "brd", "dbf", "idb"}},
        {"Rhino", {"3dm"}},
    };
    return entries;
}

constexpr std::int32_t CaptionForName = 161;
constexpr std::int32_t SelectFilesTitle = 5;
constexpr std::int32_t SelectFolderTitle = 6;
constexpr std::int32_t SelectAtLeastOne = 7;

const QString MessageCaption = QStringLiteral("Mecadra Task Add-in");

// Delete in the list removes the selected rows, as "Remove" does.
class DeleteKeyFilter final : public QObject
{
public:
    DeleteKeyFilter(QObject *parent, std::function<void()> remove) : QObject(parent), m_remove(std::move(remove)) {}

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::KeyPress && static_cast<QKeyEvent *>(event)->key() == Qt::Key_Delete) {
            m_remove();
            return true;
        }
        return QObject::eventFilter(watched, event);
    }

private:
    std::function<void()> m_remove;
};

} // namespace

CSelectionDlg::CSelectionDlg(std::shared_ptr<IDoxVault> vault, QString vaultRoot, QString name,
                             const Translator *translator)
    : m_vault(std::move(vault)), m_root(std::move(vaultRoot)), m_name(std::move(name)), m_translator(translator)
{
}

CSelectionDlg::~CSelectionDlg()
{
    delete m_dialog.data();
}

const Translator &CSelectionDlg::translator() const
{
    return m_translator ? *m_translator : Translator::instance();
}

QString CSelectionDlg::text(std::int32_t number, const char *english) const
{
    return translator().text(number, QString::fromLatin1(english));
}

QString CSelectionDlg::filterText() const
{
    const Translator &translator = this->translator();
    QString filter;
    for (const FilterEntry &entry : filterEntries()) {
        QStringList patterns;
        for (const char *extension : entry.extensions)
            patterns.append(QStringLiteral("*.") + QLatin1String(extension));
        // The type names have no numbers: they are translated by their English text.
        const QString english = QString::fromLatin1(entry.name);
        const QString name = translator.keyedText(QString::fromUtf16(kAddInTextSection), english, english);
        filter += QStringLiteral("%1 (%2)|%3|").arg(name, patterns.join(QLatin1Char(';')),
                                                     patterns.join(QLatin1String("; ")));
    }
    return filter + QLatin1Char('|');
}

QString CSelectionDlg::caption() const
{
    if (m_name.isEmpty())
        return {};
    return text(CaptionForName, "Select Files and Folders for %s").replace(QLatin1String("%s"), m_name);
}

QString CSelectionDlg::displayedPath(const QString &fullPath) const
{
    QString shown = fullPath;
    if (!m_root.isEmpty())
        shown.remove(m_root);
    return shown;
}

bool CSelectionDlg::addEntry(const QString &fullPath, const Entry &entry)
{
    const QString shown = displayedPath(fullPath);
    if (!m_entries.emplace(shown, entry).second)
        return false;
    m_rows.append(shown);
    if (m_dialog) {
        auto *row = new QListWidgetItem(ProjectIcons::fileTypeIcon(fullPath, entry.kind == DoxObject_Folder), shown);
        m_ui->list209->addItem(row);
    }
    return true;
}

void CSelectionDlg::removeRows(QList<int> rows)
{
    std::sort(rows.begin(), rows.end(), std::greater<>());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    for (const int row : rows) {
        if (row < 0 || row >= m_rows.size())
            continue;
        m_entries.erase(m_rows.takeAt(row));
        if (m_dialog)
            delete m_ui->list209->takeItem(row);
    }
    updateRemoveButton();
}

void CSelectionDlg::showMessage(const QString &message)
{
    Prompter::instance().message(m_dialog, message, MessageCaption, Prompter::Icon::Warning);
}

void CSelectionDlg::showFailure(HRESULT hr)
{
    Prompter::showError(m_dialog, hr);
}

void CSelectionDlg::addFiles()
{
    try {
        std::vector<std::shared_ptr<IDoxFile>> files;
        std::vector<std::shared_ptr<IDoxFolder>> folders;
        if (throwIfFailed(m_vault->BrowseForFiles(m_dialog, text(SelectFilesTitle, "Select Files"), filterText(),
                                                  files, folders))
            != S_OK)
            return;
        for (std::size_t i = 0; i < files.size(); ++i) {
            IDoxFile &file = *files[i];
            Entry entry;
            entry.id = file.GetID();
            entry.kind = DoxObject_File;
            if (i < folders.size() && folders[i])
                entry.parentId = folders[i]->GetID();
            else
                throwIfFailed(file.GetParentFolderId(entry.parentId));
            entry.extra = file.GetCurrentVersion();
            QString path;
            throwIfFailed(file.GetLocalPath(entry.parentId, path));
            addEntry(path, entry);
        }
    } catch (const HostError &e) {
        showFailure(e.code());
    }
}

void CSelectionDlg::addFolder()
{
    try {
        std::shared_ptr<IDoxFolder> folder;
        if (throwIfFailed(m_vault->BrowseForFolder(m_dialog, text(SelectFolderTitle, "Please select a folder:"), folder))
                != S_OK
            || !folder)
            return;
        Entry entry;
        entry.id = folder->GetID();
        entry.kind = DoxObject_Folder;
        addEntry(folder->GetLocalPath(), entry);
    } catch (const HostError &e) {
        showFailure(e.code());
    }
}

bool CSelectionDlg::accept()
{
    if (m_entries.empty()) {
        showMessage(text(SelectAtLeastOne, "Please select at least one folder or file."));
        return false;
    }
    return true;
}

DoxCmdDataArray CSelectionDlg::result() const
{
    DoxCmdDataArray records;
    records.reserve(m_entries.size());
    for (const auto &[shown, entry] : m_entries) {
        DoxCmdData record;
        record.objectId1 = entry.id;
        record.objectId2 = entry.parentId;
        record.string1 = m_root + shown;
        record.long1 = entry.kind;
        record.long2 = entry.extra;
        records.push_back(record);
    }
    return records;
}

void CSelectionDlg::updateRemoveButton()
{
    if (m_dialog)
        m_ui->remove215->setEnabled(!m_ui->list209->selectedItems().isEmpty());
}

QDialog *CSelectionDlg::create(QWidget *parent)
{
    delete m_dialog.data();
    m_dialog = new QDialog(parent);
    m_ui = std::make_unique<Ui::SelectionDlg>();
    m_ui->setupUi(m_dialog);
    m_dialog->setSizeGripEnabled(true);
    (new StrWnd(m_dialog))->localise(QStringLiteral("SelectionDlg"), translator());
    if (!m_name.isEmpty())
        m_dialog->setWindowTitle(caption());

    QListWidget *list = m_ui->list209;
    for (const QString &shown : m_rows) {
        const Entry &entry = m_entries.at(shown);
        list->addItem(new QListWidgetItem(ProjectIcons::fileTypeIcon(m_root + shown, entry.kind == DoxObject_Folder), shown));
    }
    const auto removeSelected = [this] {
        QList<int> rows;
        for (const QListWidgetItem *item : m_ui->list209->selectedItems())
            rows.append(m_ui->list209->row(item));
        removeRows(rows);
    };
    list->installEventFilter(new DeleteKeyFilter(list, removeSelected));
    QObject::connect(list, &QListWidget::itemSelectionChanged, m_dialog, [this] { updateRemoveButton(); });
    QObject::connect(m_ui->addFiles213, &QPushButton::clicked, m_dialog, [this] { addFiles(); });
    QObject::connect(m_ui->addFolder214, &QPushButton::clicked, m_dialog, [this] { addFolder(); });
    QObject::connect(m_ui->remove215, &QPushButton::clicked, m_dialog, removeSelected);
    QObject::connect(m_ui->buttons, &QDialogButtonBox::accepted, m_dialog, [this] {
        if (accept())
            m_dialog->accept();
    });
    QObject::connect(m_ui->buttons, &QDialogButtonBox::rejected, m_dialog, &QDialog::reject);
    QPushButton *help = m_ui->buttons->button(QDialogButtonBox::Help);
    help->setObjectName(QStringLiteral("helpButton"));
    connectHelp(m_dialog, help, QStringLiteral("SelectionDlg"));
    updateRemoveButton();
    return m_dialog;
}

bool CSelectionDlg::exec(QWidget *parent)
{
    if (!m_dialog)
        create(parent);
    return m_dialog->exec() == QDialog::Accepted;
}

HRESULT runSelectionDialog(HostWindow owner, const std::shared_ptr<IDoxVault> &vault, const QString &vaultRoot,
                           DoxCmdDataArray &selection, const Translator *translator)
{
    if (!vault)
        return E_POINTER;
    CSelectionDlg dialog(vault, vaultRoot, QString(), translator);
    if (!dialog.exec(owner))
        return S_FALSE;
    selection = dialog.result();
    return S_OK;
}
