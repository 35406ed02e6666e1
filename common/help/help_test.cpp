#include "common/help/help.h"
#include "common/help/helpwindow.h"
#include "common/help/testing/helpenvironment.h"
#include "common/widgets/recordingprompter.h"
#include "common/widgets/testing/widgetapp.h"

#include <QDialog>
#include <QDir>
#include <QFile>
#include <QHelpEngineCore>
#include <QHelpLink>
#include <QXmlStreamReader>
#include <gtest/gtest.h>

namespace {

class HelpTest : public ::testing::Test, private WithWidgetApp
{
protected:
    // The topic ids of a language's help project, with the page of each.
    static QMap<QString, QString> topics(const QString &language)
    {
        QFile file(QStringLiteral(MCTASK_HELP_SOURCE_DIR "/%1/McTaskAddIn.qhp").arg(language));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << file.fileName().toStdString();
        QMap<QString, QString> ids;
        QXmlStreamReader xml(&file);
        while (!xml.atEnd()) {
            if (xml.readNext() == QXmlStreamReader::StartElement && xml.name() == QLatin1String("keyword"))
                ids.insert(xml.attributes().value("id").toString(), xml.attributes().value("ref").toString());
        }
        EXPECT_FALSE(xml.hasError()) << xml.errorString().toStdString();
        return ids;
    }

    static QString builtHelpFile(const QString &language)
    {
        return QStringLiteral(MCTASK_HELP_INSTALL_DIR "/Lang/%1/McTaskAddIn.qch").arg(language);
    }

    RecordingPrompter m_prompter;
    ScopedPrompter m_prompterGuard{m_prompter};
};

} // namespace

TEST_F(HelpTest, TheTopicOpensInTheLanguageAndInEnglishWhenTheLanguageHasNoHelp)
{
    QDialog dialog;
    {
        HelpEnvironment german(QStringLiteral("DE"));
        ASSERT_TRUE(showHelp(&dialog, QStringLiteral("PrintUIDlg")));
        HelpWindow *help = HelpEnvironment::shownBeside(&dialog);
        ASSERT_TRUE(help);
        EXPECT_EQ(help->helpFile(), builtHelpFile("DE"));
        EXPECT_EQ(help->topic(), "PrintUIDlg");
        EXPECT_EQ(help->browser()->documentTitle(), "Drucken");
        EXPECT_TRUE(help->browser()->source().toString().endsWith("/printuidlg.html"));
        EXPECT_TRUE(help->browser()->toPlainText().contains("Anzahl der Kopien"));

        // A topic no help file has: nothing changes, nothing is said.
        EXPECT_FALSE(showHelp(&dialog, QStringLiteral("NoSuchDlg")));
        EXPECT_FALSE(showHelp(&dialog, QString()));
    }
    {
        // No help in French: the English help in the same window.
        HelpEnvironment french(QStringLiteral("FR"));
        ASSERT_TRUE(showHelp(&dialog, QStringLiteral("PrintUIDlg")));
        HelpWindow *help = HelpEnvironment::shownBeside(&dialog);
        ASSERT_TRUE(help);
        EXPECT_EQ(dialog.findChildren<HelpWindow *>().size(), 1);
        EXPECT_EQ(help->helpFile(), builtHelpFile("GB"));
        EXPECT_EQ(help->browser()->documentTitle(), "Print");
    }
    EXPECT_TRUE(m_prompter.messages.isEmpty()) << m_prompter.messages.join('\n').toStdString();
}

TEST_F(HelpTest, ADamagedOrMissingHelpFileFallsBackWithoutAMessage)
{
    QTemporaryDir install;
    ASSERT_TRUE(QDir().mkpath(install.path() + "/Lang/DE") && QDir().mkpath(install.path() + "/Lang/GB"));
    QFile damaged(install.path() + "/Lang/DE/McTaskAddIn.qch");
    ASSERT_TRUE(damaged.open(QIODevice::WriteOnly));
    damaged.write("SQLite format 3\0 not really");
    damaged.close();

    QDialog dialog;
    {
        // Neither language has a usable file: no help, no window, no message.
        HelpEnvironment german(QStringLiteral("DE"), install.path());
        EXPECT_FALSE(showHelp(&dialog, QStringLiteral("PrintUIDlg")));
        EXPECT_FALSE(HelpEnvironment::shownBeside(&dialog));
    }
    ASSERT_TRUE(QFile::copy(builtHelpFile("GB"), install.path() + "/Lang/GB/McTaskAddIn.qch"));
    {
        HelpEnvironment german(QStringLiteral("DE"), install.path());
        ASSERT_TRUE(showHelp(&dialog, QStringLiteral("PrintUIDlg")));
        HelpWindow *help = HelpEnvironment::shownBeside(&dialog);
        ASSERT_TRUE(help);
        EXPECT_EQ(help->helpFile(), install.path() + "/Lang/GB/McTaskAddIn.qch");
        EXPECT_EQ(help->browser()->documentTitle(), "Print");
    }
    for (const QString &folder : {install.path() + "/nowhere", QString()}) {
        // A language folder that is not there, and none recorded at all.
        HelpEnvironment german(QStringLiteral("DE"), folder);
        QDialog other;
        EXPECT_FALSE(showHelp(&other, QStringLiteral("PrintUIDlg"))) << folder.toStdString();
        EXPECT_FALSE(HelpEnvironment::shownBeside(&other));
    }
    EXPECT_TRUE(m_prompter.messages.isEmpty()) << m_prompter.messages.join('\n').toStdString();
}

TEST_F(HelpTest, EveryLanguageHasEveryTopicOnAPageOfItsHelpFile)
{
    const QMap<QString, QString> english = topics(QStringLiteral("GB"));
    EXPECT_GT(english.size(), 0);
    for (const QString &language : {QStringLiteral("GB"), QStringLiteral("DE")}) {
        const QMap<QString, QString> ids = topics(language);
        EXPECT_EQ(ids.keys(), english.keys()) << language.toStdString();
        QTemporaryDir home;
        QHelpEngineCore engine(home.path() + "/check.qhc");
        engine.setReadOnly(false);
        ASSERT_TRUE(engine.setupData());
        ASSERT_TRUE(engine.registerDocumentation(builtHelpFile(language))) << engine.error().toStdString();
        for (auto it = ids.cbegin(); it != ids.cend(); ++it) {
            const QList<QHelpLink> links = engine.documentsForIdentifier(it.key());
            ASSERT_EQ(links.size(), 1) << language.toStdString() << ' ' << it.key().toStdString();
            const QByteArray page = engine.fileData(links.first().url);
            EXPECT_TRUE(page.contains("<h1>")) << language.toStdString() << ' ' << it.value().toStdString();
            // A topic that points into a page points at an anchor the page has.
            const QString anchor = links.first().url.fragment();
            if (!anchor.isEmpty()) {
                EXPECT_TRUE(page.contains(QStringLiteral("id=\"%1\"").arg(anchor).toUtf8()))
                    << language.toStdString() << ' ' << it.value().toStdString();
            }
        }
    }
}
