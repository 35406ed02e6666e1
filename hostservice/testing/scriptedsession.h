#pragma once

#include "hostservice/instancerun.h"
#include "vault/embeddedvault.h"

#include <atomic>
#include <functional>
#include <memory>

// An add-in session for tests: command 43 runs a script with the instance
// and the vault the run hands over, in place of the add-in. Without a
// script the run finishes successfully at once.
class ScriptedSession final : public AddInSession
{
public:
    using Script = std::function<HRESULT(DoxCmd &cmd, DoxCmdDataArray &data, IDoxTaskInstance &instance,
                                         IDoxVault &vault)>;

    explicit ScriptedSession(std::shared_ptr<VaultStore> store, Script runScript = {})
        : script(std::move(runScript)), m_store(std::move(store)), m_vault(std::make_shared<EmbeddedVault>(m_store))
    {
    }

    std::shared_ptr<VaultStore> store() override { return m_store; }
    std::shared_ptr<IDoxVault> hostVault() override { return m_vault; }
    HRESULT send(DoxCmd &cmd, DoxCmdDataArray &data) override
    {
        ++sent;
        const auto instance = queryInterface<IDoxTaskInstance>(cmd.extra);
        const auto vault = queryInterface<IDoxVault>(cmd.vault);
        if (!instance || !vault)
            return E_POINTER;
        if (!script)
            return instance->SetStatus(TaskStatus_FinishedOk, S_OK, std::nullopt, {}, std::nullopt);
        return script(cmd, data, *instance, *vault);
    }

    Script script;
    std::atomic<int> sent{0};

private:
    std::shared_ptr<VaultStore> m_store;
    std::shared_ptr<EmbeddedVault> m_vault;
};
