#pragma once

#include <QString>

// The connection's messages: text numbers of section "TS" with their English
// fall-backs. The connection's own numbers start at 9001.
namespace CadTexts {

struct Text {
    int number;
    const char *english;
    QString translated() const;
};

inline constexpr Text NotInstalled{9001, "Mecadra %1 is not installed."};
inline constexpr Text FailedToStart{9002, "Failed to start Mecadra %1."};
inline constexpr Text NoRevision{9003, "Failed to get Mecadra revision number."};
inline constexpr Text NoEventHandlers{9004, "Failed to attach event handlers to Mecadra."};
inline constexpr Text NotInvisible{9005, "Failed to set Mecadra main window as invisible."};
inline constexpr Text FailedToClose{9006, "Failed to close Mecadra application."};
inline constexpr Text MacroTimedOut{9007, "The macro did not finish within %1 seconds."};

inline constexpr Text FailedToRunMacro{12, "Failed to run Mecadra macro."};
inline constexpr Text Reason{95, "Reason:"};

// The reason for a run call's error code; nothing for codes without one.
const Text *macroErrorReason(int errorCode);

} // namespace CadTexts
