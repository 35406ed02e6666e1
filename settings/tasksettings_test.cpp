#include "settings/tasksettings.h"

#include "host/hosterror.h"
#include "host/testing/fakevariables.h"

#include <gtest/gtest.h>

namespace {

TEST(TaskSettingsRead, BooleansAcceptOlderEncodings)
{
    FakeVariables vars;
    vars.set("AsInt", Variant::fromI4(1));
    vars.set("AsText", Variant::fromBStr("0"));
    vars.set("AsBool", Variant::fromBool(true));
    bool v = false;
    EXPECT_EQ(readBoolVariable(vars, "AsInt", false, v), S_OK);
    EXPECT_TRUE(v);
    EXPECT_EQ(readBoolVariable(vars, "AsText", true, v), S_OK);
    EXPECT_FALSE(v);
    EXPECT_EQ(readBoolVariable(vars, "AsBool", false, v), S_OK);
    EXPECT_TRUE(v);
    EXPECT_EQ(readBoolVariable(vars, "Missing", true, v), S_FALSE);
    EXPECT_TRUE(v);
}

TEST(TaskSettingsRead, ConversionFailureAndHostFailureLeaveTheValueAlone)
{
    FakeVariables vars;
    vars.set("Count", Variant::fromBStr("abc"));
    vars.failRead("Broken", E_DOX_DATABASE_ACCESS);
    std::int32_t n = 7;
    EXPECT_EQ(readIntVariable(vars, "Count", 0, n), DISP_E_TYPEMISMATCH);
    EXPECT_EQ(n, 7);
    EXPECT_EQ(readIntVariable(vars, "Broken", 0, n), E_DOX_DATABASE_ACCESS);
    EXPECT_EQ(n, 7);
    vars.set("Count", Variant::fromBStr("12"));
    EXPECT_EQ(readIntVariable(vars, "Count", 0, n), S_OK);
    EXPECT_EQ(n, 12);
}

TEST(TaskSettingsRead, TextAndRealConversions)
{
    FakeVariables vars;
    vars.set("N", Variant::fromI4(42));
    vars.set("Margin", Variant::fromBStr("12.5"));
    QString text;
    EXPECT_EQ(readTextVariable(vars, "N", "x", text), S_OK);
    EXPECT_EQ(text, "42");
    EXPECT_EQ(readTextVariable(vars, "None", "x", text), S_FALSE);
    EXPECT_EQ(text, "x");
    float margin = 0;
    EXPECT_EQ(readRealVariable(vars, "Margin", 0, margin), S_OK);
    EXPECT_FLOAT_EQ(margin, 12.5f);
}

TEST(TaskSettingsThrowing, RaiseTheFailure)
{
    FakeVariables vars;
    vars.set("Bad", Variant::fromBStr("abc"));
    EXPECT_EQ(getIntVariable(vars, "Missing", 5), 5);
    try {
        getIntVariable(vars, "Bad", 0);
        FAIL();
    } catch (const HostError &e) {
        EXPECT_EQ(e.code(), DISP_E_TYPEMISMATCH);
    }
}

TEST(VariableLoaderTest, AbsentKeysKeepDefaultsAndTheFirstFailureStopsTheLoad)
{
    FakeVariables vars;
    vars.set("A", Variant::fromBool(true));
    vars.set("C", Variant::fromBStr("abc"));
    vars.set("D", Variant::fromI4(9));
    bool a = false;
    std::int32_t b = 3, c = 4, d = 5;
    VariableLoader loader(vars);
    loader.boolean("A", a).integer("B", b).integer("C", c).integer("D", d);
    EXPECT_EQ(loader.result(), DISP_E_TYPEMISMATCH);
    EXPECT_TRUE(a);
    EXPECT_EQ(b, 3); // absent: default kept
    EXPECT_EQ(c, 4); // failed: untouched
    EXPECT_EQ(d, 5); // after the failure: not read
}

TEST(VariableSaverTest, StopsAtTheFirstFailureKeepingEarlierWrites)
{
    FakeVariables vars;
    vars.failWrite("Second", E_ACCESSDENIED);
    VariableSaver saver(vars);
    saver.boolean("First", true).integer("Second", 2).text("Third", "x");
    EXPECT_EQ(saver.result(), E_ACCESSDENIED);
    EXPECT_EQ(vars.writes(), QStringList{"First"});
    EXPECT_FALSE(vars.has("Third"));
}

class FakeProperties final : public IDoxTaskProperties, public FakeVariables
{
public:
    HRESULT SetTaskFlags(std::int32_t) override { return S_OK; }
    HRESULT GetMenuCommands(std::vector<TaskMenuCommand> &) override { return S_OK; }
    HRESULT SetMenuCommands(const std::vector<TaskMenuCommand> &) override { return S_OK; }
    HRESULT SetSetupPages(const std::vector<SetupPage> &) override { return S_OK; }
    HRESULT GetDeclaredVariables(QStringList &) override { return S_OK; }
    HRESULT DeclareVariable(const QString &) override { return S_OK; }
    HRESULT GetTaskName(QString &) override { return S_OK; }
};

TEST(HolderReader, AcceptsTaskPropertiesAndRejectsOtherObjects)
{
    auto props = std::make_shared<FakeProperties>();
    props->set("__type", Variant::fromI4(2));
    Variant v;
    bool found = false;
    EXPECT_EQ(readHolderVariable(props, "__type", v, found), S_OK);
    EXPECT_TRUE(found);
    EXPECT_EQ(v.i4(), 2);
    EXPECT_EQ(readHolderVariable(props, "missing", v, found), S_FALSE);
    EXPECT_FALSE(found);
    EXPECT_EQ(readHolderVariable(std::make_shared<HostObject>(), "x", v, found), E_NOINTERFACE);
}

} // namespace
