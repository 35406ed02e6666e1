#pragma once

#include "host/testing/fakevariables.h"

#include <deque>
#include <optional>
#include <vector>

// In-memory task properties: variables plus what the set-up dialog receives.
class FakeTaskProperties final : public IDoxTaskProperties, public FakeVariables
{
public:
    HRESULT SetTaskFlags(std::int32_t flags) override { taskFlags = flags; return setFlagsResult; }
    HRESULT GetMenuCommands(std::vector<TaskMenuCommand> &commands) override
    {
        commands = menuCommands;
        return S_OK;
    }
    HRESULT SetMenuCommands(const std::vector<TaskMenuCommand> &commands) override
    {
        menuCommands = commands;
        ++menuCommandWrites;
        return setMenuCommandsResult;
    }
    HRESULT SetSetupPages(const std::vector<SetupPage> &pages) override
    {
        setupPages = pages;
        return setPagesResult;
    }
    HRESULT GetDeclaredVariables(QStringList &names) override { names = declared; return S_OK; }
    HRESULT DeclareVariable(const QString &name) override
    {
        if (!declared.contains(name))
            declared.append(name);
        return S_OK;
    }

    HRESULT GetTaskName(QString &name) override { name = taskName; return S_OK; }

    QString taskName = QStringLiteral("Convert to PDF");
    std::int32_t taskFlags = 0;
    std::vector<TaskMenuCommand> menuCommands;
    int menuCommandWrites = 0;
    std::vector<SetupPage> setupPages;
    QStringList declared;
    HRESULT setFlagsResult = S_OK;
    HRESULT setMenuCommandsResult = S_OK;
    HRESULT setPagesResult = S_OK;
};

// In-memory task instance with status, progress and the final report.
class FakeTaskInstance final : public IDoxTaskInstance, public FakeVariables
{
public:
    HRESULT GetInstanceGuid(QString &value) override { value = guid; return S_OK; }
    HRESULT GetStatus(std::int32_t &value) override
    {
        if (failed(getStatusResult))
            return getStatusResult;
        if (!statusScript.empty()) {
            status = statusScript.front();
            statusScript.pop_front();
        }
        value = status;
        return S_OK;
    }
    HRESULT SetStatus(std::int32_t newStatus, HRESULT result, const std::optional<QString> &message,
                      const std::vector<AffectedObject> &objects, const std::optional<QString> &) override
    {
        statusWrites.push_back(newStatus);
        status = newStatus;
        finalResult = result;
        finalMessage = message;
        affected = objects;
        return S_OK;
    }
    HRESULT SetProgressRange(std::int32_t maximum, std::int32_t position, const QString &text) override
    {
        progressMax = maximum;
        progress.push_back({position, text});
        return S_OK;
    }
    HRESULT SetProgressPos(std::int32_t position, const QString &text) override
    {
        progress.push_back({position, text});
        return S_OK;
    }
    HRESULT GetTaskValue(const Variant &key, Variant &value) override
    {
        return GetVariable(key.type() == VarType::BStr ? key.bstr() : QStringLiteral("#%1").arg(key.toI4()), value);
    }

    struct Progress {
        std::int32_t position;
        QString text;
        bool operator==(const Progress &) const = default;
    };
    QString guid = QStringLiteral("{00000000-0000-0000-0000-000000000001}");
    std::int32_t status = TaskStatus_Running;
    // What the host says at each read, in turn; then the last status.
    std::deque<std::int32_t> statusScript;
    std::vector<std::int32_t> statusWrites;
    HRESULT getStatusResult = S_OK;
    HRESULT finalResult = S_OK;
    std::optional<QString> finalMessage;
    std::vector<AffectedObject> affected;
    std::int32_t progressMax = 0;
    std::vector<Progress> progress;
};
