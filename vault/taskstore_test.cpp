#include "vault/taskstore.h"

#include "host/hosterror.h"
#include "vault/vaulttesting.h"

namespace {

class TaskStoreTest : public VaultBackendTest
{
protected:
    TempVault temp{QStringLiteral("alice"), server()};
    TaskStore tasks{temp.store};
    TaskRow task = tasks.createTask(QStringLiteral("Convert to PDF"), QStringLiteral("{D22F1795-0000}"));
};
INSTANTIATE_TEST_SUITE_P(Backends, TaskStoreTest, VaultBackends);

TEST_P(TaskStoreTest, VariablesKeepTheirTypes)
{
    auto props = tasks.taskProperties(task.id);
    const std::vector<NamedVariant> values = {
        {"b", Variant::fromBool(true)},       {"i2", Variant::fromI2(-7)},    {"i4", Variant::fromI4(123456)},
        {"r4", Variant::fromR4(2.5f)},        {"r8", Variant::fromR8(0.125)}, {"d", Variant::fromDate(45000.5)},
        {"s", Variant::fromBStr("a\r\nb")},   {"u", Variant::fromUI1(200)},   {"e", Variant()},
    };
    for (const auto &[name, value] : values)
        ASSERT_EQ(props->SetVariable(name, value), S_OK);
    // Read back through a second connection: nothing is cached.
    TaskStore again(temp.reopen());
    auto reread = again.taskProperties(task.id);
    for (const auto &[name, value] : values) {
        Variant got;
        ASSERT_EQ(reread->GetVariable(name, got), S_OK) << name.toStdString();
        EXPECT_EQ(got, value) << name.toStdString();
        EXPECT_EQ(got.type(), value.type()) << name.toStdString();
        // Names are compared exactly as written.
        EXPECT_EQ(reread->GetVariable(name.toUpper(), got), S_FALSE) << name.toStdString();
    }
    Variant untouched = Variant::fromI4(5);
    EXPECT_EQ(reread->GetVariable(QStringLiteral("missing"), untouched), S_FALSE);
    EXPECT_EQ(untouched, Variant::fromI4(5));
}

TEST_P(TaskStoreTest, InstancesFallBackToTheTaskAndKeepTheirOwnValues)
{
    tasks.setTaskVariable(task.id, QStringLiteral("OutputPath"), Variant::fromBStr("task"));
    tasks.setTaskVariable(task.id, QStringLiteral("PdfInColor"), Variant::fromBool(true));
    const InstanceRow row = tasks.createInstance(task.id);
    auto instance = tasks.taskInstance(row.id);
    ASSERT_EQ(instance->SetVariable(QStringLiteral("OutputPath"), Variant::fromBStr("launch")), S_OK);

    Variant value;
    EXPECT_EQ(instance->GetVariable(QStringLiteral("OutputPath"), value), S_OK);
    EXPECT_EQ(value.bstr(), QStringLiteral("launch"));
    EXPECT_EQ(instance->GetVariable(QStringLiteral("PdfInColor"), value), S_OK);
    EXPECT_EQ(value, Variant::fromBool(true));
    EXPECT_EQ(instance->GetVariable(QStringLiteral("Nothing"), value), S_FALSE);
    // A name in another letter case is another variable, at both levels.
    ASSERT_EQ(instance->SetVariable(QStringLiteral("outputpath"), Variant::fromBStr("lower")), S_OK);
    EXPECT_EQ(instance->GetVariable(QStringLiteral("OutputPath"), value), S_OK);
    EXPECT_EQ(value.bstr(), QStringLiteral("launch"));
    EXPECT_EQ(instance->GetVariable(QStringLiteral("PDFINCOLOR"), value), S_FALSE);
    // The launch value never reaches the task.
    EXPECT_EQ(tasks.taskVariable(task.id, "OutputPath")->bstr(), QStringLiteral("task"));
    const InstanceRow other = tasks.createInstance(task.id);
    EXPECT_EQ(tasks.instanceValue(other.id, "OutputPath")->bstr(), QStringLiteral("task"));
    EXPECT_NE(other.guid, row.guid);
}

TEST_P(TaskStoreTest, StatusProgressAndAffectedObjectsAreStored)
{
    const InstanceRow row = tasks.createInstance(task.id);
    EXPECT_EQ(row.status, TaskStatus_Waiting);
    EXPECT_TRUE(row.guid.startsWith('{') && row.guid.endsWith('}'));
    auto instance = tasks.taskInstance(row.id);
    QString guid;
    EXPECT_EQ(instance->GetInstanceGuid(guid), S_OK);
    EXPECT_EQ(guid, row.guid);

    EXPECT_EQ(instance->SetProgressRange(2, 0, QStringLiteral("a.mcdprt")), S_OK);
    EXPECT_EQ(instance->SetProgressPos(1, QStringLiteral("Adding files to vault...")), S_OK);
    const std::vector<AffectedObject> affected = {{5, DoxObject_File, 2, 3}, {6, DoxObject_File, 2, 1}};
    EXPECT_EQ(instance->SetStatus(TaskStatus_FinishedWithError, E_DOX_FILE_NOT_FOUND, QStringLiteral("failed"), affected,
                                  std::nullopt),
              S_OK);

    const InstanceRow stored = *tasks.instanceByGuid(row.guid.toLower());
    EXPECT_EQ(stored.status, TaskStatus_FinishedWithError);
    EXPECT_EQ(stored.result, E_DOX_FILE_NOT_FOUND);
    EXPECT_EQ(stored.message, QStringLiteral("failed"));
    EXPECT_FALSE(stored.extra.has_value());
    EXPECT_EQ(stored.progressMax, 2);
    EXPECT_EQ(stored.progressPos, 1);
    EXPECT_EQ(stored.progressText, QStringLiteral("Adding files to vault..."));
    EXPECT_EQ(tasks.affectedObjects(row.id), affected);

    // A second report replaces the list rather than adding to it.
    instance->SetStatus(TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
    EXPECT_TRUE(tasks.affectedObjects(row.id).empty());
    EXPECT_FALSE(tasks.instanceById(row.id)->message.has_value());
}

TEST_P(TaskStoreTest, AStatusRequestFromAnotherProcessIsSeen)
{
    const InstanceRow row = tasks.createInstance(task.id);
    auto instance = tasks.taskInstance(row.id);
    instance->SetStatus(TaskStatus_Running, S_OK, std::nullopt, {}, std::nullopt);
    TaskStore elsewhere(temp.reopen());
    elsewhere.setStatusOnly(row.id, TaskStatus_CancelRequested);
    std::int32_t status = 0;
    EXPECT_EQ(instance->GetStatus(status), S_OK);
    EXPECT_EQ(status, TaskStatus_CancelRequested);
}

TEST_P(TaskStoreTest, MenuCommandsFlagsAndDeclaredNames)
{
    auto props = tasks.taskProperties(task.id);
    const std::vector<TaskMenuCommand> menu = {{1, "Convert to PDF", TaskMenuCommandFlags, "Converts"}};
    EXPECT_EQ(props->SetMenuCommands(menu), S_OK);
    std::vector<TaskMenuCommand> read;
    EXPECT_EQ(props->GetMenuCommands(read), S_OK);
    EXPECT_EQ(read, menu);
    EXPECT_EQ(props->SetMenuCommands({}), S_OK);
    EXPECT_EQ(props->GetMenuCommands(read), S_OK);
    EXPECT_TRUE(read.empty());

    EXPECT_EQ(props->SetTaskFlags(0x17), S_OK);
    EXPECT_EQ(tasks.taskById(task.id)->flags, 0x17);

    props->DeclareVariable(QStringLiteral("Title"));
    props->DeclareVariable(QStringLiteral("Number"));
    props->DeclareVariable(QStringLiteral("Title"));
    QStringList names;
    EXPECT_EQ(props->GetDeclaredVariables(names), S_OK);
    EXPECT_EQ(names, (QStringList{"Title", "Number"}));
}

TEST_P(TaskStoreTest, TaskValuesByNameOrNumber)
{
    tasks.setTaskVariable(task.id, QStringLiteral("Layer"), Variant::fromBStr("L1"));
    const InstanceRow row = tasks.createInstance(task.id);
    auto instance = tasks.taskInstance(row.id);
    Variant value;
    EXPECT_EQ(instance->GetTaskValue(Variant::fromBStr("Layer"), value), S_OK);
    EXPECT_EQ(value.bstr(), QStringLiteral("L1"));
    EXPECT_EQ(instance->GetTaskValue(Variant::fromI4(1), value), S_OK);
    EXPECT_EQ(value.bstr(), QStringLiteral("Convert to PDF"));
    EXPECT_EQ(instance->GetTaskValue(Variant::fromI2(3), value), S_OK);
    EXPECT_EQ(value.bstr(), row.guid);
    EXPECT_EQ(instance->GetTaskValue(Variant::fromI4(77), value), S_FALSE);
}

TEST_P(TaskStoreTest, NamesAndIdsAreChecked)
{
    auto code = [](const std::function<void()> &f) {
        try {
            f();
        } catch (const HostError &e) {
            return e.code();
        }
        return S_OK;
    };
    EXPECT_EQ(code([&] { tasks.createTask(QStringLiteral("convert TO pdf"), QString()); }), E_DOX_NAME_ALREADY_EXISTS);
    EXPECT_EQ(code([&] { tasks.createTask(QStringLiteral("  "), QString()); }), E_DOX_INVALID_NAME);
    EXPECT_EQ(code([&] { tasks.createInstance(999); }), E_DOX_INVALID_ID);
    EXPECT_EQ(code([&] { tasks.taskInstance(999); }), E_DOX_INVALID_ID);
    EXPECT_EQ(tasks.findTask(QStringLiteral("CONVERT to pdf"))->id, task.id);

    const InstanceRow row = tasks.createInstance(task.id);
    const DoxCmdDataArray data = {{7, 2, "V:\\a.mcdprt", "Default", DoxObject_File, 3},
                                  {2, 0, "V:\\Parts", "", DoxObject_Folder, 0}};
    tasks.setInstanceData(row.id, data);
    EXPECT_EQ(tasks.instanceData(row.id), data);

    tasks.deleteTask(task.id);
    EXPECT_FALSE(tasks.findTask(QStringLiteral("Convert to PDF")).has_value());
    EXPECT_FALSE(tasks.instanceById(row.id).has_value());
    EXPECT_TRUE(tasks.instanceData(row.id).empty());
}

} // namespace
