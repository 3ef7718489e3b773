#pragma once

// Sets or removes an environment variable and restores its old value at the end of the scope. Use it only while no
// other thread reads the environment.

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

class ScopedEnvironment {
  public:
    // Removes the variable if there is no value.
    explicit ScopedEnvironment(std::string name, const std::optional<std::string>& value = std::nullopt)
        : name_(std::move(name)) {
        if (const char* before = std::getenv(name_.c_str())) before_ = before;
        assign(value);
    }
    ~ScopedEnvironment() { assign(before_); }
    ScopedEnvironment(const ScopedEnvironment&) = delete;
    ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

  private:
    void assign(const std::optional<std::string>& value) {
#ifdef _WIN32
        _putenv_s(name_.c_str(), value.value_or("").c_str());
#else
        if (value) {
            setenv(name_.c_str(), value->c_str(), 1);
        } else {
            unsetenv(name_.c_str());
        }
#endif
    }

    std::string name_;
    std::optional<std::string> before_;
};
