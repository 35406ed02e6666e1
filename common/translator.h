#pragma once

#include <QHash>
#include <QString>
#include <functional>
#include <mutex>
#include <optional>

// The module of the add-in's own texts and its section of numbered texts.
inline constexpr char16_t kAddInTextModule[] = u"McTaskAddIn";
inline constexpr char16_t kAddInTextSection[] = u"TS";

// The string-translation service: texts by (number, section, module) and
// dialog texts by (dialog name, control id), read from the language folder,
// with the English text as fall-back.
//
// A module is the file "<module>.json" in the language folder: an object of
// sections, each an object from text number (or control id) to text, e.g.
//     { "TS": { "1023": "Convert Files" }, "MenuCommandDlg": { "IDOK": "OK" } }
// Module file, section and key names compare case-insensitively. A module is
// read once per Translator.
class Translator final
{
public:
    // languageFolder: a native folder, or a Windows path the drive map
    // resolves; empty for no translations at all.
    explicit Translator(const QString &languageFolder);

    QString text(int number, const QString &english, const QString &section = QString::fromUtf16(kAddInTextSection),
                 const QString &module = QString::fromUtf16(kAddInTextModule)) const;
    std::optional<QString> find(const QString &module, const QString &section, const QString &key) const;
    std::optional<QString> find(const QString &module, const QString &section, int number) const;

    // A dialog's control text: section = the dialog name, key = the control id.
    QString dialogText(const QString &dialog, const QString &controlId, const QString &english,
                       const QString &module = QString::fromUtf16(kAddInTextModule)) const;

    bool hasModule(const QString &module) const;
    QString languageFolder() const { return m_folder; }

    // The process-wide translator on the vault client's language folder
    // (SettingsLight), made at first use, unless a test installed another.
    static Translator &instance();
    static Translator *setInstance(Translator *translator);

private:
    using Sections = QHash<QString, QHash<QString, QString>>; // folded section -> folded key -> text
    const Sections *module(const QString &name) const;

    QString m_folder; // native
    mutable std::mutex m_mutex;
    mutable QHash<QString, std::optional<Sections>> m_modules;
};

// The add-in's text number in section "TS" of module "McTaskAddIn".
QString tr_ts(int number, const QString &english);

// A source of numbered texts with their English fallback; pages and the run
// take one so that tests and the module can choose where texts come from.
using TextLookup = std::function<QString(std::int32_t number, const QString &english)>;

// The text from lookup when one is given, from tr_ts otherwise.
QString lookupText(const TextLookup &lookup, std::int32_t number, const char *english);

// A TextLookup that keeps every English text as it is (tests, screenshots).
QString englishText(std::int32_t number, const QString &english);

// Installs a translator for the lifetime of the guard (tests).
class ScopedTranslator final
{
public:
    explicit ScopedTranslator(Translator &translator) : m_previous(Translator::setInstance(&translator)) {}
    ~ScopedTranslator() { Translator::setInstance(m_previous); }
    ScopedTranslator(const ScopedTranslator &) = delete;
    ScopedTranslator &operator=(const ScopedTranslator &) = delete;

private:
    Translator *m_previous;
};
