#pragma once

#include "host/hostobject.h"
#include "host/hresult.h"

#include <QString>

// Creates the objects of one class of a component module.
class IClassFactory : public virtual HostObject
{
public:
    // outer is the aggregating object or null.
    virtual HRESULT CreateInstance(const HostObjectPtr &outer, HostObjectPtr &object) = 0;
};

// The four entry points every component module exports (extern "C").
// Class ids are texts in braces, e.g. "{D22F1795-5A92-4B1E-9FD9-3A9D93D11FEB}".
using DllGetClassObjectFn = HRESULT (*)(const QString &classId, HostObjectPtr &factory);
using DllCanUnloadNowFn = HRESULT (*)();
using DllRegisterServerFn = HRESULT (*)();
using DllUnregisterServerFn = HRESULT (*)();

inline constexpr HRESULT CLASS_E_CLASSNOTAVAILABLE = makeHresult(0x80040111u);
inline constexpr HRESULT SELFREG_E_CLASS = makeHresult(0x80040201u);
