#pragma once

#include "platform/registrystore.h"

#include <QString>

// The stand-in installed as a real installer would: a folder holding the
// executable under Mecadra's own name (a link to mcsim), the class with its
// server command line and ProgIDs, the version's set-up key, and the entry
// in the installed products.
struct StandInInstallation {
    int versionYear = 2013;
    bool officeEdition = true; // "Mecadra Office Installed" 1, else 0
    QString folder;            // empty: "Mecadra <year>" under MCTASK_HOME

    QString installFolder() const;
    // The class id of this version (one per version, so versions live side by side).
    QString classId() const;
    // "Mecadra 2013 x64 Edition SP0.0"
    QString productName() const;
    QString productCode() const;

    // Registers program (the running mcsim) as this version. False with
    // the reason in error when a step fails.
    bool install(const QString &program, QString &error, RegistryStore &store = RegistryStore::instance()) const;
    // Removes what install wrote; what is already gone is fine.
    bool uninstall(QString &error, RegistryStore &store = RegistryStore::instance()) const;
};
