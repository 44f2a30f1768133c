#include "VorApi/Params/Value.h"

namespace Vor::Properties {

template class Internal::ValueWrapper<Params::ScaleOption>;
template class Value<Params::ScaleOption>;

} // namespace Vor::Properties

namespace Vor::Params {

template class Value<bool>;
template class Value<unsigned short>;
template class Value<unsigned int>;
template class Value<unsigned long long>;
template class Value<long long>;
template class Value<std::string>;
template class Value<std::vector<std::string>>;
template class Value<std::vector<unsigned short>>;

} // namespace Vor::Params
