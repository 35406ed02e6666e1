#include "cadsim/engine/scripterror.h"

#include <QHash>

namespace cadsim {

ScriptError::ScriptError(int number, QString description, SourcePos pos)
    : m_number(number)
    , m_description(description.isEmpty() ? standardDescription(number) : std::move(description))
    , m_pos(pos)
{
}

const char *ScriptError::what() const noexcept
{
    m_what = QStringLiteral("Run-time error %1: %2").arg(m_number).arg(m_description).toUtf8();
    return m_what.constData();
}

void ScriptError::setRaisedDetails(QString source, QString helpFile, std::int32_t helpContext)
{
    m_source = std::move(source);
    m_helpFile = std::move(helpFile);
    m_helpContext = helpContext;
}

QString ScriptError::standardDescription(int number)
{
    static const QHash<int, QString> texts = {
        {3, QStringLiteral("Return without GoSub")},
        {5, QStringLiteral("Invalid procedure call or argument")},
        {6, QStringLiteral("Overflow")},
        {7, QStringLiteral("Out of memory")},
        {9, QStringLiteral("Subscript out of range")},
        {10, QStringLiteral("This array is fixed or temporarily locked")},
        {11, QStringLiteral("Division by zero")},
        {13, QStringLiteral("Type mismatch")},
        {14, QStringLiteral("Out of string space")},
        {16, QStringLiteral("Expression too complex")},
        {17, QStringLiteral("Can't perform requested operation")},
        {18, QStringLiteral("User interrupt occurred")},
        {20, QStringLiteral("Resume without error")},
        {28, QStringLiteral("Out of stack space")},
        {35, QStringLiteral("Sub or Function not defined")},
        {51, QStringLiteral("Internal error")},
        {52, QStringLiteral("Bad file name or number")},
        {53, QStringLiteral("File not found")},
        {54, QStringLiteral("Bad file mode")},
        {55, QStringLiteral("File already open")},
        {57, QStringLiteral("Device I/O error")},
        {58, QStringLiteral("File already exists")},
        {59, QStringLiteral("Bad record length")},
        {61, QStringLiteral("Disk full")},
        {62, QStringLiteral("Input past end of file")},
        {63, QStringLiteral("Bad record number")},
        {67, QStringLiteral("Too many files")},
        {68, QStringLiteral("Device unavailable")},
        {70, QStringLiteral("Permission denied")},
        {71, QStringLiteral("Disk not ready")},
        {74, QStringLiteral("Can't rename with different drive")},
        {75, QStringLiteral("Path/File access error")},
        {76, QStringLiteral("Path not found")},
        {91, QStringLiteral("Object variable or With block variable not set")},
        {92, QStringLiteral("For loop not initialized")},
        {93, QStringLiteral("Invalid pattern string")},
        {94, QStringLiteral("Invalid use of Null")},
        {321, QStringLiteral("Invalid file format")},
        {380, QStringLiteral("Invalid property value")},
        {423, QStringLiteral("Property or method not found")},
        {424, QStringLiteral("Object required")},
        {429, QStringLiteral("ActiveX component can't create object")},
        {438, QStringLiteral("Object doesn't support this property or method")},
        {440, QStringLiteral("Automation error")},
        {445, QStringLiteral("Object doesn't support this action")},
        {446, QStringLiteral("Object doesn't support named arguments")},
        {448, QStringLiteral("Named argument not found")},
        {449, QStringLiteral("Argument not optional")},
        {450, QStringLiteral("Wrong number of arguments or invalid property assignment")},
        {451, QStringLiteral("Property let procedure not defined and property get procedure did not return an object")},
        {453, QStringLiteral("Specified DLL function not found")},
        {457, QStringLiteral("This key is already associated with an element of this collection")},
    };
    const auto it = texts.constFind(number);
    return it != texts.constEnd() ? *it : QStringLiteral("Application-defined or object-defined error");
}

} // namespace cadsim
