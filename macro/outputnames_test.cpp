#include "macro/outputnames.h"

#include "host/hosterror.h"
#include "host/testing/fakevariables.h"

#include <gtest/gtest.h>

namespace {

OutputLabels labelsWith(std::initializer_list<std::pair<const char *, Variant>> values)
{
    FakeVariables vars;
    for (const auto &[name, value] : values)
        vars.set(QString::fromLatin1(name), value);
    return OutputLabels::read(vars, [](std::int32_t, const QString &english) { return english; });
}

TEST(OutputLabels, SheetLabelFollowsTheFileAndOutputBits)
{
    // One file per sheet: the sheet's own name, whatever else is chosen.
    EXPECT_EQ(labelsWith({{"FileSheets", Variant::fromI4(4)}, {"OutputSheets", Variant::fromI4(2)}})
                  .SheetLabel("Sheet1"),
              "Sheet1");
    // All sheets in one file.
    EXPECT_EQ(labelsWith({{"FileSheets", Variant::fromI4(3)}, {"OutputSheets", Variant::fromI4(3)}})
                  .SheetLabel("Sheet1"),
              "All sheets");
    // Named sheets in one file: the pattern.
    EXPECT_EQ(labelsWith({{"FileSheets", Variant::fromI4(2)},
                          {"OutputSheets", Variant::fromI4(9)},
                          {"NamedSheet", Variant::fromBStr("Sh*")}})
                  .SheetLabel("Sheet1"),
              "Sh*");
    // Last active sheet in one file: its own name.
    EXPECT_EQ(labelsWith({{"FileSheets", Variant::fromI4(2)}, {"OutputSheets", Variant::fromI4(4)}})
                  .SheetLabel("Sheet1"),
              "Sheet1");
}

TEST(OutputLabels, ConfigurationsUseTheirOwnKeys)
{
    const OutputLabels labels = labelsWith({{"FileSheets", Variant::fromI4(4)},
                                            {"FileConfs", Variant::fromI4(2)},
                                            {"OutputConfs", Variant::fromI4(8)},
                                            {"NamedConf", Variant::fromBStr("Default*")}});
    EXPECT_EQ(labels.ConfigurationLabel("Default-2"), "Default*");
    EXPECT_EQ(labels.SheetLabel("S"), "S");
    EXPECT_EQ(labelsWith({{"FileConfs", Variant::fromI4(2)}, {"OutputConfs", Variant::fromI4(2)}})
                  .ConfigurationLabel("Default"),
              "All configurations");
}

TEST(OutputLabels, AbsentSettingsMeanOneFileEach)
{
    const OutputLabels labels = labelsWith({});
    EXPECT_EQ(labels.SheetLabel("Sheet2"), "Sheet2");
    EXPECT_EQ(labels.ConfigurationLabel("Cfg"), "Cfg");
    // With only the file mode set, "all" is the default output choice.
    EXPECT_EQ(labelsWith({{"FileConfs", Variant::fromI4(2)}}).ConfigurationLabel("Cfg"), "All configurations");
}

TEST(OutputLabels, TextsComeFromTheTranslation)
{
    FakeVariables vars;
    vars.set("FileSheets", Variant::fromI4(2));
    vars.set("FileConfs", Variant::fromI4(2));
    const OutputLabels labels = OutputLabels::read(vars, [](std::int32_t number, const QString &english) {
        return QStringLiteral("%1:%2").arg(number).arg(english.toUpper());
    });
    EXPECT_EQ(labels.SheetLabel("x"), "170:ALL SHEETS");
    EXPECT_EQ(labels.ConfigurationLabel("x"), "171:ALL CONFIGURATIONS");
}

TEST(OutputLabels, HostFailureIsRaised)
{
    FakeVariables vars;
    vars.failRead("OutputSheets", E_DOX_DATABASE_ACCESS);
    EXPECT_THROW(OutputLabels::read(vars, [](std::int32_t, const QString &english) { return english; }), HostError);
}

} // namespace
