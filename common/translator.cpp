#include "common/translator.h"

#include "common/settingslight.h"
#include "platform/drivemap.h"
#include "platform/filesystem.h"

#include <QCoreApplication>
#include <QPointer>
#include <QTranslator>
#include <atomic>

namespace {

std::atomic<Translator *> g_override{nullptr};

std::mutex g_recorderMutex;
Translator::Recorder g_recorder;

void record(const QString &module, const QString &section, const QString &key, const QString &english)
{
    std::lock_guard lock(g_recorderMutex);
    if (g_recorder)
        g_recorder(module, section, key, english);
}

// A translator that owns the bytes it was loaded from (QTranslator keeps
// pointing into them).
class OwnedTranslator final : public QTranslator
{
public:
    explicit OwnedTranslator(QByteArray data, QObject *parent = nullptr) : QTranslator(parent), m_data(std::move(data)) {}
    bool load() { return QTranslator::load(reinterpret_cast<const uchar *>(m_data.constData()), int(m_data.size())); }

private:
    QByteArray m_data;
};

// The entry of folder whose name is wanted, compared case-insensitively.
QString findEntry(const QString &folder, const QString &wanted)
{
    const QString folded = wanted.toCaseFolded();
    for (const QString &entry : FileSystem::instance().entries(folder))
        if (entry.toCaseFolded() == folded)
            return folder + QLatin1Char('/') + entry;
    return {};
}

std::unique_ptr<OwnedTranslator> loadQm(const QString &path)
{
    const auto bytes = FileSystem::instance().read(path);
    if (!bytes)
        return nullptr;
    auto translator = std::make_unique<OwnedTranslator>(*bytes);
    if (!translator->load())
        return nullptr; // damaged: as if missing
    return translator;
}

} // namespace

struct Translator::Module {
    std::unique_ptr<OwnedTranslator> qm;
};

Translator::Translator(const QString &languageFolder)
{
    if (languageFolder.isEmpty())
        return;
    QString folder = languageFolder;
    // A native installation folder with the "Lang\<language>\" of the
    // registry's path rules appended.
    if (folder.startsWith(QLatin1Char('/')))
        folder.replace(QLatin1Char('\\'), QLatin1Char('/'));
    m_folder = DriveMap::instance().toNativeOrSelf(folder);
}

Translator::~Translator() = default;

const Translator::Module *Translator::module(const QString &name) const
{
    const QString folded = name.toCaseFolded();
    std::lock_guard lock(m_mutex);
    const auto cached = m_modules.constFind(folded);
    if (cached != m_modules.constEnd())
        return cached->get();

    std::shared_ptr<const Module> loaded;
    if (!m_folder.isEmpty() && !name.isEmpty()) {
        const QString path = findEntry(m_folder, name + QStringLiteral(".qm"));
        if (!path.isEmpty()) {
            if (auto qm = loadQm(path))
                loaded = std::make_shared<const Module>(Module{std::move(qm)});
        }
    }
    m_modules.insert(folded, loaded);
    return loaded.get();
}

QString Translator::textId(const QString &section, const QString &key)
{
    return section + QLatin1Char('.') + key;
}

std::optional<QString> Translator::find(const QString &moduleName, const QString &section, const QString &key) const
{
    const Module *found = module(moduleName);
    if (!found)
        return std::nullopt;
    // Id-based modules keep their texts under an empty context.
    const QString text = found->qm->translate(nullptr, textId(section, key).toUtf8().constData());
    if (text.isEmpty())
        return std::nullopt;
    return text;
}

std::optional<QString> Translator::find(const QString &moduleName, const QString &section, int number) const
{
    return find(moduleName, section, QString::number(number));
}

QString Translator::text(int number, const QString &english, const QString &section, const QString &moduleName) const
{
    record(moduleName, section, QString::number(number), english);
    return find(moduleName, section, number).value_or(english);
}

QString Translator::dialogText(const QString &dialog, const QString &controlId, const QString &english,
                               const QString &moduleName) const
{
    return keyedText(dialog, controlId, english, moduleName);
}

QString Translator::keyedText(const QString &section, const QString &key, const QString &english,
                              const QString &moduleName) const
{
    record(moduleName, section, key, english);
    return find(moduleName, section, key).value_or(english);
}

bool Translator::hasModule(const QString &name) const
{
    return module(name) != nullptr;
}

int Translator::installQtTranslations() const
{
    QCoreApplication *app = QCoreApplication::instance();
    if (!app || m_folder.isEmpty())
        return 0;
    // Once per folder and application.
    static std::mutex installedMutex;
    static QHash<QString, QPointer<QCoreApplication>> installed;
    {
        std::lock_guard lock(installedMutex);
        if (installed.value(m_folder) == app)
            return 0;
        installed.insert(m_folder, app);
    }
    int count = 0;
    QStringList entries = FileSystem::instance().entries(m_folder);
    entries.sort();
    for (const QString &entry : entries) {
        if (!entry.startsWith(QLatin1String("qt"), Qt::CaseInsensitive) || !entry.endsWith(QLatin1String(".qm"), Qt::CaseInsensitive))
            continue;
        auto qm = loadQm(m_folder + QLatin1Char('/') + entry);
        if (!qm)
            continue;
        qm->setParent(app);
        if (QCoreApplication::installTranslator(qm.get())) {
            qm.release();
            ++count;
        }
    }
    return count;
}

void Translator::setRecorder(Recorder recorder)
{
    std::lock_guard lock(g_recorderMutex);
    g_recorder = std::move(recorder);
}

Translator &Translator::instance()
{
    if (Translator *translator = g_override.load())
        return *translator;
    static Translator translator(SettingsLight().path(InstallPath::LanguageFolder));
    return translator;
}

Translator *Translator::setInstance(Translator *translator)
{
    return g_override.exchange(translator);
}

QString tr_ts(int number, const QString &english)
{
    return Translator::instance().text(number, english);
}

QString lookupText(const TextLookup &lookup, std::int32_t number, const char *english)
{
    const QString fallback = QString::fromLatin1(english);
    return lookup ? lookup(number, fallback) : tr_ts(number, fallback);
}

QString englishText(std::int32_t, const QString &english)
{
    return english;
}
