#include "macro/templateloader.h"
#include "base/codepage.h"
#include "platform/qtestprint.h"

#include <gtest/gtest.h>

#include <QStringList>

#include <map>

namespace {

// An in-memory store whose steps can be made to fail one at a time.
class FakeResources final : public ScriptResourceStore
{
public:
    std::map<int, QByteArray> data;
    qint64 reportedSize = -1; // -1: the real size
    bool loadFails = false;

    bool contains(int number) const override { return data.count(number) != 0; }
    qint64 sizeOf(int number) const override
    {
        return reportedSize >= 0 ? reportedSize : data.at(number).size();
    }
    std::optional<QByteArray> load(int number) const override
    {
        if (loadFails)
            return std::nullopt;
        return data.at(number);
    }
};

struct LoadResult
{
    QString text;
    QStringList messages;
};

LoadResult loadFrom(const ScriptResourceStore &store, int number)
{
    LoadResult result;
    TemplateLoader loader(store, [&](const QString &m) { result.messages << m; });
    result.text = loader.load(number);
    return result;
}

TEST(TemplateLoader, EachFailingStepShowsItsMessageAndGivesEmptyText)
{
    FakeResources store;
    store.data[ConversionTemplate] = QByteArray("Sub main()\r\nEnd Sub\r\n");

    struct Case
    {
        const char *what;
        int number;
        qint64 reportedSize;
        bool loadFails;
        const char *message;
    };
    const Case cases[] = {
        {"unknown number", 212, -1, false, "Could not find Script resource!"},
        {"size unknown", ConversionTemplate, 0, false, "Error getting size of Script resource."},
        {"load fails", ConversionTemplate, -1, true, "Error loading Script resource."},
        {"block shorter than its size", ConversionTemplate, 400, false,
         "Error locking Script resource."},
    };
    for (const Case &c : cases) {
        SCOPED_TRACE(c.what);
        store.reportedSize = c.reportedSize;
        store.loadFails = c.loadFails;
        const LoadResult r = loadFrom(store, c.number);
        EXPECT_TRUE(r.text.isEmpty());
        EXPECT_EQ(r.messages, QStringList{QString::fromLatin1(c.message)});
    }
}

TEST(TemplateLoader, TakesOnlyTheReportedSizeOfALongerBlock)
{
    // Resource blocks may be padded; the size says where the text ends.
    FakeResources store;
    store.data[DefaultScriptTemplate] = QByteArray("End Sub\r\n\0\0\0", 12);
    store.reportedSize = 9;
    const LoadResult r = loadFrom(store, DefaultScriptTemplate);
    EXPECT_EQ(r.text, QStringLiteral("End Sub\r\n\n"));
}

TEST(TemplateLoader, WorksWithoutAMessageSink)
{
    FakeResources store;
    TemplateLoader loader(store, nullptr);
    EXPECT_TRUE(loader.load(ConversionTemplate).isEmpty());
}

TEST(TemplateLoader, CompiledResourcesKnowOnlyTheThreeTemplates)
{
    QStringList messages;
    const auto sink = [&](const QString &m) { messages << m; };
    for (int number : {ConversionTemplate, PrintTemplate, DefaultScriptTemplate}) {
        SCOPED_TRACE(number);
        EXPECT_FALSE(loadScriptTemplate(number, sink).isEmpty());
    }
    EXPECT_TRUE(messages.isEmpty());

    for (int number : {0, 208, 212}) {
        SCOPED_TRACE(number);
        EXPECT_TRUE(loadScriptTemplate(number, sink).isEmpty());
    }
    EXPECT_EQ(messages.size(), 3);
    EXPECT_EQ(messages.value(0), QStringLiteral("Could not find Script resource!"));
}

} // namespace
