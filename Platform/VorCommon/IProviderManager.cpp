#include "VorCommon/IProviderManager.h"

#include "VorCommon/IDigitalOutputProvider.h"

namespace VorCommon {

template class IProviderManager<IDigitalOutputProvider>;

} // namespace VorCommon
