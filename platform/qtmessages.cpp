#include "platform/qtmessages.h"

#include <QString>
#include <QtGlobal>
#include <cstdio>

namespace {

void quietQtMessages(QtMsgType type, const QMessageLogContext &, const QString &message)
{
    if (type == QtFatalMsg || qEnvironmentVariableIntValue("MCTASK_QT_MESSAGES") == 1)
        std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
}

} // namespace

void installQuietQtMessages()
{
    qInstallMessageHandler(quietQtMessages);
}
