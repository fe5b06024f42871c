#include "tests/fake_sdk/fake_recorder.h"

namespace fake {

std::string escaped(const char* text)
{
    std::string out;
    for (const char* at = text; *at != '\0'; ++at) {
        switch (*at) {
        case '\t':
            out += "\\t";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\\':
            out += "\\\\";
            break;
        default:
            out += *at;
        }
    }
    return out;
}

std::string hexBytes(const void* bytes, std::size_t size)
{
    static constexpr char kDigits[] = "0123456789abcdef";
    const auto* at = static_cast<const unsigned char*>(bytes);
    std::string out;
    out.reserve(size * 2);
    for (std::size_t i = 0; i < size; ++i) {
        out += kDigits[at[i] >> 4U];
        out += kDigits[at[i] & 15U];
    }
    return out;
}

Recorder::Recorder()
    : m_start(std::chrono::steady_clock::now())
{
}

void Recorder::add(const std::string& entry, const std::vector<std::string>& arguments)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto passed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - m_start);
    const int thread =
        m_threads.try_emplace(std::this_thread::get_id(), static_cast<int>(m_threads.size()))
            .first->second;
    std::string line =
        std::to_string(passed.count()) + '\t' + std::to_string(thread) + '\t' + entry;
    for (const std::string& argument : arguments) {
        line += '\t' + argument;
    }
    line += '\n';
    m_text += line;
    ++m_counts[entry];
}

void Recorder::clear()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    m_text.clear();
    m_counts.clear();
}

int Recorder::count(const std::string& entry)
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    const auto found = m_counts.find(entry);
    return found == m_counts.end() ? 0 : found->second;
}

std::string Recorder::text()
{
    const std::lock_guard<std::mutex> guard(m_mutex);
    return m_text;
}

} // namespace fake
