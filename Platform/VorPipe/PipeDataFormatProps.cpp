#include "VorPipe/PipeDataFormatProps.h"

#include "Vor/VorGetText.h"

namespace VorPipe {

PipeDataFormatProps::PipeDataFormatProps()
    : Group("") {
    VorGetText& texts = VorGetText::GetInstance();
    Register("type", type, texts.DPGetText("BE", "beApp.ctrl", "Type"), 100);
    Register("arrayed", arrayed, texts.DPGetText("BE", "beApp.ctrl", "Arrayed"), 100);
}

} // namespace VorPipe
