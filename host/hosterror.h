#pragma once

#include "host/hresult.h"

#include <QString>
#include <exception>
#include <string>

// A failed host or CAD call inside a command. Caught at the handler boundary,
// where its code becomes the command's result.
class HostError final : public std::exception
{
public:
    explicit HostError(HRESULT code, QString context = {});

    HRESULT code() const noexcept { return m_code; }
    const QString &context() const noexcept { return m_context; }
    const char *what() const noexcept override { return m_what.c_str(); }

private:
    HRESULT m_code;
    QString m_context;
    std::string m_what;
};

// Throws HostError when hr is a failure; returns hr otherwise (S_OK or S_FALSE).
HRESULT throwIfFailed(HRESULT hr, const QString &context = {});
