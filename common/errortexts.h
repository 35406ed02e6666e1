#pragma once

// What callers use to turn a result code into words: the message for a
// person and the symbolic name for a log. errornames.h and errormessages.h
// are only the tables behind these functions.

#include "host/hoststrings.h"
#include "host/hresult.h"

#include <QString>
#include <functional>
#include <memory>

// Turns result codes into the readable message (for message boxes and logs)
// and the symbolic name (for technical logs). Messages of the host's own
// codes come from the host's string service when it has them, else from the
// add-in's English text. None of these fails: unknown codes still get a text
// and a name.

// The product whose string modules the host's string service opens.
inline constexpr char16_t kHostStringProduct[] = u"Mecadra Vaultora";

// Creates the host's string service; may return null when there is none.
using HostStringServiceFactory = std::function<std::shared_ptr<IHostStringService>()>;

// Replaces the factory (an empty function: there is no service) and returns
// the previous one. The default reads the language folder (see
// LanguageStringService).
HostStringServiceFactory setHostStringServiceFactory(HostStringServiceFactory factory);

// Text number of a module's section from the host's string service, or
// englishDefault when the service, the module or the text is missing.
QString hostText(int number, const QString &englishDefault, const QString &module, const QString &section);

QString errorText(HRESULT code);
QString errorName(HRESULT code);
// Fills whichever of text and name is given.
void errorInformation(HRESULT code, QString *text, QString *name);

// The message of a database error code.
QString databaseErrorText(HRESULT code);
