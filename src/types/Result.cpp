// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include <vigil/Result.h>

#include <array>

namespace vigil {

Result::Result(const std::string& name, HealthStatus status, std::string summary)
    : m_name(name), m_status(status), m_summary(std::move(summary))
{}

Result::Result(const Result& other) = default;
Result& Result::operator=(const Result& other) = default;
Result::~Result() = default;

std::string Result::getName() const
{
    return m_name;
}

HealthStatus Result::getStatus() const
{
    return m_status;
}

std::string Result::getSummary() const
{
    return m_summary;
}

std::string Result::getStatusString(HealthStatus status) const
{
    static constexpr std::array<const char*, 4> words = {"OK", "WARNING", "CRITICAL", "UNKNOWN"};
    const auto index = static_cast<std::size_t>(status);
    return index < words.size() ? words[index] : words.back();
}

} // namespace vigil
