#include "scanlib/session/device_info_text.h"

#include <cjson/cJSON.h>

#include <cmath>
#include <memory>

namespace orva {

namespace {

void addTime(cJSON* root, const char* key, const TimingCapability& time)
{
    cJSON* const object = cJSON_AddObjectToObject(root, key);
    cJSON_AddNumberToObject(object, "nEnable", time.enabled ? 1 : 0);
    cJSON_AddNumberToObject(object, "nMix", time.min); // KEPT: the reader looks for this spelling
    cJSON_AddNumberToObject(object, "nMax", time.max);
    cJSON_AddNumberToObject(object, "nStep", time.step);
    cJSON_AddNumberToObject(object, "chUnit", time.unit);
    cJSON_AddNumberToObject(object, "value", time.value);
}

} // namespace

std::string deviceInfoText(const DeviceTiming& timing)
{
    const std::unique_ptr<cJSON, decltype(&cJSON_Delete)> root(cJSON_CreateObject(), &cJSON_Delete);
    addTime(root.get(), "InSleep", timing.sleep);
    addTime(root.get(), "AutoOff", timing.autoOff);
    cJSON* const prefeed = cJSON_AddObjectToObject(root.get(), "Prefeed");
    cJSON_AddNumberToObject(prefeed, "nCap", timing.prefeedCapable ? 1 : 0);
    cJSON_AddNumberToObject(prefeed, "nEnable", timing.prefeedEnabled ? 1 : 0);
    // To the hundredth, so that 0.7f is not written with the sixteen digits of its double.
    cJSON_AddNumberToObject(
        prefeed, "value", std::round(static_cast<double>(timing.prefeedSeconds) * 100) / 100);
    cJSON_AddNumberToObject(root.get(), "IsHigh", timing.high ? 1 : 0);
    const std::unique_ptr<char, decltype(&cJSON_free)> text(
        cJSON_PrintUnformatted(root.get()), &cJSON_free);
    return text ? text.get() : "";
}

} // namespace orva
