#pragma once

#include <QDialog>
#include <QList>
#include <QRegularExpression>
#include <QStringList>
#include <memory>

class EmbeddedVault;
class IDoxFolder;
class IDoxVault;
class QComboBox;
class QDialogButtonBox;
class QTreeWidget;
class QTreeWidgetItem;

// The embedded host's browse window: the vault's folders as a tree and, when
// files are picked, the files of the current folder that match the chosen
// filter. Answers vault paths (Windows paths of the local view).
class VaultBrowser final : public QDialog
{
public:
    enum class Mode { Files, Folder };

    // filter: "Shown|patterns|...||" as the add-in gives it; empty shows every file.
    VaultBrowser(IDoxVault &vault, Mode mode, const QString &title, const QString &filter = {},
                 QWidget *parent = nullptr);

    // The picked files, or the picked folder.
    QStringList selectedPaths() const;

    // The filter's entries: shown text and its patterns.
    struct FilterEntry {
        QString shown;
        QList<QRegularExpression> patterns;
    };
    static QList<FilterEntry> parseFilter(const QString &filter);

private:
    QTreeWidgetItem *addFolderItem(QTreeWidgetItem *parent, const std::shared_ptr<IDoxFolder> &folder);
    void loadSubFolders(QTreeWidgetItem *item);
    void showFiles();
    void updateOk();
    std::shared_ptr<IDoxFolder> folderOf(const QTreeWidgetItem *item) const;

    IDoxVault &m_vault;
    Mode m_mode;
    QList<FilterEntry> m_filters;
    std::vector<std::shared_ptr<IDoxFolder>> m_folders; // by the items' index data
    QTreeWidget *m_folderTree = nullptr;
    QTreeWidget *m_fileList = nullptr;
    QComboBox *m_filterCombo = nullptr;
    QDialogButtonBox *m_buttons = nullptr;
};

// Makes the vault's pickers show the browse windows above.
void installVaultBrowsers(EmbeddedVault &vault);
