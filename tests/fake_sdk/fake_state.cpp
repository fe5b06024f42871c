#include "tests/fake_sdk/fake_state.h"

#include <functional>
#include <stdexcept>

namespace fake {
namespace {

/// A line, field by field: at("…", 2) is the third one.
struct Line
{
    explicit Line(const std::string& whole)
        : text(whole)
    {
        std::size_t from = 0;
        for (std::size_t bar = 0; bar != std::string::npos; from = bar + 1) {
            bar = whole.find('|', from);
            fields.push_back(whole.substr(from, bar == std::string::npos ? bar : bar - from));
        }
    }
    const std::string& at(std::size_t index) const { return fields.at(index); }
    int number(std::size_t index) const { return std::stoi(at(index)); }
    double real(std::size_t index) const { return std::stod(at(index)); }
    /// Of "paper": what stands in front of the "@".
    std::string command() const { return fields[0].substr(0, fields[0].find('@')); }
    /// The source index of "paper@1"; kCommon without one.
    int source() const
    {
        const std::size_t sign = fields[0].find('@');
        return sign == std::string::npos ? kCommon : std::stoi(fields[0].substr(sign + 1));
    }
    /// Everything behind the first bar.
    std::string rest() const { return text.substr(fields[0].size() + 1); }

    std::string text;
    std::vector<std::string> fields;
};

Step readStep(const Line& line)
{
    Step step;
    const std::string& kind = line.at(1);
    if (kind == "wait") {
        step.kind = Step::Kind::kWait;
    } else if (kind == "image") {
        step.kind = Step::Kind::kImage;
        step.name = line.at(2);
        step.width = line.number(3);
        step.height = line.number(4);
    } else {
        step.number = line.number(2);
        if (kind == "state") {
            step.kind = Step::Kind::kState;
            step.page = line.number(3);
            step.name = line.at(4);
        } else if (kind == "error" || kind == "sleep") {
            step.kind = kind == "error" ? Step::Kind::kError : Step::Kind::kSleep;
        } else {
            throw std::invalid_argument(kind);
        }
    }
    return step;
}

void forceResult(State& state, const Line& line)
{
    if (line.at(2) == "normal") {
        state.results.erase(line.at(1));
    } else {
        state.results[line.at(1)] = { line.number(2),
            line.fields.size() > 3 ? line.number(3) : -1 };
    }
}

using Setter = std::function<void(State&, const Line&)>;

const std::map<std::string, Setter>& setters()
{
    static const std::map<std::string, Setter> kSetters {
        { "devices|clear", [](State& s, const Line&) { s.devices.clear(); } },
        { "sources|clear", [](State& s, const Line&) { s.sources.clear(); } },
        { "papers|clear", [](State& s, const Line&) { s.papers.clear(); } },
        { "resolutions|clear", [](State& s, const Line&) { s.resolutions.clear(); } },
        { "filetypes|clear", [](State& s, const Line&) { s.fileTypes.clear(); } },
        { "job|clear", [](State& s, const Line&) { s.job = {}; } },
        { "job|end-twice", [](State& s, const Line&) { s.job.ends = 2; } },
        { "job|no-end", [](State& s, const Line&) { s.job.ends = 0; } },
        { "device",
            [](State& s, const Line& l) {
                s.devices.push_back({ l.at(1), l.at(2), l.at(3), l.at(4), l.at(5), l.at(6) });
            } },
        { "source", [](State& s, const Line& l) { s.sources.push_back({ l.at(1) }); } },
        { "paper",
            [](State& s, const Line& l) {
                s.papers[l.source()].push_back(
                    { l.at(1), { l.real(2), l.real(3), l.real(4), l.real(5) } });
            } },
        { "resolution",
            [](State& s, const Line& l) {
                s.resolutions[l.source()].push_back({ l.at(1), l.number(2), l.number(3) });
            } },
        { "filetype",
            [](State& s, const Line& l) {
                s.fileTypes.push_back(
                    { 0, 0, 0, l.number(1), l.number(2), l.number(3), l.number(4) });
            } },
        { "json",
            [](State& s, const Line& l) {
                s.deviceInfo = l.rest();
                s.deviceInfoTerminated = true;
            } },
        { "json-unterminated",
            [](State& s, const Line& l) {
                s.deviceInfo = l.rest();
                s.deviceInfoTerminated = false;
            } },
        { "times",
            [](State& s, const Line& l) {
                s.sleepTime = l.number(1);
                s.autoOffTime = l.number(2);
            } },
        { "havepaper", [](State& s, const Line& l) { s.havePaper = l.number(1); } },
        { "button", [](State& s, const Line& l) { s.buttons.push_back(l.number(1)); } },
        { "result", forceResult },
        { "delay", [](State& s, const Line& l) { s.delaysMs[l.at(1)] = l.number(2); } },
        { "step", [](State& s, const Line& l) { s.job.steps.push_back(readStep(l)); } },
    };
    return kSetters;
}

} // namespace

State factoryState()
{
    State state;
#ifndef FAKE_NO_DEVICES
    state.devices = { { "Orvascan A300", "1234:5678", "A1234567", "1.2.3", "4.5.6", "AvH4" } };
#endif
    state.sources = { { "平板" }, { "ADF单面" }, { "ADF双面" } };
    state.papers[kCommon] = {
        { "A4", { 0.0, 0.0, 210.0, 297.0 } },
        { "A5", { 0.0, 0.0, 148.0, 210.0 } },
        { "B5", { 0.0, 0.0, 182.0, 257.0 } },
        { "Letter", { 0.0, 0.0, 215.9, 279.4 } },
        { "名片", { 0.0, 0.0, 90.0, 54.0 } },
    };
    for (const int dpi : { 100, 150, 200, 300, 600 }) {
        state.resolutions[kCommon].push_back({ std::to_string(dpi), dpi, dpi });
    }
    state.fileTypes = { { 0, 0, 0, 0, 0, 128, 10 }, { 1, 0, 0, 10, 20, 140, 11 },
        { 2, 0, 0, -10, 5, 100, 18 } };
    state.deviceInfo =
        R"({"InSleep":{"nEnable":1,"nMax":60,"nMix":1,"nStep":1,"chUnit":109,"value":15},)"
        R"("AutoOff":{"nEnable":1,"nMax":12,"nMix":0,"nStep":1,"chUnit":104,"value":4},)"
        R"("Prefeed":{"nCap":1,"nEnable":1,"value":"1.5"},"IsHigh":1})";
    applyLine(state, "step|state|1|1|");
    applyLine(state, "step|image|fake-0001.jpg|210|297");
    return state;
}

void applyLine(State& state, const std::string& text)
{
    const Line line(text);
    const auto whole = setters().find(text);
    const auto found = whole != setters().end() ? whole : setters().find(line.command());
    if (found == setters().end()) {
        throw std::invalid_argument(line.command());
    }
    found->second(state, line);
}

Step stepFrom(const std::string& line)
{
    return readStep(Line(line));
}

} // namespace fake
