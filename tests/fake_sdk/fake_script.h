// The state of the fake library: the lines of its script, by their first field.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace fake {

/// The fields of one line: "paper", "A4", "0", …
using Line = std::vector<std::string>;

/// Of a field that is to be a decimal number; anything else ends the process.
double number(const Line& line, std::size_t index);
int integer(const Line& line, std::size_t index);

class Script
{
public:
    /// What the library offers at first.
    static Script factory();

    /// Takes a line that sets something; ends the process on a line that is none.
    void take(const std::string& text);
    /// All lines of this command, in their order.
    std::vector<Line>& rows(const std::string& command) { return m_rows[command]; }
    /// Of "paper" and "resolution": the source's own lines, else those of all sources.
    std::vector<Line>& rowsOf(const std::string& command, int source);
    /// Of a command of which the last line counts.
    const Line& last(const std::string& command) { return m_rows[command].back(); }
    bool has(const std::string& command, const std::string& firstArgument);

    int delayMs(const std::string& entry);
    /// The result that is forced on the entry, this time.
    std::optional<int> forcedResult(const std::string& entry);

private:
    std::map<std::string, std::vector<Line>> m_rows;
};

Line fieldsOf(const std::string& text);

} // namespace fake
