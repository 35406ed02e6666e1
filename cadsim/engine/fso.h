#pragma once

#include "cadsim/engine/membertable.h"

#include <functional>

namespace cadsim {

using PathResolver = std::function<QString(const QString &windowsPath)>;

// Scripting.FileSystemObject with its common methods. Paths stay Windows paths for the macro;
// the resolver maps them to native ones for every file-system access.
class FileSystemObject final : public TableObject {
public:
    explicit FileSystemObject(PathResolver resolver);
    QString typeName() const override { return QStringLiteral("FileSystemObject"); }

    // Windows path pieces, as the object's methods give them.
    static QString fileName(const QString &path);
    static QString parentFolder(const QString &path);
    static QString extension(const QString &path);
    static QString baseName(const QString &path);
    static QString buildPath(const QString &path, const QString &name);

private:
    void addMembers();
    ScriptValue deleteFile(const QString &windowsPath) const;
    ScriptValue copyOrMove(ScriptArgs &args, bool copy) const;
    ScriptValue openText(ScriptArgs &args, bool create) const;

    PathResolver m_resolve;
};

} // namespace cadsim
