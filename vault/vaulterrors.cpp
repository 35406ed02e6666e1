#include "vault/vaulterrors.h"

#include <array>

namespace {

struct ErrorText {
    HRESULT code;
    const char *name;
    const char *description;
};

constexpr std::array errorTexts{
    ErrorText{E_DOX_NAME_ALREADY_EXISTS, "E_DOX_NAME_ALREADY_EXISTS",
              "A file or folder with the same name already exists in the vault."},
    ErrorText{E_DOX_FILE_NOT_FOUND, "E_DOX_FILE_NOT_FOUND", "The file was not found in the vault."},
    ErrorText{E_DOX_FOLDER_NOT_FOUND, "E_DOX_FOLDER_NOT_FOUND", "The folder was not found in the vault."},
    ErrorText{E_DOX_FILE_IS_LOCKED, "E_DOX_FILE_IS_LOCKED", "The file is checked out by another user."},
    ErrorText{E_DOX_FILE_NOT_LOCKED_BY_YOU, "E_DOX_FILE_NOT_LOCKED_BY_YOU", "The file is not checked out by you."},
    ErrorText{E_DOX_INVALID_ID, "E_DOX_INVALID_ID", "The id does not name an object of the vault."},
    ErrorText{E_DOX_INVALID_NAME, "E_DOX_INVALID_NAME", "The name is not valid for a file or folder of the vault."},
    ErrorText{E_DOX_CANT_OPEN_DATABASE, "E_DOX_CANT_OPEN_DATABASE", "The vault database could not be opened."},
    ErrorText{E_DOX_DATABASE_ACCESS, "E_DOX_DATABASE_ACCESS", "The vault database could not be read or written."},
    ErrorText{E_DOX_IO_ERROR, "E_DOX_IO_ERROR", "A file of the vault's local view could not be read or written."},
    ErrorText{E_DOX_VARIABLE_NOT_FOUND, "E_DOX_VARIABLE_NOT_FOUND", "The card variable is not defined in the vault."},
    ErrorText{E_DOX_CANCELLED_BY_USER, "E_DOX_CANCELLED_BY_USER", "The operation was cancelled by the user."},
    ErrorText{E_UNEXPECTED, "E_UNEXPECTED", "Catastrophic failure."},
    ErrorText{E_NOTIMPL, "E_NOTIMPL", "Not implemented."},
    ErrorText{E_NOINTERFACE, "E_NOINTERFACE", "No such interface supported."},
    ErrorText{E_POINTER, "E_POINTER", "Invalid pointer."},
    ErrorText{E_FAIL, "E_FAIL", "Unspecified error."},
    ErrorText{E_ACCESSDENIED, "E_ACCESSDENIED", "Access is denied."},
    ErrorText{E_OUTOFMEMORY, "E_OUTOFMEMORY", "Not enough memory resources are available to complete this operation."},
    ErrorText{E_INVALIDARG, "E_INVALIDARG", "The parameter is incorrect."},
    ErrorText{DISP_E_TYPEMISMATCH, "DISP_E_TYPEMISMATCH", "Type mismatch."},
    ErrorText{DISP_E_OVERFLOW, "DISP_E_OVERFLOW", "Out of present range."},
};

} // namespace

bool vaultErrorText(HRESULT code, QString &name, QString &description)
{
    for (const ErrorText &e : errorTexts) {
        if (e.code == code) {
            name = QString::fromLatin1(e.name);
            description = QString::fromLatin1(e.description);
            return true;
        }
    }
    return false;
}
