#include "run/filerecord.h"

QString fileExtension(const QString &path, bool *hasExtension)
{
    const qsizetype nameStart = qMax(path.lastIndexOf(QLatin1Char('\\')), path.lastIndexOf(QLatin1Char('/'))) + 1;
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    const bool found = dot >= nameStart;
    if (hasExtension)
        *hasExtension = found;
    return found ? path.mid(dot + 1) : QString();
}

bool isCadDocumentPath(const QString &path)
{
    const QString ext = fileExtension(path);
    return ext.compare(QLatin1String("mcdprt"), Qt::CaseInsensitive) == 0
        || ext.compare(QLatin1String("mcdasm"), Qt::CaseInsensitive) == 0
        || ext.compare(QLatin1String("mcddrw"), Qt::CaseInsensitive) == 0;
}
