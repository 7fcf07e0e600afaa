// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_HOST_HEALTH_DISKSCHECK_H
#define VIGIL_HOST_HEALTH_DISKSCHECK_H

#include <map>
#include <vector>

#include "HostCheck.h"
#include "HostValues.h"
#include "Options.h"
#include "WatchedMetric.h"

/// The use of each disk, named by its mount point, and the number of disks. Metrics come and go with the
/// disks.
class DisksCheck : public HostCheck
{
public:
    DisksCheck(const Options& options, UpdateClock& clock);

private:
    std::string readValues() override;
    void dropAllBut(const std::vector<host::Disk>& disks);
    void setUse(const host::Disk& disk);
    std::string text() const;

    const Thresholds m_thresholds;
    vigil::SimpleHandle m_mounted;
    std::map<std::string, WatchedMetric> m_disks;
};

#endif
