#pragma once

#include "addin/addinservices.h"
#include "addin/taskpage.h"

// The print task's set-up pages in the order the set-up dialog shows them.
inline constexpr PageId PrintSetupPages[] = {PageId::Printer, PageId::PaperSize, PageId::Margins, PageId::PrintFiles};

// One of the print task's set-up pages; null for any other page.
std::unique_ptr<TaskPage> createPrintPage(PageId id, const PageContext &context, TextLookup text);
