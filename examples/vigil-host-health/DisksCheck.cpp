// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#include "DisksCheck.h"

#include <algorithm>
#include <optional>

using host::Disk;
using vigil::HealthStatus;

DisksCheck::DisksCheck(const Options& options, UpdateClock& clock)
    : HostCheck("disks", "The disks", clock), m_thresholds(options.disk), m_mounted(check(), "mounted")
{}

std::string DisksCheck::readValues()
{
    const auto disks = host::disks();
    if (disks) {
        m_mounted.set(HealthStatus::Ok, std::to_string(disks->size()) + " in use");
        dropAllBut(*disks);
        for (const Disk& disk : *disks)
            setUse(disk);
    } else {
        m_mounted.set(HealthStatus::Unknown, "the list could not be read");
        for (auto& entry : m_disks)
            entry.second.set(std::nullopt);
    }
    return text();
}

void DisksCheck::dropAllBut(const std::vector<Disk>& disks)
{
    for (auto entry = m_disks.begin(); entry != m_disks.end();) {
        const bool isThere = std::any_of(disks.begin(), disks.end(),
                                         [&](const Disk& disk) { return disk.name == entry->first; });
        entry = isThere ? std::next(entry) : m_disks.erase(entry);
    }
}

void DisksCheck::setUse(const Disk& disk)
{
    const auto entry = m_disks.try_emplace(disk.name, check(), disk.name, "%", m_thresholds).first;
    entry->second.set(disk.usePercent);
}

std::string DisksCheck::text() const
{
    std::string text;
    for (const auto& [name, metric] : m_disks)
        text += (text.empty() ? "" : ", ") + metric.text();
    return text.empty() ? "no disk" : text;
}
