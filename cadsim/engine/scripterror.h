#pragma once

#include <QString>

#include <cstdint>
#include <exception>

namespace cadsim {

// A position in the macro text, 1-based; 0 means unknown.
struct SourcePos {
    int line = 0;
    int column = 0;
};

// A run-time error as macros see it through the Err object: VBA error number and description.
// The engine fills in the position of the statement that raised it when it is not yet known.
class ScriptError final : public std::exception {
public:
    ScriptError(int number, QString description = {}, SourcePos pos = {});

    int number() const { return m_number; }
    const QString &description() const { return m_description; }
    SourcePos pos() const { return m_pos; }
    void setPos(SourcePos pos) { m_pos = pos; }
    const char *what() const noexcept override;

    // What Err.Raise states besides the number; empty for the engine's own errors.
    const QString &source() const { return m_source; }
    const QString &helpFile() const { return m_helpFile; }
    std::int32_t helpContext() const { return m_helpContext; }
    void setRaisedDetails(QString source, QString helpFile, std::int32_t helpContext);

    // The standard description of a run-time error number ("Type mismatch" for 13).
    static QString standardDescription(int number);

private:
    int m_number;
    QString m_description;
    SourcePos m_pos;
    QString m_source;
    QString m_helpFile;
    std::int32_t m_helpContext = 0;
    mutable QByteArray m_what;
};

// Run-time error numbers the engine raises itself.
namespace ErrNo {
inline constexpr int ReturnWithoutGoSub = 3;
inline constexpr int InvalidCall = 5;
inline constexpr int Overflow = 6;
inline constexpr int SubscriptOutOfRange = 9;
inline constexpr int ArrayFixed = 10;
inline constexpr int DivisionByZero = 11;
inline constexpr int TypeMismatch = 13;
inline constexpr int ResumeWithoutError = 20;
inline constexpr int BadFileNameOrNumber = 52;
inline constexpr int FileNotFound = 53;
inline constexpr int BadFileMode = 54;
inline constexpr int FileAlreadyOpen = 55;
inline constexpr int FileAlreadyExists = 58;
inline constexpr int InputPastEnd = 62;
inline constexpr int TooManyFiles = 67;
inline constexpr int PermissionDenied = 70;
inline constexpr int PathFileAccess = 75;
inline constexpr int PathNotFound = 76;
inline constexpr int ObjectVariableNotSet = 91;
inline constexpr int InvalidProcedureCall = 5;
inline constexpr int CannotCreateObject = 429;
inline constexpr int ObjectRequired = 424;
inline constexpr int NoSuchMember = 438;
inline constexpr int ArgumentNotOptional = 449;
inline constexpr int DllEntryNotFound = 453;
} // namespace ErrNo

} // namespace cadsim
