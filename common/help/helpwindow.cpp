#include "common/help/helpwindow.h"

#include "platform/filesystem.h"
#include "platform/home.h"

#include <QCryptographicHash>
#include <QHBoxLayout>
#include <QHelpContentWidget>
#include <QHelpEngine>
#include <QHelpLink>
#include <QSplitter>

namespace {

// The engine keeps which help files it knows in a collection file of its
// own; one per help file, so that languages and installations stay apart.
QString collectionFileFor(const QString &helpFile)
{
    const QString cache = ensureMctaskCacheFolder();
    if (cache.isEmpty())
        return {};
    const QByteArray hash = QCryptographicHash::hash(helpFile.toUtf8(), QCryptographicHash::Sha1).toHex().left(16);
    return cache + QStringLiteral("/help-") + QString::fromLatin1(hash) + QStringLiteral(".qhc");
}

} // namespace

HelpBrowser::HelpBrowser(QWidget *parent) : QTextBrowser(parent)
{
    setObjectName(QStringLiteral("helpBrowser"));
    // The pages carry no style of their own: terms stand out from their text.
    document()->setDefaultStyleSheet(QStringLiteral("dt { font-weight: bold; margin-top: 6px; }"));
}

QVariant HelpBrowser::loadResource(int type, const QUrl &name)
{
    if (name.scheme() == QLatin1String("qthelp"))
        return m_engine ? QVariant(m_engine->fileData(name)) : QVariant();
    return QTextBrowser::loadResource(type, name);
}

HelpWindow::HelpWindow(QWidget *parent) : QWidget(parent, Qt::Window)
{
    setObjectName(QStringLiteral("helpWindow"));
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    m_splitter = new QSplitter(this);
    m_splitter->setObjectName(QStringLiteral("helpSplitter"));
    m_browser = new HelpBrowser(m_splitter);
    m_splitter->addWidget(m_browser);
    layout->addWidget(m_splitter);
    resize(860, 600);
}

HelpWindow::~HelpWindow()
{
    closeFile();
}

void HelpWindow::closeFile()
{
    m_browser->setEngine(nullptr);
    m_browser->clear();
    if (m_engine) {
        // The contents view shows the engine's model: it goes first.
        delete m_engine->contentWidget();
        delete m_engine;
        m_engine = nullptr;
    }
    m_helpFile.clear();
    m_topic.clear();
}

bool HelpWindow::open(const QString &helpFile)
{
    if (m_engine && helpFile == m_helpFile)
        return true;
    closeFile();
    if (helpFile.isEmpty() || !FileSystem::instance().exists(helpFile))
        return false;
    // Empty for a file that is not a help file, or a damaged one.
    const QString space = QHelpEngineCore::namespaceName(helpFile);
    const QString collection = collectionFileFor(helpFile);
    if (space.isEmpty() || collection.isEmpty())
        return false;
    auto *engine = new QHelpEngine(collection, this);
    engine->setReadOnly(false);
    bool ready = engine->setupData();
    if (ready && engine->documentationFileName(space) != helpFile) {
        engine->unregisterDocumentation(space); // another file of that name space, e.g. a moved installation
        ready = engine->registerDocumentation(helpFile) && engine->setupData();
    }
    if (!ready) {
        delete engine;
        return false;
    }
    m_engine = engine;
    m_helpFile = helpFile;
    m_browser->setEngine(engine);

    QHelpContentWidget *contents = engine->contentWidget();
    contents->setObjectName(QStringLiteral("helpContents"));
    m_splitter->insertWidget(0, contents);
    m_splitter->setSizes({260, 600});
    connect(contents, &QHelpContentWidget::linkActivated, m_browser,
            [this](const QUrl &url) { m_browser->setSource(url); });
    connect(engine->contentModel(), &QHelpContentModel::contentsCreated, contents, &QTreeView::expandAll);
    engine->contentModel()->createContents(QString());
    return true;
}

bool HelpWindow::showTopic(const QString &topic)
{
    if (!m_engine || topic.isEmpty())
        return false;
    const QList<QHelpLink> links = m_engine->documentsForIdentifier(topic);
    if (links.isEmpty())
        return false;
    const QUrl page = links.first().url;
    // A help file whose index survived but whose page did not.
    if (m_engine->fileData(page).isEmpty())
        return false;
    m_browser->setSource(page);
    m_topic = topic;
    setWindowTitle(m_browser->documentTitle());
    return true;
}

HelpWindow *HelpWindow::beside(QWidget *window)
{
    QWidget *top = window ? window->window() : nullptr;
    if (auto *help = qobject_cast<HelpWindow *>(top))
        return help;
    if (top) {
        if (auto *help = top->findChild<HelpWindow *>(QString(), Qt::FindDirectChildrenOnly))
            return help;
        return new HelpWindow(top);
    }
    static QPointer<HelpWindow> alone;
    if (!alone)
        alone = new HelpWindow;
    return alone;
}
