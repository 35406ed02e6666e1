#pragma once

#include "host/hostobject.h"

#include <QString>
#include <cstdint>
#include <vector>

class QWidget;

// The host's window handles are widgets on this platform.
using HostWindow = QWidget *;

enum DoxCmdType : std::int32_t {
    DoxCmd_TaskSetup = 40,
    DoxCmd_TaskSetupButton = 41,
    DoxCmd_TaskDetails = 42,
    DoxCmd_TaskRun = 43,
    DoxCmd_TaskLaunch = 44,
    DoxCmd_TaskLaunchButton = 45,
};

// The host's command record handed to OnCmd.
struct DoxCmd {
    std::int32_t commandType = 0;
    HostWindow window = nullptr;   // in: host dialog; out: page window (details, prompted launch)
    HostObjectPtr vault;           // IDoxVault
    QString comment;               // in: pressed button; out: page caption
    HostObjectPtr extra;           // in: task properties or instance; out: add-in callback
    std::int16_t cancel = 0;       // 0 or -1
};

enum DoxObjectKind : std::int32_t {
    DoxObject_File = 1,
    DoxObject_Folder = 2,
};

// One element of the data array of a launch or run.
struct DoxCmdData {
    std::int32_t objectId1 = 0; // document id of a file; id of a folder
    std::int32_t objectId2 = 0; // folder id that holds the file
    QString string1;            // full path
    QString string2;            // configuration or other per-file text
    std::int32_t long1 = 0;     // object kind
    std::int32_t long2 = 0;     // version

    bool operator==(const DoxCmdData &) const = default;
};

using DoxCmdDataArray = std::vector<DoxCmdData>;

struct DoxAddInInfo {
    QString addInName;
    QString company;
    QString description;
    std::int32_t addInVersion = 0;
    std::int32_t requiredVersionMajor = 0;
    std::int32_t requiredVersionMinor = 0;
};

// One page handed to the host at set-up.
struct SetupPage {
    QString caption;
    HostWindow window = nullptr;
    HostObjectPtr callback;
};

inline constexpr std::int32_t TaskMenuCommandFlags = 0x4001;

struct TaskMenuCommand {
    std::int32_t commandId = 0; // the task type
    QString menuText;
    std::int32_t flags = TaskMenuCommandFlags;
    QString statusBarHelp;

    bool operator==(const TaskMenuCommand &) const = default;
};

enum TaskStatus : std::int32_t {
    TaskStatus_Running = 3,
    TaskStatus_Suspended = 5,
    TaskStatus_CancelRequested = 6,
    TaskStatus_FinishedOk = 7,
    TaskStatus_Finished = 8,
    TaskStatus_FinishedWithError = 9,
    TaskStatus_SuspendRequested = 10,
    TaskStatus_ResumeRequested = 11,
};

inline bool isFinishedStatus(std::int32_t status)
{
    return status == TaskStatus_FinishedOk || status == TaskStatus_Finished || status == TaskStatus_FinishedWithError;
}

// One affected object reported with the final status of a run.
struct AffectedObject {
    std::int32_t objectId = 0;
    std::int32_t objectKind = DoxObject_File;
    std::int32_t folderId = 0;
    std::int32_t version = 0;

    bool operator==(const AffectedObject &) const = default;
};
