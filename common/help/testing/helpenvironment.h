#pragma once

#include "common/help/helpwindow.h"
#include "common/settingslight.h"
#include "platform/memoryregistrystore.h"

#include <QTemporaryDir>

// Points the help at the build tree's language folders for one test: the
// build tree stands for the installation folder, the language is the one
// given, and the help's collection files go to a home of the test's own.
// Test programs that use it are built with mctask_help_test().
class HelpEnvironment final
{
public:
    explicit HelpEnvironment(const QString &language = QStringLiteral("GB"),
                             const QString &installFolder = QStringLiteral(MCTASK_HELP_INSTALL_DIR))
        : m_guard(m_store), m_oldHome(qgetenv("MCTASK_HOME")), m_hadHome(qEnvironmentVariableIsSet("MCTASK_HOME"))
    {
        qputenv("MCTASK_HOME", m_home.path().toLocal8Bit());
        const QString root = QString::fromUtf16(kSettingsRootKey);
        const QString languageKey = root + QLatin1Char('\\') + QString::fromUtf16(kLanguageKey);
        m_store.createKey(SettingsLight::kRoot, SettingsLight::kView, languageKey);
        m_store.writeValue(SettingsLight::kRoot, SettingsLight::kView, root, QStringLiteral("InstallDir"),
                           RegistryValue::fromString(installFolder));
        m_store.writeValue(SettingsLight::kRoot, SettingsLight::kView, languageKey, QStringLiteral("0"),
                           RegistryValue::fromString(language));
    }
    ~HelpEnvironment()
    {
        if (m_hadHome)
            qputenv("MCTASK_HOME", m_oldHome);
        else
            qunsetenv("MCTASK_HOME");
    }
    HelpEnvironment(const HelpEnvironment &) = delete;
    HelpEnvironment &operator=(const HelpEnvironment &) = delete;

    // The help window that shows beside window's top-level window, or null.
    static HelpWindow *shownBeside(const QWidget *window)
    {
        const QWidget *top = window->window();
        auto *help = top->findChild<HelpWindow *>(QString(), Qt::FindDirectChildrenOnly);
        return help && help->isVisible() ? help : nullptr;
    }

private:
    MemoryRegistryStore m_store;
    ScopedRegistryStore m_guard;
    QTemporaryDir m_home;
    QByteArray m_oldHome;
    bool m_hadHome;
};
