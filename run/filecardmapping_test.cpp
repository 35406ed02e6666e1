#include "run/filecardmapping.h"

#include "macro/dateformat.h"
#include "run/filerecord.h"

#include <gmock/gmock.h>

namespace {

using ::testing::ElementsAre;

TEST(FileCardData, StoredFormReadsBackRowByRow)
{
    const std::vector<FileCardRow> rows{{"Description", 1, ""}, {"Title", 8, "Converted file"},
                                        {"PartNo", 100, "Number"}, {"Note", 8, "a;b"}};
    const QString stored = formatFileCardData(rows);
    EXPECT_EQ(stored, "Description;1;\nTitle;8;Converted file\nPartNo;100;Number\nNote;8;a;b\n");
    EXPECT_EQ(parseFileCardData(stored), rows);
    EXPECT_EQ(formatFileCardData({}), "");

    // Empty lines are skipped; the kind is its leading integer (0 when there
    // is none); a line without ";" is a destination alone.
    EXPECT_THAT(parseFileCardData("\n\nA;x;t\nB\nC;8 ;c\nD; 100x;Number\n"),
                ElementsAre(FileCardRow{"A", 0, "t"}, FileCardRow{"B", 0, ""}, FileCardRow{"C", 8, "c"},
                            FileCardRow{"D", 100, "Number"}));
}

TEST(FileCardData, EachKindTakesItsValueFromTheSourceOrTheRow)
{
    auto source = std::make_shared<FileRecord>();
    source->path = "V:\\Parts\\Bracket.mcdprt";
    source->text1 = "B";
    source->text2 = "Approved";
    source->version = 0;
    source->altVersion = 4;
    FileRecord output;
    output.path = "V:\\Out\\Bracket.pdf";
    output.conf = "Sheet2";
    output.source = source;
    const QDateTime now(QDate(2024, 3, 1), QTime(14, 30, 0));
    const SourceCardLookup card = [](const QString &name) -> std::optional<Variant> {
        if (name == "Number")
            return Variant::fromBStr("BR-1");
        return std::nullopt;
    };
    auto value = [&](std::int32_t kind, const QString &text = {}) {
        return fileCardValue({"Dest", kind, text}, output, now, card);
    };

    EXPECT_EQ(value(1)->toText(), "V:\\Parts\\Bracket.mcdprt");
    EXPECT_EQ(value(2)->toText(), "V:\\Parts");
    EXPECT_EQ(value(3)->toText(), "Sheet2");
    EXPECT_EQ(value(4)->toText(), "B");
    ASSERT_EQ(value(5)->type(), VarType::I4);
    EXPECT_EQ(value(5)->toI4(), 4); // altVersion stands in for 0
    source->version = 3;
    EXPECT_EQ(value(5)->toI4(), 3);
    EXPECT_EQ(value(6)->toText(), "Approved");
    ASSERT_EQ(value(7)->type(), VarType::Date);
    EXPECT_DOUBLE_EQ(value(7)->toR8(), toAutomationDate(now));
    EXPECT_EQ(value(8, "Free; text")->toText(), "Free; text");
    EXPECT_EQ(value(100, "Number")->toText(), "BR-1");
    EXPECT_FALSE(value(100, "Missing"));
    EXPECT_FALSE(value(9));
    EXPECT_FALSE(value(0));
    output.source.reset();
    EXPECT_FALSE(value(8, "x"));
}

} // namespace
