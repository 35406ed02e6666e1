#include "vault/vaultpaths.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

// Whatever the text, a path the vault accepts is relative, has no empty,
// "." or ".." component, and survives the trip to a Windows path and back.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const VaultPaths paths('V', QStringLiteral("/vault/root"));
    const QString text = QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    QString relative;
    if (!paths.toRelative(text, relative))
        return 0;
    if (relative.startsWith('\\') || relative.contains('/'))
        std::abort();
    if (!relative.isEmpty()) {
        for (const QString &part : relative.split('\\')) {
            if (part.isEmpty() || part == QLatin1String(".") || part == QLatin1String(".."))
                std::abort();
        }
    }
    QString again;
    if (!paths.toRelative(paths.toWindows(relative), again) || again != relative)
        std::abort();
    if (VaultPaths::key(relative) != VaultPaths::key(VaultPaths::key(relative)))
        std::abort();
    return 0;
}
