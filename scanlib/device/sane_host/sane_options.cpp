#include "scanlib/device/sane_host/sane_options.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace orva {

namespace {

double fromWord(SANE_Value_Type type, SANE_Word word)
{
    return type == SANE_TYPE_FIXED ? SANE_UNFIX(word) : static_cast<double>(word);
}

SANE_Word toWord(SANE_Value_Type type, double value)
{
    return static_cast<SANE_Word>(
        std::lround(type == SANE_TYPE_FIXED ? value * (1 << SANE_FIXED_SCALE_SHIFT) : value));
}

SaneOption copyDescriptor(SANE_Int index, const SANE_Option_Descriptor& descriptor)
{
    SaneOption option;
    option.index = index;
    option.name = descriptor.name != nullptr ? descriptor.name : "";
    option.type = descriptor.type;
    option.unit = descriptor.unit;
    option.size = descriptor.size;
    option.capabilities = descriptor.cap;
    if (descriptor.constraint_type == SANE_CONSTRAINT_STRING_LIST
        && descriptor.constraint.string_list != nullptr) {
        for (const SANE_String_Const* text = descriptor.constraint.string_list; *text != nullptr;
             ++text) {
            option.texts.emplace_back(*text);
        }
    } else if (descriptor.constraint_type == SANE_CONSTRAINT_WORD_LIST
        && descriptor.constraint.word_list != nullptr) {
        const SANE_Word* words = descriptor.constraint.word_list;
        for (SANE_Word i = 1; i <= words[0]; ++i) {
            option.numbers.push_back(fromWord(option.type, words[i]));
        }
    } else if (descriptor.constraint_type == SANE_CONSTRAINT_RANGE
        && descriptor.constraint.range != nullptr) {
        option.hasRange = true;
        option.min = fromWord(option.type, descriptor.constraint.range->min);
        option.max = fromWord(option.type, descriptor.constraint.range->max);
        option.step = fromWord(option.type, descriptor.constraint.range->quant);
    }
    return option;
}

} // namespace

double SaneOption::nearest(double value) const
{
    if (!numbers.empty()) {
        return *std::min_element(numbers.begin(), numbers.end(),
            [&](double a, double b) { return std::abs(a - value) < std::abs(b - value); });
    }
    if (hasRange) {
        double result = std::clamp(value, min, std::max(min, max));
        if (step > 0) {
            result = min + std::round((result - min) / step) * step;
            result = result > max ? result - step : result;
        }
        return result;
    }
    return value;
}

SaneOptions::SaneOptions(const SaneApi& api, SANE_Handle handle)
    : m_api(api)
    , m_handle(handle)
{
}

Status SaneOptions::reload()
{
    SANE_Int count = 0;
    m_api.optionDescriptor(m_handle, 0); // the network driver fetches all of them at this call
    const SANE_Status status =
        m_api.controlOption(m_handle, 0, SANE_ACTION_GET_VALUE, &count, nullptr);
    if (status != SANE_STATUS_GOOD) {
        return saneFailure(status, "option count");
    }
    constexpr SANE_Int kMostOptions = 10'000;
    m_options.clear();
    for (SANE_Int i = 1; i < std::min(count, kMostOptions); ++i) {
        const SANE_Option_Descriptor* descriptor = m_api.optionDescriptor(m_handle, i);
        if (descriptor != nullptr && descriptor->type != SANE_TYPE_GROUP) {
            m_options.push_back(copyDescriptor(i, *descriptor));
        }
    }
    return {};
}

const SaneOption* SaneOptions::find(std::string_view name) const
{
    for (const SaneOption& option : m_options) {
        if (option.name == name && option.active()) {
            return &option;
        }
    }
    return nullptr;
}

const SaneOption* SaneOptions::findAny(const Words& names) const
{
    for (const std::string_view name : names) {
        if (const SaneOption* option = find(name); option != nullptr) {
            return option;
        }
    }
    return nullptr;
}

const SaneOption* SaneOptions::findSettable(std::string_view name) const
{
    const SaneOption* option = find(name);
    return option != nullptr && option->settable() ? option : nullptr;
}

std::optional<double> SaneOptions::number(const SaneOption& option) const
{
    const bool numeric = option.type == SANE_TYPE_BOOL || option.type == SANE_TYPE_INT
        || option.type == SANE_TYPE_FIXED;
    if (!numeric || !option.readable() || option.size < static_cast<SANE_Int>(sizeof(SANE_Word))) {
        return std::nullopt;
    }
    std::vector<SANE_Word> words(static_cast<std::size_t>(option.size) / sizeof(SANE_Word) + 1);
    if (m_api.controlOption(m_handle, option.index, SANE_ACTION_GET_VALUE, words.data(), nullptr)
        != SANE_STATUS_GOOD) {
        return std::nullopt;
    }
    return fromWord(option.type, words[0]);
}

std::optional<std::string> SaneOptions::text(const SaneOption& option) const
{
    if (option.type != SANE_TYPE_STRING || !option.readable() || option.size <= 0) {
        return std::nullopt;
    }
    std::vector<char> buffer(static_cast<std::size_t>(option.size) + 1);
    if (m_api.controlOption(m_handle, option.index, SANE_ACTION_GET_VALUE, buffer.data(), nullptr)
        != SANE_STATUS_GOOD) {
        return std::nullopt;
    }
    return std::string(buffer.data());
}

Status SaneOptions::set(const SaneOption& option, void* value)
{
    SANE_Int info = 0;
    const std::string name = option.name;
    const SANE_Status status =
        m_api.controlOption(m_handle, option.index, SANE_ACTION_SET_VALUE, value, &info);
    if (status != SANE_STATUS_GOOD) {
        return saneFailure(status, ("set " + name).c_str());
    }
    return (info & SANE_INFO_RELOAD_OPTIONS) != 0 ? reload() : Status();
}

Status SaneOptions::setNumber(const std::string& name, double value)
{
    const SaneOption* option = findSettable(name);
    if (option == nullptr || option->size != static_cast<SANE_Int>(sizeof(SANE_Word))
        || option->type == SANE_TYPE_STRING || option->type == SANE_TYPE_BUTTON) {
        return { kNotSupported, "no option " + name };
    }
    SANE_Word word = toWord(option->type, option->nearest(value));
    return set(*option, &word);
}

Status SaneOptions::setText(const std::string& name, const std::string& value)
{
    const SaneOption* option = findSettable(name);
    if (option == nullptr || option->type != SANE_TYPE_STRING || option->size <= 0) {
        return { kNotSupported, "no option " + name };
    }
    // the driver may write the text it chose back, up to the size it named
    std::vector<char> buffer(std::max(static_cast<std::size_t>(option->size), value.size() + 1));
    std::memcpy(buffer.data(), value.c_str(), value.size() + 1);
    return set(*option, buffer.data());
}

Status SaneOptions::press(const std::string& name)
{
    const SaneOption* option = findSettable(name);
    if (option == nullptr || option->type != SANE_TYPE_BUTTON) {
        return { kNotSupported, "no button " + name };
    }
    return set(*option, nullptr);
}

std::string allowedWord(const SaneOption& option, const Words& words)
{
    for (const std::string_view word : words) {
        if (std::find(option.texts.begin(), option.texts.end(), word) != option.texts.end()) {
            return std::string(word);
        }
    }
    return {};
}

} // namespace orva
