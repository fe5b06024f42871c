#include "scanlib/session/library_config.h"

#include "scanlib/base/library_log.h"

#include <charconv>
#include <fstream>
#include <string>
#include <string_view>

namespace orva {

namespace {

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view kBlanks = " \t\r";
    const std::size_t begin = text.find_first_not_of(kBlanks);
    if (begin == std::string_view::npos) {
        return {};
    }
    return text.substr(begin, text.find_last_not_of(kBlanks) - begin + 1);
}

/// Whole numbers only, with nothing behind them.
bool parseNumber(std::string_view text, unsigned min, unsigned max, unsigned& value)
{
    unsigned number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || rest != end || number < min || number > max) {
        return false;
    }
    value = number;
    return true;
}

/// Names joined by "+", of the characters that names of models have.
bool isLanguageList(std::string_view text)
{
    const auto isNameCharacter = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
            || c == '_' || c == '-';
    };
    bool inName = false;
    for (const char c : text) {
        if (c == '+' ? !inName : !isNameCharacter(c)) {
            return false;
        }
        inName = c != '+';
    }
    return inName;
}

bool applyLine(std::string_view key, std::string_view value, LibraryConfig& config)
{
    unsigned number = 0;
    if (key == "workers" && parseNumber(value, 0, 64, number)) {
        config.limits.workers = number;
    } else if (key == "queue_megabytes" && parseNumber(value, 16, 65536, number)) {
        config.limits.queueBytes = std::size_t { number } << 20U;
    } else if (key == "search_limit_ms" && parseNumber(value, 100, 60000, number)) {
        config.listingLimit = std::chrono::milliseconds(number);
    } else if (key == "ocr_languages" && isLanguageList(value)) {
        config.recognition.languages = value;
    } else if (key == "ocr_models" && (value.empty() || value.front() == '/')) {
        config.recognition.models = value;
    } else {
        return false;
    }
    return true;
}

} // namespace

LibraryConfig readLibraryConfig(const std::filesystem::path& file, const LibraryConfig& otherwise)
{
    LibraryConfig config = otherwise;
    std::ifstream lines(file);
    std::string line;
    for (int number = 1; std::getline(lines, line); ++number) {
        const std::string_view text = trimmed(line);
        if (text.empty() || text.front() == '#') {
            continue;
        }
        const std::size_t equals = text.find('=');
        const bool known = equals != std::string_view::npos
            && applyLine(trimmed(text.substr(0, equals)), trimmed(text.substr(equals + 1)), config);
        if (!known) {
            libraryLog("%s:%d is left out: %s", file.c_str(), number, line.c_str());
        }
    }
    return config;
}

} // namespace orva
