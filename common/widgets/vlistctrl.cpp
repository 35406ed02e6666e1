#include "common/widgets/vlistctrl.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QKeyEvent>
#include <QMouseEvent>

#include <algorithm>
#include <cstdlib>

namespace {
constexpr int CompareLength = 50;
}

QIcon VListCtrlItem::image(int column, const VListCtrl &list) const
{
    return list.imageAt(imageIndex(column));
}

int VListCtrlItem::imageIndex(int) const
{
    return -1;
}

int VListCtrlItem::compare(const VListCtrlItem &other, int signedColumn) const
{
    const int column = std::abs(signedColumn) - 1;
    const int result = QStringView(text(column)).left(CompareLength).compare(
        QStringView(other.text(column)).left(CompareLength), Qt::CaseInsensitive);
    return signedColumn < 0 ? -result : result;
}

bool VListCtrlItem::onEvent(VListEvent, QPoint, int, int, VListCtrl &)
{
    return false;
}

VListModel::VListModel(VListCtrl &list) : m_list(list) {}

void VListModel::setColumns(const QStringList &captions)
{
    beginResetModel();
    m_columns = captions;
    endResetModel();
}

void VListModel::setRows(VListRows rows)
{
    beginResetModel();
    m_rows = std::move(rows);
    endResetModel();
}

void VListModel::sortRows(int signedColumn)
{
    if (signedColumn == 0)
        return;
    emit layoutAboutToBeChanged();
    std::stable_sort(m_rows.begin(), m_rows.end(), [signedColumn](const auto &a, const auto &b) {
        return a->compare(*b, signedColumn) < 0;
    });
    emit layoutChanged();
}

int VListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int VListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_columns.size());
}

QVariant VListModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= rowCount())
        return {};
    const VListCtrlItem &row = *m_rows[static_cast<std::size_t>(index.row())];
    if (role == Qt::DisplayRole)
        return row.text(index.column());
    if (role == Qt::DecorationRole) {
        const QIcon icon = row.image(index.column(), m_list);
        return icon.isNull() ? QVariant() : QVariant(icon);
    }
    return {};
}

QVariant VListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole && section < m_columns.size())
        return m_columns[section];
    return {};
}

VListCtrl::VListCtrl(QWidget *parent) : QTreeView(parent), m_model(*this)
{
    setModel(&m_model);
    setRootIsDecorated(false);
    setUniformRowHeights(true);
    setItemsExpandable(false);
    setSelectionMode(QAbstractItemView::ExtendedSelection);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    header()->setSectionsClickable(true);
    header()->setSortIndicatorShown(false);
    connect(header(), &QHeaderView::sectionClicked, this, &VListCtrl::headerClicked);
}

void VListCtrl::setColumns(const QStringList &captions)
{
    m_model.setColumns(captions);
}

void VListCtrl::setRows(VListRows rows)
{
    m_model.setRows(std::move(rows));
    m_model.sortRows(m_sortColumn);
    viewport()->update();
}

VListCtrlItem *VListCtrl::rowAt(int row) const
{
    const VListRows &all = m_model.rows();
    return row >= 0 && row < static_cast<int>(all.size()) ? all[static_cast<std::size_t>(row)].get() : nullptr;
}

void VListCtrl::setSortColumn(int signedColumn)
{
    m_sortColumn = signedColumn;
    if (signedColumn == 0) {
        header()->setSortIndicatorShown(false);
        return;
    }
    m_model.sortRows(signedColumn);
    header()->setSortIndicatorShown(true);
    header()->setSortIndicator(std::abs(signedColumn) - 1, signedColumn > 0 ? Qt::AscendingOrder : Qt::DescendingOrder);
    viewport()->update();
}

void VListCtrl::headerClicked(int column)
{
    const int ascending = column + 1;
    setSortColumn(std::abs(m_sortColumn) == ascending ? -m_sortColumn : ascending);
}

QList<int> VListCtrl::selectedRowNumbers() const
{
    QList<int> rows;
    for (const QModelIndex &index : selectionModel()->selectedRows())
        rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

bool VListCtrl::offer(VListEvent event, QPoint point)
{
    const QModelIndex index = indexAt(point);
    VListCtrlItem *row = index.isValid() ? rowAt(index.row()) : nullptr;
    return row && row->onEvent(event, point, index.row(), index.column(), *this);
}

void VListCtrl::mousePressEvent(QMouseEvent *event)
{
    if ((m_flags & OfferLeftButton) && event->button() == Qt::LeftButton
        && offer(VListEvent::LeftButton, event->position().toPoint())) {
        event->accept();
        return;
    }
    QTreeView::mousePressEvent(event);
}

void VListCtrl::mouseDoubleClickEvent(QMouseEvent *event)
{
    if ((m_flags & OfferDoubleClick) && offer(VListEvent::DoubleClick, event->position().toPoint())) {
        event->accept();
        return;
    }
    QTreeView::mouseDoubleClickEvent(event);
}

void VListCtrl::contextMenuEvent(QContextMenuEvent *event)
{
    if ((m_flags & OfferContextMenu) && offer(VListEvent::ContextMenu, event->pos())) {
        event->accept();
        return;
    }
    QTreeView::contextMenuEvent(event);
}

void VListCtrl::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_A && event->modifiers() == Qt::ControlModifier) {
        if (!event->isAutoRepeat())
            selectAll();
        event->accept();
        return;
    }
    if ((m_flags & OfferSpaceBar) && event->key() == Qt::Key_Space) {
        const QList<int> selected = selectedRowNumbers();
        if (!selected.isEmpty()) {
            const int rowNumber = selected.first();
            const QPoint point = visualRect(m_model.index(rowNumber, 0)).topLeft() + QPoint(1, 1);
            if (VListCtrlItem *row = rowAt(rowNumber); row && row->onEvent(VListEvent::Activate, point, rowNumber, 0, *this)) {
                event->accept();
                return;
            }
        }
    }
    QTreeView::keyPressEvent(event);
}
