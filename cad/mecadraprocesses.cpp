#include "cad/mecadraprocesses.h"

#include <map>

namespace {

class ClientAutomation final : public McAutomation
{
public:
    AutomationReply call(const ObjectRef &object, const QString &member, AutomationArgs args, int timeoutMs) override
    {
        return m_client.call(object, member, std::move(args), timeoutMs);
    }
    void setEventSink(AutomationEventSink *sink) override { m_client.setEventSink(sink); }

    AutomationClient &client() { return m_client; }

private:
    AutomationClient m_client;
};

// Every window service in the object table; a process's windows carry its id.
class TableWindows final : public DesktopWindows
{
public:
    explicit TableWindows(ObjectTable table) : m_table(std::move(table)) {}

    std::vector<TopWindow> list() override
    {
        std::vector<TopWindow> windows;
        for (const QString &moniker : m_table.list()) {
            const std::optional<qint64> pid = Monikers::windowsProcess(moniker);
            if (!pid)
                continue;
            AutomationClient *client = clientFor(*pid, moniker);
            if (!client)
                continue;
            const AutomationReply reply = client->call("Windows", "List");
            if (!reply.ok() || !reply.value.isArray())
                continue;
            for (const AutomationValue &entry : reply.value.items()) {
                const auto &fields = entry.items();
                if (fields.size() < 3)
                    continue;
                windows.push_back({*pid, fields.at(0).toI4(), fields.at(1).toText(), fields.at(2).toText()});
            }
        }
        return windows;
    }

    void postMessage(const TopWindow &window, std::uint32_t message, std::uint32_t wParam) override
    {
        if (AutomationClient *client = clientFor(window.processId, Monikers::windows(window.processId)))
            client->call("Windows", "PostMessage",
                         {Variant::fromI4(static_cast<std::int32_t>(window.handle)),
                          Variant::fromI4(static_cast<std::int32_t>(message)),
                          Variant::fromI4(static_cast<std::int32_t>(wParam))});
    }

private:
    AutomationClient *clientFor(qint64 pid, const QString &moniker)
    {
        auto &client = m_clients[pid];
        if (client && client->isConnected())
            return client.get();
        client = std::make_unique<AutomationClient>(5000);
        const QString endpoint = m_table.lookup(moniker);
        if (endpoint.isEmpty() || failed(client->connectTo(endpoint))) {
            m_clients.erase(pid);
            return nullptr;
        }
        return client.get();
    }

    ObjectTable m_table;
    std::map<qint64, std::unique_ptr<AutomationClient>> m_clients;
};

} // namespace

LaunchedMecadraProcesses::LaunchedMecadraProcesses(ServerLauncher launcher) : m_launcher(std::move(launcher)) {}

std::optional<qint64> LaunchedMecadraProcesses::start(const QString &commandLine)
{
    return m_launcher.start(commandLine, ShowCommand::Minimized);
}

MecadraProcesses::Attachment LaunchedMecadraProcesses::waitForApplication(qint64 pid, int polls, qint64 intervalMs)
{
    Attachment attachment;
    const QString endpoint = m_launcher.waitForObject(Monikers::application(pid), pid, polls, intervalMs);
    if (endpoint.isEmpty())
        return attachment;
    attachment.appeared = true;
    auto automation = std::make_unique<ClientAutomation>();
    attachment.hr = automation->client().connectTo(endpoint);
    if (succeeded(attachment.hr))
        attachment.app = std::move(automation);
    return attachment;
}

bool LaunchedMecadraProcesses::isRunning(qint64 pid) { return m_launcher.processes().isRunning(pid); }

bool LaunchedMecadraProcesses::waitForExit(qint64 pid, int polls, qint64 intervalMs)
{
    return m_launcher.waitForExit(pid, polls, intervalMs);
}

bool LaunchedMecadraProcesses::terminate(qint64 pid, int exitCode) { return m_launcher.terminate(pid, exitCode); }

std::optional<quint64> LaunchedMecadraProcesses::workingSet(qint64 pid)
{
    return m_launcher.processes().workingSet(pid);
}

std::unique_ptr<DesktopWindows> LaunchedMecadraProcesses::openWindows()
{
    return std::make_unique<TableWindows>(m_launcher.table());
}
