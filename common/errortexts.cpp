#include "common/errortexts.h"

#include "common/errormessages.h"
#include "common/errornames.h"
#include "common/languagestringservice.h"

#include <mutex>

namespace {

constexpr std::uint32_t kNetworkFirst = 0x80072EE0u;
constexpr std::uint32_t kNetworkLast = 0x80072F8Fu;
constexpr std::uint32_t kArchiveFirst = 0x80040432u;
constexpr std::uint32_t kArchiveLast = 0x800404C4u;
constexpr std::uint32_t kDispatchFirst = 0x80040201u;
constexpr std::uint32_t kDispatchLast = 0x8004FFFFu;
constexpr std::uint32_t kDatabaseBase = 0x80040206u;

std::mutex g_factoryMutex;

HostStringServiceFactory &factorySlot()
{
    static HostStringServiceFactory factory = [] {
        return std::shared_ptr<IHostStringService>(std::make_shared<LanguageStringService>());
    };
    return factory;
}

std::shared_ptr<IHostStringService> createService()
{
    HostStringServiceFactory factory;
    {
        std::lock_guard lock(g_factoryMutex);
        factory = factorySlot();
    }
    return factory ? factory() : nullptr;
}

bool inRange(HRESULT code, std::uint32_t first, std::uint32_t last)
{
    const auto value = static_cast<std::uint32_t>(code);
    return value >= first && value <= last;
}

QString networkText(HRESULT code)
{
    const int number = static_cast<int>(static_cast<std::uint32_t>(code) & 0xFFFFu);
    switch (number) {
    case 12007:
        return QStringLiteral("The server name could not be resolved.");
    case 12029:
        return QStringLiteral("The attempt to connect to the server failed.");
    case 12030:
        return QStringLiteral("The connection with the server has been terminated.");
    case 12031:
        return QStringLiteral("The connection with the server has been reset.");
    case 12163:
        return QStringLiteral("The Internet connection has been lost");
    default:
        return QStringLiteral("A WinINet error occured (code=%1).").arg(number);
    }
}

QString hex(HRESULT code)
{
    return QString::number(static_cast<std::uint32_t>(code), 16).toUpper();
}

} // namespace

HostStringServiceFactory setHostStringServiceFactory(HostStringServiceFactory factory)
{
    std::lock_guard lock(g_factoryMutex);
    HostStringServiceFactory previous = std::move(factorySlot());
    factorySlot() = std::move(factory);
    return previous;
}

QString hostText(int number, const QString &englishDefault, const QString &module, const QString &section)
{
    const std::shared_ptr<IHostStringService> service = createService();
    if (!service)
        return englishDefault;
    // Only S_OK opens the module; S_FALSE and other successes count as failure.
    if (service->OpenModule(QString::fromUtf16(kHostStringProduct), module) != S_OK)
        return englishDefault;
    const QString text = service->GetText(number, section);
    return text.isEmpty() ? englishDefault : text;
}

QString errorText(HRESULT code)
{
    if (const auto row = findErrorMessage(code)) {
        if (row->textNumber < 0)
            return row->message;
        return hostText(row->textNumber, row->message, QStringLiteral("DoxInterface"),
                        QStringLiteral("ErrorCodes"));
    }
    if (inRange(code, kNetworkFirst, kNetworkLast))
        return networkText(code);
    if (inRange(code, kArchiveFirst, kArchiveLast)) {
        const auto offset = static_cast<int>(static_cast<std::uint32_t>(code) - kArchiveFirst);
        return QStringLiteral("Archive server revision control error %1 (0x0%2)").arg(offset).arg(hex(code));
    }
    if (const auto system = systemErrorMessage(code))
        return *system;
    if (inRange(code, kDispatchFirst, kDispatchLast)) {
        const int number = static_cast<int>(static_cast<std::uint32_t>(code) & 0xFFFFu) - 0x200;
        return QStringLiteral("IDispatch error #%1").arg(number);
    }
    return QStringLiteral("Unknown error 0x%1").arg(hex(code));
}

QString errorName(HRESULT code)
{
    for (const ErrorNameRow &row : errorNameTable()) {
        if (row.code == code)
            return QString::fromUtf16(row.name);
    }
    if (inRange(code, kArchiveFirst, kArchiveLast))
        return QStringLiteral("E_FVC_RCE_ERR_%1").arg(static_cast<std::uint32_t>(code) - kArchiveFirst);
    return QStringLiteral("0x%1").arg(hex(code));
}

void errorInformation(HRESULT code, QString *text, QString *name)
{
    if (text)
        *text = errorText(code);
    if (name)
        *name = errorName(code);
}

QString databaseErrorText(HRESULT code)
{
    const std::int64_t n = static_cast<std::int64_t>(static_cast<std::uint32_t>(code)) - kDatabaseBase;
    const QString module = QStringLiteral("Database");
    const QString section = QStringLiteral("Error Messages");
    if (n == 0 || n == 27)
        return hostText(208, QStringLiteral("The database could not be opened."), module, section);
    if (n == 26)
        return hostText(207, QStringLiteral("The server was not found."), module, section);
    if (n == 28)
        return hostText(209, QStringLiteral("The ODBC data source was not found."), module, section);
    return errorText(E_DOX_DATABASE_ACCESS);
}
