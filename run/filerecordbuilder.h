#pragma once

#include "host/doxcmd.h"
#include "run/filerecord.h"

#include <vector>

class IDoxVault;
class IDoxVariables;

// True for the extensions a selected folder contributes files with
// ("mcdprt", "step", "x_t", ... 40 in all), in any letter case.
bool isFolderFileExtension(const QString &extension);

// The records of a launch's or run's data array, in array order: files with
// an extension as they are, folders (only with a vault) expanded to the files
// of the folder and all its sub-folders whose extension is one of the folder
// extensions; other kinds are skipped. With atRun, the vault's reference
// service then gives each record its altVersion under the holder's
// "SourceRefs" (or, when absent, "__printer_refversiontype") setting.
// Host failures raise HostError.
std::vector<FileRecord> buildFileRecords(IDoxVault *vault, IDoxVariables *holder, const DoxCmdDataArray &data,
                                         bool atRun);

// Sets each record's altVersion from the vault's reference service under the
// holder's reference setting, as a run does; also for lists read back for
// the details page. Host failures raise HostError.
void resolveReferenceVersions(IDoxVault &vault, IDoxVariables *holder, std::vector<FileRecord> &records);
