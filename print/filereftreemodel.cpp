#include "print/filereftreemodel.h"

#include "common/translator.h"
#include "print/printlaunch.h"

namespace {
// The reference tree is the host's control; its texts have a section of their own.
const QString TreeTexts = QStringLiteral("FileRefTree");
} // namespace

FileRefTreeModel::FileRefTreeModel(PrintLaunch &launch, QObject *parent) : QAbstractItemModel(parent), m_launch(launch)
{
}

void FileRefTreeModel::reload()
{
    beginResetModel();
    endResetModel();
}

std::vector<int> FileRefTreeModel::childrenOf(int parent) const
{
    std::vector<int> out;
    const auto &files = m_launch.files();
    for (std::size_t i = 0; i < files.size(); ++i)
        if (files[i].parent == parent)
            out.push_back(static_cast<int>(i));
    return out;
}

int FileRefTreeModel::fileIndex(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<int>(index.internalId()) : -1;
}

QModelIndex FileRefTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    const std::vector<int> children = childrenOf(fileIndex(parent));
    if (row < 0 || row >= static_cast<int>(children.size()) || column < 0 || column >= ColumnCount)
        return {};
    return createIndex(row, column, quintptr(children[static_cast<std::size_t>(row)]));
}

QModelIndex FileRefTreeModel::parent(const QModelIndex &child) const
{
    const int file = fileIndex(child);
    if (file < 0)
        return {};
    const int parentFile = m_launch.files()[static_cast<std::size_t>(file)].parent;
    if (parentFile < 0)
        return {};
    const std::vector<int> siblings = childrenOf(m_launch.files()[static_cast<std::size_t>(parentFile)].parent);
    const auto row = std::find(siblings.begin(), siblings.end(), parentFile) - siblings.begin();
    return createIndex(static_cast<int>(row), 0, quintptr(parentFile));
}

int FileRefTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.isValid() && parent.column() != 0)
        return 0;
    return static_cast<int>(childrenOf(fileIndex(parent)).size());
}

int FileRefTreeModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

QVariant FileRefTreeModel::data(const QModelIndex &index, int role) const
{
    const int file = fileIndex(index);
    if (file < 0)
        return {};
    const FileInfo &info = m_launch.files()[static_cast<std::size_t>(file)];
    if (role == Qt::CheckStateRole && index.column() == Name && info.hasCheckBox())
        return info.checked ? Qt::Checked : Qt::Unchecked;
    if (role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case Name: return info.fileName;
    case Configuration: return info.configuration;
    case Version: return info.version;
    case FoundIn: return info.folderPath;
    case State:
        // The state is a fixed English text; the tree shows it in the language.
        return info.errorText.isEmpty() ? info.errorText
                                        : Translator::instance().keyedText(TreeTexts, info.errorText, info.errorText);
    default: return {};
    }
}

bool FileRefTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const int file = fileIndex(index);
    if (file < 0 || role != Qt::CheckStateRole || index.column() != Name)
        return false;
    m_launch.setChecked(static_cast<std::size_t>(file), value.toInt() == Qt::Checked);
    emit dataChanged(index, index, {Qt::CheckStateRole});
    if (m_changed)
        m_changed();
    return true;
}

Qt::ItemFlags FileRefTreeModel::flags(const QModelIndex &index) const
{
    const int file = fileIndex(index);
    if (file < 0)
        return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (index.column() == Name && m_launch.files()[static_cast<std::size_t>(file)].hasCheckBox())
        f |= Qt::ItemIsUserCheckable;
    return f;
}

QVariant FileRefTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    static const char *const keys[] = {"nameColumn", "configurationColumn", "versionColumn", "foundInColumn",
                                       "stateColumn"};
    static const char *const captions[] = {"Name", "Configuration", "Version", "Found in", "State"};
    if (section < 0 || section >= ColumnCount)
        return {};
    return Translator::instance().dialogText(TreeTexts, QLatin1String(keys[section]), QLatin1String(captions[section]));
}
