#include "sdk/device_info_json.h"

#include <locale.h>

#include <algorithm>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <limits>
#include <stdexcept>

namespace device_info_json {
namespace {

const cJSON* member(const cJSON* object, const char* key)
{
    return cJSON_GetObjectItemCaseSensitive(object, key);
}

int integerOf(const cJSON& item)
{
    if (!cJSON_IsString(&item)) {
        return item.valueint;
    }
    const long value = std::strtol(item.valuestring, nullptr, 10);
    return static_cast<int>(
        std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

// std::stof, but with "." as decimal point whatever the locale: the text comes from a device.
float floatOf(const cJSON& item)
{
    if (!cJSON_IsString(&item)) {
        return static_cast<float>(item.valuedouble);
    }
    static const locale_t plain = ::newlocale(LC_ALL_MASK, "C", nullptr);
    char* end = nullptr;
    errno = 0;
    const float value = ::strtof_l(item.valuestring, &end, plain);
    if (end == item.valuestring) {
        throw std::invalid_argument("stof");
    }
    if (errno == ERANGE) {
        throw std::out_of_range("stof");
    }
    return value;
}

void assign(bool& out, const cJSON& item)
{
    out = integerOf(item) != 0;
}
void assign(int& out, const cJSON& item)
{
    out = integerOf(item);
}
void assign(float& out, const cJSON& item)
{
    out = floatOf(item);
}

template <typename Field>
bool readMember(const cJSON* object, const char* key, Field& out)
{
    const cJSON* item = member(object, key);
    if (item == nullptr) {
        return false;
    }
    assign(out, *item);
    return true;
}

} // namespace

int readTimes(const cJSON* root, const char* key, stSleep_AutoOff& out)
{
    if (root == nullptr) {
        return kNoTree;
    }
    const cJSON* object = member(root, key);
    const bool complete = object != nullptr && readMember(object, "nEnable", out.nEnable)
        && readMember(object, "nMix", out.nMin) && readMember(object, "nMax", out.nMax)
        && readMember(object, "nStep", out.nStep) && readMember(object, "chUnit", out.chUnit)
        && readMember(object, "value", out.value);
    return complete ? 0 : kNotRead;
}

int readPrefeed(const cJSON* root, const char* key, structPrefeed& out)
{
    if (root == nullptr) {
        return kNoTree;
    }
    const cJSON* object = member(root, key);
    const bool complete = object != nullptr && readMember(object, "nCap", out.nCap)
        && readMember(object, "nEnable", out.nEnable) && readMember(object, "value", out.value);
    return complete ? 0 : kNotRead;
}

bool readInteger(const cJSON* root, const char* key, int& out)
{
    return root != nullptr && readMember(root, key, out);
}

} // namespace device_info_json
