#include "tests/fake_sdk/fake_script.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <sstream>

namespace fake {
namespace {

/// Fewest and most fields; a command of one source ("paper@1") counts as its common form.
struct Command
{
    const char* name;
    std::size_t fewest, most;
};
constexpr Command kCommands[] = {
    { "device", 7, 7 },
    { "source", 2, 2 },
    { "paper", 6, 6 },
    { "resolution", 4, 4 },
    { "filetype", 5, 5 },
    { "json", 2, 2 },
    { "json-unterminated", 2, 2 },
    { "times", 3, 3 },
    { "havepaper", 2, 2 },
    { "button", 2, 2 },
    { "result", 3, 4 },
    { "delay", 3, 3 },
    { "job", 2, 2 },
    { "step", 2, 5 },
};

constexpr char kFactory[] = R"(source|平板
source|ADF单面
source|ADF双面
paper|A4|0|0|210|297
paper|A5|0|0|148|210
paper|B5|0|0|182|257
paper|Letter|0|0|215.9|279.4
paper|名片|0|0|90|54
resolution|100|100|100
resolution|150|150|150
resolution|200|200|200
resolution|300|300|300
resolution|600|600|600
filetype|0|0|128|10
filetype|10|20|140|11
filetype|-10|5|100|18
times|15|4
havepaper|1
step|state|1|1|
step|image|fake-0001.jpg|210|297
)"
#ifndef FAKE_NO_DEVICES
                            "device|Orvascan A300|1234:5678|A1234567|1.2.3|4.5.6|AvH4\n"
#endif
                            R"(json|{"InSleep":{"nEnable":1,"nMax":60,"nMix":1,"nStep":1,)"
                            R"("chUnit":109,"value":15},"AutoOff":{"nEnable":1,"nMax":12,)"
                            R"("nMix":0,"nStep":1,"chUnit":104,"value":4},"Prefeed":)"
                            R"({"nCap":1,"nEnable":1,"value":"1.5"},"IsHigh":1})";

std::string common(const std::string& command)
{
    return command.substr(0, command.find('@'));
}

[[noreturn]] void refuse(const std::string& text)
{
    std::fprintf(stderr, "fake scanner: bad script line \"%s\"\n", text.c_str());
    std::abort();
}

} // namespace

double number(const Line& line, std::size_t index)
{
    const std::string text = index < line.size() ? line[index] : std::string();
    char* end = nullptr;
    const double value = std::strtod(text.c_str(), &end);
    if (text.empty() || *end != '\0') {
        refuse(line.front() + "|…|" + text);
    }
    return value;
}

int integer(const Line& line, std::size_t index)
{
    return static_cast<int>(number(line, index));
}

Line fieldsOf(const std::string& text)
{
    Line fields;
    const bool isWhole = text.compare(0, 4, "json") == 0; // the rest of it is one field
    std::size_t from = 0;
    for (std::size_t bar = 0; bar != std::string::npos; from = bar + 1) {
        bar = isWhole && !fields.empty() ? std::string::npos : text.find('|', from);
        fields.push_back(text.substr(from, bar == std::string::npos ? bar : bar - from));
    }
    return fields;
}

Script Script::factory()
{
    Script script;
    std::istringstream lines(kFactory);
    for (std::string line; std::getline(lines, line);) {
        script.take(line);
    }
    return script;
}

void Script::take(const std::string& text)
{
    const Line line = fieldsOf(text);
    if (line.size() == 2 && line[1] == "clear") {
        const std::string cleared =
            line[0] == "job" ? "step" : line[0].substr(0, line[0].size() - 1);
        for (auto& [command, rows] : m_rows) {
            if (common(command) == cleared || command == line[0]) {
                rows.clear();
            }
        }
        return;
    }
    const bool isKnown = std::any_of(std::begin(kCommands), std::end(kCommands),
        [&line, name = common(line[0])](const Command& command) {
            return name == command.name && line.size() >= command.fewest
                && line.size() <= command.most;
        });
    if (!isKnown) {
        refuse(text);
    }
    if (line[0].compare(0, 4, "json") == 0) {
        m_rows["json"] = { line };
    } else {
        m_rows[line[0]].push_back(line);
    }
}

std::vector<Line>& Script::rowsOf(const std::string& command, int source)
{
    std::vector<Line>& own = m_rows[command + '@' + std::to_string(source)];
    return own.empty() ? m_rows[command] : own;
}

bool Script::has(const std::string& command, const std::string& firstArgument)
{
    const std::vector<Line>& all = m_rows[command];
    return std::any_of(
        all.begin(), all.end(), [&](const Line& line) { return line[1] == firstArgument; });
}

int Script::delayMs(const std::string& entry)
{
    const std::vector<Line>& all = m_rows["delay"];
    const auto found =
        std::find_if(all.rbegin(), all.rend(), [&](const Line& line) { return line[1] == entry; });
    return found == all.rend() ? 0 : integer(*found, 2);
}

std::optional<int> Script::forcedResult(const std::string& entry)
{
    std::vector<Line>& all = m_rows["result"];
    const auto found =
        std::find_if(all.rbegin(), all.rend(), [&](const Line& line) { return line[1] == entry; });
    if (found == all.rend()) {
        return std::nullopt;
    }
    if (found->size() == 4) {
        const int left = integer(*found, 3);
        if (left <= 0) {
            return std::nullopt;
        }
        found->back() = std::to_string(left - 1);
    }
    return integer(*found, 2);
}

} // namespace fake
