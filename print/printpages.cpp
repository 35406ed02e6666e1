#include "print/printpages.h"

#include "print/filespage.h"
#include "print/marginspage.h"
#include "print/papersizepage.h"
#include "print/printerpage.h"

std::unique_ptr<TaskPage> createPrintPage(PageId id, const PageContext &context, TextLookup text)
{
    switch (id) {
    case PageId::Printer: return std::make_unique<CPrinterDlg>(std::move(text));
    case PageId::PaperSize: return std::make_unique<CPaperSizeDlg>(std::move(text));
    case PageId::Margins: return std::make_unique<CMarginsDlg>(std::move(text));
    case PageId::PrintFiles: return std::make_unique<CFilesDlg>(context.vault, std::move(text));
    default: return nullptr;
    }
}
