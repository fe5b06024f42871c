// What the scanner is asked between jobs: paper, buttons, times.
#include "scanlib/device/sane_host/sane_scanner.h"

#include <algorithm>
#include <cstdlib>

namespace orva {

Status SaneScanner::hasPaper(bool& result)
{
    result = true; // a device without a sensor tells when it starts
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    if (m_configured && m_sources[m_settings.source].kind == SourceKind::kFlatbed) {
        return {};
    }
    Words sensors = kPaperSensors;
    if (const std::string* said = overrideOf("paper-sensor"); said != nullptr) {
        sensors = { *said };
    }
    for (const std::string_view name : sensors) {
        const SaneOption* option = m_options->find(name);
        if (option == nullptr) {
            continue;
        }
        if (const auto value = m_options->number(*option); value.has_value()) {
            result = *value != 0;
            return {};
        }
        if (const auto text = m_options->text(*option); text.has_value()) {
            result =
                std::find(kNoPaperWords.begin(), kNoPaperWords.end(), *text) == kNoPaperWords.end();
            return {};
        }
    }
    return {};
}

/// The options to watch: those with a meaning, the administrator's before ours, and those whose
/// text names the button.
void SaneScanner::rememberButtons()
{
    constexpr std::string_view kOwn = "button.";
    m_buttons.clear();
    for (const auto& [key, value] : m_overrides) {
        if (key.compare(0, kOwn.size(), kOwn) == 0) {
            m_buttons.push_back({ key.substr(kOwn.size()), std::atoi(value.c_str()), 0, "" });
        }
    }
    const auto add = [&](std::string_view option, int value) {
        const bool known = std::any_of(m_buttons.begin(), m_buttons.end(),
            [&](const ButtonState& button) { return button.option == option; });
        if (!known && m_options->find(option) != nullptr) {
            m_buttons.push_back({ std::string(option), value, 0, "" });
        }
    };
    for (const ButtonOption& button : kButtonOptions) {
        add(button.option, button.value);
    }
    for (const std::string_view option : kButtonTextOptions) {
        add(option, 0);
    }
    bool pressed = false;
    for (ButtonState& button : m_buttons) {
        look(button, pressed); // held since before the start: not pressed
    }
}

/// pressed: it was not at the last look.
void SaneScanner::look(ButtonState& button, bool& pressed)
{
    pressed = false;
    const SaneOption* option = m_options->find(button.option);
    if (option == nullptr) {
        return;
    }
    if (option->type == SANE_TYPE_STRING) {
        const std::string text = m_options->text(*option).value_or("");
        pressed = text != button.text && buttonOfText(text) != 0;
        button.text = text;
        return;
    }
    const double number = m_options->number(*option).value_or(0);
    pressed = number != 0 && button.number == 0;
    button.number = number;
}

Status SaneScanner::pressedButton(int& value)
{
    value = 0;
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    if (m_options->findSettable("button-update") != nullptr) { // else the values are old
        logProblem(m_options->press("button-update"));
    }
    for (ButtonState& button : m_buttons) {
        bool pressed = false;
        look(button, pressed);
        if (pressed && value == 0) {
            value = button.value != 0 ? button.value : buttonOfText(button.text);
        }
    }
    return {};
}

Status SaneScanner::timing(DeviceTiming& result)
{
    result = DeviceTiming();
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    const auto describe = [&](const Words& names, TimingCapability& capability) {
        const SaneOption* option = m_options->findAny(names);
        const bool listed = option != nullptr && !option->numbers.empty();
        if (option == nullptr || !option->settable() || !(option->hasRange || listed)) {
            return;
        }
        capability.enabled = true;
        capability.min = static_cast<int>(listed ? option->numbers.front() : option->min);
        capability.max = static_cast<int>(listed ? option->numbers.back() : option->max);
        capability.step = std::max(1, static_cast<int>(option->step));
        capability.unit = 'm';
        capability.value = static_cast<int>(m_options->number(*option).value_or(option->min));
    };
    describe(kSleepOptions, result.sleep);
    describe(kAutoOffOptions, result.autoOff);
    return {};
}

Status SaneScanner::setTimes(int sleep, int autoOff)
{
    if (!isOpen()) {
        return { kNotInitialised, "not open" };
    }
    const std::pair<const Words&, int> wishes[] = { { kSleepOptions, sleep },
        { kAutoOffOptions, autoOff } };
    std::vector<std::pair<std::string, int>> settings;
    for (const auto& [names, value] : wishes) {
        if (value == -1) {
            continue;
        }
        const SaneOption* option = m_options->findAny(names);
        if (option == nullptr || !option->settable()) {
            return { kNotSupported, "the device keeps no such time" };
        }
        if (option->hasRange && (value < option->min || value > option->max)) {
            return { kValueOutOfRange, option->name };
        }
        settings.emplace_back(option->name, value);
    }
    for (const auto& [name, value] : settings) { // none, where one is refused
        if (Status status = m_options->setNumber(name, value); !status.ok()) {
            return status;
        }
    }
    return {};
}

} // namespace orva
