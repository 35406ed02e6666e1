// Checks of the compiled-in macro templates themselves: their form, the placeholders they
// carry and their procedures. What they do when run is tested with the stand-in's engine and
// documents.

#include "macro/templateloader.h"
#include "macro/testing/templatefill.h"
#include "base/codepage.h"
#include "platform/qtestprint.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <QRegularExpression>
#include <QSet>

namespace {

QByteArray rawTemplate(int number)
{
    const CompiledScriptResources resources;
    return resources.load(number).value_or(QByteArray());
}

QString loadedTemplate(int number)
{
    QStringList messages;
    const QString text = loadScriptTemplate(number, [&](const QString &m) { messages << m; });
    EXPECT_TRUE(messages.isEmpty()) << messages.join(QLatin1Char('\n')).toStdString();
    return text;
}

// Every "[Name]" of a text: the option placeholders the add-in fills from task variables.
QSet<QString> optionPlaceholders(const QString &text)
{
    QSet<QString> names;
    static const QRegularExpression re(QStringLiteral("\\[([^\\]\\r\\n]*)\\]"));
    for (const QRegularExpressionMatch &m : re.globalMatch(text))
        names.insert(m.captured(1));
    return names;
}

// The body of one procedure, from its declaration to its "End Sub"/"End Function".
QString procedureBody(const QString &text, const QString &name)
{
    const QRegularExpression start(QStringLiteral("^(?:Sub|Function) %1\\(").arg(name),
                                   QRegularExpression::MultilineOption);
    const QRegularExpressionMatch m = start.match(text);
    if (!m.hasMatch())
        return {};
    static const QRegularExpression end(QStringLiteral("^End (?:Sub|Function)"),
                                        QRegularExpression::MultilineOption);
    const QRegularExpressionMatch e = end.match(text, m.capturedStart());
    return text.mid(m.capturedStart(), e.hasMatch() ? e.capturedEnd() - m.capturedStart() : -1);
}

QSet<QString> setOf(std::initializer_list<const char *> names)
{
    QSet<QString> set;
    for (const char *n : names)
        set.insert(QString::fromLatin1(n));
    return set;
}

// What a conversion run sets: the keys of its options.
const QSet<QString> &conversionOptionKeys()
{
    static const QSet<QString> keys = [] {
        QSet<QString> names;
        for (const auto &[name, value] : conversionOptions(QString(), 0, 0))
            names.insert(name);
        return names;
    }();
    return keys;
}

const QSet<QString> &printOptionKeys()
{
    static const QSet<QString> keys = setOf({
        "ErrorLogPath", "__printer_prseltype", "__printer_prname", "__printer_papsize_A",
        "__printer_papsize_B", "__printer_papsize_C", "__printer_papsize_D",
        "__printer_papsize_E", "__printer_papsize_A0", "__printer_papsize_A1",
        "__printer_papsize_A2", "__printer_papsize_A3", "__printer_papsize_A4",
        "__printer_papsize_DEF", "__printer_usedrwnfo", "__printer_defpapsize",
        "__printer_deforientation", "__printer_margintype", "__printer_margintop",
        "__printer_marginbottom", "__printer_marginleft", "__printer_marginright",
        "__printer_headertype", "__printer_headerleft", "__printer_headercenter",
        "__printer_headerright", "__printer_footertype", "__printer_footerleft",
        "__printer_footercenter", "__printer_footerright", "__printer_copycount",
    });
    return keys;
}

const int kAllTemplates[] = {ConversionTemplate, PrintTemplate, DefaultScriptTemplate};

TEST(MacroTemplates, AreCrLfTextWithOneAppendedLineFeed)
{
    for (int number : kAllTemplates) {
        SCOPED_TRACE(number);
        const QByteArray raw = rawTemplate(number);
        ASSERT_FALSE(raw.isEmpty());
        EXPECT_TRUE(raw.endsWith("\r\n"));
        EXPECT_EQ(raw.count('\r'), raw.count("\r\n")) << "a CR without LF";
        EXPECT_EQ(raw.count('\n'), raw.count("\r\n")) << "a LF without CR";
        EXPECT_FALSE(raw.contains('\0'));

        const QString text = loadedTemplate(number);
        EXPECT_EQ(text, decodeWindows1252(raw) + QLatin1Char('\n'));
        EXPECT_TRUE(text.endsWith(QLatin1String("\r\n\n")));
    }
}

TEST(MacroTemplates, CarryExactlyTheOptionPlaceholdersOfTheirTask)
{
    // An unknown or misspelled key would silently expand to an empty text.
    EXPECT_EQ(optionPlaceholders(loadedTemplate(ConversionTemplate)), conversionOptionKeys());
    EXPECT_EQ(optionPlaceholders(loadedTemplate(PrintTemplate)), printOptionKeys());
    EXPECT_TRUE(optionPlaceholders(loadedTemplate(DefaultScriptTemplate)).isEmpty());
}

TEST(MacroTemplates, HaveNoStrayOptionDelimiters)
{
    // Outside placeholders, "[" and "{" would start a variable lookup at set-up.
    static const QRegularExpression placeholder(QStringLiteral("\\[[A-Za-z_0-9]+\\]"));
    for (int number : kAllTemplates) {
        SCOPED_TRACE(number);
        QString text = loadedTemplate(number);
        text.remove(placeholder);
        EXPECT_FALSE(text.contains(QLatin1Char('['))) << "stray [";
        EXPECT_FALSE(text.contains(QLatin1Char(']'))) << "stray ]";
        EXPECT_FALSE(text.contains(QLatin1Char('{'))) << "a { placeholder";
    }
}

TEST(MacroTemplates, MainHandlesErrorsFirst)
{
    static const QRegularExpression firstStatement(
        QStringLiteral("Sub main\\(\\)\\r\\n(?:\\s*Dim [^\\r]*\\r\\n|\\s*\\r\\n)*\\s*(\\S[^\\r]*)"));
    for (int number : {ConversionTemplate, PrintTemplate}) {
        SCOPED_TRACE(number);
        const QRegularExpressionMatch m = firstStatement.match(loadedTemplate(number));
        ASSERT_TRUE(m.hasMatch());
        EXPECT_EQ(m.captured(1), QStringLiteral("On Error GoTo Fail"));
    }
}

TEST(MacroTemplates, ShareTheSupportedExtensionList)
{
    static const QRegularExpression quoted(QStringLiteral("\"([^\"]*)\""));
    const auto extensions = [](int number) {
        const QString body = procedureBody(loadedTemplate(number), "bIsSupportedExtension");
        const qsizetype open = body.indexOf(QLatin1String("Array("));
        const QString list = open < 0 ? QString() : body.mid(open, body.indexOf(QLatin1Char(')'), open) - open);
        QStringList found;
        for (const QRegularExpressionMatch &m : quoted.globalMatch(list))
            found << m.captured(1);
        return found;
    };
    const QStringList conversion = extensions(ConversionTemplate);
    EXPECT_TRUE(conversion.contains("prt") && conversion.contains("step")) << conversion.join(',').toStdString();
    EXPECT_EQ(extensions(PrintTemplate), conversion);
}

} // namespace
