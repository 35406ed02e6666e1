#pragma once

// The raw table of English messages by result code. Callers that want the
// message to show (translated, host codes first) use errortexts.h; this is
// the data behind it.

#include "host/hresult.h"

#include <QString>
#include <optional>

// A row of the message table: the text number under which the host's string
// service keeps the translated message (section "ErrorCodes", module
// "DoxInterface"; -1 when the host has no number for it) and the English
// message.
struct ErrorMessageRow {
    HRESULT code;
    int textNumber;
    QString message;
};

// The message row of a code, if it has one. Every host code of the name
// table has a row; where no English message is known the name stands as the
// message.
std::optional<ErrorMessageRow> findErrorMessage(HRESULT code);

// What the operating system says for a common system result code (the
// messages COM and the file system give for them); nullopt when unknown.
std::optional<QString> systemErrorMessage(HRESULT code);
