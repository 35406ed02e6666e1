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

} // namespace
