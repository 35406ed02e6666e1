#pragma once

#include <QString>
#include <QStringList>

// The printers of this machine and print jobs sent to them, behind an
// interface so tests and the stand-in can replace the machine's.
class Printers
{
public:
    virtual ~Printers() = default;

    // Names of the local and connected printers, in the order the print
    // system gives them.
    virtual QStringList names() = 0;
    // Sends a PDF file to a printer; an empty text when the job was queued,
    // else why it was not.
    virtual QString printPdf(const QString &printer, const QString &pdfPath, int copies, const QString &title) = 0;

    static Printers &instance();
    // Installs printers as the process-wide ones (nullptr restores the
    // system's) and returns the previous override; the caller keeps ownership.
    static Printers *setInstance(Printers *printers);
};

// The print system's queues (CUPS through Qt's printer information); jobs go
// through the "lp" client, so the queue's server (CUPS_SERVER) takes them.
class SystemPrinters final : public Printers
{
public:
    QStringList names() override;
    QString printPdf(const QString &printer, const QString &pdfPath, int copies, const QString &title) override;
};
