#include "Services/Common/PluginEntry.h"

#include <exception>

namespace {

/// A type of this file only.
class OwnException : public std::exception {
public:
    const char* what() const noexcept override { return "thrown by the service"; }
};

} // namespace

void Services::Common::FillPlugin(VorControl::ControlPlugin&) {
    throw OwnException();
}
