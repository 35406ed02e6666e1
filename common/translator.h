#pragma once

#include <QHash>
#include <QString>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>

// The module of the add-in's own texts and its section of numbered texts.
inline constexpr char16_t kAddInTextModule[] = u"McTaskAddIn";
inline constexpr char16_t kAddInTextSection[] = u"TS";

// The string-translation service: texts by (number, section, module) and
// dialog texts by (dialog name, control), read from the language folder, with
// the English text as fall-back.
//
// A module is the Qt Linguist file "<module>.qm" in the language folder, built
// by lrelease from an id-based ".ts" file: a text's id is its section and key,
// "TS.1023" for a numbered text and "MenuCommandDlg.caption" for a dialog's
// control, so numbered and dialog texts never meet. The module's file name
// compares case-insensitively; a module is read once per Translator, and a
// missing or damaged one leaves every text English.
class Translator final
{
public:
    // languageFolder: a native folder, or a Windows path the drive map
    // resolves; empty for no translations at all.
    explicit Translator(const QString &languageFolder);
    ~Translator();

    QString text(int number, const QString &english, const QString &section = QString::fromUtf16(kAddInTextSection),
                 const QString &module = QString::fromUtf16(kAddInTextModule)) const;
    std::optional<QString> find(const QString &module, const QString &section, const QString &key) const;
    std::optional<QString> find(const QString &module, const QString &section, int number) const;

    // A dialog's control text: section = the dialog name, key = the control.
    QString dialogText(const QString &dialog, const QString &controlId, const QString &english,
                       const QString &module = QString::fromUtf16(kAddInTextModule)) const;

    // A text of section under a key of its own (a name rather than a number).
    QString keyedText(const QString &section, const QString &key, const QString &english,
                      const QString &module = QString::fromUtf16(kAddInTextModule)) const;

    bool hasModule(const QString &module) const;
    QString languageFolder() const { return m_folder; }

    // Installs Qt's own translations found in the language folder
    // ("qt*.qm") into the application, so that standard buttons, file
    // dialogs and context menus follow the language. Returns how many.
    int installQtTranslations() const;

    // The id of a text in a module: "<section>.<key>".
    static QString textId(const QString &section, const QString &key);

    // Every text asked for goes to the recorder while one is set (the
    // completeness check lists the texts the code uses this way).
    using Recorder = std::function<void(const QString &module, const QString &section, const QString &key,
                                        const QString &english)>;
    static void setRecorder(Recorder recorder);

    // The process-wide translator on the vault client's language folder
    // (SettingsLight), made at first use, unless a test installed another.
    static Translator &instance();
    static Translator *setInstance(Translator *translator);

private:
    struct Module;
    const Module *module(const QString &name) const;

    QString m_folder; // native
    mutable std::mutex m_mutex;
    mutable QHash<QString, std::shared_ptr<const Module>> m_modules; // folded name -> module, null when missing
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
