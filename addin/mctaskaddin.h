#pragma once

#include "addin/addinservices.h"
#include "host/idoxaddin.h"

#include <memory>

class IDoxTaskProperties;
class IDoxTaskInstance;
class IDoxVariables;

// The one object the host creates from the module: describes the add-in and
// dispatches the six task commands.
class CMcTaskAddIn final : public IDoxAddIn5, public std::enable_shared_from_this<CMcTaskAddIn>
{
public:
    static constexpr std::int32_t AddInVersion = 2013000511;
    static constexpr std::int32_t TaskFlags = 0x17;

    explicit CMcTaskAddIn(AddInServices services);
    ~CMcTaskAddIn() override;

    HRESULT GetAddInInfo(DoxAddInInfo *info, const std::shared_ptr<IDoxVault> &vault,
                         const std::shared_ptr<IDoxCmdMgr> &cmdMgr) override;
    HRESULT OnCmd(DoxCmd *cmd, DoxCmdDataArray *data) override;

    std::int32_t taskType() const { return m_taskType; }

private:
    HRESULT onSetup(DoxCmd &cmd, const std::shared_ptr<IDoxVault> &vault);
    HRESULT onSetupButton(DoxCmd &cmd);
    HRESULT onDetails(DoxCmd &cmd, const std::shared_ptr<IDoxVault> &vault);
    HRESULT onLaunch(DoxCmd &cmd, DoxCmdDataArray &data, const std::shared_ptr<IDoxVault> &vault);
    HRESULT onLaunchButton(DoxCmd &cmd);
    HRESULT onRun(DoxCmd &cmd, DoxCmdDataArray &data, const std::shared_ptr<IDoxVault> &vault);

    HRESULT readTaskType(IDoxVariables &holder);
    std::unique_ptr<TaskPage> &pageSlot(PageId id);
    HRESULT savePrintPages(DoxCmd &cmd, IDoxTaskProperties &props);
    HRESULT publishMenuCommand(IDoxTaskProperties &props);
    QString text(std::int32_t number, const QString &english) const;
    void releasePages();

    AddInServices m_services;
    std::int32_t m_taskType = 3;

    std::unique_ptr<MenuCommandPage> m_menuPage;
    std::unique_ptr<ConversionSettingsPage> m_conversionPage;
    std::unique_ptr<TaskPage> m_fileCardPage;
    std::unique_ptr<TaskPage> m_outputDetailsPage;
    std::unique_ptr<TaskPage> m_scriptPage;
    std::unique_ptr<TaskPage> m_printerPage;
    std::unique_ptr<TaskPage> m_paperPage;
    std::unique_ptr<TaskPage> m_marginsPage;
    std::unique_ptr<TaskPage> m_filesPage;
    std::unique_ptr<TaskPage> m_detailsPage;
};

// Texts of the dispatcher (number, English).
namespace AddInText {
inline constexpr std::int32_t Script = 2;
inline constexpr std::int32_t Printer = 13;
inline constexpr std::int32_t PaperSize = 14;
inline constexpr std::int32_t Margins = 15;
inline constexpr std::int32_t Files = 16;
inline constexpr std::int32_t ConversionSettings = 19;
inline constexpr std::int32_t FileCard = 20;
inline constexpr std::int32_t OutputFileDetails = 21;
inline constexpr std::int32_t ConvertedFiles = 113;
inline constexpr std::int32_t PrintedFiles = 114;
inline constexpr std::int32_t SelectedFiles = 115;
inline constexpr std::int32_t MenuCommand = 129;
} // namespace AddInText
