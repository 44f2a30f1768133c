#include "VorControl/Control/ControlCreateException.h"

#include <source_location>

namespace VorControl {

namespace {

Vor::Exception Wrap(const std::exception& cause, const std::source_location& where = std::source_location::current()) {
    const auto* known = dynamic_cast<const Vor::Exception*>(&cause);
    const int line = static_cast<int>(where.line());
    const yStatus status = Vor::Exception::StatusOf(cause);
    if (known != nullptr && !known->HasText()) {
        return {line, where.file_name(), status, where.function_name()};
    }
    return {line, where.file_name(), status, where.function_name(), "%s", cause.what()};
}

} // namespace

ControlCreateException::ControlCreateException(const std::string& typeName, const std::exception& cause)
    : Vor::Exception(Wrap(cause))
    , typeName(std::make_shared<const std::string>(typeName)) {}

} // namespace VorControl
