// The module: its count of live objects and class object locks, and the work behind its four
// entry points (component/ModuleExports.cpp), which a shared library exports.
#pragma once

#include "platform/ComBase.h"

namespace parcelon {

// Sessions and forms alive (alone or aggregated), and LockServer locks held.
LONG ModuleLiveObjects();
LONG ModuleLocks();

// S_OK when no object and no lock is alive, S_FALSE otherwise.
HRESULT CanUnloadModule();

// Registers both classes: on Windows the registry scripts and the type library; elsewhere the
// class objects in the process's class table and the class names for CLSIDFromProgID. A failed
// registration removes what it wrote.
HRESULT RegisterModule();
// Removes what RegisterModule wrote.
HRESULT UnregisterModule();

}  // namespace parcelon
