#pragma once

#include "host/hostobject.h"
#include "host/hresult.h"

#include <QString>

// The host's translated string service: open a module of a product, then
// fetch texts by number and section.
class IHostStringService : public virtual HostObject
{
public:
    virtual HRESULT OpenModule(const QString &product, const QString &module) = 0;
    virtual QString GetText(std::int32_t number, const QString &section) = 0;
};
