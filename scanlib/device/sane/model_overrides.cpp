#include "scanlib/device/sane/model_overrides.h"

#include "scanlib/base/library_log.h"

#include <fstream>

namespace orva {

namespace {

std::string trimmed(const std::string& text)
{
    constexpr char kBlanks[] = " \t\r";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    return begin == std::string::npos
        ? ""
        : text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

} // namespace

ModelOverrides modelOverrides(const std::filesystem::path& file, const std::string& deviceName)
{
    ModelOverrides result;
    std::ifstream lines(file);
    std::string line;
    bool applies = false;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::string text = trimmed(line);
        const std::size_t equals = text.find('=');
        if (text.empty() || text.front() == '#') {
            continue;
        }
        if (text.front() == '[' && text.back() == ']') {
            const std::string part = trimmed(text.substr(1, text.size() - 2));
            applies = !part.empty() && deviceName.find(part) != std::string::npos;
        } else if (equals == std::string::npos || equals == 0) {
            libraryLog("%s:%d is left out: %s", file.c_str(), number, line.c_str());
        } else if (applies) {
            result.emplace_back(trimmed(text.substr(0, equals)), trimmed(text.substr(equals + 1)));
        }
    }
    return result;
}

} // namespace orva
