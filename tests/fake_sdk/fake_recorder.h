// Remembers the calls that the library gets, as text.
#pragma once

#include "sdk/records.h"

#include <chrono>
#include <cstdio>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

namespace fake {

std::string escaped(const char* text);
std::string hexBytes(const void* bytes, std::size_t size);

// One argument by its declared type: what the library fills in is not read.
template <typename Declared, typename Value>
std::string argumentText(const Value& value)
{
    using Plain = std::remove_cv_t<std::remove_reference_t<Declared>>;
    if constexpr (std::is_same_v<Plain, ImageParam> || std::is_same_v<Plain, FileParam>) {
        return hexBytes(&value, sizeof value);
    } else if constexpr (std::is_same_v<Plain, const char*>) {
        return value == nullptr ? "null" : escaped(value);
    } else if constexpr (
        std::is_same_v<Plain,
            OrvaStateCallback> || std::is_same_v<Plain, OrvaErrorCallback> || std::is_same_v<Plain, void*>) {
        return value == nullptr ? "null" : "set";
    } else if constexpr (std::is_lvalue_reference_v<Declared> || std::is_pointer_v<Plain>) {
        return "-";
    } else if constexpr (std::is_floating_point_v<Plain>) {
        char text[40] = {};
        std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
        return text;
    } else {
        return std::to_string(static_cast<int>(value));
    }
}

template <typename Signature>
struct Arguments;
template <typename... Declared>
struct Arguments<int(Declared...)>
{
    template <typename Values>
    static std::vector<std::string> texts(const Values& values)
    {
        return pick(values, std::index_sequence_for<Declared...> {});
    }

private:
    template <typename Values, std::size_t... Index>
    static std::vector<std::string> pick(
        [[maybe_unused]] const Values& values, std::index_sequence<Index...> /*indices*/)
    {
        return { argumentText<Declared>(std::get<Index>(values))... };
    }
};

/// Any thread.
class Recorder
{
public:
    Recorder();
    void add(const std::string& entry, const std::vector<std::string>& arguments);
    void clear();
    int count(const std::string& entry);
    std::string text();

private:
    std::mutex m_mutex;
    std::string m_text;
    std::map<std::string, int> m_counts;
    std::map<std::thread::id, int> m_threads;
    std::chrono::steady_clock::time_point m_start;
};

} // namespace fake
