// How the scripted device is steered; what its entry points answer is in fake_entries.cpp.
#include "tests/fake_sdk/fake_scanner.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>
#include <thread>

namespace fake {

Scanner::Scanner()
    : m_state(factoryState())
{
    if (const char* path = std::getenv("FAKE_SDK_SCRIPT")) {
        std::ifstream in(path);
        runScript({ std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>() });
    }
}

Scanner::~Scanner()
{
    m_jobs.finishAll();
}

bool Scanner::runScript(const std::string& lines)
{
    bool wasReset = false;
    std::istringstream in(lines);
    for (std::string line; std::getline(in, line);) {
        if (line.empty()) {
            continue;
        }
        try {
            if (line == "reset") {
                reset();
                wasReset = true;
            } else if (line == "release") {
                m_jobs.release();
            } else if (line.compare(0, 5, "fire|") == 0) {
                m_jobs.fire(stepFrom(line));
            } else {
                const std::lock_guard<std::mutex> guard(m_mutex);
                applyLine(m_state, line);
            }
        } catch (const std::exception& error) {
            std::fprintf(
                stderr, "fake scanner: bad script line \"%s\" (%s)\n", line.c_str(), error.what());
            std::abort();
        }
    }
    return wasReset;
}

void Scanner::reset()
{
    m_jobs.finishAll();
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_state = factoryState();
}

std::optional<int> Scanner::forcedResult(const std::string& entry)
{
    int delayMs = 0;
    std::optional<int> code;
    {
        const std::lock_guard<std::mutex> guard(m_mutex);
        const auto delay = m_state.delaysMs.find(entry);
        delayMs = delay == m_state.delaysMs.end() ? 0 : delay->second;
        const auto found = m_state.results.find(entry);
        if (found != m_state.results.end() && found->second.times != 0) {
            code = found->second.code;
            found->second.times -= found->second.times > 0 ? 1 : 0;
        }
    }
    if (delayMs > 0) {
        std::this_thread::sleep_for(std::chrono::milliseconds(delayMs));
    }
    return code;
}

int Scanner::Init()
{
    return orva::kOk;
}

int Scanner::UnInit()
{
    m_jobs.finishAll();
    return orva::kOk;
}

} // namespace fake
