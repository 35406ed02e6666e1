#include "print/printsettings.h"

namespace PaperSizes {

const std::vector<Entry> &table()
{
    static const std::vector<Entry> sizes = {
        {DefaultCode, "Default", false, "DEF"},
        {0, "A", true, "A"},
        {1, "AVertical", false, nullptr},
        {2, "B", true, "B"},
        {3, "C", true, "C"},
        {4, "D", true, "D"},
        {5, "E", true, "E"},
        {6, "A0", true, "A0"},
        {7, "A1", true, "A1"},
        {8, "A2", true, "A2"},
        {9, "A3", true, "A3"},
        {10, "A4", true, "A4"},
        {11, "A4Vertical", false, nullptr},
        {12, "User Defined", false, nullptr},
    };
    return sizes;
}

std::vector<Entry> listed()
{
    std::vector<Entry> out;
    for (const Entry &e : table())
        if (e.listed)
            out.push_back(e);
    return out;
}

QString label(std::int32_t code)
{
    for (const Entry &e : table())
        if (e.code == code)
            return QString::fromLatin1(e.label);
    return {};
}

QString printerKey(std::int32_t code)
{
    for (const Entry &e : table())
        if (e.code == code && e.key)
            return QStringLiteral("__printer_papsize_") + QLatin1String(e.key);
    return {};
}

} // namespace PaperSizes
