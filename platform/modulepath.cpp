#include "platform/modulepath.h"

#include <QFileInfo>
#include <dlfcn.h>

QString modulePathOf(const void *address)
{
    Dl_info info{};
    if (dladdr(address, &info) == 0 || !info.dli_fname)
        return {};
    return QFileInfo(QString::fromLocal8Bit(info.dli_fname)).absoluteFilePath();
}
