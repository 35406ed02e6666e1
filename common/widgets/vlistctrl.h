#pragma once

#include <QAbstractTableModel>
#include <QIcon>
#include <QPoint>
#include <QStringList>
#include <QTreeView>

#include <memory>
#include <vector>

class VListCtrl;

// Events a list offers to the row under the pointer (or the selected row).
enum class VListEvent : int {
    LeftButton = 1,
    Activate = 2, // the space bar on the first selected row
    ContextMenu = 16,
    DoubleClick = 32,
};

// One row of a VListCtrl: the row object answers for its cells.
class VListCtrlItem
{
public:
    virtual ~VListCtrlItem() = default;

    virtual QString text(int column) const = 0;
    // The image of a cell: by default the list's image at imageIndex.
    virtual QIcon image(int column, const VListCtrl &list) const;
    virtual int imageIndex(int column) const;
    // Orders this row before (<0) or after (>0) other. signedColumn is
    // +(column + 1) ascending or -(column + 1) descending. By default the
    // cell texts compare case-insensitively over at most 50 characters.
    virtual int compare(const VListCtrlItem &other, int signedColumn) const;
    // True when the row handled the event (the list then skips its own).
    virtual bool onEvent(VListEvent event, QPoint point, int row, int column, VListCtrl &list);
};

using VListRows = std::vector<std::shared_ptr<VListCtrlItem>>;

// The rows as a table model; the rows answer every cell.
class VListModel final : public QAbstractTableModel
{
public:
    explicit VListModel(VListCtrl &list);

    void setColumns(const QStringList &captions);
    void setRows(VListRows rows);
    const VListRows &rows() const { return m_rows; }
    // Stable sort of the rows by their compare (signedColumn as above).
    void sortRows(int signedColumn);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

private:
    VListCtrl &m_list;
    QStringList m_columns;
    VListRows m_rows;
};

// A list whose rows are objects. Header clicks sort (a new column ascending,
// the current one reversed); mouse and key events are offered to rows when
// the matching behaviour flag is set; Ctrl+A selects every row.
class VListCtrl : public QTreeView
{
    Q_OBJECT
public:
    enum Flag : int {
        OfferLeftButton = 1,
        OfferContextMenu = 16,
        OfferDoubleClick = 32,
        OfferSpaceBar = 64,
    };

    explicit VListCtrl(QWidget *parent = nullptr);

    void setFlags(int flags) { m_flags = flags; }
    int flags() const { return m_flags; }
    void setColumns(const QStringList &captions);
    // Keeps the sort order: rows are re-sorted when a sort column is set.
    void setRows(VListRows rows);
    const VListRows &rows() const { return m_model.rows(); }
    VListCtrlItem *rowAt(int row) const;

    // 0 unsorted, else +(column + 1) ascending or -(column + 1) descending.
    int sortColumn() const { return m_sortColumn; }
    void setSortColumn(int signedColumn);
    // What a click on a column header does.
    void headerClicked(int column);

    void setImageList(QList<QIcon> images) { m_images = std::move(images); }
    QIcon imageAt(int index) const { return index >= 0 && index < m_images.size() ? m_images[index] : QIcon(); }

    QList<int> selectedRowNumbers() const;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    bool offer(VListEvent event, QPoint point);

    VListModel m_model;
    QList<QIcon> m_images;
    int m_flags = 0;
    int m_sortColumn = 0;
};
