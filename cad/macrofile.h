#pragma once

#include <QByteArray>
#include <QString>

#include <optional>

// The file one macro run hands to Mecadra: "TFR<hex>.tmp" in a folder, as the
// system's temporary-file call names it, moved to "TFR<hex>.mcb". Both names
// are created exclusively, so two runs on the machine (workers of one host,
// or several hosts) never write into the same file, even when they draw the
// same number; a name in use is passed over for the next one.
class MacroFile final
{
public:
    // A new file holding text, already under its ".mcb" name; nothing when
    // no name could be had or the text could not be written. Numbers are
    // tried from firstNumber (1..0xFFFF) upwards, wrapping around.
    static std::optional<MacroFile> create(const QString &folder, const QByteArray &text, unsigned firstNumber);
    // The same with a random first number, so that runs rarely meet.
    static std::optional<MacroFile> create(const QString &folder, const QByteArray &text);

    const QString &path() const { return m_path; }
    // Deletes the file, when it is still there.
    void remove() const;

private:
    explicit MacroFile(QString path) : m_path(std::move(path)) {}

    QString m_path;
};
