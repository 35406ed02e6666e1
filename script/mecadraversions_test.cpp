#include "script/mecadraversions.h"

#include <gtest/gtest.h>

namespace {

TEST(MecadraVersionsTest, OnlyMecadraReleasesFrom2008Count)
{
    const auto year = [](const char *name) { return mecadraRelease(name).year; };
    EXPECT_EQ(mecadraRelease("Mecadra 2013 x64 Edition SP2.0"), (MecadraRelease{"2013", 2013}));
    EXPECT_EQ(mecadraRelease("Mecadra 2013a SP0.0"), (MecadraRelease{"2013a", 2013})); // the leading year
    EXPECT_EQ(year("MECADRA 2010 SP0.0"), 2010);
    EXPECT_EQ(year("Mecadra 2014 Beta 2"), 2014);
    EXPECT_EQ(year("Mecadra 2015 Pre-release"), 2015);
    EXPECT_EQ(year("Mecadra 2016 X64 Edition Alpha"), 2016);
    EXPECT_EQ(year("Mecadra 2007 SP5.0"), 0);            // too old
    EXPECT_EQ(year("Mecadra Viewer 2012"), 0);           // not a release
    EXPECT_EQ(year("Mecadra 2012 sp1.0"), 0);            // the release word is case-sensitive
    EXPECT_EQ(year("Mecadra 2012 x64 SP1.0"), 0);        // "x64" takes the next word with it
    EXPECT_EQ(year("Mecadra Explorer 2013 SP1.0"), 0);   // the year is the second word
    EXPECT_EQ(year("MecadraPDM 2013 SP1.0"), 0);
    EXPECT_EQ(year("Mecadra"), 0);
    EXPECT_EQ(year("Other 2013 SP1.0"), 0);
}

TEST(MecadraVersionsTest, OneEntryPerYearSortedWithTheDefault)
{
    const std::vector<InstalledProducts::Product> products{
        {"{C}", "Mecadra 2013 x64 Edition SP2.0"}, {"{A}", "Mecadra 2011 SP3.0"},
        {"{B}", "Mecadra 2013 SP0.0"},             {"{D}", ""},
        {"{E}", "Mecadra Viewer 2012"},            {"{F}", "Mecadra 2007 SP5.0"},
        {"{G}", "Mecadra 2014a SP1.0"},
    };
    const auto choices = mecadraVersionChoices(products, "<Use default>");
    EXPECT_EQ(choices, (std::vector<VersionChoice>{{"<Use default>", 0}, {"Mecadra 2011", 2011}, {"Mecadra 2013", 2013},
                                                   {"Mecadra 2014a", 2014}}));

    EXPECT_EQ(versionChoiceIndex(choices, 2013), 2u);
    EXPECT_EQ(versionChoiceIndex(choices, 2011), 1u);
    EXPECT_EQ(versionChoiceIndex(choices, 2012), 0u); // not installed: the first entry
    EXPECT_EQ(versionChoiceIndex(choices, 0), 0u);

    // A translated default sorts where its text puts it.
    const auto translated = mecadraVersionChoices(products, "Standard");
    EXPECT_EQ(translated.back(), (VersionChoice{"Standard", 0}));
    EXPECT_EQ(versionChoiceIndex(translated, 0), 0u); // the first entry, a product
}

} // namespace
