#pragma once

#include "platform/registrystore.h"

#include <QString>

#include <optional>

// Class entries of automation servers as an installer writes them under
// HKEY_LOCAL_MACHINE "SOFTWARE\Classes" and as callers look them up: the
// class id with its server command line and ProgID, and ProgIDs that lead
// to a class id. The classes root is looked at first, as the merged view of
// the system's class registry would.
namespace ClassRegistry {

inline constexpr auto ClassesKey = u"SOFTWARE\\Classes";

// The class id (in braces) a ProgID names; nothing when it is not registered.
std::optional<QString> classIdFromProgId(const QString &progId, RegistryStore &store = RegistryStore::instance());
// The default value of a sub-key ("LocalServer32", "ProgID") of a class.
std::optional<QString> classValue(const QString &classId, const QString &subKey,
                                  RegistryStore &store = RegistryStore::instance());

struct LocalServer {
    QString classId;      // in braces
    QString description;  // the class key's default value
    QString commandLine;  // LocalServer32
    QString progId;       // versioned
    QString versionIndependentProgId;
};

// Writes the class and both ProgIDs (the version-independent one then names
// this class, with the versioned one as its current version).
bool registerLocalServer(const LocalServer &server, RegistryStore &store = RegistryStore::instance());
// Removes the class and its versioned ProgID, and the version-independent
// ProgID when it still names this class. True when nothing of it is left.
bool unregisterLocalServer(const QString &classId, const QString &progId, const QString &versionIndependentProgId,
                           RegistryStore &store = RegistryStore::instance());

} // namespace ClassRegistry
