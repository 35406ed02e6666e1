#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

// The file system as the document model sees it (native paths). The disk
// implementation is the default; tests may supply their own.
class ModelFiles
{
public:
    virtual ~ModelFiles() = default;
    virtual std::optional<QByteArray> read(const QString &nativePath) = 0;
    // Writes the whole file; false when the folder is missing or the file
    // cannot be written. Folders are never created here.
    virtual bool write(const QString &nativePath, const QByteArray &bytes) = 0;
    virtual bool append(const QString &nativePath, const QByteArray &bytes) = 0;
};

class DiskModelFiles final : public ModelFiles
{
public:
    std::optional<QByteArray> read(const QString &nativePath) override;
    bool write(const QString &nativePath, const QByteArray &bytes) override;
    bool append(const QString &nativePath, const QByteArray &bytes) override;
};
