// The templates, filled the way a run fills them, must compile in the stand-in's macro engine.

#include "macro/templateloader.h"
#include "macro/testing/templatefill.h"
#include "platform/qtestprint.h"

#include "cadsim/engine/macroengine.h"

#include <gtest/gtest.h>

#include <QLocale>
#include <QStringList>

#include <map>

namespace {

using Settings = TemplateOptions;

Settings conversionSettings()
{
    Settings s = conversionOptions(QStringLiteral("Glimpse (*.gprt;*.gasm;*.glmp)"), 8 + 1, 2 + 1);
    s["OutputPath"] = Variant::fromBStr("<Path>\\<Filename>_<Extension>_<Configuration>");
    s["OutputPath2"] = Variant::fromBStr("<VaultPath>\\Copies\\<Today>\\<Filename>");
    s["NamedSheet"] = Variant::fromBStr("Sheet[13]*");
    s["OutputConfs"] = Variant::fromI4(2 + 1);
    s["FileConfs"] = Variant::fromI4(4 + 1);
    s["NamedConf"] = Variant::fromBStr("Default*");
    for (const QString &key : conversionFlagNames())
        s[key] = Variant::fromBool(true);
    for (const QString &key : conversionNumberNames())
        s[key] = Variant::fromI4(2);
    return s;
}

Settings printSettings()
{
    Settings s = {
        {"ErrorLogPath", Variant::fromBStr("D:\\Print logs")},
        {"__printer_prseltype", Variant::fromI4(2)},
        {"__printer_prname", Variant::fromBStr("Office")},
        {"__printer_usedrwnfo", Variant::fromBool(false)},
        {"__printer_defpapsize", Variant::fromI4(11)},
        {"__printer_deforientation", Variant::fromI4(1)},
        {"__printer_margintype", Variant::fromI4(2)},
        {"__printer_headertype", Variant::fromI4(2)},
        {"__printer_footertype", Variant::fromI4(2)},
        // A header with a line break arrives as "a"+vbLf+"b".
        {"__printer_headerleft", Variant::fromBStr("Project\r\nNorth")},
        {"__printer_copycount", Variant::fromI4(2)},
    };
    for (const char *key : {"__printer_margintop", "__printer_marginbottom",
                            "__printer_marginleft", "__printer_marginright"})
        s[key] = Variant::fromR4(12.5f);
    for (const char *key : {"A", "B", "C", "D", "E", "A0", "A1", "A2", "A3", "A4", "DEF"})
        s[QStringLiteral("__printer_papsize_") + QLatin1String(key)] = Variant::fromBStr("Plotter");
    for (const char *key : {"__printer_headercenter", "__printer_headerright",
                            "__printer_footerleft", "__printer_footercenter",
                            "__printer_footerright"})
        s[key] = Variant::fromBStr("");
    return s;
}

// The template filled as a run fills it, for a path that needs ChrW.
QString fillTemplate(int number, const Settings &settings)
{
    return fillTemplate(loadScriptTemplate(number, nullptr), settings,
                        QStringLiteral("V:\\Projekt \u0416\\Welle.mcdprt"), QStringLiteral("Sheet2"));
}

QString describe(const cadsim::MacroResult &result, const QString &macro)
{
    if (result.ok)
        return {};
    const QStringList lines = macro.split(QStringLiteral("\r\n"));
    return QStringLiteral("line %1, column %2: %3\n%4")
        .arg(result.line)
        .arg(result.column)
        .arg(result.message, lines.value(result.line - 1));
}

// What "macro check" reports: syntax and names, without a host.
QString syntaxError(const QString &macro)
{
    return describe(cadsim::MacroEngine::checkMacro(macro), macro);
}

// The whole compile step of a run: syntax, declared names (the templates use Option Explicit),
// calls of the module's procedures and their argument counts.
QString compileError(const QString &macro)
{
    cadsim::EngineHost host;
    host.globals.insert(QStringLiteral("application"), cadsim::ScriptValue());
    cadsim::MacroEngine engine(host);
    return describe(engine.load(macro), macro);
}

TEST(MacroTemplatesInEngine, FilledTemplatesCompile)
{
    const std::pair<int, Settings> cases[] = {
        {ConversionTemplate, conversionSettings()},
        {PrintTemplate, printSettings()},
        {DefaultScriptTemplate, {}},
    };
    for (const auto &[number, settings] : cases) {
        SCOPED_TRACE(number);
        const QString macro = fillTemplate(number, settings);
        EXPECT_EQ(syntaxError(macro), QString());
        EXPECT_EQ(compileError(macro), QString());
    }
}

TEST(MacroTemplatesInEngine, AQuoteInATextSettingBreaksTheSyntax)
{
    Settings settings = conversionSettings();
    settings[QStringLiteral("NamedSheet")] = Variant::fromBStr(QStringLiteral("Sheet \"A"));
    EXPECT_NE(syntaxError(fillTemplate(ConversionTemplate, settings)), QString());
}

TEST(MacroTemplatesInEngine, TheCompileStepSeesAnUndeclaredName)
{
    // Guards the check above: with Option Explicit a name without Dim must not pass, neither a
    // load nor the check without a host ("macro check").
    QString macro = fillTemplate(PrintTemplate, printSettings());
    ASSERT_TRUE(macro.contains(QLatin1String("    Dim report As String\r\n")));
    macro.remove(QLatin1String("    Dim report As String\r\n"));
    EXPECT_TRUE(syntaxError(macro).contains(QLatin1String("Variable not defined")));
    EXPECT_NE(compileError(macro), QString());
}

} // namespace
