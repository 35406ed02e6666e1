#pragma once

// A CUPS server of the test's own: configuration, spool and socket in a
// temporary folder, one queue whose backend writes every job as a PDF into
// a folder, with the job's number of copies beside it (job-N.copies). Nothing of the machine's print set-up is touched.

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>

class PrivateCups
{
public:
    // Starts cupsd and adds the queue; running() tells whether it worked.
    explicit PrivateCups(const QString &queue)
    {
        const QString d = m_dir.path();
        for (const char *sub : {"bin/backend", "spool", "cache", "state", "log", "etc", "out"})
            QDir(d).mkpath(sub);
        write("bin/backend/pdffolder",
              "#!/bin/sh\n"
              "if [ $# -eq 0 ]; then echo 'direct pdffolder \"Unknown\" \"PDF folder\"'; exit 0; fi\n"
              "out=\"${DEVICE_URI#pdffolder:}/job-$1.pdf\"\n"
              "if [ $# -ge 6 ]; then cp \"$6\" \"$out\"; else cat > \"$out\"; fi\n"
              "chmod 0644 \"$out\"\n"
              "echo \"$4\" > \"${out%.pdf}.copies\"\n");
        // The server's own helpers (cups-exec starts the backends).
        QFile::link("/usr/lib/cups/daemon", m_dir.filePath("bin/daemon"));
        // Owner-only: cupsd runs such a backend as the user it runs as.
        QFile::setPermissions(m_dir.filePath("bin/backend/pdffolder"),
                              QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        write("etc/cupsd.conf", QStringLiteral("Listen %1\nLogLevel warn\nWebInterface No\nDefaultAuthType None\n"
                                               "<Location />\n  Order allow,deny\n  Allow all\n</Location>\n"
                                               "<Policy default>\n  <Limit All>\n    Order deny,allow\n  </Limit>\n"
                                               "</Policy>\n")
                                    .arg(socket())
                                    .toUtf8());
        write("etc/cups-files.conf",
              QStringLiteral("ServerRoot %1/etc\nServerBin %1/bin\nDataDir /usr/share/cups\nRequestRoot %1/spool\n"
                             "CacheDir %1/cache\nStateDir %1/state\nTempDir %1/spool\nErrorLog %1/log/error_log\n"
                             "AccessLog %1/log/access_log\nPageLog %1/log/page_log\nSandboxing Relaxed\n")
                  .arg(d)
                  .toUtf8());
        m_cupsd.start("cupsd", {"-f", "-c", m_dir.filePath("etc/cupsd.conf"), "-s", m_dir.filePath("etc/cups-files.conf")});
        if (!m_cupsd.waitForStarted(5000))
            return;
        for (int i = 0; i < 50 && !QFile::exists(socket()); ++i)
            QThread::msleep(100);
        QProcess admin;
        admin.setProcessEnvironment(environment());
        admin.start("lpadmin", {"-p", queue, "-E", "-v", "pdffolder:" + outFolder(), "-m", "raw"});
        m_running = admin.waitForFinished(10000) && admin.exitCode() == 0;
    }
    ~PrivateCups()
    {
        if (m_cupsd.state() != QProcess::NotRunning) {
            m_cupsd.terminate();
            if (!m_cupsd.waitForFinished(5000))
                m_cupsd.kill();
            m_cupsd.waitForFinished();
        }
    }

    bool running() const { return m_running; }
    // The server's error log, for a failure message.
    QString log() const
    {
        QFile f(m_dir.filePath("log/error_log"));
        return f.open(QIODevice::ReadOnly) ? QString::fromLocal8Bit(f.readAll()) : QString();
    }
    QString socket() const { return m_dir.filePath("cups.sock"); }
    QString outFolder() const { return m_dir.filePath("out"); }
    QProcessEnvironment environment() const
    {
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("CUPS_SERVER", socket());
        return env;
    }
    // The copies the queue was asked for with a job it wrote; 0 when unknown.
    int copies(const QString &job) const
    {
        QFile f(QDir(outFolder()).filePath(QString(job).replace(".pdf", ".copies")));
        return f.open(QIODevice::ReadOnly) ? f.readAll().trimmed().toInt() : 0;
    }
    // The PDFs the queue wrote, waiting up to 20 s for count of them.
    QStringList jobs(int count) const
    {
        QStringList files;
        for (int i = 0; i < 200; ++i) {
            files = QDir(outFolder()).entryList({"job-*.pdf"}, QDir::Files, QDir::Name);
            if (files.size() >= count)
                break;
            QThread::msleep(100);
        }
        return files;
    }

private:
    void write(const char *relative, const QByteArray &bytes)
    {
        QFile f(m_dir.filePath(relative));
        if (f.open(QIODevice::WriteOnly))
            f.write(bytes);
    }

    QTemporaryDir m_dir;
    QProcess m_cupsd;
    bool m_running = false;
};
