#pragma once

#include <memory>

// Base of every host and add-in object. Objects are shared (reference
// counted); asking for an interface is a dynamic cast, and a missing
// interface is a null pointer that callers turn into E_NOINTERFACE or
// whatever their own rule says.
class HostObject
{
public:
    virtual ~HostObject() = default;
};

using HostObjectPtr = std::shared_ptr<HostObject>;

template <class Interface>
std::shared_ptr<Interface> queryInterface(const std::shared_ptr<HostObject> &object)
{
    return std::dynamic_pointer_cast<Interface>(object);
}
