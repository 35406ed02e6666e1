#include "app/cli.h"

#include "common/errortexts.h"

#include <optional>

namespace {

// "0x80040213" (hex, any case) or a decimal number, possibly negative; the
// value must fit in 32 bits, signed or unsigned.
std::optional<HRESULT> parseCode(const QString &text)
{
    bool ok = false;
    const QString trimmed = text.trimmed();
    if (trimmed.startsWith(QLatin1String("0x"), Qt::CaseInsensitive)) {
        const QString digits = trimmed.mid(2);
        if (digits.isEmpty() || digits.startsWith(QLatin1Char('+')) || digits.startsWith(QLatin1Char('-')))
            return std::nullopt;
        const qulonglong value = digits.toULongLong(&ok, 16);
        if (!ok || value > 0xFFFFFFFFull)
            return std::nullopt;
        return static_cast<HRESULT>(static_cast<std::uint32_t>(value));
    }
    const qlonglong value = trimmed.toLongLong(&ok, 10);
    if (!ok || value < -2147483648LL || value > 0xFFFFFFFFLL)
        return std::nullopt;
    return static_cast<HRESULT>(static_cast<std::uint32_t>(value & 0xFFFFFFFFLL));
}

} // namespace

int runErrorCommand(CommandContext &context)
{
    if (context.args.contains(QLatin1String("--help")) || context.args.contains(QLatin1String("-h"))) {
        context.out << "Usage: mctask error CODE\n\n"
                       "Prints the name and the message of a result code. CODE is hexadecimal with\n"
                       "0x (0x80040213) or decimal, negative allowed (-2147220973).\n";
        return 0;
    }
    if (context.args.size() != 1)
        throw CliError(QStringLiteral("error: expected one CODE (see mctask error --help)"));
    const auto code = parseCode(context.args.first());
    if (!code)
        throw CliError(QStringLiteral("error: '%1' is not a result code; give hexadecimal with 0x or decimal")
                           .arg(context.args.first()));
    QString text;
    QString name;
    errorInformation(*code, &text, &name);
    context.out << name << ": " << text << '\n';
    return 0;
}
