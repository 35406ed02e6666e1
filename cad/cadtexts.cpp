#include "cad/cadtexts.h"

#include "common/translator.h"

#include <array>

namespace {

struct ReasonRow {
    int errorCode;
    CadTexts::Text text;
};

constexpr std::array kReasons{
    ReasonRow{1, {96, "Invalid argument provided in macro."}},
    ReasonRow{2, {97, "Macros are disabled."}},
    ReasonRow{5, {98, "Out of memory."}},
    ReasonRow{6, {99, "Invalid procedure name."}},
    ReasonRow{7, {100, "Invalid property type."}},
    ReasonRow{8, {101, "Sub or Function expected."}},
    ReasonRow{9, {102, "Invalid parameter count."}},
    ReasonRow{10, {103, "Invalid variable type."}},
    ReasonRow{12, {104, "Unhandled exception."}},
    ReasonRow{13, {105, "Value overflow."}},
    ReasonRow{14, {106, "Type mismatch."}},
    ReasonRow{15, {107, "Required parameter missing."}},
    ReasonRow{20, {108, "Call failed."}},
    ReasonRow{22, {109, "Invalid index provided."}},
    ReasonRow{23, {110, "Permission denied."}},
    ReasonRow{25, {111, "Too many open files."}},
    ReasonRow{27, {112, "File save failed."}},
    // 113 is the details caption "Converted Files"; this reason has a number of its own.
    ReasonRow{28, {9008, "File open failed."}},
};

} // namespace

QString CadTexts::Text::translated() const { return tr_ts(number, QString::fromLatin1(english)); }

const CadTexts::Text *CadTexts::macroErrorReason(int errorCode)
{
    for (const ReasonRow &row : kReasons) {
        if (row.errorCode == errorCode)
            return &row.text;
    }
    return nullptr;
}
