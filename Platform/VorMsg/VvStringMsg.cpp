#include "VorMsg/VvStringMsg.h"

#include "VorMsg/VvMsgObject.h"

#include <string>

namespace {

class StringMsgObject : public VvMsgObject {
public:
    StringMsgObject(yAllocator allocator, std::string_view text)
        : VvMsgObject(yType_VvStringMsg, allocator)
        , text(text) {}

    const std::string text;
};

} // namespace

const yType yType_VvStringMsg{&yType_VvMsg, &yObject_Delete<StringMsgObject>};

yStatus VvStringMsg_Construct(VvStringMsg* msg, std::string_view text, yAllocator allocator) {
    return VvMsg_Make<StringMsgObject>("VvStringMsg_Construct", msg, allocator, text);
}

const char* VvStringMsg_Value(VvStringMsg msg) {
    return yObject_As<StringMsgObject>(msg)->text.c_str();
}

std::size_t VvStringMsg_Length(VvStringMsg msg) {
    return yObject_As<StringMsgObject>(msg)->text.size();
}
