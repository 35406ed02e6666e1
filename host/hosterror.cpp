#include "host/hosterror.h"

HostError::HostError(HRESULT code, QString context)
    : m_code(code), m_context(std::move(context))
{
    m_what = QStringLiteral("0x%1").arg(static_cast<quint32>(code), 8, 16, QLatin1Char('0')).toStdString();
    if (!m_context.isEmpty())
        m_what += ": " + m_context.toStdString();
}

HRESULT throwIfFailed(HRESULT hr, const QString &context)
{
    if (failed(hr))
        throw HostError(hr, context);
    return hr;
}
