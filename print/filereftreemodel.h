#pragma once

#include <QAbstractItemModel>
#include <functional>

class PrintLaunch;

// The launch's documents as a tree: selected files at the top, their
// references below them. A document that can be printed has a check box;
// one that cannot shows why.
class FileRefTreeModel final : public QAbstractItemModel
{
public:
    enum Column { Name, Configuration, Version, FoundIn, State, ColumnCount };

    explicit FileRefTreeModel(PrintLaunch &launch, QObject *parent = nullptr);

    // After the launch listed its documents again.
    void reload();
    // Called when a check box changed (the total follows).
    void setCheckChanged(std::function<void()> changed) { m_changed = std::move(changed); }
    // The document of an index, or -1.
    int fileIndex(const QModelIndex &index) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    std::vector<int> childrenOf(int parent) const;

    PrintLaunch &m_launch;
    std::function<void()> m_changed;
};
