#include "cad/macrofile.h"

#include "platform/filesystem.h"

#include <QRandomGenerator>

namespace {

constexpr unsigned kLastNumber = 0xFFFF;

} // namespace

std::optional<MacroFile> MacroFile::create(const QString &folder, const QByteArray &text, unsigned firstNumber)
{
    FileSystem &fs = FileSystem::instance();
    unsigned number = firstNumber == 0 || firstNumber > kLastNumber ? 1 : firstNumber;
    for (unsigned tries = 0; tries < kLastNumber; ++tries, number = number % kLastNumber + 1) {
        const QString stem = QStringLiteral("%1/TFR%2").arg(folder, QString::number(number, 16).toUpper());
        const QString temp = stem + QStringLiteral(".tmp");
        const QString macro = stem + QStringLiteral(".mcb");
        if (!fs.create(temp, {})) {
            // Taken by another run, which may have moved it on since.
            if (!fs.isDirectory(folder))
                return std::nullopt;
            continue;
        }
        // The ".mcb" name is claimed too before the move, which would
        // otherwise replace another run's macro file under that name.
        if (!fs.create(macro, {})) {
            fs.remove(temp);
            continue;
        }
        // Appended, with no flush to disk: the file lives for one run.
        if (!fs.append(temp, text) || !fs.replace(temp, macro)) {
            fs.remove(temp);
            fs.remove(macro);
            return std::nullopt;
        }
        return MacroFile(macro);
    }
    return std::nullopt;
}

std::optional<MacroFile> MacroFile::create(const QString &folder, const QByteArray &text)
{
    return create(folder, text, QRandomGenerator::global()->bounded(1u, kLastNumber + 1));
}

void MacroFile::remove() const
{
    FileSystem &fs = FileSystem::instance();
    if (fs.exists(m_path))
        fs.remove(m_path);
}
