#pragma once

#include <QString>
#include <cstdint>
#include <vector>

// The print task's variables: every choice of the print pages and the
// launch dialog, which the print macro receives by placeholder.
namespace PrintKeys {
inline const QString PrinterSelection = QStringLiteral("__printer_prseltype");
inline const QString PrinterName = QStringLiteral("__printer_prname");
inline const QString PrinterNameList = QStringLiteral("__printer_prnamelist");
inline const QString UseDrawingInfo = QStringLiteral("__printer_usedrwnfo");
inline const QString PaperSize = QStringLiteral("__printer_defpapsize");
inline const QString UserSizeChange = QStringLiteral("__printer_usersizechange");
inline const QString Orientation = QStringLiteral("__printer_deforientation");
inline const QString UserOrientChange = QStringLiteral("__printer_userorientchange");
inline const QString MarginType = QStringLiteral("__printer_margintype");
inline const QString MarginTop = QStringLiteral("__printer_margintop");
inline const QString MarginBottom = QStringLiteral("__printer_marginbottom");
inline const QString MarginLeft = QStringLiteral("__printer_marginleft");
inline const QString MarginRight = QStringLiteral("__printer_marginright");
inline const QString HeaderType = QStringLiteral("__printer_headertype");
inline const QString HeaderLeft = QStringLiteral("__printer_headerleft");
inline const QString HeaderCenter = QStringLiteral("__printer_headercenter");
inline const QString HeaderRight = QStringLiteral("__printer_headerright");
inline const QString FooterType = QStringLiteral("__printer_footertype");
inline const QString FooterLeft = QStringLiteral("__printer_footerleft");
inline const QString FooterCenter = QStringLiteral("__printer_footercenter");
inline const QString FooterRight = QStringLiteral("__printer_footerright");
inline const QString CopyCount = QStringLiteral("__printer_copycount");
inline const QString ShowPrintDialog = QStringLiteral("__printer_showprintdlg");
inline const QString AutoSelectRefs = QStringLiteral("__printer_autoselectrefstype");
inline const QString RefVersion = QStringLiteral("__printer_refversiontype");
inline const QString ErrorLogPath = QStringLiteral("ErrorLogPath");
} // namespace PrintKeys

// Printer selection modes.
enum PrinterSelection : std::int32_t { AlwaysPrinter = 0, PromptPrinter = 1, PrinterBySize = 2 };
// Margin, header and footer types.
enum PromptType : std::int32_t { PromptNone = 0, PromptUser = 1, PromptFixed = 2 };
// Which references a launch ticks by itself.
enum AutoSelect : std::int32_t { AutoSelectNone = 0, AutoSelectDrawings = 1, AutoSelectModels = 2, AutoSelectAll = 3 };
// Version of referenced files.
enum RefVersion : std::int32_t { RefVersionReferenced = 0, RefVersionLatest = 1, RefVersionPrompt = 2 };

namespace PaperSizes {

inline constexpr std::int32_t DefaultCode = -1;
inline constexpr std::int32_t A4 = 10;

struct Entry {
    std::int32_t code;
    const char *label;
    bool listed;    // offered in the paper lists
    const char *key; // suffix of the printer key the program uses; null: none
};

// The fourteen sizes in table order ("Default" first).
const std::vector<Entry> &table();
// The sizes the paper lists offer, in table order (A ... A4).
std::vector<Entry> listed();
QString label(std::int32_t code);
// The key naming the printer of a paper size: codes -1, 0 and 2 ... 10;
// every other code has none (empty).
QString printerKey(std::int32_t code);

} // namespace PaperSizes
