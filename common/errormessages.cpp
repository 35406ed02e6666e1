#include "common/errormessages.h"

#include "common/errornames.h"

#include <QHash>

namespace {

struct KnownMessage {
    std::uint32_t code;
    int textNumber;
    const char16_t *message;
};

// Messages known in English, with the host's text numbers.
constexpr KnownMessage kKnownMessages[] = {
    {0x0u, 0, u"The method was successfully executed."},
    {0x1u, 1, u"The method was successfully executed but returned 'false'."},
    {0x80070057u, 34, u"An invalid argument was given to the method."},
    {0x8007000Eu, 33, u"Not enough memory to complete the operation."},
    {0x80004003u, 32, u"An invalid pointer was supplied to the method."},
    {0x80004001u, 64, u"The called method is not implemented."},
    {0x80004005u, 66, u"An unspecified error occurred."},
    {0x40218u, 26, u"Administrated plugins successfully. You should now recreate the plugin menu."},
    {0x40219u, 27, u"Menu item not valid in this context due to specified flags."},
    {0x4023Du, 267, u"Retrieved information successfully from the 32-bit add-in."},
    {0x4023Eu, 268, u"Retrieved information successfully from the 64-bit add-in"},
    {0x80040200u, 2, u"Login failed because of an invalid user name or password."},
    {0x80040207u, 9, u"Could not access the item in the database."},
    {0x80040213u, 21, u"The file could not be found."},
    {0x80040214u, 22, u"The folder could not be found."},
};

// The host numbers its first block of codes consecutively: 0x80040200 is
// text 2, up to 0x80040216, text 24.
constexpr std::uint32_t kNumberedBlockFirst = 0x80040200u;
constexpr std::uint32_t kNumberedBlockLast = 0x80040216u;
constexpr int kNumberedBlockFirstText = 2;

bool isHostName(const QString &name)
{
    static const char *const prefixes[] = {"E_DOX_", "S_DOX_", "E_FVC_", "S_FVC_", "E_ITEM_"};
    for (const char *prefix : prefixes) {
        if (name.startsWith(QLatin1String(prefix)))
            return true;
    }
    return false;
}

QHash<HRESULT, ErrorMessageRow> buildTable()
{
    QHash<HRESULT, ErrorMessageRow> table;
    for (const KnownMessage &known : kKnownMessages) {
        const auto code = static_cast<HRESULT>(known.code);
        table.insert(code, {code, known.textNumber, QString::fromUtf16(known.message)});
    }
    // The remaining host codes: the name is the message.
    for (const ErrorNameRow &row : errorNameTable()) {
        const QString name = QString::fromUtf16(row.name);
        if (table.contains(row.code) || !isHostName(name))
            continue;
        const auto code = static_cast<std::uint32_t>(row.code);
        const int number = code >= kNumberedBlockFirst && code <= kNumberedBlockLast
                               ? kNumberedBlockFirstText + static_cast<int>(code - kNumberedBlockFirst)
                               : -1;
        table.insert(row.code, {row.code, number, name});
    }
    return table;
}

struct SystemMessage {
    std::uint32_t code;
    const char16_t *message;
};

// Common system codes with the messages the system gives for them.
constexpr SystemMessage kSystemMessages[] = {
    {0x8000FFFFu, u"Catastrophic failure"},
    {0x80004002u, u"No such interface supported"},
    {0x80004004u, u"Operation aborted"},
    {0x8000000Au, u"The data necessary to complete this operation is not yet available."},
    {0x80070002u, u"The system cannot find the file specified."},
    {0x80070003u, u"The system cannot find the path specified."},
    {0x80070005u, u"Access is denied."},
    {0x80070006u, u"The handle is invalid."},
    {0x80070020u, u"The process cannot access the file because it is being used by another process."},
    {0x80070050u, u"The file exists."},
    {0x80070070u, u"There is not enough space on the disk."},
    {0x8007007Bu, u"The filename, directory name, or volume label syntax is incorrect."},
    {0x80070091u, u"The directory is not empty."},
    {0x800700B7u, u"Cannot create a file when that file already exists."},
    {0x800700CEu, u"The filename or extension is too long."},
    {0x800704C7u, u"The operation was canceled by the user."},
    {0x800705B4u, u"This operation returned because the timeout period expired."},
    {0x800706BAu, u"The RPC server is unavailable."},
    {0x800706BEu, u"The remote procedure call failed."},
    {0x80020001u, u"Unknown interface."},
    {0x80020003u, u"Member not found."},
    {0x80020004u, u"Parameter not found."},
    {0x80020005u, u"Type mismatch."},
    {0x80020006u, u"Unknown name."},
    {0x80020008u, u"Bad variable type."},
    {0x80020009u, u"Exception occurred."},
    {0x8002000Au, u"Out of present range."},
    {0x8002000Bu, u"Invalid index."},
    {0x8002000Eu, u"Invalid number of parameters."},
    {0x8002000Fu, u"Parameter not optional."},
    {0x80040110u, u"Class does not support aggregation (or class object is remote)"},
    {0x80040111u, u"ClassFactory cannot supply requested class"},
    {0x80040154u, u"Class not registered"},
    {0x800401E3u, u"Operation unavailable"},
    {0x800401F0u, u"CoInitialize has not been called."},
    {0x800401F3u, u"Invalid class string"},
    {0x80010001u, u"Call was rejected by callee."},
    {0x80010108u, u"The object invoked has disconnected from its clients."},
    {0x8001010Au, u"The message filter indicated that the application is busy."},
    {0x80080005u, u"Server execution failed"},
};

} // namespace

std::optional<ErrorMessageRow> findErrorMessage(HRESULT code)
{
    static const QHash<HRESULT, ErrorMessageRow> table = buildTable();
    const auto it = table.constFind(code);
    if (it == table.constEnd())
        return std::nullopt;
    return *it;
}

std::optional<QString> systemErrorMessage(HRESULT code)
{
    for (const SystemMessage &m : kSystemMessages) {
        if (static_cast<HRESULT>(m.code) == code)
            return QString::fromUtf16(m.message);
    }
    return std::nullopt;
}
