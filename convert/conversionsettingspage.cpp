#include "convert/conversionsettingspage.h"

CConversionSettingsPageDlg::CConversionSettingsPageDlg(const PageContext &context, ConversionTextLookup text)
    : m_values(context.launchMode, std::move(text))
{
}
