#include "mainwindow/rules/image_param.h"

#include "mainwindow/rules/param_codes.h"

#include <cstring>

namespace rules {

void fillImageParam(const ImageControls& controls, ImageParam* param)
{
    // Byte by byte, so that the padding, which the library receives too, is zero.
    std::memset(param, 0, sizeof(*param));

    param->bAutoLevel = controls.autoLevel ? 1 : 0;
    param->bAutoCropDeskew = controls.autoCrop ? 1 : 0;
    if (holdsBlackWhite(controls.colorMode)) {
        param->nThresold = controls.threshold;
    } else {
        param->nBrightness = controls.brightness;
        param->nContrast = controls.contrast;
        param->nGamma = static_cast<float>(controls.gamma);
    }
    param->nRotateAngle = rotateCode(controls.rotation);
    param->nColorDropout = dropoutCode(controls.dropout);
    param->bAdvColorDropout = controls.reinforcedDropout ? 1 : 0;
    param->nSplit = splitCode(controls.merge);
    param->nMerge = mergeCode(controls.merge);
    param->nDenoise = denoiseCode(controls.denoiseIndex);
    param->nBackGround = controls.removeBackground ? 1 : 0;
    param->bAutoText = controls.textOrientation ? 1 : 0;
    param->nAutoTextMode = textModeCode(controls.textOrientation, controls.textOrientationMode);
    param->bMultiFeed = controls.multiFeed ? 1 : 0;
    param->bRemoveHole = controls.removeHole ? 1 : 0;
    param->bRemoveBlank = controls.removeBlank ? 1 : 0;
    param->nBlankThresoldValue = controls.blankThreshold;
    param->bDeviceOption = controls.deviceOption ? 1 : 0;
}

} // namespace rules
