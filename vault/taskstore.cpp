#include "vault/taskstore.h"

#include "host/hosterror.h"
#include "host/hostcall.h"
#include "vault/variantcolumns.h"

#include <QUuid>

TaskStore::TaskStore(std::shared_ptr<VaultStore> store) : m_store(std::move(store)) {}

namespace {

TaskRow readTask(const Statement &s)
{
    return TaskRow{s.integer(0), s.text(1), s.text(2), s.integer(3)};
}

InstanceRow readInstance(const Statement &s)
{
    InstanceRow row;
    row.id = s.integer(0);
    row.taskId = s.integer(1);
    row.guid = s.text(2);
    row.status = s.integer(3);
    row.result = static_cast<HRESULT>(s.int64(4));
    if (!s.isNull(5))
        row.message = s.text(5);
    if (!s.isNull(6))
        row.extra = s.text(6);
    row.progressMax = s.integer(7);
    row.progressPos = s.integer(8);
    row.progressText = s.text(9);
    row.created = s.text(10);
    row.holderHost = s.isNull(11) ? QString() : s.text(11);
    row.holderPid = s.int64(12);
    row.holderWorker = s.integer(13);
    row.attempt = s.integer(14);
    if (!s.isNull(15))
        row.leaseExpiry = s.int64(15);
    row.claimed = s.isNull(16) ? QString() : s.text(16);
    row.started = s.isNull(17) ? QString() : s.text(17);
    row.finished = s.isNull(18) ? QString() : s.text(18);
    row.handover = s.isNull(19) ? QString() : s.text(19);
    return row;
}

} // namespace

// Tasks and instances keep their variables in tables of the same shape.
const TaskStore::VariableHolder TaskStore::kTaskVariables = {
    "SELECT type, ivalue, rvalue, tvalue FROM task_variables WHERE task_id = ? AND name_key = ?",
    "INSERT INTO task_variables (task_id, name, name_key, type, ivalue, rvalue, tvalue) "
    "VALUES (?, ?, ?, ?, ?, ?, ?) ON CONFLICT (task_id, name_key) DO UPDATE SET name = excluded.name, "
    "type = excluded.type, ivalue = excluded.ivalue, rvalue = excluded.rvalue, tvalue = excluded.tvalue",
    "SELECT name, type, ivalue, rvalue, tvalue FROM task_variables WHERE task_id = ? ORDER BY name_key"};
const TaskStore::VariableHolder TaskStore::kInstanceVariables = {
    "SELECT type, ivalue, rvalue, tvalue FROM instance_variables WHERE instance_id = ? AND name_key = ?",
    "INSERT INTO instance_variables (instance_id, name, name_key, type, ivalue, rvalue, tvalue) "
    "VALUES (?, ?, ?, ?, ?, ?, ?) ON CONFLICT (instance_id, name_key) DO UPDATE SET name = excluded.name, "
    "type = excluded.type, ivalue = excluded.ivalue, rvalue = excluded.rvalue, tvalue = excluded.tvalue",
    "SELECT name, type, ivalue, rvalue, tvalue FROM instance_variables WHERE instance_id = ? ORDER BY name_key"};

namespace {

constexpr const char *instanceColumns = "SELECT id, task_id, guid, status, result, message, extra, progress_max, "
                                        "progress_pos, progress_text, created, holder_host, holder_pid, holder_worker, "
                                        "attempt, lease_expiry, claimed, started, finished, handover FROM instances ";

} // namespace

TaskRow TaskStore::createTask(const QString &name, const QString &classId, std::int32_t flags)
{
    const auto guard = m_store->db().guard();
    if (name.trimmed().isEmpty())
        throw HostError(E_DOX_INVALID_NAME, QStringLiteral("a task needs a name"));
    VaultDb &db = m_store->db();
    Transaction t(db);
    if (findTask(name))
        throw HostError(E_DOX_NAME_ALREADY_EXISTS, QStringLiteral("task '%1' already exists").arg(name));
    // Made by another writer after the look above: the same answer.
    Statement insert = db.prepare("INSERT INTO tasks (name, name_key, class_id, flags) VALUES (?, ?, ?, ?) "
                                  "ON CONFLICT (name_key) DO NOTHING RETURNING id");
    insert.bind(1, name).bind(2, name.toLower()).bind(3, classId).bind(4, flags);
    const std::optional<std::int64_t> id = insert.insertedIdIfNew();
    if (!id)
        throw HostError(E_DOX_NAME_ALREADY_EXISTS, QStringLiteral("task '%1' already exists").arg(name));
    t.commit();
    return TaskRow{static_cast<int>(*id), name, classId, flags};
}

std::optional<TaskRow> TaskStore::findTask(const QString &name)
{
    const auto guard = m_store->db().guard();
    Statement s = m_store->db().prepare("SELECT id, name, class_id, flags FROM tasks WHERE name_key = ?");
    s.bind(1, name.toLower());
    std::optional<TaskRow> row;
    if (s.step())
        row = readTask(s);
    return row;
}

std::optional<TaskRow> TaskStore::taskById(int id)
{
    const auto guard = m_store->db().guard();
    Statement s = m_store->db().prepare("SELECT id, name, class_id, flags FROM tasks WHERE id = ?");
    s.bind(1, id);
    std::optional<TaskRow> row;
    if (s.step())
        row = readTask(s);
    return row;
}

std::vector<TaskRow> TaskStore::listTasks()
{
    const auto guard = m_store->db().guard();
    Statement s = m_store->db().prepare("SELECT id, name, class_id, flags FROM tasks ORDER BY name_key");
    std::vector<TaskRow> rows;
    while (s.step())
        rows.push_back(readTask(s));
    return rows;
}

TaskRow TaskStore::requireTask(int taskId)
{
    const auto guard = m_store->db().guard();
    const auto row = taskById(taskId);
    if (!row)
        throw HostError(E_DOX_INVALID_ID, QStringLiteral("task id %1").arg(taskId));
    return *row;
}

InstanceRow TaskStore::requireInstance(int instanceId)
{
    const auto guard = m_store->db().guard();
    const auto row = instanceById(instanceId);
    if (!row)
        throw HostError(E_DOX_INVALID_ID, QStringLiteral("task instance id %1").arg(instanceId));
    return *row;
}

void TaskStore::deleteTask(int taskId)
{
    const auto guard = m_store->db().guard();
    requireTask(taskId);
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("DELETE FROM tasks WHERE id = ?").bind(1, taskId).exec();
    t.commit();
}

void TaskStore::setTaskFlags(int taskId, std::int32_t flags)
{
    const auto guard = m_store->db().guard();
    requireTask(taskId);
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("UPDATE tasks SET flags = ? WHERE id = ?").bind(1, flags).bind(2, taskId).exec();
    t.commit();
}

std::optional<Variant> TaskStore::variable(const VariableHolder &holder, int holderId, const QString &name)
{
    Statement s = m_store->db().prepare(holder.select);
    s.bind(1, holderId).bind(2, name);
    return s.step() ? std::optional<Variant>(readVariant(s, 0)) : std::nullopt;
}

void TaskStore::setVariable(const VariableHolder &holder, int holderId, const QString &name, const Variant &value)
{
    VaultDb &db = m_store->db();
    Transaction t(db);
    Statement s = db.prepare(holder.insert);
    s.bind(1, holderId).bind(2, name).bind(3, name);
    bindVariant(s, 4, value);
    s.exec();
    t.commit();
}

std::vector<NamedVariant> TaskStore::variables(const VariableHolder &holder, int holderId)
{
    Statement s = m_store->db().prepare(holder.list);
    s.bind(1, holderId);
    std::vector<NamedVariant> values;
    while (s.step())
        values.emplace_back(s.text(0), readVariant(s, 1));
    return values;
}

std::optional<Variant> TaskStore::taskVariable(int taskId, const QString &name)
{
    return variable(kTaskVariables, taskId, name);
}

void TaskStore::setTaskVariable(int taskId, const QString &name, const Variant &value)
{
    const auto guard = m_store->db().guard();
    requireTask(taskId);
    setVariable(kTaskVariables, taskId, name, value);
}

std::vector<NamedVariant> TaskStore::taskVariables(int taskId)
{
    return variables(kTaskVariables, taskId);
}

QStringList TaskStore::declaredVariables(int taskId)
{
    const auto guard = m_store->db().guard();
    Statement s = m_store->db().prepare("SELECT name FROM task_declared WHERE task_id = ? ORDER BY position");
    s.bind(1, taskId);
    QStringList names;
    while (s.step())
        names.append(s.text(0));
    return names;
}

void TaskStore::declareVariable(int taskId, const QString &name)
{
    const auto guard = m_store->db().guard();
    requireTask(taskId);
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("INSERT INTO task_declared (task_id, position, name) "
               "SELECT ?1, COALESCE(MAX(position), 0) + 1, CAST(?2 AS TEXT) FROM task_declared WHERE task_id = ?1 "
               "ON CONFLICT DO NOTHING")
        .bind(1, taskId)
        .bind(2, name)
        .exec();
    t.commit();
}

std::vector<TaskMenuCommand> TaskStore::menuCommands(int taskId)
{
    const auto guard = m_store->db().guard();
    Statement s = m_store->db().prepare(
        "SELECT command_id, menu_text, flags, help FROM task_menu WHERE task_id = ? ORDER BY position");
    s.bind(1, taskId);
    std::vector<TaskMenuCommand> commands;
    while (s.step())
        commands.push_back(TaskMenuCommand{s.integer(0), s.text(1), s.integer(2), s.text(3)});
    return commands;
}

void TaskStore::setMenuCommands(int taskId, const std::vector<TaskMenuCommand> &commands)
{
    const auto guard = m_store->db().guard();
    requireTask(taskId);
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("DELETE FROM task_menu WHERE task_id = ?").bind(1, taskId).exec();
    int position = 0;
    for (const TaskMenuCommand &c : commands) {
        db.prepare("INSERT INTO task_menu (task_id, position, command_id, menu_text, flags, help) VALUES (?, ?, ?, ?, ?, ?)")
            .bind(1, taskId)
            .bind(2, position++)
            .bind(3, c.commandId)
            .bind(4, c.menuText)
            .bind(5, c.flags)
            .bind(6, c.statusBarHelp)
            .exec();
    }
    t.commit();
}

InstanceRow TaskStore::createInstance(int taskId)
{
    const auto guard = m_store->db().guard();
    requireTask(taskId);
    VaultDb &db = m_store->db();
    Transaction t(db);
    const QString guid = QUuid::createUuid().toString(QUuid::WithBraces).toUpper();
    Statement insert = db.prepare("INSERT INTO instances (task_id, guid, status, created) VALUES (?, ?, ?, ?) RETURNING id");
    insert.bind(1, taskId).bind(2, guid).bind(3, TaskStatus_Waiting).bind(4, m_store->timestamp());
    const int id = static_cast<int>(insert.insertedId());
    db.announceWaiting();
    t.commit();
    return requireInstance(id);
}

std::optional<InstanceRow> TaskStore::instanceById(int id)
{
    const auto guard = m_store->db().guard();
    static const QByteArray sql = QByteArray(instanceColumns) + "WHERE id = ?";
    Statement s = m_store->db().prepare(sql.constData());
    s.bind(1, id);
    std::optional<InstanceRow> row;
    if (s.step())
        row = readInstance(s);
    return row;
}

std::optional<InstanceRow> TaskStore::instanceByGuid(const QString &guid)
{
    const auto guard = m_store->db().guard();
    static const QByteArray sql = QByteArray(instanceColumns) + "WHERE UPPER(guid) = UPPER(?)";
    Statement s = m_store->db().prepare(sql.constData());
    s.bind(1, guid);
    std::optional<InstanceRow> row;
    if (s.step())
        row = readInstance(s);
    return row;
}

std::vector<InstanceRow> TaskStore::listInstances(int taskId)
{
    const auto guard = m_store->db().guard();
    static const QByteArray sql = QByteArray(instanceColumns) + "WHERE ?1 = 0 OR task_id = ?1 ORDER BY id";
    Statement s = m_store->db().prepare(sql.constData());
    s.bind(1, taskId);
    std::vector<InstanceRow> rows;
    while (s.step())
        rows.push_back(readInstance(s));
    return rows;
}

std::optional<Variant> TaskStore::instanceValue(int instanceId, const QString &name)
{
    const auto guard = m_store->db().guard();
    const InstanceRow instance = requireInstance(instanceId);
    const auto value = variable(kInstanceVariables, instanceId, name);
    return value ? value : taskVariable(instance.taskId, name);
}

std::vector<NamedVariant> TaskStore::instanceOwnVariables(int instanceId)
{
    return variables(kInstanceVariables, instanceId);
}

void TaskStore::setInstanceVariable(int instanceId, const QString &name, const Variant &value)
{
    const auto guard = m_store->db().guard();
    requireInstance(instanceId);
    setVariable(kInstanceVariables, instanceId, name, value);
}

void TaskStore::setStatus(int instanceId, std::int32_t status, HRESULT result, const std::optional<QString> &message,
                          const std::vector<AffectedObject> &affected, const std::optional<QString> &extra)
{
    const auto guard = m_store->db().guard();
    requireInstance(instanceId);
    VaultDb &db = m_store->db();
    Transaction t(db);
    // An ended instance is no longer held: its lease goes. (The casts keep
    // PostgreSQL from deducing two types for ?1.)
    Statement s = db.prepare("UPDATE instances SET status = ?1, result = ?2, message = ?3, extra = ?4, "
                             "finished = CASE WHEN CAST(?1 AS BIGINT) IN (7, 8, 9) THEN ?6 ELSE finished END, "
                             "lease_expiry = CASE WHEN CAST(?1 AS BIGINT) IN (7, 8, 9) THEN NULL ELSE lease_expiry END "
                             "WHERE id = ?5");
    s.bind(1, status).bind(2, static_cast<std::int64_t>(result));
    if (message)
        s.bind(3, *message);
    else
        s.bindNull(3);
    if (extra)
        s.bind(4, *extra);
    else
        s.bindNull(4);
    s.bind(5, instanceId).bind(6, m_store->timestamp()).exec();
    db.prepare("DELETE FROM instance_affected WHERE instance_id = ?").bind(1, instanceId).exec();
    int position = 0;
    for (const AffectedObject &a : affected) {
        db.prepare("INSERT INTO instance_affected (instance_id, position, object_id, kind, folder_id, version) "
                   "VALUES (?, ?, ?, ?, ?, ?)")
            .bind(1, instanceId)
            .bind(2, position++)
            .bind(3, a.objectId)
            .bind(4, a.objectKind)
            .bind(5, a.folderId)
            .bind(6, a.version)
            .exec();
    }
    t.commit();
}

void TaskStore::setStatusOnly(int instanceId, std::int32_t status)
{
    const auto guard = m_store->db().guard();
    requireInstance(instanceId);
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("UPDATE instances SET status = ? WHERE id = ?").bind(1, status).bind(2, instanceId).exec();
    t.commit();
}

std::vector<AffectedObject> TaskStore::affectedObjects(int instanceId)
{
    const auto guard = m_store->db().guard();
    Statement s = m_store->db().prepare("SELECT object_id, kind, folder_id, version FROM instance_affected "
                                         "WHERE instance_id = ? ORDER BY position");
    s.bind(1, instanceId);
    std::vector<AffectedObject> objects;
    while (s.step())
        objects.push_back(AffectedObject{s.integer(0), s.integer(1), s.integer(2), s.integer(3)});
    return objects;
}

void TaskStore::setProgress(int instanceId, std::optional<std::int32_t> maximum, std::int32_t position,
                            const QString &text)
{
    const auto guard = m_store->db().guard();
    requireInstance(instanceId);
    VaultDb &db = m_store->db();
    // Progress changes with every file; a flush to disk per step would cost
    // more than the step. The run's results are committed flushed.
    const UnflushedCommits unflushed(db);
    Transaction t(db);
    if (maximum)
        db.prepare("UPDATE instances SET progress_max = ? WHERE id = ?").bind(1, *maximum).bind(2, instanceId).exec();
    db.prepare("UPDATE instances SET progress_pos = ?, progress_text = ? WHERE id = ?")
        .bind(1, position)
        .bind(2, text)
        .bind(3, instanceId)
        .exec();
    t.commit();
}

void TaskStore::setInstanceData(int instanceId, const DoxCmdDataArray &data)
{
    const auto guard = m_store->db().guard();
    requireInstance(instanceId);
    VaultDb &db = m_store->db();
    Transaction t(db);
    db.prepare("DELETE FROM instance_data WHERE instance_id = ?").bind(1, instanceId).exec();
    int position = 0;
    for (const DoxCmdData &d : data) {
        db.prepare("INSERT INTO instance_data (instance_id, position, object_id1, object_id2, string1, string2, long1, "
                   "long2) VALUES (?, ?, ?, ?, ?, ?, ?, ?)")
            .bind(1, instanceId)
            .bind(2, position++)
            .bind(3, d.objectId1)
            .bind(4, d.objectId2)
            .bind(5, d.string1)
            .bind(6, d.string2)
            .bind(7, d.long1)
            .bind(8, d.long2)
            .exec();
    }
    t.commit();
}

DoxCmdDataArray TaskStore::instanceData(int instanceId)
{
    const auto guard = m_store->db().guard();
    Statement s = m_store->db().prepare("SELECT object_id1, object_id2, string1, string2, long1, long2 "
                                         "FROM instance_data WHERE instance_id = ? ORDER BY position");
    s.bind(1, instanceId);
    DoxCmdDataArray data;
    while (s.step())
        data.push_back(DoxCmdData{s.integer(0), s.integer(1), s.text(2), s.text(3), s.integer(4), s.integer(5)});
    return data;
}

std::shared_ptr<IDoxTaskProperties> TaskStore::taskProperties(int taskId)
{
    const auto guard = m_store->db().guard();
    requireTask(taskId);
    return std::make_shared<StoredTaskProperties>(*this, taskId);
}

std::shared_ptr<IDoxTaskInstance> TaskStore::taskInstance(int instanceId)
{
    const auto guard = m_store->db().guard();
    requireInstance(instanceId);
    return std::make_shared<StoredTaskInstance>(*this, instanceId);
}

StoredTaskProperties::StoredTaskProperties(TaskStore tasks, int taskId) : m_tasks(std::move(tasks)), m_taskId(taskId) {}

HRESULT StoredTaskProperties::GetVariable(const QString &name, Variant &value)
{
    return hostCall([&] {
        const auto found = m_tasks.taskVariable(m_taskId, name);
        if (!found)
            return S_FALSE;
        value = *found;
        return S_OK;
    });
}

HRESULT StoredTaskProperties::GetTaskName(QString &name)
{
    return hostCall([&] {
        const auto task = m_tasks.taskById(m_taskId);
        if (!task)
            return E_DOX_INVALID_ID;
        name = task->name;
        return S_OK;
    });
}

HRESULT StoredTaskProperties::SetVariable(const QString &name, const Variant &value)
{
    return hostCall([&] {
        m_tasks.setTaskVariable(m_taskId, name, value);
        return S_OK;
    });
}

HRESULT StoredTaskProperties::SetTaskFlags(std::int32_t flags)
{
    return hostCall([&] {
        m_tasks.setTaskFlags(m_taskId, flags);
        return S_OK;
    });
}

HRESULT StoredTaskProperties::GetMenuCommands(std::vector<TaskMenuCommand> &commands)
{
    return hostCall([&] {
        commands = m_tasks.menuCommands(m_taskId);
        return S_OK;
    });
}

HRESULT StoredTaskProperties::SetMenuCommands(const std::vector<TaskMenuCommand> &commands)
{
    return hostCall([&] {
        m_tasks.setMenuCommands(m_taskId, commands);
        return S_OK;
    });
}

HRESULT StoredTaskProperties::SetSetupPages(const std::vector<SetupPage> &pages)
{
    m_pages = pages;
    return S_OK;
}

HRESULT StoredTaskProperties::GetDeclaredVariables(QStringList &names)
{
    return hostCall([&] {
        names = m_tasks.declaredVariables(m_taskId);
        return S_OK;
    });
}

HRESULT StoredTaskProperties::DeclareVariable(const QString &name)
{
    return hostCall([&] {
        m_tasks.declareVariable(m_taskId, name);
        return S_OK;
    });
}

StoredTaskInstance::StoredTaskInstance(TaskStore tasks, int instanceId)
    : m_tasks(std::move(tasks)), m_instanceId(instanceId)
{
}

HRESULT StoredTaskInstance::GetVariable(const QString &name, Variant &value)
{
    return hostCall([&] {
        const auto found = m_tasks.instanceValue(m_instanceId, name);
        if (!found)
            return S_FALSE;
        value = *found;
        return S_OK;
    });
}

HRESULT StoredTaskInstance::SetVariable(const QString &name, const Variant &value)
{
    return hostCall([&] {
        m_tasks.setInstanceVariable(m_instanceId, name, value);
        return S_OK;
    });
}

HRESULT StoredTaskInstance::GetInstanceGuid(QString &guid)
{
    return hostCall([&] {
        const auto row = m_tasks.instanceById(m_instanceId);
        if (!row)
            return E_DOX_INVALID_ID;
        guid = row->guid;
        return S_OK;
    });
}

HRESULT StoredTaskInstance::GetStatus(std::int32_t &status)
{
    return hostCall([&] {
        const auto row = m_tasks.instanceById(m_instanceId);
        if (!row)
            return E_DOX_INVALID_ID;
        status = row->status;
        return S_OK;
    });
}

HRESULT StoredTaskInstance::SetStatus(std::int32_t status, HRESULT result, const std::optional<QString> &message,
                                      const std::vector<AffectedObject> &affected, const std::optional<QString> &extra)
{
    return hostCall([&] {
        m_tasks.setStatus(m_instanceId, status, result, message, affected, extra);
        return S_OK;
    });
}

HRESULT StoredTaskInstance::SetProgressRange(std::int32_t maximum, std::int32_t position, const QString &text)
{
    return hostCall([&] {
        m_tasks.setProgress(m_instanceId, maximum, position, text);
        return S_OK;
    });
}

HRESULT StoredTaskInstance::SetProgressPos(std::int32_t position, const QString &text)
{
    return hostCall([&] {
        m_tasks.setProgress(m_instanceId, std::nullopt, position, text);
        return S_OK;
    });
}

HRESULT StoredTaskInstance::GetTaskValue(const Variant &nameOrNumber, Variant &value)
{
    if (nameOrNumber.type() == VarType::BStr)
        return GetVariable(nameOrNumber.bstr(), value);
    return hostCall([&] {
        Variant number;
        const HRESULT hr = nameOrNumber.changeType(VarType::I4, number);
        if (failed(hr))
            return hr;
        const auto row = m_tasks.instanceById(m_instanceId);
        if (!row)
            return E_DOX_INVALID_ID;
        const InstanceRow &instance = *row;
        const auto task = m_tasks.taskById(instance.taskId);
        switch (number.i4()) {
        case 1:
            value = Variant::fromBStr(task ? task->name : QString());
            return S_OK;
        case 2:
            value = Variant::fromI4(instance.taskId);
            return S_OK;
        case 3:
            value = Variant::fromBStr(instance.guid);
            return S_OK;
        case 4:
            value = Variant::fromI4(instance.id);
            return S_OK;
        default:
            return S_FALSE;
        }
    });
}
