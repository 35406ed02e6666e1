#include "platform/printing/printers.h"

#include <QPrinterInfo>
#include <QProcess>
#include <utility>

namespace {
Printers *g_override = nullptr;
}

Printers &Printers::instance()
{
    static SystemPrinters system;
    return g_override ? *g_override : system;
}

Printers *Printers::setInstance(Printers *printers)
{
    return std::exchange(g_override, printers);
}

QStringList SystemPrinters::names()
{
    return QPrinterInfo::availablePrinterNames();
}

QString SystemPrinters::printPdf(const QString &printer, const QString &pdfPath, int copies, const QString &title)
{
    QProcess lp;
    lp.start(QStringLiteral("lp"), {QStringLiteral("-d"), printer, QStringLiteral("-n"), QString::number(copies),
                                    QStringLiteral("-t"), title, QStringLiteral("--"), pdfPath});
    if (!lp.waitForStarted(10000))
        return QStringLiteral("The print client 'lp' could not be started.");
    if (!lp.waitForFinished(60000)) {
        lp.kill();
        lp.waitForFinished();
        return QStringLiteral("The print client 'lp' did not finish.");
    }
    if (lp.exitStatus() != QProcess::NormalExit || lp.exitCode() != 0)
        return QString::fromLocal8Bit(lp.readAllStandardError()).trimmed();
    return {};
}
