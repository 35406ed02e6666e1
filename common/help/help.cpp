#include "common/help/help.h"

#include "common/help/helpwindow.h"
#include "common/settingslight.h"
#include "platform/drivemap.h"

#include <QAbstractButton>
#include <QShortcut>
#include <QVariant>

namespace {

const char *const TopicProperty = "helpTopic";

} // namespace

QStringList helpFiles(SettingsLight &settings)
{
    const QString languageFolder = settings.path(InstallPath::LanguageFolder);
    if (languageFolder.isEmpty())
        return {};
    QStringList files;
    for (const QString &file : {settings.path(InstallPath::HelpFile), SettingsLight::englishHelpFile(languageFolder)}) {
        const QString native = file.isEmpty() ? QString() : DriveMap::instance().toNativeOrSelf(file);
        if (!native.isEmpty() && !files.contains(native))
            files.append(native);
    }
    return files;
}

bool showHelp(QWidget *from, const QString &topic)
{
    if (topic.isEmpty())
        return false;
    SettingsLight settings;
    const QStringList files = helpFiles(settings);
    if (files.isEmpty())
        return false;
    HelpWindow *window = HelpWindow::beside(from);
    for (const QString &file : files) {
        if (window->open(file) && window->showTopic(topic)) {
            window->show();
            window->raise();
            window->activateWindow();
            return true;
        }
    }
    return false;
}

QString helpTopicOf(const QWidget *window)
{
    if (!window)
        return {};
    const QString topic = window->property(TopicProperty).toString();
    return topic.isEmpty() ? window->objectName() : topic;
}

QString helpTopicWithin(const QWidget *page, const QWidget *focus)
{
    if (page && focus && page->isAncestorOf(focus)) {
        for (const QWidget *w = focus; w != page; w = w->parentWidget()) {
            const QString topic = w->property(TopicProperty).toString();
            if (!topic.isEmpty())
                return topic;
        }
    }
    return helpTopicOf(page);
}

void setHelpTopic(QWidget *window, const QString &topic)
{
    window->setProperty(TopicProperty, topic);
}

void connectHelp(QWidget *window, QAbstractButton *button, std::function<QString()> topic)
{
    auto open = [window, topic = std::move(topic)] { showHelp(window, topic()); };
    if (button) {
        button->setEnabled(true);
        QObject::connect(button, &QAbstractButton::clicked, window, open);
    }
    auto *shortcut = new QShortcut(QKeySequence::HelpContents, window);
    shortcut->setObjectName(QStringLiteral("helpShortcut"));
    shortcut->setContext(Qt::WidgetWithChildrenShortcut);
    QObject::connect(shortcut, &QShortcut::activated, window, open);
}

void connectHelp(QWidget *window, QAbstractButton *button, const QString &topic)
{
    connectHelp(window, button, [topic] { return topic; });
}
