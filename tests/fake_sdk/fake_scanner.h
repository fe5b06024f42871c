// The scripted device behind the fake library: one member a entry point, named by its symbol. What
// a script can set is in fake_state.h.
#pragma once

#include "sdk/records.h"
#include "sdk/result_codes.h"
#include "tests/fake_sdk/fake_job.h"
#include "tests/fake_sdk/fake_state.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace fake {

/// Any thread.
class Scanner
{
public:
    Scanner();
    ~Scanner();
    Scanner(const Scanner&) = delete;
    Scanner& operator=(const Scanner&) = delete;

    /// Executes script lines; ends the process on a line that it does not understand. Gives whether
    /// one of them was "reset".
    bool runScript(const std::string& lines);
    /// The result that the script forces on the entry, after its scripted delay.
    std::optional<int> forcedResult(const std::string& entry);
    bool scanning() { return m_jobs.running(); }

#define ORVA_ENTRY(number, operation, symbol, need, parameters, arguments) int symbol parameters;
#include "sdk/entry_points.def"

private:
    void reset();
    /// Runs the body with the state in hand.
    template <typename Body>
    int with(Body body)
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        return body(m_state);
    }
    /// The same for the chosen device; kNoScannerSelected without one.
    template <typename Body>
    int withDevice(Body body)
    {
        return with([&](State& state) {
            return holds(state.devices, state.device) ? body(rowAt(state.devices, state.device))
                                                      : static_cast<int>(orva::kNoScannerSelected);
        });
    }

    std::mutex m_mutex;
    State m_state;
    Jobs m_jobs;
};

} // namespace fake
