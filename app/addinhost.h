#pragma once

#include "host/idoxaddin.h"

#include <QLibrary>
#include <QString>
#include <memory>
#include <set>

class RegistryStore;

// The host's command manager: remembers which command types the add-in hooked.
class CommandManager final : public IDoxCmdMgr
{
public:
    HRESULT AddHook(std::int32_t commandType, std::int32_t userValue) override;
    bool isHooked(std::int32_t commandType) const { return m_hooks.count(commandType) != 0; }
    std::vector<std::int32_t> hooksInOrder() const { return m_order; }

private:
    std::set<std::int32_t> m_hooks;
    std::vector<std::int32_t> m_order;
};

// A loaded add-in, created the way the host creates it: the class id leads
// through the registry to the module, which is loaded and asked for its
// class factory. The module stays loaded while this object lives.
class AddInHost final
{
public:
    ~AddInHost();

    // Loads the add-in registered under classId. On failure returns null and
    // says why in error.
    static std::unique_ptr<AddInHost> create(RegistryStore &registry, const QString &classId, QString &error);

    // Asks the add-in for its identity and hooks; done once after loading.
    HRESULT initialise(const std::shared_ptr<IDoxVault> &vault);
    const DoxAddInInfo &info() const { return m_info; }
    const CommandManager &commands() const { return *m_commands; }

    // Sends a command only when the add-in hooked its type; S_FALSE otherwise.
    HRESULT send(DoxCmd &cmd, DoxCmdDataArray &data);

private:
    AddInHost() = default;

    std::unique_ptr<QLibrary> m_module;
    std::shared_ptr<IDoxAddIn5> m_addin;
    std::shared_ptr<CommandManager> m_commands = std::make_shared<CommandManager>();
    DoxAddInInfo m_info;
};

// Registers or unregisters a module through its own entry points.
HRESULT callModuleRegistration(const QString &modulePath, bool unregister, QString &error);

// Records the installation folder of a registered module in the vault
// client's settings (the folder above its "lib" folder, else its own), so
// that the language folders below it are found. False when the registry
// store refuses.
bool recordInstallationFolder(const QString &modulePath);

// Where the add-in module of this build lies (next to the program's lib folder).
QString defaultAddInModulePath();
