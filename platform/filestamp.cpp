#include "platform/filestamp.h"

#include <QFile>
#include <sys/stat.h>

FileStamp FileStamp::of(const QString &path)
{
    struct stat info {};
    if (::stat(QFile::encodeName(path).constData(), &info) != 0)
        return {};
    FileStamp stamp;
    stamp.exists = true;
    stamp.inode = info.st_ino;
    stamp.modifiedNs = static_cast<std::int64_t>(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
    stamp.size = info.st_size;
    return stamp;
}
