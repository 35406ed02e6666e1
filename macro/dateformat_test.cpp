#include "macro/dateformat.h"

#include <gtest/gtest.h>

namespace {

double at(int y, int mo, int d, int h = 0, int mi = 0, int s = 0)
{
    return toAutomationDate(QDateTime(QDate(y, mo, d), QTime(h, mi, s)));
}

QString format(double date, int style, int part)
{
    const std::optional<QString> text = FormatDate(date, style, part);
    return text ? *text : QStringLiteral("<none>");
}

TEST(AutomationDate, KnownDaysAndTimes)
{
    EXPECT_DOUBLE_EQ(at(1899, 12, 30), 0.0);
    EXPECT_DOUBLE_EQ(at(2000, 1, 1), 36526.0);
    EXPECT_DOUBLE_EQ(at(2000, 1, 1, 18), 36526.75);
    // Before the epoch the day counts back while the time counts forward.
    EXPECT_DOUBLE_EQ(at(1899, 12, 29, 6), -1.25);

    const AutomationDateFields f = splitAutomationDate(-1.25);
    EXPECT_TRUE(f.valid);
    EXPECT_EQ(QDate(f.year, f.month, f.day), QDate(1899, 12, 29));
    EXPECT_EQ(f.hour, 6);
    // Just short of midnight rounds into the next day.
    const AutomationDateFields late = splitAutomationDate(36526.0 + 86399.7 / 86400.0);
    EXPECT_EQ(QDate(late.year, late.month, late.day), QDate(2000, 1, 2));
    EXPECT_EQ(late.hour, 0);
    EXPECT_FALSE(splitAutomationDate(1e12).valid);
}

TEST(FormatDate, DateValueZeroGivesNoText)
{
    EXPECT_FALSE(FormatDate(0.0, 103, 2).has_value());
    EXPECT_FALSE(FormatDate(0.0, 8, 1).has_value());
    // The day before still has a text.
    EXPECT_TRUE(FormatDate(-1.0, 103, 2).has_value());
}

TEST(FormatDate, DayPeriodOfStyleZero)
{
    EXPECT_EQ(format(at(2012, 3, 5), 0, 2), "Mar 05 2012");
    // The midnight hour shows as 00 and noon counts as morning.
    EXPECT_EQ(format(at(2012, 3, 5, 0, 30), 0, 1), "Mar 05 2012 00:30 AM");
    EXPECT_EQ(format(at(2012, 3, 5, 12, 15), 0, 1), "Mar 05 2012 12:15 AM");
    EXPECT_EQ(format(at(2012, 3, 5, 13, 5), 0, 1), "Mar 05 2012 01:05 PM");
    EXPECT_EQ(format(at(2012, 3, 5, 23, 59), 100, 3), "Mar 05 2012 11:59 PM");
    EXPECT_EQ(format(at(2012, 3, 5, 13, 5, 9), 109, 1), "Mar 05 2012 01:05:09:000 PM");
}

TEST(FormatDate, EveryStyleLaysOutTheDateAsDocumented)
{
    const double date = at(2012, 3, 5, 14, 7, 9);
    const std::vector<std::pair<int, const char *>> dateOnlyStyles = {
        {1, "03/05/12"},      {2, "12.03.05"},      {3, "05/03/12"},      {4, "05.03.12"},
        {5, "05-03-12"},      {6, "05 Mar 12"},     {7, "Mar 05, 12"},    {10, "03-05-12"},
        {11, "12/03/05"},     {12, "120305"},       {101, "03/05/2012"},  {102, "2012.03.05"},
        {103, "05/03/2012"},  {104, "05.03.2012"},  {105, "05-03-2012"},  {106, "05 Mar 2012"},
        {107, "Mar 05, 2012"}, {110, "03-05-2012"}, {111, "2012/03/05"},  {112, "20120305"},
        {120, "2012-03-05"},
    };
    for (const auto &[style, text] : dateOnlyStyles) {
        const QString expected = QString::fromLatin1(text);
        EXPECT_EQ(format(date, style, 2), expected) << "style " << style;
        EXPECT_EQ(format(date, style, 1), expected + " 14:07:09") << "style " << style;
        EXPECT_EQ(format(date, style, 3), expected + " 14:07") << "style " << style;
        EXPECT_EQ(format(date, style, 0), expected) << "style " << style;
    }

    // Styles with their own time get nothing appended.
    const std::vector<std::tuple<int, const char *, const char *>> timeStyles = {
        {0, "Mar 05 2012 02:07 PM", "Mar 05 2012"},
        {100, "Mar 05 2012 02:07 PM", "Mar 05 2012"},
        {109, "Mar 05 2012 02:07:09:000 PM", "Mar 05 2012"},
        {113, "05 Mars 2012 14:07:09:000", "05 Mars 2012"},
        {121, "2012-03-05 14:07:09.000", "2012-03-05"},
    };
    for (const auto &[style, full, dateOnly] : timeStyles) {
        EXPECT_EQ(format(date, style, 1), full) << "style " << style;
        EXPECT_EQ(format(date, style, 3), full) << "style " << style;
        EXPECT_EQ(format(date, style, 7), full) << "style " << style;
        EXPECT_EQ(format(date, style, 2), dateOnly) << "style " << style;
    }
}

TEST(FormatDate, UnknownStylesFallBackToTheLongLayoutForEveryPart)
{
    const double date = at(2012, 3, 5, 9, 8, 7);
    for (int style : {8, 9, 13, 99, 108, 122, -1}) {
        for (int part : {1, 2, 3}) {
            EXPECT_EQ(format(date, style, part), "05 Mars 2012 09:08:07:000")
                << "style " << style << " part " << part;
        }
    }
}

TEST(FormatDate, DatesOutsideTheCalendarShowMinusOne)
{
    EXPECT_EQ(format(1e12, 8, 2), "-1  -001 -1:-1:-1:000");
    EXPECT_EQ(format(1e12, 120, 2), "-001--1--1");
}

} // namespace
