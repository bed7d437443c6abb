#pragma once

#include <optional>
#include <string>

#include <stdlib.h> // setenv

namespace quorvane::test {

// Sets or removes an environment variable, and restores it in the destructor.
class EnvironmentVariable {
public:
    EnvironmentVariable(const char* name, const std::optional<std::string>& value)
        : m_name(name)
    {
        if (const char* before = getenv(name))
            m_before = before;
        put(value);
    }
    ~EnvironmentVariable() { put(m_before); }
    EnvironmentVariable(const EnvironmentVariable&) = delete;
    EnvironmentVariable& operator=(const EnvironmentVariable&) = delete;

private:
    void put(const std::optional<std::string>& value) const
    {
        if (value)
            setenv(m_name.c_str(), value->c_str(), 1);
        else
            unsetenv(m_name.c_str());
    }

    std::string m_name;
    std::optional<std::string> m_before;
};

} // namespace quorvane::test
