#pragma once

#include <QPointer>
#include <QString>
#include <QTextBrowser>
#include <QUrl>
#include <QWidget>

#include <QHelpEngine>

// Shows the pages of a Qt Help file: the file's resources come from the
// help engine, links between its pages stay inside it.
class HelpBrowser final : public QTextBrowser
{
    Q_OBJECT
public:
    explicit HelpBrowser(QWidget *parent = nullptr);
    void setEngine(QHelpEngine *engine) { m_engine = engine; }
    QVariant loadResource(int type, const QUrl &name) override;

private:
    QPointer<QHelpEngine> m_engine;
};

// The add-in's help window: the table of contents of one help file beside
// the page of the topic asked for. One lives beside each top-level window
// that asked for help (a modal dialog would block any other window).
class HelpWindow final : public QWidget
{
    Q_OBJECT
    // Read by tests in a program whose own copy of this class differs from
    // the add-in module's.
    Q_PROPERTY(QString topic READ topic)
    Q_PROPERTY(QString helpFile READ helpFile)
public:
    explicit HelpWindow(QWidget *parent = nullptr);
    ~HelpWindow() override;

    // Opens helpFile (a native path). False, and no file open, when it is
    // missing, is no help file, or cannot be opened.
    bool open(const QString &helpFile);
    QString helpFile() const { return m_helpFile; }

    // Shows the page of the topic (a dialog name); false when the open file
    // has no such topic or its page cannot be read.
    bool showTopic(const QString &topic);
    QString topic() const { return m_topic; }

    HelpBrowser *browser() const { return m_browser; }

    // The help window beside window's top-level window, made when missing.
    static HelpWindow *beside(QWidget *window);

private:
    void closeFile();

    QHelpEngine *m_engine = nullptr;
    HelpBrowser *m_browser = nullptr;
    class QSplitter *m_splitter = nullptr;
    QString m_helpFile;
    QString m_topic;
};
