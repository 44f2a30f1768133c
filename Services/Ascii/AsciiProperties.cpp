#include "Services/Ascii/AsciiProperties.h"

#include "Services/Common/Translate.h"

namespace Services::Ascii {

using Common::Translate;

AsciiProperties::AsciiProperties()
    : TcpServerProperties("errors", Translate("Errors")) {
    RegisterCounter("dropped", dropped, Translate("Dropped Frames"));
}

} // namespace Services::Ascii
