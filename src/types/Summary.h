// SPDX-FileCopyrightText: 2026 The Vigil authors
// SPDX-License-Identifier: MIT

#ifndef VIGIL_TYPES_SUMMARY_H
#define VIGIL_TYPES_SUMMARY_H

#include <string>
#include <vector>

#include "types/ResultEntry.h"

namespace vigil {
class HealthCheck;
}

/// Writes the one line that stands for a whole health check. Stateless; texts are UTF-8.
class Summary
{
public:
    /// For a check whose results are all OK: its description.
    virtual std::string summarizeOk(const vigil::HealthCheck& check,
                                    const std::vector<ResultEntry>& entries) const;

    /// For any other check: its description, " - " and the texts of everything that is not OK.
    virtual std::string summarizeProblems(const vigil::HealthCheck& check,
                                          const std::vector<ResultEntry>& entries) const;

    virtual ~Summary() = default;
};

#endif
