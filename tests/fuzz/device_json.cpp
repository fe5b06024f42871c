// The text that a device tells about itself.
#include "sdk/device_info_json.h"
#include "tests/fuzz/scratch.h"

#include <algorithm>
#include <memory>

namespace {

constexpr std::size_t kLongest = 1023; ///< what the library's buffer holds

struct FreeTree
{
    void operator()(cJSON* tree) const { cJSON_Delete(tree); }
};

bool isResult(int result)
{
    return result == 0 || result == device_info_json::kNoTree
        || result == device_info_json::kNotRead;
}

void readPrefeed(const cJSON* tree)
{
    structPrefeed record;
    try {
        require(isResult(device_info_json::readPrefeed(tree, "Prefeed", record)), "a result code");
    } catch (const std::invalid_argument& error) {
        require(error.what() == std::string("stof"), "the text of the exception");
    } catch (const std::out_of_range& error) {
        require(error.what() == std::string("stof"), "the text of the exception");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string text(reinterpret_cast<const char*>(data), std::min(size, kLongest));
    const std::unique_ptr<cJSON, FreeTree> tree(cJSON_Parse(text.c_str()));
    for (const char* key : { "AutoOff", "InSleep" }) {
        stSleep_AutoOff record;
        record.value = -7;
        const int result = device_info_json::readTimes(tree.get(), key, record);
        require(isResult(result), "a result code");
        require(result == 0 || record.value == -7, "the last member is read last");
        require((tree == nullptr) == (result == device_info_json::kNoTree), "-604 without a tree");
    }
    readPrefeed(tree.get());
    int isHigh = -7;
    require(
        device_info_json::readInteger(tree.get(), "IsHigh", isHigh) || isHigh == -7, "left alone");
    return 0;
}
