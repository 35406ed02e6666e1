#include "common/translator.h"

#include "common/settingslight.h"
#include "platform/drivemap.h"
#include "platform/filesystem.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <atomic>

namespace {

std::atomic<Translator *> g_override{nullptr};

} // namespace

Translator::Translator(const QString &languageFolder)
    : m_folder(languageFolder.isEmpty() ? QString() : DriveMap::instance().toNativeOrSelf(languageFolder))
{
}

const Translator::Sections *Translator::module(const QString &name) const
{
    const QString folded = name.toCaseFolded();
    std::lock_guard lock(m_mutex);
    const auto cached = m_modules.constFind(folded);
    if (cached != m_modules.constEnd())
        return cached->has_value() ? &cached->value() : nullptr;

    std::optional<Sections> loaded;
    const FileSystem &fs = FileSystem::instance();
    if (!m_folder.isEmpty() && !name.isEmpty()) {
        const QString wanted = (name + QStringLiteral(".json")).toCaseFolded();
        for (const QString &entry : fs.entries(m_folder)) {
            if (entry.toCaseFolded() != wanted)
                continue;
            const auto bytes = fs.read(m_folder + QLatin1Char('/') + entry);
            const QJsonDocument doc = bytes ? QJsonDocument::fromJson(*bytes) : QJsonDocument();
            if (!doc.isObject())
                break; // a damaged file counts as missing
            Sections sections;
            const QJsonObject json = doc.object();
            for (auto s = json.begin(); s != json.end(); ++s) {
                auto &texts = sections[s.key().toCaseFolded()];
                const QJsonObject entries = s.value().toObject();
                for (auto e = entries.begin(); e != entries.end(); ++e) {
                    if (e.value().isString())
                        texts.insert(e.key().toCaseFolded(), e.value().toString());
                }
            }
            loaded = std::move(sections);
            break;
        }
    }
    const auto it = m_modules.insert(folded, std::move(loaded));
    return it->has_value() ? &it->value() : nullptr;
}

std::optional<QString> Translator::find(const QString &moduleName, const QString &section, const QString &key) const
{
    const Sections *sections = module(moduleName);
    if (!sections)
        return std::nullopt;
    const auto s = sections->constFind(section.toCaseFolded());
    if (s == sections->constEnd())
        return std::nullopt;
    const auto t = s->constFind(key.toCaseFolded());
    if (t == s->constEnd())
        return std::nullopt;
    return *t;
}

std::optional<QString> Translator::find(const QString &moduleName, const QString &section, int number) const
{
    return find(moduleName, section, QString::number(number));
}

QString Translator::text(int number, const QString &english, const QString &section, const QString &moduleName) const
{
    const auto found = find(moduleName, section, number);
    return found && !found->isEmpty() ? *found : english;
}

QString Translator::dialogText(const QString &dialog, const QString &controlId, const QString &english,
                               const QString &moduleName) const
{
    const auto found = find(moduleName, dialog, controlId);
    return found && !found->isEmpty() ? *found : english;
}

bool Translator::hasModule(const QString &name) const
{
    return module(name) != nullptr;
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
