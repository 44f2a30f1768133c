#pragma once

#include "Vor/Exception.h"
#include "Vor/Logging.h"
#include "VorControl/ControlProtocol/IProtocolRegisterAssembly.h"

#include <exception>
#include <utility>

namespace VorControl::ControlProtocol {

/// BeginLock of an assembly for a scope.
class AssemblyLock {
public:
    explicit AssemblyLock(const IProtocolRegisterAssembly& assembly)
        : assembly(&assembly) {
        assembly.BeginLock();
    }
    AssemblyLock(const AssemblyLock&) = delete;
    AssemblyLock& operator=(const AssemblyLock&) = delete;

    /// EndLock. Throws what that throws; the destructor, which does the same, logs it.
    void End() { std::exchange(assembly, nullptr)->EndLock(); }

    ~AssemblyLock() {
        if (assembly == nullptr) {
            return;
        }
        try {
            End();
        } catch (const std::exception& exception) {
            Vor::LogError("Exception thrown in destructor");
            Vor::Exception::LogException(exception);
            Vor::Exception::LogBackTrace(exception);
        }
    }

private:
    const IProtocolRegisterAssembly* assembly;
};

} // namespace VorControl::ControlProtocol
