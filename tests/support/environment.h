// Sets an environment variable for the life of the object and puts the old value back.
#pragma once

#include <optional>
#include <string>

class ScopedEnvironment
{
public:
    /// No value removes the variable.
    ScopedEnvironment(std::string name, const std::optional<std::string>& value);
    ~ScopedEnvironment();
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

private:
    std::string m_name;
    std::optional<std::string> m_before;
};
