#pragma once

#include "VorControl/ControlProtocol/TextIdStandardOutputs.h"

namespace VorControl::ControlProtocol {

/// The request to add many entries, or to give one another id.
class TextIdStandardOutputsArgs : public TextIdStandardOutputs {};

} // namespace VorControl::ControlProtocol
