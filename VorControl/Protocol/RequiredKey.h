#pragma once

#include "VorApi/RequestInfo.h"

#include <string>

namespace VorControl::Protocol {

/// The value of a parameter of the path. Fails with yERROR_PARAMETER, and the text if it isn't null, without it.
const std::string& RequiredKey(const VorApi::RequestInfo& request, const char* name, const char* failureText = nullptr);

} // namespace VorControl::Protocol
