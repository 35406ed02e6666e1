#include "common/widgets/vlistctrl.h"

#include "common/widgets/testing/widgetapp.h"

#include <QHeaderView>
#include <QKeyEvent>
#include <QTest>
#include <gtest/gtest.h>

namespace {

class TextRow final : public VListCtrlItem
{
public:
    TextRow(QString a, QString b, bool handles = false) : m_cells{std::move(a), std::move(b)}, m_handles(handles) {}

    QString text(int column) const override { return m_cells.value(column); }
    bool onEvent(VListEvent event, QPoint point, int row, int, VListCtrl &) override
    {
        events.push_back({event, point, row});
        return m_handles;
    }

    struct Seen {
        VListEvent event;
        QPoint point;
        int row;
    };
    std::vector<Seen> events;

private:
    QStringList m_cells;
    bool m_handles;
};

class VListCtrlTest : public ::testing::Test, private WithWidgetApp
{
protected:
    void SetUp() override
    {
        widgetApp();
        list.setColumns({"Name", "Folder"});
        list.resize(400, 300);
        list.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&list));
    }

    QStringList column(int c) const
    {
        QStringList texts;
        for (const auto &row : list.rows())
            texts.append(row->text(c));
        return texts;
    }

    QPoint cellCentre(int row) const { return list.visualRect(list.model()->index(row, 0)).center(); }

    VListCtrl list;
};

TEST_F(VListCtrlTest, HeaderClicksSortAscendingThenReverseAndANewColumnStartsAscending)
{
    list.setRows({std::make_shared<TextRow>("beta", "2"), std::make_shared<TextRow>("Alpha", "3"),
                  std::make_shared<TextRow>("gamma", "1")});
    EXPECT_EQ(list.sortColumn(), 0);
    EXPECT_EQ(column(0), QStringList({"beta", "Alpha", "gamma"})); // unsorted keeps the given order

    list.headerClicked(0);
    EXPECT_EQ(list.sortColumn(), 1);
    EXPECT_EQ(column(0), QStringList({"Alpha", "beta", "gamma"})); // case does not matter
    list.headerClicked(0);
    EXPECT_EQ(list.sortColumn(), -1);
    EXPECT_EQ(column(0), QStringList({"gamma", "beta", "Alpha"}));
    list.headerClicked(1);
    EXPECT_EQ(list.sortColumn(), 2);
    EXPECT_EQ(column(1), QStringList({"1", "2", "3"}));

    // New rows come sorted by the current column; the header shows it.
    list.headerClicked(1);
    list.setRows({std::make_shared<TextRow>("x", "5"), std::make_shared<TextRow>("y", "9")});
    EXPECT_EQ(column(1), QStringList({"9", "5"}));
    EXPECT_EQ(list.header()->sortIndicatorSection(), 1);
    EXPECT_EQ(list.header()->sortIndicatorOrder(), Qt::DescendingOrder);
    EXPECT_EQ(list.model()->data(list.model()->index(0, 0), Qt::DisplayRole).toString(), "y");
}

TEST_F(VListCtrlTest, TextsCompareOverFiftyCharactersOnly)
{
    const QString common(50, QLatin1Char('a'));
    TextRow first(common + "z", ""), second(common + "b", ""), shorter("a", "");
    EXPECT_EQ(first.compare(second, 1), 0);
    EXPECT_GT(first.compare(shorter, 1), 0);
    EXPECT_LT(first.compare(shorter, -1), 0);
}

TEST_F(VListCtrlTest, MouseEventsGoToTheRowUnderThePointerWhenTheirFlagIsSet)
{
    auto quiet = std::make_shared<TextRow>("a", "");
    auto handler = std::make_shared<TextRow>("b", "", true);
    list.setRows({quiet, handler});

    // Without the flag no row is asked and the list selects as usual.
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, cellCentre(1));
    EXPECT_TRUE(handler->events.empty());
    EXPECT_EQ(list.selectedRowNumbers(), QList<int>({1}));

    list.setFlags(VListCtrl::OfferLeftButton | VListCtrl::OfferDoubleClick);
    // A row that handles the press keeps the list from selecting it.
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, cellCentre(0));
    ASSERT_EQ(quiet->events.size(), 1u);
    EXPECT_EQ(quiet->events[0].event, VListEvent::LeftButton);
    EXPECT_EQ(list.selectedRowNumbers(), QList<int>({0})); // not handled: selected
    list.clearSelection();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, cellCentre(1));
    ASSERT_EQ(handler->events.size(), 1u);
    EXPECT_EQ(handler->events[0].row, 1);
    EXPECT_EQ(handler->events[0].point, cellCentre(1));
    EXPECT_TRUE(list.selectedRowNumbers().isEmpty());

    QTest::mouseDClick(list.viewport(), Qt::LeftButton, {}, cellCentre(1));
    EXPECT_EQ(handler->events.back().event, VListEvent::DoubleClick);
    // Below the last row there is nobody to ask.
    const std::size_t before = handler->events.size() + quiet->events.size();
    QTest::mouseClick(list.viewport(), Qt::LeftButton, {}, QPoint(5, list.viewport()->height() - 3));
    EXPECT_EQ(handler->events.size() + quiet->events.size(), before);
}

TEST_F(VListCtrlTest, CtrlASelectsAllRowsAndTheSpaceBarActivatesTheFirstSelected)
{
    auto a = std::make_shared<TextRow>("a", "", true);
    auto b = std::make_shared<TextRow>("b", "", true);
    auto c = std::make_shared<TextRow>("c", "", true);
    list.setRows({a, b, c});
    list.setFocus();

    QKeyEvent repeated(QEvent::KeyPress, Qt::Key_A, Qt::ControlModifier, "\x01", true);
    QApplication::sendEvent(&list, &repeated);
    EXPECT_TRUE(list.selectedRowNumbers().isEmpty()); // a held key does not select
    QTest::keyClick(&list, Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(list.selectedRowNumbers(), QList<int>({0, 1, 2}));

    // Without its flag the space bar offers nothing.
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_TRUE(a->events.empty());

    list.setFlags(VListCtrl::OfferSpaceBar);
    list.clearSelection();
    list.selectionModel()->select(list.model()->index(2, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    list.selectionModel()->select(list.model()->index(1, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    QTest::keyClick(&list, Qt::Key_Space);
    EXPECT_TRUE(c->events.empty());
    ASSERT_EQ(b->events.size(), 1u);
    EXPECT_EQ(b->events[0].event, VListEvent::Activate);
    EXPECT_EQ(b->events[0].point, list.visualRect(list.model()->index(1, 0)).topLeft() + QPoint(1, 1));
}

} // namespace
