#include "app/vaultbrowser.h"
#include "common/translator.h"
#include "common/widgets/strwnd.h"

#include "host/idoxvault.h"
#include "vault/embeddedvault.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QTreeWidget>
#include <QVBoxLayout>

#include <algorithm>

namespace {

constexpr int FolderRole = Qt::UserRole;     // index into m_folders
constexpr int LoadedRole = Qt::UserRole + 1; // sub-folders are in the tree
constexpr int PathRole = Qt::UserRole + 2;

QString lastName(const QString &path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('\\')) + 1);
}

} // namespace

QList<VaultBrowser::FilterEntry> VaultBrowser::parseFilter(const QString &filter)
{
    QList<FilterEntry> entries;
    const QStringList parts = filter.split(QLatin1Char('|'));
    for (qsizetype i = 0; i + 1 < parts.size() && !parts[i].isEmpty(); i += 2) {
        FilterEntry entry{parts[i], {}};
        for (const QString &pattern : parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts))
            entry.patterns.append(QRegularExpression(
                QRegularExpression::wildcardToRegularExpression(pattern.trimmed()),
                QRegularExpression::CaseInsensitiveOption));
        entries.append(entry);
    }
    return entries;
}

VaultBrowser::VaultBrowser(IDoxVault &vault, Mode mode, const QString &title, const QString &filter, QWidget *parent)
    : QDialog(parent), m_vault(vault), m_mode(mode), m_filters(parseFilter(filter))
{
    setObjectName(mode == Mode::Files ? QStringLiteral("vaultFileBrowser") : QStringLiteral("vaultFolderBrowser"));
    setSizeGripEnabled(true);
    auto *layout = new QVBoxLayout(this);

    m_folderTree = new QTreeWidget(this);
    m_folderTree->setObjectName(QStringLiteral("folderTree"));
    m_folderTree->setHeaderHidden(true);
    connect(m_folderTree, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem *item) { loadSubFolders(item); });
    connect(m_folderTree, &QTreeWidget::currentItemChanged, this, [this] {
        showFiles();
        updateOk();
    });

    if (mode == Mode::Files) {
        auto *splitter = new QSplitter(this);
        splitter->addWidget(m_folderTree);
        m_fileList = new QTreeWidget(splitter);
        m_fileList->setObjectName(QStringLiteral("fileList"));
        m_fileList->setHeaderLabels({Translator::instance().dialogText(QStringLiteral("VaultBrowser"),
                                                                       QStringLiteral("nameColumn"), QStringLiteral("Name"))});
        m_fileList->setRootIsDecorated(false);
        m_fileList->setSelectionMode(QAbstractItemView::ExtendedSelection);
        splitter->addWidget(m_fileList);
        splitter->setStretchFactor(1, 2);
        layout->addWidget(splitter);
        connect(m_fileList, &QTreeWidget::itemSelectionChanged, this, [this] { updateOk(); });
        connect(m_fileList, &QTreeWidget::itemDoubleClicked, this, [this] { accept(); });

        auto *filterRow = new QHBoxLayout;
        auto *label = new QLabel(QStringLiteral("Files of type:"), this);
        label->setObjectName(QStringLiteral("fileTypeLabel"));
        m_filterCombo = new QComboBox(this);
        m_filterCombo->setObjectName(QStringLiteral("filterCombo"));
        label->setBuddy(m_filterCombo);
        for (const FilterEntry &entry : m_filters)
            m_filterCombo->addItem(entry.shown);
        m_filterCombo->setEnabled(!m_filters.isEmpty());
        connect(m_filterCombo, &QComboBox::currentIndexChanged, this, [this] { showFiles(); });
        filterRow->addWidget(label);
        filterRow->addWidget(m_filterCombo, 1);
        layout->addLayout(filterRow);
    } else {
        layout->addWidget(m_folderTree);
    }

    m_buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_buttons->setObjectName(QStringLiteral("buttons"));
    layout->addWidget(m_buttons);
    connect(m_buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(m_buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    // The title is the caller's; the rest follows the language.
    (new StrWnd(this))->localise(QStringLiteral("VaultBrowser"));
    setWindowTitle(title);

    // The root folder carries the vault's name.
    QString root;
    QString name;
    std::shared_ptr<IDoxFolder> rootFolder;
    if (succeeded(m_vault.GetRootFolderPath(root)) && m_vault.GetFolderFromPath(root, rootFolder) == S_OK && rootFolder) {
        QTreeWidgetItem *item = addFolderItem(nullptr, rootFolder);
        if (succeeded(m_vault.GetName(name)) && !name.isEmpty())
            item->setText(0, name);
        item->setExpanded(true);
        m_folderTree->setCurrentItem(item);
    }
    updateOk();
    resize(mode == Mode::Files ? 640 : 360, 420);
}

QTreeWidgetItem *VaultBrowser::addFolderItem(QTreeWidgetItem *parent, const std::shared_ptr<IDoxFolder> &folder)
{
    const QString path = folder->GetLocalPath();
    auto *item = parent ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(m_folderTree);
    item->setText(0, lastName(path));
    item->setIcon(0, style()->standardIcon(QStyle::SP_DirIcon));
    item->setData(0, FolderRole, static_cast<int>(m_folders.size()));
    item->setData(0, PathRole, path);
    m_folders.push_back(folder);
    // Sub-folders are read when the folder opens; until then it may have some.
    item->setChildIndicatorPolicy(QTreeWidgetItem::ShowIndicator);
    return item;
}

std::shared_ptr<IDoxFolder> VaultBrowser::folderOf(const QTreeWidgetItem *item) const
{
    if (!item)
        return nullptr;
    const auto index = static_cast<std::size_t>(item->data(0, FolderRole).toInt());
    return index < m_folders.size() ? m_folders[index] : nullptr;
}

void VaultBrowser::loadSubFolders(QTreeWidgetItem *item)
{
    if (item->data(0, LoadedRole).toBool())
        return;
    item->setData(0, LoadedRole, true);
    std::vector<std::shared_ptr<IDoxFolder>> folders;
    if (const auto folder = folderOf(item); folder && succeeded(folder->GetSubFolders(folders))) {
        std::sort(folders.begin(), folders.end(), [](const auto &a, const auto &b) {
            return a->GetLocalPath().compare(b->GetLocalPath(), Qt::CaseInsensitive) < 0;
        });
        for (const auto &sub : folders)
            addFolderItem(item, sub);
    }
    item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicatorWhenChildless);
}

void VaultBrowser::showFiles()
{
    if (!m_fileList)
        return;
    m_fileList->clear();
    const auto folder = folderOf(m_folderTree->currentItem());
    std::vector<std::shared_ptr<IDoxFile>> files;
    if (!folder || failed(folder->GetFiles(files)))
        return;
    const int filter = m_filterCombo->currentIndex();
    const QString folderPath = folder->GetLocalPath();
    QStringList names;
    for (const auto &file : files) {
        const QString name = file->GetName();
        const bool shown = filter < 0 || filter >= m_filters.size()
                           || std::any_of(m_filters[filter].patterns.begin(), m_filters[filter].patterns.end(),
                                          [&](const QRegularExpression &re) { return re.match(name).hasMatch(); });
        if (shown)
            names.append(name);
    }
    names.sort(Qt::CaseInsensitive);
    for (const QString &name : names) {
        auto *item = new QTreeWidgetItem(m_fileList, {name});
        item->setIcon(0, style()->standardIcon(QStyle::SP_FileIcon));
        item->setData(0, PathRole, folderPath + QLatin1Char('\\') + name);
    }
}

void VaultBrowser::updateOk()
{
    const bool chosen = m_mode == Mode::Files ? !m_fileList->selectedItems().isEmpty()
                                              : m_folderTree->currentItem() != nullptr;
    m_buttons->button(QDialogButtonBox::Ok)->setEnabled(chosen);
}

QStringList VaultBrowser::selectedPaths() const
{
    QStringList paths;
    if (m_mode == Mode::Folder) {
        if (const QTreeWidgetItem *item = m_folderTree->currentItem())
            paths.append(item->data(0, PathRole).toString());
        return paths;
    }
    for (int i = 0; i < m_fileList->topLevelItemCount(); ++i)
        if (m_fileList->topLevelItem(i)->isSelected())
            paths.append(m_fileList->topLevelItem(i)->data(0, PathRole).toString());
    return paths;
}

void installVaultBrowsers(EmbeddedVault &vault)
{
    // The pickers live in the vault, so they hold it by reference.
    IDoxVault *host = &vault;
    vault.setFilePicker([host](HostWindow owner, const QString &title, const QString &filter, QStringList &paths) {
        VaultBrowser browser(*host, VaultBrowser::Mode::Files, title, filter, owner);
        if (browser.exec() != QDialog::Accepted)
            return S_FALSE;
        paths = browser.selectedPaths();
        return paths.isEmpty() ? S_FALSE : S_OK;
    });
    vault.setFolderPicker([host](HostWindow owner, const QString &title, QString &path) {
        VaultBrowser browser(*host, VaultBrowser::Mode::Folder, title, {}, owner);
        if (browser.exec() != QDialog::Accepted || browser.selectedPaths().isEmpty())
            return S_FALSE;
        path = browser.selectedPaths().first();
        return S_OK;
    });
}
