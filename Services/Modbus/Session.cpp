#include "Services/Modbus/Session.h"

#include "Services/Modbus/FrameCodec.h"

namespace Services::Modbus {

std::size_t Session::Process() {
    std::size_t answered = 0;
    std::size_t begin = 0;
    Frame request;
    while (!broken && OutputSpace().size() >= MaxFrameSize) {
        const FrameStatus status = DecodeFrame(Input().subspan(begin), request);
        if (status == FrameStatus::Incomplete) {
            break;
        }
        if (status == FrameStatus::Invalid) {
            broken = true;
            break;
        }
        Produced(handler.Answer(request, mayWrite, OutputSpace().data()));
        begin += request.Size();
        ++answered;
    }
    Consume(begin);
    return answered;
}

} // namespace Services::Modbus
