#include "Services/Modbus/Session.h"

#include <cstring>

namespace Services::Modbus {

std::size_t Session::Process() {
    std::size_t answered = 0;
    std::size_t begin = 0;
    Frame request;
    while (!broken && OutputCapacity - outputEnd >= MaxFrameSize) {
        const FrameStatus status = DecodeFrame(std::span(input).first(inputEnd).subspan(begin), request);
        if (status == FrameStatus::Incomplete) {
            break;
        }
        if (status == FrameStatus::Invalid) {
            broken = true;
            break;
        }
        outputEnd += handler.Answer(request, mayWrite, &output[outputEnd]);
        begin += request.Size();
        ++answered;
    }
    if (begin > 0) {
        inputEnd -= begin;
        std::memmove(input.data(), input.data() + begin, inputEnd);
    }
    return answered;
}

void Session::Sent(std::size_t count) {
    outputBegin += count;
    if (outputBegin == outputEnd) {
        outputBegin = outputEnd = 0;
    }
}

} // namespace Services::Modbus
