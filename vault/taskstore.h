#pragma once

#include "host/doxcmd.h"
#include "host/idoxtask.h"
#include "vault/vaultstore.h"

#include <memory>
#include <optional>
#include <utility>
#include <vector>

struct TaskRow {
    int id = 0;
    QString name;
    QString classId; // the add-in's class id
    std::int32_t flags = 0;
};

// Status of an instance created but not yet run; the host's own codes
// (TaskStatus) follow once it runs.
inline constexpr std::int32_t TaskStatus_Waiting = 0;

struct InstanceRow {
    int id = 0;
    int taskId = 0;
    QString guid; // "{xxxxxxxx-...}"
    std::int32_t status = TaskStatus_Waiting;
    HRESULT result = S_OK;
    std::optional<QString> message;
    std::optional<QString> extra;
    std::int32_t progressMax = 0;
    std::int32_t progressPos = 0;
    QString progressText;
    QString created;
    // The task host's claim (see TaskQueue): the holder stays after the end.
    QString holderHost; // empty: never claimed
    qint64 holderPid = 0;
    int holderWorker = 0;
    int attempt = 0;                  // claims made so far
    std::optional<qint64> leaseExpiry; // ms since the epoch; null when not held
    QString claimed;
    QString started;
    QString finished;
    QString handover; // when the run began handing its outputs to the vault
    bool held() const { return leaseExpiry.has_value(); }
};

using NamedVariant = std::pair<QString, Variant>;

// Tasks and task instances kept in the vault's database. Variable names
// compare without regard to case; an instance's variables fall back to
// its task's. Errors are thrown as HostError.
class TaskStore final
{
public:
    explicit TaskStore(std::shared_ptr<VaultStore> store);

    const std::shared_ptr<VaultStore> &vault() const { return m_store; }

    // E_DOX_NAME_ALREADY_EXISTS when a task of that name exists.
    TaskRow createTask(const QString &name, const QString &classId, std::int32_t flags = 0);
    std::optional<TaskRow> findTask(const QString &name);
    std::optional<TaskRow> taskById(int id);
    std::vector<TaskRow> listTasks();
    void deleteTask(int taskId);
    void setTaskFlags(int taskId, std::int32_t flags);

    std::optional<Variant> taskVariable(int taskId, const QString &name);
    void setTaskVariable(int taskId, const QString &name, const Variant &value);
    std::vector<NamedVariant> taskVariables(int taskId);

    // Declared variable names in the order declared; declaring twice keeps one.
    QStringList declaredVariables(int taskId);
    void declareVariable(int taskId, const QString &name);

    std::vector<TaskMenuCommand> menuCommands(int taskId);
    void setMenuCommands(int taskId, const std::vector<TaskMenuCommand> &commands);

    InstanceRow createInstance(int taskId);
    std::optional<InstanceRow> instanceById(int id);
    std::optional<InstanceRow> instanceByGuid(const QString &guid);
    // All instances (taskId 0) or those of one task, oldest first.
    std::vector<InstanceRow> listInstances(int taskId = 0);

    // The instance's own value, else the task's.
    std::optional<Variant> instanceValue(int instanceId, const QString &name);
    std::vector<NamedVariant> instanceOwnVariables(int instanceId);
    void setInstanceVariable(int instanceId, const QString &name, const Variant &value);

    // A finished status (7, 8, 9) also records the time it finished.
    void setStatus(int instanceId, std::int32_t status, HRESULT result, const std::optional<QString> &message,
                   const std::vector<AffectedObject> &affected, const std::optional<QString> &extra);
    // Only the status (a request from outside: cancel, suspend, resume).
    void setStatusOnly(int instanceId, std::int32_t status);
    std::vector<AffectedObject> affectedObjects(int instanceId);
    void setProgress(int instanceId, std::optional<std::int32_t> maximum, std::int32_t position, const QString &text);

    // The data array of the launch that created the instance.
    void setInstanceData(int instanceId, const DoxCmdDataArray &data);
    DoxCmdDataArray instanceData(int instanceId);

    // The host objects the add-in receives.
    std::shared_ptr<IDoxTaskProperties> taskProperties(int taskId);
    std::shared_ptr<IDoxTaskInstance> taskInstance(int instanceId);

private:
    // The statements of one table of variables; the holder (task or
    // instance) is bound first.
    struct VariableHolder {
        const char *select;
        const char *insert;
        const char *list;
    };
    static const VariableHolder kTaskVariables;
    static const VariableHolder kInstanceVariables;

    TaskRow requireTask(int taskId);
    InstanceRow requireInstance(int instanceId);
    std::optional<Variant> variable(const VariableHolder &holder, int holderId, const QString &name);
    void setVariable(const VariableHolder &holder, int holderId, const QString &name, const Variant &value);
    std::vector<NamedVariant> variables(const VariableHolder &holder, int holderId);

    std::shared_ptr<VaultStore> m_store;
};

// IDoxTaskProperties of a stored task. Set-up pages are windows of the
// calling process and are kept here only, for the set-up dialog to show.
class StoredTaskProperties final : public IDoxTaskProperties
{
public:
    StoredTaskProperties(TaskStore tasks, int taskId);

    HRESULT GetVariable(const QString &name, Variant &value) override;
    HRESULT SetVariable(const QString &name, const Variant &value) override;
    HRESULT SetTaskFlags(std::int32_t flags) override;
    HRESULT GetMenuCommands(std::vector<TaskMenuCommand> &commands) override;
    HRESULT SetMenuCommands(const std::vector<TaskMenuCommand> &commands) override;
    HRESULT SetSetupPages(const std::vector<SetupPage> &pages) override;
    HRESULT GetDeclaredVariables(QStringList &names) override;
    HRESULT DeclareVariable(const QString &name) override;
    HRESULT GetTaskName(QString &name) override;

    int taskId() const { return m_taskId; }
    const std::vector<SetupPage> &setupPages() const { return m_pages; }

private:
    TaskStore m_tasks;
    int m_taskId;
    std::vector<SetupPage> m_pages;
};

// IDoxTaskInstance of a stored instance. The status is read from the
// database on every call, so a request written by another process (cancel,
// suspend) is seen by the running one.
//
// GetTaskValue by number gives values of the instance and its task:
// 1 task name, 2 task id, 3 instance identifier, 4 instance id; by name, the
// variable (instance, else task). Anything else is S_FALSE.
class StoredTaskInstance final : public IDoxTaskInstance
{
public:
    StoredTaskInstance(TaskStore tasks, int instanceId);

    HRESULT GetVariable(const QString &name, Variant &value) override;
    HRESULT SetVariable(const QString &name, const Variant &value) override;
    HRESULT GetInstanceGuid(QString &guid) override;
    HRESULT GetStatus(std::int32_t &status) override;
    HRESULT SetStatus(std::int32_t status, HRESULT result, const std::optional<QString> &message,
                      const std::vector<AffectedObject> &affected, const std::optional<QString> &extra) override;
    HRESULT SetProgressRange(std::int32_t maximum, std::int32_t position, const QString &text) override;
    HRESULT SetProgressPos(std::int32_t position, const QString &text) override;
    HRESULT GetTaskValue(const Variant &nameOrNumber, Variant &value) override;

    int instanceId() const { return m_instanceId; }

private:
    TaskStore m_tasks;
    int m_instanceId;
};
