#include "addin/taskcatalogue.h"

#include <gtest/gtest.h>

namespace {

QStringList captions(std::int32_t type)
{
    QStringList list;
    for (const TaskCatalogue::Page &page : TaskCatalogue::setupPages(type))
        list.append(QString::fromLatin1(page.caption.english));
    return list;
}

TEST(TaskCatalogueTest, EveryKindBeginsWithTheMenuCommandPage)
{
    EXPECT_EQ(captions(1), QStringList({"Menu Command", "Conversion Settings", "File Card", "Output File Details"}));
    EXPECT_EQ(captions(2),
              QStringList({"Menu Command", "Printer", "Paper Size and Orientation", "Margins", "Files"}));
    EXPECT_EQ(captions(3), QStringList({"Menu Command", "Script"}));
    // A kind the pages never store is set up as an execute-script task.
    EXPECT_EQ(captions(0), captions(3));
    EXPECT_EQ(captions(7), captions(3));
    EXPECT_EQ(TaskCatalogue::setupPages(2)[4].id, PageId::PrintFiles);
    EXPECT_EQ(TaskCatalogue::setupPages(2)[4].caption.number, 16);
}

TEST(TaskCatalogueTest, KindsBringTheirMenuDefaultsAndTemplates)
{
    EXPECT_STREQ(TaskCatalogue::kind(1).menuText.english, "Convert Files");
    EXPECT_EQ(TaskCatalogue::kind(2).statusBarHelp.number, 140);
    EXPECT_EQ(TaskCatalogue::kind(1).scriptTemplate, 209);
    EXPECT_EQ(TaskCatalogue::kind(2).scriptTemplate, 210);
    EXPECT_EQ(TaskCatalogue::kind(3).scriptTemplate, 211);
    EXPECT_TRUE(TaskCatalogue::kind(1).menuShownByDefault);
    EXPECT_TRUE(TaskCatalogue::kind(2).menuShownByDefault);
    EXPECT_FALSE(TaskCatalogue::kind(3).menuShownByDefault);
    EXPECT_EQ(TaskCatalogue::kind(-4).type, 3);
}

} // namespace
