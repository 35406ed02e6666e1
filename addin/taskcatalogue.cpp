#include "addin/taskcatalogue.h"

namespace TaskCatalogue {

namespace {

const Kind Kinds[] = {
    {Convert, {136, "Convert Files"}, {139, "Converts Mecadra files from one format to another"}, 209, true},
    {Print, {137, "Print Files"}, {140, "Prints selected documents with Mecadra"}, 210, true},
    {ExecuteScript, {138, "Execute Script"}, {141, "Executes script on selected documents"}, 211, false},
};

} // namespace

const Kind &kind(std::int32_t type)
{
    for (const Kind &k : Kinds)
        if (k.type == type)
            return k;
    return Kinds[2];
}

std::vector<Page> setupPages(std::int32_t type)
{
    std::vector<Page> pages{{PageId::MenuCommand, {129, "Menu Command"}}};
    switch (type) {
    case Convert:
        pages.push_back({PageId::ConversionSettings, {19, "Conversion Settings"}});
        pages.push_back({PageId::FileCard, {20, "File Card"}});
        pages.push_back({PageId::OutputFileDetails, {21, "Output File Details"}});
        break;
    case Print:
        pages.push_back({PageId::Printer, {13, "Printer"}});
        pages.push_back({PageId::PaperSize, {14, "Paper Size and Orientation"}});
        pages.push_back({PageId::Margins, {15, "Margins"}});
        pages.push_back({PageId::PrintFiles, {16, "Files"}});
        break;
    default:
        pages.push_back({PageId::Script, {2, "Script"}});
        break;
    }
    return pages;
}

} // namespace TaskCatalogue
